#include "faults/failing_services.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include "core/device_table.h"
#include "faults/system_holdings.h"
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
std::atomic<std::int64_t> files = 0;

bool insideLibrary() {
    const auto occupied = [](const DeviceRecord& record) { return record.gate.occupied(); };
    return servicesUntouched == 0 && (libraryGate.occupied() || std::ranges::any_of(deviceTable(), occupied));
}

std::uint32_t atFaultPoint(platform::FaultPoint point) {
    static constexpr const char* names[] = {"eventCreate", "mutexCreate", "threadStart", "allocation"};
    const bool fails = serviceFails(Service::faultPoint, names[static_cast<std::size_t>(point)]);
    return fails ? static_cast<std::uint32_t>(failure.systemError) : 0;
}

}  // namespace

FailingService::FailingService(Service service, std::uint32_t nth, bool fromThenOn, int systemError) {
    failure = {service, nth, fromThenOn, systemError, 0, nullptr};
    armed = true;
    if (service == Service::faultPoint) platform::setFaultHook(atFaultPoint);
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
    constexpr std::string_view closing = "fclose";
    if (failure.struck == nullptr || failure.struck == closing) failure.struck = name;
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

std::int64_t openFiles() {
    return files;
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

bool fileFails(const char* name) {
    if (!serviceFails(Service::file, name)) return false;
    setFileError(failure.systemError);
    return true;
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

// The linker puts these in the place of the functions behind their names (--wrap).
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

std::FILE* __real_fopen(const char* name, const char* mode);
std::size_t __real_fread(void* data, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file);
int __real_fclose(std::FILE* file);
int __real_ferror(std::FILE* file);

std::FILE* __wrap_fopen(const char* name, const char* mode);
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* file);
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file);
int __wrap_fclose(std::FILE* file);
int __wrap_ferror(std::FILE* file);

static thread_local std::FILE* fileWithFailedRead = nullptr;

std::FILE* __wrap_fopen(const char* name, const char* mode) {
    using namespace torvik::test;
    if (fileFails("fopen")) return nullptr;
    std::FILE* const file = __real_fopen(name, mode);
    if (file != nullptr) ++files;
    return file;
}

std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* file) {
    using namespace torvik::test;
    if (!fileFails("fread")) return __real_fread(data, size, count, file);
    fileWithFailedRead = file;
    return 0;
}

std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    using namespace torvik::test;
    return fileFails("fwrite") ? 0 : __real_fwrite(data, size, count, file);
}

// Closes the file all the same, as the system does.
int __wrap_fclose(std::FILE* file) {
    using namespace torvik::test;
    --files;
    if (fileWithFailedRead == file) fileWithFailedRead = nullptr;
    const int result = __real_fclose(file);
    return fileFails("fclose") ? EOF : result;
}

int __wrap_ferror(std::FILE* file) {
    return fileWithFailedRead == file ? 1 : __real_ferror(file);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
