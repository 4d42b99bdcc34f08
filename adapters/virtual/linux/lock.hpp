#pragma once

#include <mutex>

namespace virtual_adapter {

using Lock = std::mutex;

}  // namespace virtual_adapter
