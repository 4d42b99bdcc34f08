#pragma once

namespace torvik::tool::platform {

/// Readable as soon as the end is requested; -1 while nothing watches for it.
int wakeDescriptor();

}  // namespace torvik::tool::platform
