// What a device record owns of the filter designer: an object destroyed together with the device's set-up.
#pragma once

namespace torvik {

class FilterObject {
  public:
    FilterObject() = default;
    FilterObject(const FilterObject&) = delete;
    FilterObject& operator=(const FilterObject&) = delete;
    virtual ~FilterObject() = default;
};

}  // namespace torvik
