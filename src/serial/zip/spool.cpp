#include "serial/zip/spool.h"

#include "platform/temporary.h"

#include <algorithm>

namespace ODF::archive {

namespace {
constexpr std::size_t kMaxInMemory = std::size_t{4} << 20;
} // namespace

bool Spool::write(std::span<const unsigned char> bytes) {
    if (!file_.isOpen() && bytes.size() <= kMaxInMemory - std::min(memory_.size(), kMaxInMemory)) {
        memory_.insert(memory_.end(), bytes.begin(), bytes.end());
        size_ += bytes.size();
        return true;
    }
    if (!file_.isOpen()) {
        if (!file_.createNameless() || !file_.write(memory_.data(), memory_.size())) return fail();
        memory_ = {};
    }
    if (!file_.writeAt(size_, bytes.data(), bytes.size())) return fail();
    size_ += bytes.size();
    return true;
}

bool Spool::fail() {
    fault_ = "can't write in " + platform::TemporaryDirectoryName() + ": " + platform::LastFault();
    return false;
}

bool Spool::read(std::uint64_t offset, std::span<unsigned char> target) const {
    if (offset > size_ || target.size() > size_ - offset) return false;
    if (file_.isOpen())
        return file_.readAt(offset, target.data(), target.size()) ==
               static_cast<std::ptrdiff_t>(target.size());
    std::copy_n(memory_.begin() + static_cast<std::ptrdiff_t>(offset), target.size(), target.begin());
    return true;
}

void Spool::cutTo(std::uint64_t size) noexcept {
    size_ = std::min(size_, size);
    if (!file_.isOpen()) memory_.resize(static_cast<std::size_t>(size_));
}

} // namespace ODF::archive
