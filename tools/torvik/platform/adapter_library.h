#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace torvik::tool::platform {

/// The name under which the TORVIK library looks for the adapter's library.
std::string_view adapterLibraryName();

/// The folder in which this program stands.
std::filesystem::path executableFolder();

/// Sets a variable of this process's environment, as libraries loaded afterwards see it.
void setEnvironment(const std::string& name, const std::string& value);

/// Loads a library and keeps it until the process ends.
class ResidentLibrary {
  public:
    /// Throws std::runtime_error with the system's reason.
    explicit ResidentLibrary(const std::filesystem::path& path);

    /// Null when the library has no such function.
    template <typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

  private:
    using AnyFunction = void();
    AnyFunction* symbol(const char* name) const;

    void* handle_;
};

}  // namespace torvik::tool::platform
