#pragma once

#include "serial/crypto/encryption_data.h"

#include <array>
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
    /// Derives the keys of several rows on all processors; `decrypt` then finds them ready.
    void deriveKeys(std::span<const EncryptedRow* const> rows);
    /// Turns the stored bytes of a member into its deflated bytes, in place.
    DecryptResult decrypt(const EncryptedRow& row, Bytes& bytes);

private:
    ByteView startKey(Digest digest);
    bool mayAfford(const EncryptionData& data);

    Secret password_;
    Limits limits_;
    std::array<Secret, 2> startKeys_;
    std::map<const EncryptedRow*, Secret> keys_;
    double work_ = 0; ///< done so far, in units of the most that one member may ask for
};

} // namespace ODF::crypto
