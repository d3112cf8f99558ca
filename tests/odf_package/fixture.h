#pragma once

#include "package/odf/odf_package.h"
#include "support/corpus.h"
#include "support/files.h"
#include "support/packages.h"
#include "zip/notes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace odf_package_test {

using Bytes = ODF::OdfPackage::Bytes;
using Encryption = ODF::OdfPackage::Encryption;
using Options = ODF::OdfPackage::WriteOptions;

inline Bytes ToBytes(std::string_view text) {
    return {text.begin(), text.end()};
}
inline std::string ToText(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// One entry of an archive's directory, read without the library under test.
struct RawEntry {
    std::string name;
    unsigned flags = 0;
    unsigned method = 0;
    unsigned long time = 0;
    unsigned long crc = 0;
    unsigned long packedSize = 0;
    unsigned long mode = 0;
    unsigned long extraSize = 0; ///< of both headers
    std::string packed;
};

inline unsigned long Number(std::string_view bytes, std::size_t offset, int count) {
    unsigned long number = 0;
    for (int place = count; place-- > 0;)
        number =
            number << 8U | static_cast<unsigned char>(bytes.at(offset + static_cast<std::size_t>(place)));
    return number;
}

inline std::vector<RawEntry> Directory(std::string_view archive) {
    std::vector<RawEntry> entries;
    const auto end = archive.rfind("PK\5\6");
    if (end == std::string_view::npos) return entries;
    std::size_t at = Number(archive, end + 16, 4);
    for (unsigned long left = Number(archive, end + 10, 2); left > 0; --left) {
        RawEntry& entry = entries.emplace_back();
        const auto nameSize = Number(archive, at + 28, 2);
        const auto offset = Number(archive, at + 42, 4);
        entry.flags = static_cast<unsigned>(Number(archive, at + 8, 2));
        entry.method = static_cast<unsigned>(Number(archive, at + 10, 2));
        entry.time = Number(archive, at + 12, 4);
        entry.crc = Number(archive, at + 16, 4);
        entry.packedSize = Number(archive, at + 20, 4);
        entry.mode = Number(archive, at + 40, 2);
        entry.extraSize = Number(archive, at + 30, 2) + Number(archive, offset + 28, 2);
        entry.name = archive.substr(at + 46, nameSize);
        entry.packed =
            archive.substr(offset + 30 + Number(archive, offset + 26, 2) + Number(archive, offset + 28, 2),
                           entry.packedSize);
        at += 46 + nameSize + Number(archive, at + 30, 2) + Number(archive, at + 32, 2);
    }
    return entries;
}

inline std::vector<std::string> NamesOf(const std::vector<RawEntry>& entries) {
    std::vector<std::string> names;
    for (const RawEntry& entry : entries)
        names.push_back(entry.name);
    return names;
}

/// A package with its diagnostics.
struct Opened {
    ODF::OdfPackage package;
    ODF::Diagnostics notes;
    ODF::Status status = ODF::Status::None;

    explicit Opened(std::string_view archive, std::string_view password = {},
                    const ODF::Limits& limits = {}) {
        status = package.open(ToBytes(archive), password, limits, notes);
    }

    std::string read(std::string_view name) {
        Bytes bytes;
        EXPECT_EQ(package.read(name, bytes, notes), ODF::Status::Ok) << name;
        return ToText(bytes);
    }
    std::string written(const Options& options = {}) {
        Bytes archive;
        EXPECT_EQ(package.write(options, archive, notes), ODF::Status::Ok);
        return ToText(archive);
    }
    test::Members members() {
        test::Members all;
        for (const std::string& name : package.names())
            all[name] = read(name);
        return all;
    }
};

/// The members as they are in the archive, ciphertext included.
inline test::Members Unpacked(std::string archive) {
    CSDUnZip unzip;
    unzip.OpenZipFileNonDecompress(archive.data(), static_cast<unsigned>(archive.size()));
    return test::ReadMembers(unzip);
}

inline std::string ManifestOf(const std::string& archive) {
    return Unpacked(archive)["META-INF/manifest.xml"];
}

} // namespace odf_package_test
