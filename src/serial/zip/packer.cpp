#include "serial/zip/packer.h"

#include "serial/zip/extraction.h"
#include "serial/zip/inflate.h"
#include "serial/zip/member_stream.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace ODF::archive {

namespace {

constexpr std::size_t kCopySize = std::size_t{1} << 18;

} // namespace

PackedBytes CopyOfPacked(const CSDZipHandle& source, std::int64_t index, const NoteSink& notes) {
    struct Copy {
        std::unique_ptr<StoredBytes> bytes;
        std::uint32_t crc = 0;
    };
    return [&source, index, notes, copy = std::make_shared<Copy>()](std::uint64_t offset,
                                                                    std::span<unsigned char> target) {
        const Member& original = *source.member(index);
        if (offset == 0) *copy = {std::make_unique<StoredBytes>(source, index), 0};
        if (!copy->bytes->isOpen() || copy->bytes->read(target) != target.size()) return false;
        if (original.method != ZIP_CM_STORE) return true;
        copy->crc = Crc32(copy->crc, target);
        if (offset + target.size() == original.packedSize && copy->crc != original.crc)
            NoteResult(ReadResult::Damaged, original, notes);
        return true;
    };
}

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
    std::vector<unsigned char> buffer(static_cast<std::size_t>(
        std::min<std::uint64_t>(isStored ? kCopySize : deflater_.stepBytes(), file.size() + 1)));
    const auto receive = [&](std::span<const unsigned char> deflated) { return spool_.write(deflated); };
    for (bool isFirst = true;; isFirst = false) {
        const std::ptrdiff_t count = file.readAt(member.size, buffer.data(), buffer.size());
        if (count < 0) return false;
        const std::span<const unsigned char> piece(buffer.data(), static_cast<std::size_t>(count));
        const bool isLast = piece.size() < buffer.size();
        if (isFirst && isLast && !isStored) return packBytes(member, piece, false);
        member.size += piece.size();
        member.crc = Crc32(member.crc, piece);
        if (!isStored) member.method = ZIP_CM_DEFLATE;
        if (isStored ? !spool_.write(piece) : !deflater_.add(piece, isLast, receive)) return false;
        if (isLast) return true;
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
    const PackedBytes bytes = CopyOfPacked(source, index, notes);
    std::vector<unsigned char> buffer(kCopySize);
    for (std::uint64_t done = 0; done < original.packedSize;) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), original.packedSize - done));
        const std::span<unsigned char> piece = std::span(buffer).first(count);
        if (!bytes(done, piece) || !spool_.write(piece)) return false;
        done += count;
    }
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
