#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// The few cryptographic operations that encrypted packages need. The library that does them is known to
/// crypto.cpp alone.
namespace ODF::crypto {

using Bytes = std::vector<unsigned char>;
using ByteView = std::span<const unsigned char>;

/// Key material, overwritten when it goes.
class Secret {
public:
    Secret() = default;
    explicit Secret(std::size_t byteCount) : bytes_(byteCount) {}
    explicit Secret(ByteView bytes) : bytes_(bytes.begin(), bytes.end()) {}
    Secret(Secret&& other) noexcept : bytes_(std::move(other.bytes_)) { other.bytes_.clear(); }
    Secret& operator=(Secret&& other) noexcept;
    ~Secret() { wipe(); }

    void wipe() noexcept;
    bool empty() const noexcept { return bytes_.empty(); }
    ByteView view() const noexcept { return bytes_; }
    std::span<unsigned char> span() noexcept { return bytes_; }

private:
    Bytes bytes_;
};

/// Overwrites memory in a way that isn't optimised out.
void Wipe(std::span<unsigned char> bytes) noexcept;

enum class Digest { Sha1, Sha256 };
std::size_t SizeOf(Digest digest) noexcept;
/// Empty when the library refuses the digest.
Bytes Hash(Digest digest, ByteView data);
Secret HashSecret(Digest digest, ByteView data);
/// Compares in a time that doesn't depend on the contents.
bool Equal(ByteView a, ByteView b) noexcept;

/// PBKDF2 with HMAC-SHA-1; nothing when a parameter is refused.
std::optional<Secret> DerivePbkdf2(ByteView key, ByteView salt, std::uint32_t iterations,
                                   std::size_t keySize);
/// Argon2id, version 0x13, without secret and associated data.
std::optional<Secret> DeriveArgon2id(ByteView key, ByteView salt, std::uint32_t iterations,
                                     std::uint32_t memoryKiB, std::uint32_t lanes, std::size_t keySize);

/// Block ciphers as packages use them: Blowfish with 64-bit cipher feedback, AES with block chaining.
enum class Cipher { BlowfishCfb, AesCbc };
/// Work in place. Chained data must be a multiple of 16 bytes. False when key, vector or length is refused.
bool Decrypt(Cipher cipher, ByteView key, ByteView vector, std::span<unsigned char> data);
bool Encrypt(Cipher cipher, ByteView key, ByteView vector, std::span<unsigned char> data);
/// What AES in Galois counter mode takes and makes.
inline constexpr std::size_t kGcmVectorSize = 12;
inline constexpr std::size_t kGcmTagSize = 16;
/// AES in Galois counter mode. Decryption is false, with the data wiped, when the tag
/// doesn't fit.
bool DecryptGcm(ByteView key, ByteView vector, std::span<unsigned char> data, ByteView tag);
bool EncryptGcm(ByteView key, ByteView vector, std::span<unsigned char> data, std::span<unsigned char> tag);

/// Unpredictable bytes for keys, salts and vectors.
void FillRandom(std::span<unsigned char> bytes);

} // namespace ODF::crypto
