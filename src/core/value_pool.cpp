#include "core/value_pool.h"

#include <chrono>
#include <cstring>

namespace ODF {
namespace {

/// Equality of UTF-8 and UTF-16 where the UTF-8 is ASCII; anything else counts as unequal.
bool EqualAscii(std::string_view utf8, std::u16string_view text) noexcept {
    if (utf8.size() != text.size()) return false;
    for (std::size_t i = 0; i < utf8.size(); ++i)
        if (static_cast<unsigned char>(utf8[i]) != text[i]) return false;
    return true;
}

} // namespace

std::uint64_t HashSeed() noexcept {
    const auto ticks =
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    const std::uint64_t place = reinterpret_cast<std::uintptr_t>(&ticks); // differs from process to process
    return HashBytes({reinterpret_cast<const char*>(&ticks), sizeof ticks}, place);
}

std::uint64_t HashBytes(std::string_view bytes, std::uint64_t seed) noexcept {
    constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ULL;
    std::uint64_t hash = seed ^ (bytes.size() * kMultiplier);
    const char* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= 8; left -= 8, at += 8) {
        std::uint64_t block = 0;
        std::memcpy(&block, at, 8);
        hash = (hash ^ block) * kMultiplier;
        hash ^= hash >> 29;
    }
    if (left > 0) {
        std::uint64_t block = 0;
        std::memcpy(&block, at, left);
        hash = (hash ^ block) * kMultiplier;
    }
    return hash ^ (hash >> 32);
}

ValuePool::ValuePool() : seed_(HashSeed()), entries_(256) {}

CTulStringW ValuePool::get(std::string_view utf8) {
    if (utf8.empty()) return {};
    if (utf8.size() > kMaxBytes) return CTulStringW(utf8);
    const std::uint64_t hash = HashBytes(utf8, seed_);
    for (std::size_t at = hash & (entries_.size() - 1);; at = (at + 1) & (entries_.size() - 1)) {
        Entry& entry = entries_[at];
        if (entry.bytes == 0) {
            CTulStringW value(utf8);
            if (used_ >= kMaxEntries || value.GetLength() != utf8.size()) return value;
            entry = Entry{hash, value, static_cast<std::uint32_t>(utf8.size())};
            if (++used_ * 2 > entries_.size()) grow();
            return value;
        }
        if (entry.hash == hash && EqualAscii(utf8, entry.value.view())) return entry.value;
    }
}

void ValuePool::grow() {
    std::vector<Entry> larger(entries_.size() * 2);
    for (Entry& entry : entries_) {
        if (entry.bytes == 0) continue;
        std::size_t at = entry.hash & (larger.size() - 1);
        while (larger[at].bytes != 0)
            at = (at + 1) & (larger.size() - 1);
        larger[at] = std::move(entry);
    }
    entries_ = std::move(larger);
}

} // namespace ODF
