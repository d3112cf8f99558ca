// Published test vectors of the primitives, and the names and defaults of the manifest.

#include "crypto/view.h"
#include "serial/crypto/base64.h"
#include "serial/crypto/crypto.h"
#include "serial/crypto/manifest_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace ODF::crypto;
using test::View;

namespace {

Bytes FromHex(std::string_view text) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoul(std::string(text.substr(at, 2)), nullptr, 16)));
    return bytes;
}

Bytes ToBytes(const std::optional<Secret>& secret) {
    return secret ? Bytes(secret->view().begin(), secret->view().end()) : Bytes();
}

} // namespace

TEST(Digests, OfAbc) {
    EXPECT_EQ(Hash(Digest::Sha1, View("abc")), FromHex("a9993e364706816aba3e25717850c26c9cd0d89d"));
    EXPECT_EQ(Hash(Digest::Sha256, View("abc")),
              FromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
}

TEST(Pbkdf2, GivesThePublishedKeys) {
    constexpr struct {
        std::string_view password, salt;
        std::uint32_t iterations;
        const char* key;
    } kRows[] = {{"password", "salt", 1, "0c60c80f961f0e71f3a9b524af6012062fe037a6"},
                 {"password", "salt", 2, "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957"},
                 {"password", "salt", 4096, "4b007901b765489abead49d926f721d065a429c1"},
                 {"passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096,
                  "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"}};
    for (const auto& row : kRows) {
        const Bytes key = FromHex(row.key);
        EXPECT_EQ(ToBytes(DerivePbkdf2(View(row.password), View(row.salt), row.iterations, key.size())), key);
    }
}

TEST(Argon2id, GivesThePublishedKeysAndRefusesWhatIsOutOfRange) {
    constexpr struct {
        std::string_view salt;
        std::uint32_t iterations, memory, lanes;
        const char* key;
    } kRows[] = {
        {"somesalt", 2, 65536, 1, "09316115d5cf24ed5a15a31a3ba326e5cf32edc24702987c02b6566f61913cf7"},
        {"somesalt", 2, 256, 2, "6d093c501fd5999645e0ea3bf620d7b8be7fd2db59c20d9fff9539da2bf57037"},
        {"somesalt", 0, 65536, 1, ""},
        {"somesalt", 2, 65536, 0, ""},
        {"somesalt", 2, 7, 1, ""},
        {"short", 2, 256, 1, ""}};
    for (const auto& row : kRows)
        EXPECT_EQ(ToBytes(DeriveArgon2id(View("password"), View(row.salt), row.iterations, row.memory,
                                         row.lanes, 32)),
                  FromHex(row.key));
}

TEST(Ciphers, GiveThePublishedBytesBothWays) {
    const std::string_view text("7654321 Now is the time for \0", 29);
    const struct {
        Cipher cipher;
        const char *key, *vector;
        Bytes plain;
        const char* coded;
    } kRows[] = {{Cipher::BlowfishCfb, "0123456789abcdeff0e1d2c3b4a59687", "fedcba9876543210",
                  Bytes(View(text).begin(), View(text).end()),
                  "e73214a2822139caf26ecf6d2eb9e76e3da3de04d1517200519d57a6c3"},
                 {Cipher::AesCbc, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
                  "000102030405060708090a0b0c0d0e0f",
                  FromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"),
                  "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"}};
    for (const auto& row : kRows) {
        Bytes data = row.plain;
        ASSERT_TRUE(Encrypt(row.cipher, FromHex(row.key), FromHex(row.vector), data));
        EXPECT_EQ(data, FromHex(row.coded));
        ASSERT_TRUE(Decrypt(row.cipher, FromHex(row.key), FromHex(row.vector), data));
        EXPECT_EQ(data, row.plain);
    }
}

TEST(Ciphers, OfCountersProveTheirBytes) {
    const Bytes key = FromHex("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308");
    const Bytes vector = FromHex("cafebabefacedbaddecaf888");
    const Bytes plain = FromHex("d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
                                "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255");
    Bytes data = plain;
    Bytes tag(16);
    ASSERT_TRUE(EncryptGcm(key, vector, data, tag));
    EXPECT_EQ(data, FromHex("522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
                            "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad"));
    EXPECT_EQ(tag, FromHex("b094dac5d93471bdec1a502270e3cc6c"));
    Bytes tampered = data;
    tampered.back() ^= 1U;
    EXPECT_FALSE(DecryptGcm(key, vector, tampered, tag));
    EXPECT_EQ(tampered, Bytes(plain.size())) << "nothing of unproved bytes may get out";
    ASSERT_TRUE(DecryptGcm(key, vector, data, tag));
    EXPECT_EQ(data, plain);
}

TEST(Ciphers, RefuseWrongSizes) {
    constexpr struct {
        Cipher cipher;
        std::size_t key, vector, data;
    } kRows[] = {{Cipher::AesCbc, 15, 16, 16},      {Cipher::AesCbc, 32, 8, 16},
                 {Cipher::AesCbc, 32, 0, 16},       {Cipher::AesCbc, 32, 16, 17},
                 {Cipher::BlowfishCfb, 16, 16, 16}, {Cipher::BlowfishCfb, 0, 8, 16}};
    for (const auto& row : kRows) {
        Bytes data(row.data);
        EXPECT_FALSE(Decrypt(row.cipher, Bytes(row.key), Bytes(row.vector), data)) << row.key << row.vector;
    }
    Bytes data(16);
    EXPECT_FALSE(DecryptGcm(Bytes(32), {}, data, Bytes(16)));
}

TEST(Base64, GoesBothWays) {
    const std::string_view plain[] = {"", "f", "fo", "foo", "foob", "fooba", "foobar"};
    const std::string_view coded[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    for (std::size_t at = 0; at < std::size(plain); ++at) {
        EXPECT_EQ(ToBase64(View(plain[at])), coded[at]);
        EXPECT_EQ(FromBase64(coded[at]), Bytes(View(plain[at]).begin(), View(plain[at]).end()));
    }
    EXPECT_EQ(FromBase64(" Zm9v\r\n\tYmFy "), FromBase64("Zm9vYmFy"));
    EXPECT_EQ(FromBase64("Zm9v*Zm9v"), FromBase64("Zm9v"));
}

namespace {

EncryptedRows Read(std::string_view rows, std::string_view before = {}) {
    return ReadEncryptedRows(
        View(std::string(before) +
             "<m:manifest xmlns:m='urn:oasis:names:tc:opendocument:xmlns:manifest:1.0'>" + std::string(rows) +
             "</m:manifest>"),
        ODF::Limits());
}

constexpr std::string_view kBareRow =
    "<m:file-entry m:full-path='a' m:size='5'><m:encryption-data/></m:file-entry>";

} // namespace

TEST(EncryptionRows, MissingAttributesTakeTheDefaults) {
    const EncryptedRows found =
        Read("<m:file-entry m:full-path='/'/>"
             "<m:file-entry m:full-path='a' m:size='5'><m:encryption-data m:checksum-type='SHA1/1K' "
             "m:checksum='Zm9v'>"
             "<m:key-derivation m:key-derivation-name='PBKDF2' m:iteration-count='1024' m:salt='Zm9v'/>"
             "<m:algorithm m:algorithm-name='Blowfish CFB' m:initialisation-vector='Zm9v'/>"
             "</m:encryption-data></m:file-entry>");
    ASSERT_EQ(found.rows.size(), 1U);
    const EncryptedRow& row = found.rows[0];
    EXPECT_EQ(row.path, "a");
    EXPECT_EQ(row.size, 5U);
    EXPECT_EQ(row.data.algorithm, Algorithm::BlowfishCfb);
    EXPECT_EQ(row.data.startKeyDigest, Digest::Sha1);
    EXPECT_EQ(row.data.checksumDigest, Digest::Sha1);
    EXPECT_EQ(row.data.keySize(), 16U);
    EXPECT_TRUE(row.data.isSupported());
    EXPECT_TRUE(row.data.isAllowed({}));
}

TEST(EncryptionRows, AreReadBehindADoctypeAndUpToAFault) {
    EXPECT_EQ(Read(kBareRow, "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>"
                             "<!DOCTYPE m:manifest PUBLIC '-//X//Y' 'Manifest.dtd'>")
                  .rows.size(),
              1U);
    const EncryptedRows found = Read(std::string(kBareRow) + "<m:file-entry></m:broken>");
    EXPECT_FALSE(found.isWellFormed);
    EXPECT_EQ(found.rows.size(), 1U);
}

TEST(EncryptionRows, GrowingEntitiesEndTheParse) {
    std::string doctype =
        "<!DOCTYPE m:manifest [<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx'>";
    for (int level = 1; level < 12; ++level) {
        const std::string below = "&e" + std::to_string(level - 1) + ";";
        doctype += "<!ENTITY e" + std::to_string(level) + " '";
        for (int copy = 0; copy < 10; ++copy)
            doctype += below;
        doctype += "'>";
    }
    EXPECT_FALSE(Read("<m:file-entry m:full-path='&e11;'/>", doctype + "]>").isWellFormed);
    EXPECT_FALSE(Read("&e11;", doctype + "]>").isWellFormed);
}

namespace {

/// An `algorithm` of that name, with what is after it.
std::string Named(const std::string& name, const std::string& derivation = {}) {
    const std::string row = "<m:algorithm m:algorithm-name='" + name + "'/>";
    return derivation.empty() ? row : row + "<m:key-derivation " + derivation + "/>";
}

std::string Aes256(const std::string& derivation = {}) {
    return Named("http://www.w3.org/2001/04/xmlenc#aes256-cbc", derivation);
}

std::string Argon2(const std::string& iterations, const std::string& memory, const std::string& lanes) {
    return Named("http://www.w3.org/2009/xmlenc11#aes256-gcm",
                 "m:key-derivation-name='urn:org:documentfoundation:names:experimental:office:manifest:"
                 "argon2id' m:key-size='32' l:argon2-iterations='" +
                     iterations + "' l:argon2-memory='" + memory + "' l:argon2-lanes='" + lanes + "'");
}

std::string StartKey(const std::string& name) {
    return Aes256() + "<m:start-key-generation m:start-key-generation-name='" + name + "'/>";
}

} // namespace

TEST(EncryptionRows, AreKnownAndAllowedOrNot) {
    const struct {
        std::string inside; ///< of `encryption-data`
        bool isSupported, isAllowed;
    } kRows[] = {{"", false, true},
                 {Aes256(), true, true},
                 {Named("http://www.w3.org/2001/04/xmlenc#aes128-cbc"), true, true},
                 {Named("urn:oasis:names:tc:opendocument:xmlns:manifest:1.0#blowfish"), true, true},
                 {Named("rot13"), false, true},
                 {Aes256("m:key-size='16'"), false, true},
                 {Named("Blowfish CFB", "m:key-size='4000000000'"), false, true},
                 {Aes256("m:key-size='-1'"), true, false},
                 {StartKey("MD5"), false, true},
                 {StartKey("http://www.w3.org/2001/04/xmlenc#sha256"), true, true},
                 {Aes256("m:key-derivation-name='PGP'"), false, true},
                 {Aes256("m:iteration-count='10000000'"), true, true},
                 {Aes256("m:iteration-count='10000001'"), true, false},
                 {Aes256("m:iteration-count='4294968320'"), true, false},
                 {Argon2("3", "65536", "4"), true, true},
                 {Argon2("3", "1048577", "4"), true, false},
                 {Argon2("65", "65536", "4"), true, false},
                 {Argon2("3", "65536", "65"), true, false}};
    for (const auto& row : kRows) {
        const EncryptedRows found = Read("<m:file-entry m:full-path='a'><m:encryption-data>" + row.inside +
                                         "</m:encryption-data></m:file-entry>");
        ASSERT_EQ(found.rows.size(), 1U) << row.inside;
        EXPECT_EQ(found.rows[0].data.isSupported(), row.isSupported) << row.inside;
        EXPECT_EQ(found.rows[0].data.isAllowed({}), row.isAllowed) << row.inside;
    }
}
