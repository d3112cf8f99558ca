#include "serial/zip/packer.h"

#include "serial/zip/extraction.h"
#include "serial/zip/inflate.h"
#include "serial/zip/member_stream.h"

#include <vector>

namespace ODF::archive {

namespace {

/// Up to here a file is deflated in one go, which is twice as fast as in pieces.
constexpr std::uint64_t kLargestWhole = std::uint64_t{128} << 20;
constexpr std::size_t kPieceSize = std::size_t{1} << 18;

} // namespace

bool Packer::packBytes(PackedMember& member, std::span<const unsigned char> bytes, bool isStored) {
    member.size = bytes.size();
    member.crc = Crc32(0, bytes);
    const std::span<const unsigned char> deflated =
        isStored ? std::span<const unsigned char>() : deflater_.deflate(bytes);
    if (deflated.empty()) return spool_.write(bytes);
    member.method = ZIP_CM_DEFLATE;
    return spool_.write(deflated);
}

bool Packer::packFile(PackedMember& member, const platform::Path& path, bool isStored) {
    const platform::InputFile file(path);
    if (!file.isOpen()) return false;
    std::vector<unsigned char> buffer;
    if (file.size() <= kLargestWhole && !isStored) {
        buffer.resize(static_cast<std::size_t>(file.size()));
        const std::ptrdiff_t count = file.readAt(0, buffer.data(), buffer.size());
        return count >= 0 && packBytes(member, {buffer.data(), static_cast<std::size_t>(count)}, false);
    }
    buffer.resize(kPieceSize);
    Deflater pieces([&](std::span<const unsigned char> deflated) { return spool_.write(deflated); });
    if (!isStored) member.method = ZIP_CM_DEFLATE;
    for (;;) {
        const std::ptrdiff_t count = file.readAt(member.size, buffer.data(), buffer.size());
        if (count < 0) return false;
        if (count == 0) return isStored || pieces.finish();
        const std::span<const unsigned char> piece(buffer.data(), static_cast<std::size_t>(count));
        member.size += piece.size();
        member.crc = Crc32(member.crc, piece);
        if (isStored ? !spool_.write(piece) : !pieces.add(piece)) return false;
    }
}

bool Packer::packMember(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes) {
    const Member* const original = source.member(index);
    if (!original || !original->isReadable()) return false;
    member.time = ToDosTime(original->time);
    return original->encryption ? packPlain(member, source, index, notes)
                                : packCopy(member, source, index, notes);
}

bool Packer::packCopy(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes) {
    const Member& original = *source.member(index);
    StoredBytes bytes(source, index);
    if (!bytes.isOpen()) return false;
    std::vector<unsigned char> buffer(kPieceSize);
    std::uint64_t total = 0;
    std::uint32_t crc = 0;
    for (std::size_t count = bytes.read(buffer); count > 0; count = bytes.read(buffer)) {
        const std::span<const unsigned char> piece(buffer.data(), count);
        if (original.method == ZIP_CM_STORE) crc = Crc32(crc, piece);
        total += count;
        if (!spool_.write(piece)) return false;
    }
    if (total != original.packedSize) return false;
    // libzip counts the checksum of stored bytes anew, so a wrong one would be lost without this note.
    if (original.method == ZIP_CM_STORE && crc != original.crc)
        NoteResult(ReadResult::Damaged, original, notes);
    member.size = original.size;
    member.crc = original.crc;
    member.method = original.method;
    return true;
}

bool Packer::packPlain(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes) {
    const Member& original = *source.member(index);
    std::vector<unsigned char> plain;
    const ReadResult result =
        MemberReader(source).read(index, Limits().memberBytes, [&](std::span<const unsigned char> piece) {
            plain.insert(plain.end(), piece.begin(), piece.end());
            return true;
        });
    NoteResult(result, original, notes);
    return result == ReadResult::Ok && packBytes(member, plain, false);
}

} // namespace ODF::archive
