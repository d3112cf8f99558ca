#include "faults/failing_allocations.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace {

constinit thread_local long left = -1; // negative while nothing shall fail
constinit thread_local bool staysOut = false;
constinit thread_local bool isOut = false;
constinit std::atomic<long> outstanding = 0;

[[maybe_unused]] bool MayAllocate() noexcept {
    if (left < 0) return true;
    if (left > 0) {
        --left;
        return true;
    }
    isOut = true;
    if (!staysOut) left = -1;
    errno = ENOMEM;
    return false;
}

/// Counts what an allocation gave.
[[maybe_unused]] void* Counted(void* memory) noexcept {
    if (memory) outstanding.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

} // namespace

namespace test {

long OutstandingAllocations() noexcept {
    return outstanding.load(std::memory_order_relaxed);
}

FailingAllocations::FailingAllocations(long count, bool isForGood) noexcept {
    isOut = false;
    staysOut = isForGood;
    left = count;
}
FailingAllocations::~FailingAllocations() {
    left = -1;
}
bool FailingAllocations::hasFailed() noexcept {
    return isOut;
}

#if defined(ODFMODEL_ADDRESS_SANITIZER) || defined(__SANITIZE_THREAD__)

bool CanFailAllocations() noexcept {
    return false;
}

} // namespace test

#else

bool CanFailAllocations() noexcept {
    return true;
}

} // namespace test

// The C library's own names for what is replaced here. Everything allocates by way of these, `new` included.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    return MayAllocate() ? Counted(__libc_malloc(size)) : nullptr;
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    return MayAllocate() ? Counted(__libc_calloc(count, size)) : nullptr;
}
[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) noexcept {
    if (!MayAllocate()) return nullptr;
    if (!memory) return Counted(__libc_realloc(nullptr, size));
    void* const moved = __libc_realloc(memory, size);
    if (size == 0) outstanding.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}
[[gnu::visibility("default")]] void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return MayAllocate() ? Counted(__libc_memalign(alignment, size)) : nullptr;
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}
[[gnu::visibility("default")]] int posix_memalign(void** memory, std::size_t alignment,
                                                  std::size_t size) noexcept {
    *memory = memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
[[gnu::visibility("default")]] void free(void* memory) noexcept {
    if (memory) outstanding.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(memory);
}
}
// NOLINTEND(bugprone-reserved-identifier)

#endif
