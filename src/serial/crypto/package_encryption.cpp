#include "serial/crypto/package_encryption.h"

#include "serial/crypto/base64.h"

#include <algorithm>
#include <utility>

namespace ODF::crypto {

namespace {

constexpr std::size_t kKeySize = 32;
constexpr std::size_t kSaltSize = 16;
constexpr std::size_t kBlockSize = 16;
constexpr std::uint32_t kIterations = 100'000;

Bytes Random(std::size_t byteCount) {
    Bytes bytes(byteCount);
    FillRandom(bytes);
    return bytes;
}

bool EncryptChained(EncryptedMember& member, ByteView key) {
    const ByteView start =
        ByteView(member.bytes).first(std::min<std::size_t>(member.bytes.size(), kChecksummedBytes));
    member.data.checksum = Hash(*member.data.checksumDigest, start);
    // Random padding, the last byte of which counts it; a whole block where the data fills its blocks.
    const std::size_t padding = kBlockSize - member.bytes.size() % kBlockSize;
    const Bytes filling = Random(padding);
    member.bytes.insert(member.bytes.end(), filling.begin(), filling.end());
    member.bytes.back() = static_cast<unsigned char>(padding);
    return Encrypt(Cipher::AesCbc, key, member.data.vector, member.bytes);
}

bool EncryptCounted(EncryptedMember& member, ByteView key) {
    Bytes tag(kGcmTagSize);
    if (!EncryptGcm(key, member.data.vector, member.bytes, tag)) return false;
    member.bytes.insert(member.bytes.begin(), member.data.vector.begin(), member.data.vector.end());
    member.bytes.insert(member.bytes.end(), tag.begin(), tag.end());
    return true;
}

class Element {
public:
    explicit Element(std::string_view name) : text_("<manifest:" + std::string(name)) {}
    Element& add(std::string_view name, std::string_view value, std::string_view prefix = "manifest") {
        text_.append(" ").append(prefix).append(":").append(name).append("=\"").append(value).append("\"");
        return *this;
    }
    Element& add(std::string_view name, std::uint64_t value, std::string_view prefix = "manifest") {
        return add(name, std::to_string(value), prefix);
    }
    std::string open() const { return text_ + ">"; }
    std::string closed() const { return text_ + "/>"; }

private:
    std::string text_;
};

} // namespace

PackageEncryption::PackageEncryption(ByteView password, Scheme scheme)
    : scheme_(scheme), startKey_(HashSecret(Digest::Sha256, password)) {}

std::optional<EncryptedMember> PackageEncryption::encrypt(Bytes deflated) const {
    EncryptedMember member{std::move(deflated), {}};
    EncryptionData& data = member.data;
    data.algorithmKeySize = kKeySize;
    data.rowKeySize = kKeySize;
    data.startKeyDigest = Digest::Sha256;
    data.salt = Random(kSaltSize);
    const bool isWhole = scheme_ == Scheme::Whole;
    data.vector = Random(isWhole ? kGcmVectorSize : kBlockSize);
    if (isWhole) {
        data.algorithm = Algorithm::AesGcm;
        data.derivation = KeyDerivation::Argon2id;
        data.argon2Iterations = 3;
        data.argon2MemoryKiB = 65536;
        data.argon2Lanes = 4;
    } else {
        data.algorithm = Algorithm::AesCbc;
        data.checksumDigest = Digest::Sha256;
        data.iterations = kIterations;
    }
    const std::optional<Secret> key = DeriveKey(data, startKey_.view());
    if (!key || !(isWhole ? EncryptCounted(member, key->view()) : EncryptChained(member, key->view())))
        return std::nullopt;
    return member;
}

std::string ToManifestText(const EncryptionData& data) {
    const bool isArgon2 = data.derivation == KeyDerivation::Argon2id;
    Element outer("encryption-data");
    if (!data.checksum.empty())
        outer.add("checksum-type", data.checksumTypeName()).add("checksum", ToBase64(data.checksum));
    Element algorithm("algorithm");
    algorithm.add("algorithm-name", data.algorithmName()).add("initialisation-vector", ToBase64(data.vector));
    Element startKey("start-key-generation");
    startKey.add("start-key-generation-name", data.startKeyGenerationName())
        .add("key-size", data.startKeyDigest ? SizeOf(*data.startKeyDigest) : 0);
    Element derivation("key-derivation");
    derivation.add("key-derivation-name", data.keyDerivationName()).add("key-size", data.keySize());
    if (isArgon2)
        derivation.add("argon2-iterations", data.argon2Iterations, "loext")
            .add("argon2-memory", data.argon2MemoryKiB, "loext")
            .add("argon2-lanes", data.argon2Lanes, "loext");
    else
        derivation.add("iteration-count", data.iterations);
    derivation.add("salt", ToBase64(data.salt));
    return outer.open() + algorithm.closed() + startKey.closed() + derivation.closed() +
           "</manifest:encryption-data>";
}

} // namespace ODF::crypto
