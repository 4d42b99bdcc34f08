#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "adapter.hpp"
#include "open_adapter.hpp"
#include "system_support.hpp"

// The adapter in a host that is out of memory: this program's operator new fails when a test says so.
namespace {

constexpr long kNever = -1;
thread_local long allocationsLeft = kNever;
thread_local bool failed = false;

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) {
        failed = true;
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0) --allocationsLeft;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace virtual_test {
namespace {

using virtual_adapter::Adapter;

constexpr std::uint32_t kNoMemory = 0x2000;

// Every allocation from number `first` on fails while this is alive.
class FailingMemory {
  public:
    explicit FailingMemory(long first) {
        failed = false;
        allocationsLeft = first;
    }
    ~FailingMemory() { allocationsLeft = kNever; }
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};

TEST(MemoryOfTheAdapter, RefusedWhileItIsMade_KeepsTheChannelClosedUntilABenchIsGiven) {
    static_assert(noexcept(Adapter()));
    alignas(Adapter) static std::array<std::byte, sizeof(Adapter)> storage;
    long first = 0;
    do {
        std::unique_ptr<Adapter, void (*)(Adapter*)> adapter(nullptr, [](Adapter* made) { std::destroy_at(made); });
        {
            const FailingMemory failing(first);
            adapter.reset(std::construct_at(reinterpret_cast<Adapter*>(storage.data())));
        }
        if (failed) {
            EXPECT_EQ(adapter->initialize(kUsb, kMegabit), kIllegalData) << first;
            EXPECT_STREQ(adapter->message(), "out of memory");
            EXPECT_TRUE(adapter->configure(virtual_adapter::parseBench("[[amplifier]]\n", "bench")));
        }
        EXPECT_EQ(adapter->initialize(kUsb, kMegabit), kOk) << first;
        ++first;
    } while (failed && first < 10'000);
    EXPECT_GT(first, 3);
    EXPECT_FALSE(failed);
}

// Everything that allocates, one call after the other. The results are looked at when there is memory again.
struct Results {
    int configured = 0;
    std::uint32_t initialized = 0;
    std::uint32_t event = 0;
    std::uint32_t filtered = 0;
    std::array<std::uint32_t, 6> written{};
    std::uint32_t sets = 0;
    int configuredAgain = 0;
    int reset = 0;
};

Results useAdapter(ReceiveEvent& event) {
    Results results;
    results.configured = virtualConfigure(
        "[[amplifier]]\nstreaming = false\n[[amplifier]]\ncommand = 0x200\n"
        "answer = 0x201\nvalue = 0x202\ncalibrated = true\n");
    results.initialized = CAN_Initialize(kUsb, kMegabit, 0, 0, 0);
    results.event = event.attach(kUsb);
    results.filtered = CAN_FilterMessages(kUsb, 0, 0x7FF, 0);
    virtualAnswerRule(0, 0x2B, VIRTUAL_ANSWER_DOUBLE, 2, 0, nullptr);
    virtualAnswerRule(0, 0x2B, VIRTUAL_ANSWER_DELAY, 1, 10'000'000, nullptr);
    std::size_t place = 0;
    for (const std::uint8_t code : std::initializer_list<std::uint8_t>{0x2B, 0x2B, 0x2B, 0x23, 0x24, 0x78}) {
        CanMessage command = commandFrame({code});
        results.written[place++] = CAN_Write(kUsb, &command);
    }
    results.sets = virtualSendSets(0, 3);
    CanMessage message{};
    while (CAN_Read(kUsb, &message, nullptr) == kOk) {
    }
    results.configuredAgain = virtualConfigure("[[amplifier]]\nfrequency = 1000\n");
    CAN_Uninitialize(kUsb);
    results.reset = virtualReset();
    return results;
}

void expectDocumented(const Results& results, long first) {
    EXPECT_TRUE(results.configured == 0 || results.configured == -1) << first;
    EXPECT_EQ(results.initialized, kOk) << first;
    EXPECT_TRUE(results.event == kOk || results.event == kNoMemory) << first;
    EXPECT_TRUE(results.filtered == kOk || results.filtered == kNoMemory) << first;
    for (const std::uint32_t status : results.written)
        EXPECT_TRUE(status == kOk || status == kNoMemory) << first << ": " << status;
    EXPECT_TRUE(results.configuredAgain == 0 || results.configuredAgain == -1) << first;
    EXPECT_TRUE(results.reset == 0 || results.reset == -1) << first;
}

TEST(MemoryOfTheAdapter, RefusedInAnyCall_GivesADocumentedStatusAndLeavesItUsable) {
    long first = 0;
    for (bool again = true; again && first < 20'000; ++first) {
        ASSERT_EQ(virtualReset(), 0);
        ReceiveEvent event;
        Results results;
        {
            const FailingMemory failing(first);
            results = useAdapter(event);
        }
        again = failed;
        expectDocumented(results, first);
        ASSERT_EQ(virtualReset(), 0) << first;
        ASSERT_EQ(CAN_Initialize(kUsb, kMegabit, 0, 0, 0), kOk) << first;
        virtualHoldStream(0, 1);
        CAN_Reset(kUsb);
        ASSERT_EQ(ask({0x2B}), (Data{0x44, 0, 0, 4, 0, 0})) << first;
    }
    EXPECT_GT(first, 20) << "how many allocations there are";
    EXPECT_FALSE(failed) << "the last round had all the memory it wanted";
}

}  // namespace
}  // namespace virtual_test
