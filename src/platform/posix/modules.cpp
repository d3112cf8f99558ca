#include "platform/modules.h"

#include "platform/posix/system_call.h"

#include <dlfcn.h>

namespace ODF::platform {

Module& Module::operator=(Module&& other) noexcept {
    if (this != &other) {
        unload();
        handle_ = std::exchange(other.handle_, nullptr);
        error_ = std::move(other.error_);
    }
    return *this;
}

bool Module::load(const Path& path) {
    unload();
    error_.clear();
    // An empty name would give the running program itself.
    if (path.empty() || *posix::Native(path) == '\0') {
        error_ = "no module name";
        return false;
    }
    handle_ = dlopen(posix::Native(path), RTLD_NOW | RTLD_LOCAL);
    if (!handle_) {
        const char* const text =
            dlerror(); // NOLINT(concurrency-mt-unsafe): a thread's own in the C library used here
        error_ = text ? text : "unknown fault";
    }
    return isLoaded();
}

void Module::unload() noexcept {
    if (handle_) dlclose(std::exchange(handle_, nullptr));
}

void* Module::symbol(const char* name) const noexcept {
    return handle_ ? dlsym(handle_, name) : nullptr;
}

} // namespace ODF::platform
