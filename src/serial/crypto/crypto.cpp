#include "serial/crypto/crypto.h"

#include <gcrypt.h>

#include <memory>
#include <utility>

namespace ODF::crypto {

namespace {

/// The library must be told once that it is in use; the check is also its own thread-safe initialisation. A
/// host that has done so already is left alone.
bool IsReady() {
    static const bool isReady = [] {
        if (!gcry_check_version(GCRYPT_VERSION) && !gcry_check_version(nullptr)) return false;
        if (!gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P)) {
            gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
            gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        }
        return true;
    }();
    return isReady;
}

int NumberOf(Digest digest) noexcept {
    return digest == Digest::Sha1 ? GCRY_MD_SHA1 : GCRY_MD_SHA256;
}

using CipherHandle = std::unique_ptr<gcry_cipher_handle, decltype(&gcry_cipher_close)>;

int AesNumber(std::size_t keySize) noexcept {
    switch (keySize) {
    case 16:
        return GCRY_CIPHER_AES128;
    case 24:
        return GCRY_CIPHER_AES192;
    case 32:
        return GCRY_CIPHER_AES256;
    default:
        return GCRY_CIPHER_NONE;
    }
}

CipherHandle Open(int algorithm, int mode, ByteView key, ByteView vector) {
    CipherHandle handle(nullptr, gcry_cipher_close);
    gcry_cipher_hd_t opened = nullptr;
    if (!IsReady() || algorithm == GCRY_CIPHER_NONE || gcry_cipher_open(&opened, algorithm, mode, 0) != 0)
        return handle;
    handle.reset(opened);
    const bool isBlockMode = mode != GCRY_CIPHER_MODE_GCM;
    if ((isBlockMode && vector.size() != gcry_cipher_get_algo_blklen(algorithm)) || vector.empty() ||
        gcry_cipher_setkey(opened, key.data(), key.size()) != 0 ||
        gcry_cipher_setiv(opened, vector.data(), vector.size()) != 0)
        handle.reset();
    return handle;
}

CipherHandle Open(Cipher cipher, ByteView key, ByteView vector) {
    return cipher == Cipher::BlowfishCfb ? Open(GCRY_CIPHER_BLOWFISH, GCRY_CIPHER_MODE_CFB, key, vector)
                                         : Open(AesNumber(key.size()), GCRY_CIPHER_MODE_CBC, key, vector);
}

} // namespace

void Wipe(std::span<unsigned char> bytes) noexcept {
    volatile unsigned char* const at = bytes.data();
    for (std::size_t index = 0; index < bytes.size(); ++index)
        at[index] = 0;
}

Secret& Secret::operator=(Secret&& other) noexcept {
    if (this != &other) {
        wipe();
        bytes_ = std::move(other.bytes_);
        other.bytes_.clear();
    }
    return *this;
}

void Secret::wipe() noexcept {
    Wipe(bytes_);
    bytes_.clear();
}

std::size_t SizeOf(Digest digest) noexcept {
    return digest == Digest::Sha1 ? 20 : 32;
}

Bytes Hash(Digest digest, ByteView data) {
    if (!IsReady() || gcry_md_test_algo(NumberOf(digest)) != 0) return {};
    Bytes result(SizeOf(digest));
    gcry_md_hash_buffer(NumberOf(digest), result.data(), data.data(), data.size());
    return result;
}

Secret HashSecret(Digest digest, ByteView data) {
    if (!IsReady() || gcry_md_test_algo(NumberOf(digest)) != 0) return {};
    Secret result(SizeOf(digest));
    gcry_md_hash_buffer(NumberOf(digest), result.span().data(), data.data(), data.size());
    return result;
}

bool Equal(ByteView a, ByteView b) noexcept {
    if (a.size() != b.size()) return false;
    unsigned difference = 0;
    for (std::size_t index = 0; index < a.size(); ++index)
        difference |= static_cast<unsigned>(a[index] ^ b[index]);
    return difference == 0;
}

