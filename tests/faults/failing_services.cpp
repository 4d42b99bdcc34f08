#include "faults/failing_services.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "core/device_table.h"
#include "platform/faults.h"

namespace torvik::test {

namespace {

struct Failure {
    Service service = Service::allocation;
    std::uint32_t nth = 0;
    bool fromThenOn = false;
    int systemError = 0;
    std::uint32_t uses = 0;
    const char* struck = nullptr;
};

thread_local bool armed = false;
thread_local int servicesUntouched = 0;
thread_local Failure failure;

std::atomic<std::int64_t> blocks = 0;

bool insideLibrary() {
    const auto occupied = [](const DeviceRecord& record) { return record.gate.occupied(); };
    return servicesUntouched == 0 && (libraryGate.occupied() || std::ranges::any_of(deviceTable(), occupied));
}

std::uint32_t atFaultPoint(platform::FaultPoint point) {
    static constexpr const char* names[] = {"eventCreate", "mutexCreate", "threadStart", "allocation", "eventWait",
                                            "fileOpen",    "fileStatus",  "fileRead",    "fileWrite",  "fileClose"};
    const Service service = point < platform::FaultPoint::fileOpen ? Service::faultPoint : Service::file;
    const bool fails = serviceFails(service, names[static_cast<std::size_t>(point)]);
    return fails ? static_cast<std::uint32_t>(failure.systemError) : 0;
}

}  // namespace

FailingService::FailingService(Service service, std::uint32_t nth, bool fromThenOn, int systemError) {
    failure = {service, nth, fromThenOn, systemError, 0, nullptr};
    armed = true;
    if (service == Service::faultPoint || service == Service::file) platform::setFaultHook(atFaultPoint);
}

FailingService::~FailingService() {
    armed = false;
    platform::setFaultHook(nullptr);
}

bool FailingService::struck() {
    return failure.struck != nullptr;
}

const char* FailingService::what() {
    return failure.struck == nullptr ? "" : failure.struck;
}

bool serviceFails(Service service, const char* name) {
    if (!armed || failure.service != service || !insideLibrary()) return false;
    ++failure.uses;
    if (failure.uses != failure.nth && !(failure.fromThenOn && failure.uses > failure.nth)) return false;
    if (failure.struck == nullptr) failure.struck = name;
    return true;
}

int injectedSystemError() {
    return failure.systemError;
}

ServicesUntouched::ServicesUntouched() {
    ++servicesUntouched;
}

ServicesUntouched::~ServicesUntouched() {
    --servicesUntouched;
}

std::int64_t liveBlocks() {
    return blocks;
}

namespace {

// Stands before every block.
struct alignas(std::max_align_t) BlockHeader {
    bool ofTheLibrary;
};

void* allocate(std::size_t size) {
    if (serviceFails(Service::allocation, "operator new")) throw std::bad_alloc();
    void* const memory = std::malloc(sizeof(BlockHeader) + size);
    if (memory == nullptr) throw std::bad_alloc();
    auto* const header = new (memory) BlockHeader{insideLibrary()};
    if (header->ofTheLibrary) ++blocks;
    return header + 1;
}

void release(void* block) {
    if (block == nullptr) return;
    BlockHeader* const header = static_cast<BlockHeader*>(block) - 1;
    if (header->ofTheLibrary) --blocks;
    std::free(header);
}

}  // namespace

}  // namespace torvik::test

// In the place of the run-time library's own.
void* operator new(std::size_t size) {
    return torvik::test::allocate(size);
}
void* operator new[](std::size_t size) {
    return torvik::test::allocate(size);
}
void operator delete(void* block) noexcept {
    torvik::test::release(block);
}
void operator delete[](void* block) noexcept {
    torvik::test::release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    torvik::test::release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    torvik::test::release(block);
}
