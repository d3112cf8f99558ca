#include "serial/zip/directory_check.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace ODF::archive {

namespace {

constexpr std::size_t kEndSize = 22;
constexpr std::size_t kMaxComment = 65535;
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kHeaderSize = 30;
constexpr std::uint32_t kEndMark = 0x06054B50;
constexpr std::uint32_t kEntryMark = 0x02014B50;
constexpr std::uint32_t kHeaderMark = 0x04034B50;
// Archives with large numbers have a second end record before the first, and a pointer to it between both.
constexpr std::size_t kLocatorSize = 20;
constexpr std::size_t kLargeEndSize = 56;
constexpr std::uint32_t kLocatorMark = 0x07064B50;
constexpr std::uint32_t kLargeEndMark = 0x06064B50;
constexpr std::uint16_t kLargeNumbers = 1;       // the extra field that holds them
constexpr std::uint32_t kElsewhere = 0xFFFFFFFF; // the number is in a longer record
constexpr unsigned kSizesFollow = 1U << 3U;

using Bytes = std::span<const unsigned char>;

std::uint16_t Number16(Bytes bytes, std::size_t offset) noexcept {
    return static_cast<std::uint16_t>(bytes[offset] | unsigned{bytes[offset + 1]} << 8U);
}
std::uint32_t Number32(Bytes bytes, std::size_t offset) noexcept {
    return Number16(bytes, offset) | std::uint32_t{Number16(bytes, offset + 2)} << 16U;
}
std::uint64_t Number64(Bytes bytes, std::size_t offset) noexcept {
    return Number32(bytes, offset) | std::uint64_t{Number32(bytes, offset + 4)} << 32U;
}
std::string_view Text(Bytes bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A larger directory is left to libzip alone.
constexpr std::uint64_t kMaxChecked = std::uint64_t{64} << 20;

struct ArchiveLayout {
    std::uint64_t start = 0;
    std::uint64_t directory = 0; ///< from `start` on
    std::uint64_t directorySize = 0;
    bool isKnown = false; ///< false for what has no end record that makes sense
};

/// One member as the directory tells of it.
struct Entry {
    std::string_view name;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::uint64_t offset = 0;
};

/// Replaces the numbers that are in the extra field of large ones, in the order in which they are there.
void TakeLargeNumbers(Bytes extra, std::initializer_list<std::uint64_t*> numbers) noexcept {
    while (extra.size() >= 4) {
        const std::size_t size = Number16(extra, 2);
        if (size > extra.size() - 4) return;
        Bytes field = extra.subspan(4, size);
        if (Number16(extra, 0) == kLargeNumbers)
            for (std::uint64_t* const number : numbers) {
                if (*number != kElsewhere) continue;
                if (field.size() < 8) return;
                *number = Number64(field, 0);
                field = field.subspan(8);
            }
        extra = extra.subspan(4 + size);
    }
}

std::vector<Entry> ReadEntries(Bytes directory) {
    std::vector<Entry> entries;
    while (directory.size() >= kEntrySize && Number32(directory, 0) == kEntryMark) {
        const std::size_t nameSize = Number16(directory, 28);
        const std::size_t extraSize = Number16(directory, 30);
        const std::size_t whole = kEntrySize + nameSize + extraSize + Number16(directory, 32);
        if (whole > directory.size()) break;
        Entry& entry = entries.emplace_back(Entry{Text(directory.subspan(kEntrySize, nameSize)),
                                                  Number16(directory, 8), Number16(directory, 10),
                                                  Number32(directory, 16), Number32(directory, 20),
                                                  Number32(directory, 24), Number32(directory, 42)});
        TakeLargeNumbers(directory.subspan(kEntrySize + nameSize, extraSize),
                         {&entry.size, &entry.packedSize, &entry.offset});
        directory = directory.subspan(whole);
    }
    return entries;
}

/// Whether the header before the data says the same as the directory. `extra` is its extra field, as
/// far as it was read.
bool Agrees(const Entry& entry, Bytes header, std::string_view name, Bytes extra) noexcept {
    if (Number32(header, 0) != kHeaderMark || name != entry.name || Number16(header, 8) != entry.method)
        return false;
    if ((Number16(header, 6) & kSizesFollow) != 0) return true;
    std::uint64_t packedSize = Number32(header, 18);
    std::uint64_t size = Number32(header, 22);
    TakeLargeNumbers(extra, {&size, &packedSize});
    return Number32(header, 14) == entry.crc && packedSize == entry.packedSize && size == entry.size;
}

/// Takes the numbers of the end record for large archives, if there is one before the plain record at
/// `directoryEnd`, which moves to its place.
void FindLargeEnd(const ReadBytes& read, ArchiveLayout& layout, std::uint64_t& directoryEnd) {
    std::array<unsigned char, kLocatorSize> locator{};
    std::array<unsigned char, kLargeEndSize> end{};
    if (directoryEnd < kLocatorSize + kLargeEndSize) return;
    const std::uint64_t locatorStart = directoryEnd - kLocatorSize;
    if (!read(locatorStart, locator) || Number32(locator, 0) != kLocatorMark) return;
    // It is right before its locator, or, with data of its own, where that says.
    for (const std::uint64_t place : {locatorStart - kLargeEndSize, Number64(locator, 8)}) {
        if (place > locatorStart - kLargeEndSize || !read(place, end) || Number32(end, 0) != kLargeEndMark)
            continue;
        layout.directorySize = Number64(end, 40);
        layout.directory = Number64(end, 48);
        directoryEnd = place;
        return;
    }
}

ArchiveLayout FindLayout(const ReadBytes& read, std::uint64_t byteCount) {
    ArchiveLayout layout;
    if (byteCount < kEndSize) return layout;
    // A comment may follow the end record, but few archives have one.
    for (const std::uint64_t reach : {std::uint64_t{1024}, std::uint64_t{kEndSize + kMaxComment}}) {
        std::vector<unsigned char> tail(static_cast<std::size_t>(std::min(reach, byteCount)));
        const std::uint64_t tailStart = byteCount - tail.size();
        if (!read(tailStart, tail)) return layout;
        for (std::size_t place = tail.size() - kEndSize + 1; place-- > 0;) {
            const Bytes end = Bytes(tail).subspan(place);
            if (Number32(end, 0) != kEndMark || Number16(end, 20) != end.size() - kEndSize) continue;
            const std::uint64_t offset = tailStart + place;
            layout.directorySize = Number32(end, 12);
            layout.directory = Number32(end, 16);
            std::uint64_t directoryEnd = offset;
            FindLargeEnd(read, layout, directoryEnd);
            if (layout.directorySize < kEntrySize || layout.directorySize > directoryEnd ||
                layout.directory > directoryEnd - layout.directorySize)
                return layout;
            // The directory ends where the end record begins, whatever was put before the archive.
            std::array<unsigned char, 4> mark{};
            const std::uint64_t directory = directoryEnd - layout.directorySize;
            if (!read(directory, mark) || Number32(mark, 0) != kEntryMark) return layout;
            layout.start = directory - layout.directory;
            layout.isKnown = true;
            return layout;
        }
    }
    return layout;
}

void NoteContradictions(const ReadBytes& read, const ArchiveLayout& layout, const NoteSink& notes) {
    if (layout.directorySize > kMaxChecked) return;
    std::vector<unsigned char> directory(static_cast<std::size_t>(layout.directorySize));
    if (!read(layout.start + layout.directory, directory)) return;
    std::vector<Entry> entries = ReadEntries(directory);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.offset < b.offset; });
    const auto note = [&](const Entry& entry, std::string_view text) {
        notes.add(NoteCode::Ambiguous, Severity::Warning, entry.name, text);
    };
    std::uint64_t end = 0; // of all members so far
    std::vector<unsigned char> header;
    std::vector<unsigned char> extra;
    for (const Entry& entry : entries) {
        if (entry.offset < end) note(entry, "the member shares bytes with another one");
        header.resize(kHeaderSize + entry.name.size());
        const bool isThere = entry.offset <= layout.directory &&
                             header.size() <= layout.directory - entry.offset &&
                             read(layout.start + entry.offset, header);
        const std::uint64_t room =
            isThere ? std::uint64_t{Number16(header, 26)} + Number16(header, 28) : entry.name.size();
        extra.clear();
        if (isThere && (Number32(header, 18) == kElsewhere || Number32(header, 22) == kElsewhere)) {
            extra.resize(Number16(header, 28));
            if (!read(layout.start + entry.offset + kHeaderSize + Number16(header, 26), extra)) extra.clear();
        }
        if (!isThere || !Agrees(entry, header, Text(Bytes(header).subspan(kHeaderSize)), extra))
            note(entry, "the member's own header disagrees with the directory, which is followed");
        const std::uint64_t left = layout.directory - std::min(layout.directory, entry.offset);
        const bool isInside = kHeaderSize + room <= left && entry.packedSize <= left - kHeaderSize - room;
        if (!isInside) note(entry, "the member reaches into the directory");
        end =
            isInside ? std::max(end, entry.offset + kHeaderSize + room + entry.packedSize) : layout.directory;
    }
}

} // namespace

std::uint64_t CheckDirectory(const ReadBytes& read, std::uint64_t byteCount, const NoteSink& notes) {
    const ArchiveLayout layout = FindLayout(read, byteCount);
    if (!layout.isKnown) {
        if (layout.directorySize >= kEntrySize)
            notes.add(NoteCode::Ambiguous, Severity::Warning, {},
                      "the end record doesn't lead to the directory");
        return 0;
    }
    if (layout.start > 0)
        notes.add(NoteCode::Ambiguous, Severity::Warning, {},
                  "something lies before the archive; the last archive of the file is read");
    if (notes.diagnostics) NoteContradictions(read, layout, notes);
    return layout.start;
}

} // namespace ODF::archive
