#include "core/value_pool.h"

#include <chrono>
#include <cstring>

namespace ODF {
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
    // The low bits of a product know nothing of the high ones of what is multiplied, which the last bytes are
    // in: without another round numbered names would gather in a few long stretches of a table.
    hash = (hash ^ (hash >> 32)) * kMultiplier;
    return hash ^ (hash >> 32);
}

ValuePool::ValuePool() : seed_(HashSeed()), entries_(256) {}

CTulStringW ValuePool::get(std::string_view utf8, Usage& usage) {
    if (utf8.empty()) return {};
    // Now and then a value is looked up nevertheless: the second half of a document may be another matter.
    constexpr std::uint32_t kTrial = 1024;
    const bool isVaried = ++usage.asked > kTrial && usage.found < usage.asked / 8 && usage.asked % 16 != 0;
    if (utf8.size() > kMaxBytes || isVaried) return CTulStringW(utf8);
    const std::uint64_t hash = HashBytes(utf8, seed_);
    for (std::size_t at = hash & (entries_.size() - 1);; at = (at + 1) & (entries_.size() - 1)) {
        Entry& entry = entries_[at];
        if (entry.byteCount == 0) {
            CTulStringW value(utf8);
            if (used_ >= kMaxEntries) return value;
            entry = Entry{static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(utf8.size()),
                          bytes_.size(), value};
            bytes_.append(utf8);
            if (++used_ * 2 > entries_.size()) grow();
            return value;
        }
        if (entry.hash == static_cast<std::uint32_t>(hash) && entry.byteCount == utf8.size() &&
            std::memcmp(bytes_.data() + entry.firstByte, utf8.data(), utf8.size()) == 0) {
            ++usage.found;
            return entry.value;
        }
    }
}

void ValuePool::grow() {
    std::vector<Entry> larger(entries_.size() * 2);
    for (Entry& entry : entries_) {
        if (entry.byteCount == 0) continue;
        std::size_t at = entry.hash & (larger.size() - 1);
        while (larger[at].byteCount != 0)
            at = (at + 1) & (larger.size() - 1);
        larger[at] = std::move(entry);
    }
    entries_ = std::move(larger);
}

} // namespace ODF