std::optional<Secret> DerivePbkdf2(ByteView key, ByteView salt, std::uint32_t iterations,
                                   std::size_t keySize) {
    if (!IsReady() || key.empty() || salt.empty() || iterations == 0 || keySize == 0) return std::nullopt;
    Secret result(keySize);
    if (gcry_kdf_derive(key.data(), key.size(), GCRY_KDF_PBKDF2, GCRY_MD_SHA1, salt.data(), salt.size(),
                        iterations, keySize, result.span().data()) != 0)
        return std::nullopt;
    return result;
}

std::optional<Secret> DeriveArgon2id(ByteView key, ByteView salt, std::uint32_t iterations,
                                     std::uint32_t memoryKiB, std::uint32_t lanes, std::size_t keySize) {
    if (!IsReady() || key.empty() || salt.size() < 8 || iterations == 0 || lanes == 0 ||
        std::uint64_t{memoryKiB} < std::uint64_t{8} * lanes || keySize < 4)
        return std::nullopt;
    const unsigned long parameters[] = {static_cast<unsigned long>(keySize), iterations, memoryKiB, lanes};
    gcry_kdf_hd_t opened = nullptr;
    if (gcry_kdf_open(&opened, GCRY_KDF_ARGON2, GCRY_KDF_ARGON2ID, parameters, 4, key.data(), key.size(),
                      salt.data(), salt.size(), nullptr, 0, nullptr, 0) != 0)
        return std::nullopt;
    const std::unique_ptr<gcry_kdf_handle, decltype(&gcry_kdf_close)> handle(opened, gcry_kdf_close);
    Secret result(keySize);
    // Without thread operations of ours the lanes are filled one after the other.
    if (gcry_kdf_compute(opened, nullptr) != 0 || gcry_kdf_final(opened, keySize, result.span().data()) != 0)
        return std::nullopt;
    return result;
}

bool Decrypt(Cipher cipher, ByteView key, ByteView vector, std::span<unsigned char> data) {
    const CipherHandle handle = Open(cipher, key, vector);
    return handle &&
           (data.empty() || gcry_cipher_decrypt(handle.get(), data.data(), data.size(), nullptr, 0) == 0);
}

bool Encrypt(Cipher cipher, ByteView key, ByteView vector, std::span<unsigned char> data) {
    const CipherHandle handle = Open(cipher, key, vector);
    return handle &&
           (data.empty() || gcry_cipher_encrypt(handle.get(), data.data(), data.size(), nullptr, 0) == 0);
}

bool DecryptGcm(ByteView key, ByteView vector, std::span<unsigned char> data, ByteView tag) {
    const CipherHandle handle = Open(AesNumber(key.size()), GCRY_CIPHER_MODE_GCM, key, vector);
    if (!handle) return false;
    gcry_cipher_final(handle.get());
    const bool isRight = gcry_cipher_decrypt(handle.get(), data.data(), data.size(), nullptr, 0) == 0 &&
                         gcry_cipher_checktag(handle.get(), tag.data(), tag.size()) == 0;
    if (!isRight) Wipe(data);
    return isRight;
}

bool EncryptGcm(ByteView key, ByteView vector, std::span<unsigned char> data, std::span<unsigned char> tag) {
    const CipherHandle handle = Open(AesNumber(key.size()), GCRY_CIPHER_MODE_GCM, key, vector);
    if (!handle) return false;
    gcry_cipher_final(handle.get());
    return gcry_cipher_encrypt(handle.get(), data.data(), data.size(), nullptr, 0) == 0 &&
           gcry_cipher_gettag(handle.get(), tag.data(), tag.size()) == 0;
}

void FillRandom(std::span<unsigned char> bytes) {
    if (IsReady()) gcry_randomize(bytes.data(), bytes.size(), GCRY_STRONG_RANDOM);
}

} // namespace ODF::crypto
