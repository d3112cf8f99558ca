#pragma once

#include "serial/crypto/crypto.h"

#include <odfmodel/core/limits.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ODF::crypto {

/// The checksum of a member covers so many bytes at its start.
inline constexpr std::size_t kChecksummedBytes = 1024;

enum class Algorithm { BlowfishCfb, AesCbc, AesGcm };
enum class KeyDerivation { Pbkdf2, Argon2id };

/// How one member is encrypted, as its row of the manifest tells: the values of `manifest:encryption-data`
/// and of the elements below it, with the defaults of the format for what is missing. A name that isn't known
/// leaves its field empty, and the member can't be decrypted then.
struct EncryptionData {
    std::optional<Algorithm> algorithm;
    std::size_t algorithmKeySize = 0;      ///< bytes that the algorithm's name asks for; 0 for any
    std::optional<std::size_t> rowKeySize; ///< `manifest:key-size` of the key derivation
    Bytes vector;
    std::optional<Digest> checksumDigest; ///< over the first 1,024 bytes of the deflated member
    Bytes checksum;
    std::optional<Digest> startKeyDigest = Digest::Sha1;
    std::optional<KeyDerivation> derivation = KeyDerivation::Pbkdf2;
    Bytes salt;
    std::uint32_t iterations = 1024;
    std::uint32_t argon2Iterations = 0;
    std::uint32_t argon2MemoryKiB = 0;
    std::uint32_t argon2Lanes = 0;
    bool isWithinRange = true; ///< false when a number doesn't fit its field

    /// Each takes the name as it is in the file.
    void setAlgorithm(std::string_view name);
    void setChecksumType(std::string_view name);
    void setStartKeyGeneration(std::string_view name);
    void setKeyDerivation(std::string_view name);

    /// The names that files are written with; empty for a field that isn't set.
    std::string_view algorithmName() const noexcept;
    std::string_view checksumTypeName() const noexcept;
    std::string_view startKeyGenerationName() const noexcept;
    std::string_view keyDerivationName() const noexcept;

    /// Bytes of the derived key.
    std::size_t keySize() const noexcept;
    /// Whether decrypting tells a wrong password from a right one.
    bool provesPassword() const noexcept;
    /// Whether this build knows how to decrypt the member.
    bool isSupported() const noexcept;
    /// Whether the work asked for stays within what the host allows for one member.
    bool isAllowed(const Limits& limits) const noexcept;
    /// The work of deriving the key, in the unit of `Limits::keyWork`.
    std::uint64_t work() const noexcept;
};

/// One row of the manifest whose member is encrypted.
struct EncryptedRow {
    std::string path;                  ///< name of the member
    std::optional<std::uint64_t> size; ///< bytes before deflating and encrypting, as the row claims
    EncryptionData data;
};

/// The key for a member, from the digest of the password.
std::optional<Secret> DeriveKey(const EncryptionData& data, ByteView startKey);

/// What came of decrypting a member. `WrongKey` is said of what the password decides; `Damaged` of parameters
/// and lengths that fit no password. `TooMuchWork`: the members of the package ask for more than a host will
/// do.
enum class DecryptResult { Ok, WrongKey, Damaged, TooMuchWork };

/// Turns the stored bytes of a member into its deflated bytes, in place. `WrongKey` when the checksum or the
/// tag doesn't fit, which damage can cause too.
DecryptResult DecryptMember(const EncryptionData& data, ByteView key, Bytes& bytes);

} // namespace ODF::crypto
