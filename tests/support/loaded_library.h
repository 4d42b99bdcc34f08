// A shared library that a test loads and unloads itself.
#pragma once

namespace torvik::test {

class LoadedLibrary {
  public:
    // By path.
    explicit LoadedLibrary(const char* path);
    ~LoadedLibrary();
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    bool loaded() const { return handle_ != nullptr; }

    template <class Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

    // Whether the library is in the process's memory, whoever loaded it.
    static bool present(const char* path);

  private:
    using Address = void (*)();
    Address address(const char* name) const;

    void* handle_;
};

}  // namespace torvik::test
