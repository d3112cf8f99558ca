#pragma once

#include <odfmodel/document/open_document.h>

#include <new>
#include <stdexcept>

namespace ODF {

/// Runs `work()`, which returns a result. A failed allocation is one too.
template<typename Work>
Result Guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {    // NOLINT(bugprone-empty-catch): the status tells
    } catch (const std::length_error&) { // NOLINT(bugprone-empty-catch)
    }
    return Result(Status::OutOfMemory);
}

} // namespace ODF
