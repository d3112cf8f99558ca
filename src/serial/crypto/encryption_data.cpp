#include "serial/crypto/encryption_data.h"

#include <algorithm>
#include <array>

namespace ODF::crypto {

namespace {

constexpr std::size_t kAesBlockSize = 16;
constexpr std::size_t kDefaultKeySize = 16;
constexpr std::size_t kBlowfishLargestKey = 56;
/// A KiB that Argon2 fills takes as long as so many iterations of PBKDF2.
constexpr std::uint64_t kWorkOfKiB = 6;
/// PBKDF2 makes its key in pieces of this size, each with all iterations.
constexpr std::size_t kPbkdf2Piece = 20;

template<typename Value>
struct Named {
    std::string_view name;
    Value value;
};

template<typename Value, std::size_t count>
std::optional<Value> Find(const std::array<Named<Value>, count>& table, std::string_view name) noexcept {
    const auto row =
        std::find_if(table.begin(), table.end(), [&](const auto& entry) { return entry.name == name; });
    return row == table.end() ? std::nullopt : std::optional<Value>(row->value);
}

/// The first name of the table, which is the one to write.
template<typename Value, std::size_t count>
std::string_view NameOf(const std::array<Named<Value>, count>& table, std::optional<Value> value) noexcept {
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const auto& entry) { return value && entry.value == *value; });
    return row == table.end() ? std::string_view() : row->name;
}

struct AlgorithmAndSize {
    Algorithm algorithm;
    std::size_t keySize; ///< 0: the row's own
    friend bool operator==(const AlgorithmAndSize&, const AlgorithmAndSize&) = default;
};

constexpr std::array<Named<AlgorithmAndSize>, 8> kAlgorithms{{
    {"Blowfish CFB", {Algorithm::BlowfishCfb, 0}},
    {"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0#blowfish", {Algorithm::BlowfishCfb, 0}},
    {"http://www.w3.org/2001/04/xmlenc#aes256-cbc", {Algorithm::AesCbc, 32}},
    {"http://www.w3.org/2001/04/xmlenc#aes192-cbc", {Algorithm::AesCbc, 24}},
    {"http://www.w3.org/2001/04/xmlenc#aes128-cbc", {Algorithm::AesCbc, 16}},
    {"http://www.w3.org/2009/xmlenc11#aes256-gcm", {Algorithm::AesGcm, 32}},
    {"http://www.w3.org/2009/xmlenc11#aes192-gcm", {Algorithm::AesGcm, 24}},
    {"http://www.w3.org/2009/xmlenc11#aes128-gcm", {Algorithm::AesGcm, 16}},
}};

constexpr std::array<Named<Digest>, 3> kChecksums{{
    {"SHA1/1K", Digest::Sha1},
    {"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0#sha1-1k", Digest::Sha1},
    {"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0#sha256-1k", Digest::Sha256},
}};

constexpr std::array<Named<Digest>, 4> kStartKeys{{
    {"SHA1", Digest::Sha1},
    {"http://www.w3.org/2000/09/xmldsig#sha1", Digest::Sha1},
    {"http://www.w3.org/2000/09/xmldsig#sha256", Digest::Sha256}, // what the format's text names by mistake
    {"http://www.w3.org/2001/04/xmlenc#sha256", Digest::Sha256},
}};

constexpr std::array<Named<KeyDerivation>, 4> kDerivations{{
    {"PBKDF2", KeyDerivation::Pbkdf2},
    {"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0#pbkdf2", KeyDerivation::Pbkdf2},
    {"urn:org:documentfoundation:names:experimental:office:manifest:argon2id", KeyDerivation::Argon2id},
    {"urn:oasis:names:tc:opendocument:xmlns:manifest:1.5#argon2id", KeyDerivation::Argon2id},
}};

bool ChecksumFits(const EncryptionData& data, ByteView deflated) {
    if (!data.provesPassword()) return true;
    return Equal(Hash(*data.checksumDigest, deflated.first(std::min(deflated.size(), kChecksummedBytes))),
                 data.checksum);
}

DecryptResult DecryptGcmMember(const EncryptionData& data, ByteView key, Bytes& bytes) {
    if (bytes.size() < kGcmVectorSize + kGcmTagSize) return DecryptResult::Damaged;
    const std::span<unsigned char> all(bytes);
    const ByteView vector = all.first(kGcmVectorSize);
    if (!data.vector.empty() && !Equal(vector, data.vector)) return DecryptResult::Damaged;
    const auto body = all.subspan(kGcmVectorSize, all.size() - kGcmVectorSize - kGcmTagSize);
    if (!DecryptGcm(key, vector, body, all.last(kGcmTagSize))) return DecryptResult::WrongKey;
    bytes.erase(bytes.begin(), bytes.begin() + kGcmVectorSize);
    bytes.resize(bytes.size() - kGcmTagSize);
    return DecryptResult::Ok;
}

} // namespace

