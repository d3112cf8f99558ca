#pragma once

#include "platform/files.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ODF::archive {

/// Keeps the members of an archive that is being written, already packed, until it is finished: in memory
/// while they are few, then in a temporary file without a name.
class Spool {
public:
    std::uint64_t size() const noexcept { return size_; }
    /// Appends; false when there is no room.
    bool write(std::span<const unsigned char> bytes);
    /// Exactly as many bytes as `target` has; false when they can't be had.
    bool read(std::uint64_t offset, std::span<unsigned char> target) const;
    /// Forgets everything after `size`.
    void cutTo(std::uint64_t size) noexcept;
    /// Why a write has failed; empty when none has.
    const std::string& fault() const noexcept { return fault_; }

private:
    bool fail();

    std::vector<unsigned char> memory_;
    platform::OutputFile file_;
    std::uint64_t size_ = 0;
    std::string fault_;
};

} // namespace ODF::archive
