#pragma once

#include <cstddef>

namespace test {

/// Lets the allocation after the next `count` ones of this thread fail, and with `isForGood` all that follow
/// it, for the life of the object. Both `new` and `malloc` count, so that C libraries are met too.
class FailingAllocations {
public:
    explicit FailingAllocations(long count, bool isForGood = false) noexcept;
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
    ~FailingAllocations();

    /// Whether there were that many.
    static bool hasFailed() noexcept;
};

/// False where a sanitizer has an allocator of its own, in whose way nothing can be put.
bool CanFailAllocations() noexcept;

/// Allocations of all threads that were not given back yet, but for those from before the program's own
/// allocator was in place; 0 under a sanitizer.
long OutstandingAllocations() noexcept;

} // namespace test
