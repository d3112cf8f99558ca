#pragma once

#include "serial/crypto/encryption_data.h"

#include <optional>
#include <string>
#include <string_view>

namespace ODF::crypto {

/// The schemes that packages are written with.
enum class Scheme {
    Members, ///< each member on its own: AES-256 with chaining, PBKDF2, SHA-256; what every reader since 2011
             ///< knows
    Whole    ///< a package inside a package: AES-256 in counter mode, Argon2id
};

/// A member ready for the archive, where it is stored without further compression, and its row's encryption
/// data.
struct EncryptedMember {
    Bytes bytes;
    EncryptionData data;
};

/// Encrypts the members of one package with one password. Every member gets salt and vector of its own.
class PackageEncryption {
public:
    /// `password` is UTF-8.
    PackageEncryption(ByteView password, Scheme scheme);

    /// Takes the deflated bytes of a member; nothing when the cipher fails.
    std::optional<EncryptedMember> encrypt(Bytes deflated) const;

private:
    Scheme scheme_;
    Secret startKey_;
};

/// The `manifest:encryption-data` element for a manifest row. The namespace prefixes `manifest` and, with
/// Argon2id, `loext` are to be declared around it.
std::string ToManifestText(const EncryptionData& data);

} // namespace ODF::crypto
