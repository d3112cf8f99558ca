#pragma once

#include "platform/temporary.h"

#include <odfmodel/platform/memory_mapping.h>

#include <zip.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ODF::archive {

/// Where an archive goes. Bytes may be written at any place; what was written counts only after `finish`.
class Target {
public:
    virtual ~Target() = default;
    virtual bool writeAt(std::uint64_t offset, std::span<const unsigned char> bytes) = 0;
    /// Makes the archive of `size` bytes take effect; false when it couldn't be written whole.
    virtual bool finish(std::uint64_t size) = 0;
    /// What of an old file was lost with it, in English; null for nothing.
    virtual const char* loss() const noexcept { return nullptr; }

protected:
    Target() = default;
    Target(const Target&) = default;
    Target& operator=(const Target&) = default;
};

/// A file, replaced when the archive is complete; a device or pipe gets the finished archive in one go. Null
/// when nothing can be written there.
std::unique_ptr<Target> MakeFileTarget(const platform::Path& path);
/// A caller's memory of fixed size.
std::unique_ptr<Target> MakeMemoryTarget(std::span<unsigned char> buffer);
/// A mapping, by its handle; null when it can't be viewed.
std::unique_ptr<Target> MakeMappingTarget(void* mapping, std::size_t capacity);

/// Memory that grows as far as there is any; what could be written before it ran out is left there.
std::unique_ptr<Target> MakeGrowingTarget(std::vector<unsigned char>& bytes);

/// Lets libzip write to a target, which the caller keeps until the archive is closed.
zip_source_t* MakeTargetSource(Target& target, std::uint64_t& size, zip_error_t* error);

} // namespace ODF::archive
