#pragma once

#include "serial/zip/archive.h"
#include "serial/zip/byte_buffer.h"
#include "serial/zip/inflate.h"

#include <functional>
#include <span>

namespace ODF::archive {

/// How reading a member ended.
enum class ReadResult {
    Ok,
    Damaged,       ///< what could be decoded was delivered
    NotRead,       ///< the system failed to read the file; what came before was delivered
    WrongKey,      ///< an encrypted member that the password doesn't open, or whose bytes are damaged
    BadEncryption, ///< what the manifest says of its encryption fits no member
    Unsupported,   ///< a compression or encryption that isn't known
    TooLarge,      ///< stopped at a limit of size or of work
    Refused,       ///< the receiver of the bytes gave up
};

/// A short text for a note.
const char* ToText(ReadResult result) noexcept;

/// The bytes of a member as they are in the archive, piece by piece.
class StoredBytes {
public:
    StoredBytes(const CSDZipHandle& handle, std::int64_t index);

    bool isOpen() const noexcept { return file_ != nullptr; }
    /// Fewer than asked for only at the end or on damage.
    std::size_t read(std::span<unsigned char> buffer) noexcept;
    /// How the reading has gone so far: `Ok`, `Damaged` or `NotRead`.
    ReadResult result() const noexcept { return result_; }

private:
    std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file_{nullptr, zip_fclose};
    ReadResult result_ = ReadResult::Ok;
};

/// Delivers a member's plain bytes piece by piece, decrypted and inflated. Checks size and checksum at its
/// end.
class MemberStream {
public:
    MemberStream(const CSDZipHandle& handle, std::int64_t index, std::uint64_t mostBytes);

    /// The next bytes; 0 at the end, when `result` tells how it was.
    std::size_t read(std::span<unsigned char> buffer);
    ReadResult result() const noexcept { return result_; }

private:
    void openEncrypted(const CSDZipHandle& handle, std::int64_t index);
    std::size_t readStored(std::span<unsigned char> buffer);
    std::size_t readInflated(std::span<unsigned char> buffer);
    void finish();

    const Member* member_;
    std::uint64_t mostBytes_;
    std::unique_ptr<StoredBytes> stored_;
    std::unique_ptr<Inflater> inflater_;
    std::vector<unsigned char> buffer_;
    std::span<const unsigned char> pending_; // bytes of buffer_ that are still to be inflated
    std::uint64_t delivered_ = 0;
    std::uint32_t crc_ = 0;
    bool isEnded_ = false;
    ReadResult result_ = ReadResult::Ok;
};

/// Reads whole members, the fast way where their size allows it. Holds its buffers, so one object serves many
/// members.
class MemberReader {
public:
    explicit MemberReader(const CSDZipHandle& handle) : handle_(handle) {}

    using Receiver = std::function<bool(std::span<const unsigned char>)>;
    /// Hands all plain bytes of the member to `receive`, in one or more pieces, until it gives false.
    ReadResult read(std::int64_t index, std::uint64_t mostBytes, const Receiver& receive);

private:
    bool readFast(const Member& member, std::int64_t index, const Receiver& receive, ReadResult& result);

    const CSDZipHandle& handle_;
    WholeInflater inflater_;
    ByteBuffer stored_;
    ByteBuffer plain_;
};

/// The stored bytes of a member whole, with zip's own compression undone; for encrypted members. Nothing when
/// they can't be read or are more than `mostBytes`.
ReadResult ReadCiphertext(const CSDZipHandle& handle, std::int64_t index, std::uint64_t mostBytes,
                          std::vector<unsigned char>& bytes);

} // namespace ODF::archive
