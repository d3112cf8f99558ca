#include "serial/zip/member_stream.h"

#include <algorithm>

namespace ODF::archive {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 16;
/// Up to here a member is inflated in one go, beyond it in pieces.
constexpr std::uint64_t kMaxWhole = std::uint64_t{128} << 20;

bool IsKnownMethod(std::uint16_t method) noexcept {
    return method == ZIP_CM_STORE || method == ZIP_CM_DEFLATE;
}

/// What libzip's error says: of the file or of what is in it.
ReadResult Fault(const zip_error_t* error) noexcept {
    return zip_error_code_zip(error) == ZIP_ER_READ ? ReadResult::NotRead : ReadResult::Damaged;
}

} // namespace

const char* ToText(ReadResult result) noexcept {
    switch (result) {
    case ReadResult::Ok:
        return "sound";
    case ReadResult::Damaged:
        return "the data is damaged";
    case ReadResult::NotRead:
        return "the system failed to read the file";
    case ReadResult::BadEncryption:
        return "what the manifest says of the encryption doesn't fit the data";
    case ReadResult::WrongKey:
        return "can't be decrypted: the data is damaged or has another password";
    case ReadResult::Unsupported:
        return "a compression or encryption that isn't known";
    case ReadResult::TooLarge:
        return "more than the limits allow";
    case ReadResult::Refused:
        return "the bytes couldn't be passed on";
    }
    return "";
}

StoredBytes::StoredBytes(const CSDZipHandle& handle, std::int64_t index) {
    file_.reset(zip_fopen_index(handle.archive(), static_cast<zip_uint64_t>(index), ZIP_FL_COMPRESSED));
    if (!file_) result_ = Fault(zip_get_error(handle.archive()));
}

