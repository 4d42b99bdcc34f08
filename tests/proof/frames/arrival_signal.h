// How an adapter tells the library that frames have arrived; this differs between the systems.
#pragma once

#include <cstdint>

namespace torvik::proof {

class ArrivalSignal {
  public:
    ArrivalSignal();
    ~ArrivalSignal();
    ArrivalSignal(const ArrivalSignal&) = delete;
    ArrivalSignal& operator=(const ArrivalSignal&) = delete;

    // Linux: the descriptor that the library waits on. Windows: -1.
    int descriptor() const { return descriptor_; }
    // Windows: the event that the library waits on. Linux: ignored.
    void useEvent(std::uint64_t handle);

    void give();
    // The queue has been found empty.
    void clear();

  private:
    int descriptor_ = -1;
};

}  // namespace torvik::proof
