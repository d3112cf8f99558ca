#pragma once

#include "serial/crypto/encryption_data.h"

#include <array>
#include <functional>
#include <map>
#include <string_view>

namespace ODF::crypto {

/// Decrypts the members of one package with one password. Keys are derived when a member is first asked for,
/// which is the slow part, and kept until the object goes.
class PackageDecryption {
public:
    /// `password` is UTF-8.
    PackageDecryption(ByteView password, const Limits& limits);

    /// Whether the member could be decrypted as far as its row goes.
    bool isUsable(const EncryptedRow& row) const noexcept;
    /// Is asked between two keys, on the calling thread, with their number and that of all; false ends it.
    using GoesOn = std::function<bool(std::size_t done, std::size_t total)>;
    /// Derives the keys of several rows on all processors; `decrypt` then finds them ready. False when
    /// `goesOn` has ended it.
    bool deriveKeys(std::span<const EncryptedRow* const> rows, const GoesOn& goesOn = {});
    /// Turns the stored bytes of a member into its deflated bytes, in place.
    DecryptResult decrypt(const EncryptedRow& row, Bytes& bytes);
    /// Allows as much work again as before, `times` over: for a save, which its caller asks for and which
    /// reads all members.
    void allowMore(std::uint64_t times) noexcept;

private:
    ByteView startKey(Digest digest);
    bool mayAfford(const EncryptionData& data) noexcept;

    Secret password_;
    Limits limits_;
    std::array<Secret, 2> startKeys_;
    std::map<const EncryptedRow*, Secret> keys_;
    std::uint64_t workLeft_; ///< in the unit of `Limits::keyWork`
    bool isExhausted_ = false;
};

} // namespace ODF::crypto
