// A filter object that tells how often it has been destroyed.
#pragma once

#include "core/filter_object.h"

namespace torvik::test {

class CountedFilter final : public FilterObject {
  public:
    explicit CountedFilter(int& destroyed) : destroyed_(destroyed) {}
    ~CountedFilter() override { ++destroyed_; }

  private:
    int& destroyed_;
};

}  // namespace torvik::test
