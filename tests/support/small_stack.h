#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace test {

/// Runs `work` on a thread with a stack of 1 MiB, where a recursion over a deep tree would end the process.
inline void OnSmallStack(const std::function<void()>& work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 20);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace test
