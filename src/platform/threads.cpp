#include "platform/threads.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace ODF::platform {

unsigned Processors() noexcept {
    constexpr unsigned kMaxThreads = 8;
    return std::clamp(std::thread::hardware_concurrency(), 1U, kMaxThreads);
}

void OnThreads(std::size_t count, const std::function<void(bool isCaller)>& work) {
    std::vector<std::jthread> threads;
    threads.reserve(count);
    try {
        while (threads.size() + 1 < count)
            threads.emplace_back([&work] { work(false); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): fewer will do
    }
    work(true);
}

} // namespace ODF::platform
