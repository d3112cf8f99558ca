#pragma once

#include <cstddef>
#include <functional>

namespace ODF::platform {

/// The processors that one piece of work should use. Beyond eight, threads only wait for each other's memory.
unsigned Processors() noexcept;

/// Runs `work` on up to `count` threads at once, the calling one among them (`isCaller`),
/// and waits for all of them. The calling one does everything where no other thread can be had, so each has
/// to take pieces until none is left. `work` may throw on the calling thread alone.
void OnThreads(std::size_t count, const std::function<void(bool isCaller)>& work);

} // namespace ODF::platform
