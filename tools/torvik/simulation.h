#pragma once

#include <string>

namespace torvik::tool {

/// Loads the virtual adapter, which the TORVIK library then finds in the place of an adapter's library. Must come
/// before the first activation of the process.
///   benchFile  describes the simulated amplifiers; empty: the virtual adapter's default
/// Throws Failure.
void loadVirtualAdapter(const std::string& benchFile);

}  // namespace torvik::tool
