#pragma once

#include "platform/path.h"

#include <string>
#include <utility>

namespace ODF::platform {

/// A loaded module; unloaded at the end of the object's life.
class Module {
public:
    Module() noexcept = default;
    /// Takes a handle over, as `release` gave it.
    explicit Module(void* handle) noexcept : handle_(handle) {}
    Module(Module&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Module& operator=(Module&& other) noexcept;
    ~Module() { unload(); }

    /// Loads the module at `path`, or by its bare name along the system's own search path; all its symbols
    /// are bound at once. On failure the object is empty and `error` tells why.
    bool load(const Path& path);
    void unload() noexcept;
    bool isLoaded() const noexcept { return handle_ != nullptr; }
    void* handle() const noexcept { return handle_; }
    /// Hands the handle to the caller, who unloads it.
    void* release() noexcept { return std::exchange(handle_, nullptr); }

    /// The address of an exported symbol, or null.
    void* symbol(const char* name) const noexcept;
    /// The same as a function of type `Function`, such as `void (*)(int)`.
    template<typename Function>
    Function function(const char* name) const noexcept {
        return reinterpret_cast<Function>(symbol(name));
    }

    const std::string& error() const noexcept { return error_; }

private:
    void* handle_ = nullptr;
    std::string error_;
};

} // namespace ODF::platform