void EncryptionData::setAlgorithm(std::string_view name) {
    const auto found = Find(kAlgorithms, name);
    algorithm = found ? std::optional(found->algorithm) : std::nullopt;
    algorithmKeySize = found ? found->keySize : 0;
}

void EncryptionData::setChecksumType(std::string_view name) {
    checksumDigest = Find(kChecksums, name);
}

void EncryptionData::setStartKeyGeneration(std::string_view name) {
    startKeyDigest = Find(kStartKeys, name);
}

void EncryptionData::setKeyDerivation(std::string_view name) {
    derivation = Find(kDerivations, name);
}

std::string_view EncryptionData::algorithmName() const noexcept {
    return algorithm ? NameOf(kAlgorithms, std::optional(AlgorithmAndSize{*algorithm, algorithmKeySize}))
                     : std::string_view();
}

std::string_view EncryptionData::checksumTypeName() const noexcept {
    return NameOf(kChecksums, checksumDigest);
}

std::string_view EncryptionData::startKeyGenerationName() const noexcept {
    // Readers of the authenticated scheme expect the name that the format's text should have had.
    const bool isRightName = algorithm == Algorithm::AesGcm && startKeyDigest == Digest::Sha256;
    return isRightName ? kStartKeys.back().name : NameOf(kStartKeys, startKeyDigest);
}

std::string_view EncryptionData::keyDerivationName() const noexcept {
    return NameOf(kDerivations, derivation);
}

std::size_t EncryptionData::keySize() const noexcept {
    return algorithmKeySize != 0 ? algorithmKeySize : rowKeySize.value_or(kDefaultKeySize);
}

bool EncryptionData::provesPassword() const noexcept {
    return algorithm == Algorithm::AesGcm || (checksumDigest && !checksum.empty());
}

bool EncryptionData::isSupported() const noexcept {
    if (!algorithm || !startKeyDigest || !derivation) return false;
    if (algorithmKeySize != 0) return rowKeySize.value_or(algorithmKeySize) == algorithmKeySize;
    return keySize() > 0 && keySize() <= kBlowfishLargestKey;
}

bool EncryptionData::isAllowed(const Limits& limits) const noexcept {
    if (!isWithinRange) return false;
    if (derivation == KeyDerivation::Argon2id)
        return argon2Iterations <= limits.argon2Iterations && argon2MemoryKiB <= limits.argon2MemoryKiB &&
               argon2Lanes <= limits.argon2Lanes;
    return iterations <= limits.pbkdf2Iterations;
}

std::uint64_t EncryptionData::work() const noexcept {
    if (derivation == KeyDerivation::Argon2id)
        return std::uint64_t{argon2Iterations} * argon2MemoryKiB * kWorkOfKiB;
    return std::uint64_t{iterations} * ((keySize() + kPbkdf2Piece - 1) / kPbkdf2Piece);
}

std::optional<Secret> DeriveKey(const EncryptionData& data, ByteView startKey) {
    if (data.derivation == KeyDerivation::Argon2id)
        return DeriveArgon2id(startKey, data.salt, data.argon2Iterations, data.argon2MemoryKiB,
                              data.argon2Lanes, data.keySize());
    return DerivePbkdf2(startKey, data.salt, data.iterations, data.keySize());
}

DecryptResult DecryptMember(const EncryptionData& data, ByteView key, Bytes& bytes) {
    if (data.checksumDigest && !data.checksum.empty() && data.checksum.size() != SizeOf(*data.checksumDigest))
        return DecryptResult::Damaged;
    if (data.algorithm == Algorithm::AesGcm) return DecryptGcmMember(data, key, bytes);
    if (data.algorithm == Algorithm::BlowfishCfb) {
        if (!Decrypt(Cipher::BlowfishCfb, key, data.vector, bytes)) return DecryptResult::Damaged;
        return ChecksumFits(data, bytes) ? DecryptResult::Ok : DecryptResult::WrongKey;
    }
    if (bytes.empty() || bytes.size() % kAesBlockSize != 0 ||
        !Decrypt(Cipher::AesCbc, key, data.vector, bytes))
        return DecryptResult::Damaged;
    // The last byte counts the padding; the bytes before it are random.
    const std::size_t padding = bytes.back();
    if (padding == 0 || padding > kAesBlockSize) return DecryptResult::WrongKey;
    bytes.resize(bytes.size() - padding);
    return ChecksumFits(data, bytes) ? DecryptResult::Ok : DecryptResult::WrongKey;
}

} // namespace ODF::crypto