std::size_t StoredBytes::read(std::span<unsigned char> buffer) noexcept {
    std::size_t done = 0;
    while (file_ && done < buffer.size()) {
        const zip_int64_t count = zip_fread(file_.get(), buffer.data() + done, buffer.size() - done);
        if (count < 0) result_ = Fault(zip_file_get_error(file_.get()));
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

MemberStream::MemberStream(const CSDZipHandle& handle, std::int64_t index, std::uint64_t mostBytes)
    : member_(handle.member(index)), mostBytes_(mostBytes) {
    if (!member_ || !member_->isReadable() || !IsKnownMethod(member_->method)) {
        result_ = ReadResult::Unsupported;
    } else if (member_->encryption) {
        openEncrypted(handle, index);
    } else {
        stored_ = std::make_unique<StoredBytes>(handle, index);
        if (!stored_->isOpen()) result_ = stored_->result();
        if (member_->method == ZIP_CM_DEFLATE) {
            inflater_ = std::make_unique<Inflater>();
            buffer_.resize(kPieceSize);
        }
    }
    isEnded_ = result_ != ReadResult::Ok;
}

void MemberStream::openEncrypted(const CSDZipHandle& handle, std::int64_t index) {
    result_ = ReadCiphertext(handle, index, mostBytes_, buffer_);
    // A file of no bytes is sometimes left as it is, without even the empty deflate stream.
    if (result_ != ReadResult::Ok || buffer_.empty()) return;
    crypto::PackageDecryption* const decryption = handle.decryption();
    if (!decryption || !decryption->isUsable(*member_->encryption)) {
        const bool isKnown = decryption && member_->encryption->data.isSupported();
        result_ = isKnown ? ReadResult::TooLarge : ReadResult::Unsupported;
        return;
    }
    switch (decryption->decrypt(*member_->encryption, buffer_)) {
    case crypto::DecryptResult::Ok:
        inflater_ = std::make_unique<Inflater>();
        pending_ = buffer_;
        return;
    case crypto::DecryptResult::WrongKey:
        result_ = ReadResult::WrongKey;
        return;
    case crypto::DecryptResult::Damaged:
        result_ = ReadResult::BadEncryption;
        return;
    case crypto::DecryptResult::TooMuchWork:
        result_ = ReadResult::TooLarge;
    }
}

std::size_t MemberStream::read(std::span<unsigned char> buffer) {
    if (isEnded_ || buffer.empty()) return 0;
    // One byte more than allowed tells a member that is too large from one that just fits.
    const std::uint64_t allowed = mostBytes_ - delivered_;
    if (allowed < UINT64_MAX && buffer.size() > allowed + 1)
        buffer = buffer.first(static_cast<std::size_t>(allowed) + 1);
    const std::size_t count = inflater_ ? readInflated(buffer) : readStored(buffer);
    if (count > allowed) {
        isEnded_ = true;
        result_ = ReadResult::TooLarge;
        return static_cast<std::size_t>(allowed);
    }
    crc_ = Crc32(crc_, buffer.first(count));
    delivered_ += count;
    if (count == 0) finish();
    return count;
}

std::size_t MemberStream::readStored(std::span<unsigned char> buffer) {
    return stored_ ? stored_->read(buffer) : 0;
}

std::size_t MemberStream::readInflated(std::span<unsigned char> buffer) {
    std::size_t done = 0;
    while (done < buffer.size() && !inflater_->isEnded() && !inflater_->isDamaged()) {
        if (pending_.empty() && stored_)
            pending_ = std::span<const unsigned char>(buffer_).first(stored_->read(buffer_));
        const bool isStarved = pending_.empty();
        const std::size_t count = inflater_->inflate(pending_, buffer.subspan(done));
        done += count;
        if (isStarved && count == 0) break; // the stored bytes end before the stream does
    }
    return done;
}

void MemberStream::finish() {
    isEnded_ = true;
    const bool isFailed = stored_ && stored_->result() == ReadResult::NotRead;
    const bool isCut = inflater_ ? !inflater_->isEnded() : stored_ && stored_->result() != ReadResult::Ok;
    // The directory's size and checksum of an encrypted member are those of its ciphertext.
    const bool isWrong = member_->encryption ? delivered_ != member_->encryption->size.value_or(delivered_)
                                             : delivered_ != member_->size || crc_ != member_->crc;
    if (isCut || isWrong) result_ = isFailed ? ReadResult::NotRead : ReadResult::Damaged;
}

ReadResult MemberReader::read(std::int64_t index, std::uint64_t mostBytes, const Receiver& receive) {
    const Member* const member = handle_.member(index);
    ReadResult result = ReadResult::Ok;
    if (member && member->isReadable() && !member->encryption &&
        member->size <= std::min(kMaxWhole, mostBytes) && readFast(*member, index, receive, result))
        return result;

    MemberStream stream(handle_, index, mostBytes);
    const std::span<unsigned char> piece = plain_.room(kPieceSize);
    for (;;) {
        const std::size_t count = stream.read(piece);
        if (count > 0 && !receive(piece.first(count))) return ReadResult::Refused;
        if (count == 0) return stream.result();
    }
}

/// False when the slow way must find out what can be had: the directory's claims don't hold.
bool MemberReader::readFast(const Member& member, std::int64_t index, const Receiver& receive,
                            ReadResult& result) {
    const bool isStored = member.method == ZIP_CM_STORE;
    if (member.packedSize > kMaxWhole || (!isStored && member.method != ZIP_CM_DEFLATE) ||
        (isStored ? member.size != member.packedSize : member.size > LargestInflated(member.packedSize)))
        return false;
    StoredBytes source(handle_, index);
    const std::span<unsigned char> stored = stored_.room(static_cast<std::size_t>(member.packedSize));
    if (!source.isOpen() || source.read(stored) != stored.size()) return false;
    std::span<unsigned char> plain = stored;
    if (!isStored) {
        plain = plain_.room(static_cast<std::size_t>(member.size));
        if (!inflater_.inflate(stored, plain)) return false;
    }
    if (Crc32(0, plain) != member.crc) result = ReadResult::Damaged;
    if (!receive(plain)) result = ReadResult::Refused;
    return true;
}

ReadResult ReadCiphertext(const CSDZipHandle& handle, std::int64_t index, std::uint64_t mostBytes,
                          std::vector<unsigned char>& bytes) {
    const Member& member = *handle.member(index);
    StoredBytes source(handle, index);
    if (!source.isOpen()) return source.result();
    std::vector<unsigned char> piece(kPieceSize);
    std::unique_ptr<Inflater> inflater;
    if (member.method == ZIP_CM_DEFLATE) inflater = std::make_unique<Inflater>();
    std::vector<unsigned char> inflated(inflater ? kPieceSize : 0);
    bytes.clear();
    const auto append = [&](std::span<const unsigned char> more) {
        if (more.size() > mostBytes - bytes.size()) return false;
        bytes.insert(bytes.end(), more.begin(), more.end());
        return true;
    };
    for (;;) {
        const std::size_t count = source.read(piece);
        if (count == 0) return source.result();
        std::span<const unsigned char> pending(piece.data(), count);
        if (!inflater) {
            if (!append(pending)) return ReadResult::TooLarge;
            continue;
        }
        for (std::size_t got = 1; got > 0;) {
            got = inflater->inflate(pending, inflated);
            if (!append({inflated.data(), got})) return ReadResult::TooLarge;
        }
        if (inflater->isDamaged()) return ReadResult::Damaged;
        if (inflater->isEnded()) return ReadResult::Ok;
    }
}

} // namespace ODF::archive
