// A mutex that another call has.
#pragma once

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "core/library_state.h"

namespace torvik::test {

// Holds the mutex in a thread of its own while it lives.
class HeldElsewhere {
  public:
    explicit HeldElsewhere(platform::TimedMutex& mutex) {
        std::promise<void> held;
        thread_ = std::thread([this, &mutex, &held] {
            EXPECT_TRUE(exclusively(mutex, [this, &held] {
                held.set_value();
                released_.get_future().wait();
            }));
        });
        held.get_future().wait();
    }
    ~HeldElsewhere() {
        released_.set_value();
        thread_.join();
    }
    HeldElsewhere(const HeldElsewhere&) = delete;
    HeldElsewhere& operator=(const HeldElsewhere&) = delete;

  private:
    std::promise<void> released_;
    std::thread thread_;
};

}  // namespace torvik::test
