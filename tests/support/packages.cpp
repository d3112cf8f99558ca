#include "support/packages.h"

#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

namespace test {

std::string Manifest(const std::vector<ManifestEntry>& entries) {
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?><manifest:manifest)"
                      R"( xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0">)";
    for (const ManifestEntry& entry : entries)
        xml += "<manifest:file-entry manifest:media-type=\"" + entry.mediaType + "\" manifest:full-path=\"" +
               entry.path + "\"/>";
    return xml + "</manifest:manifest>";
}

void WritePackage(const std::string& path, const Members& members) {
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(path), 0) << path;
    for (const auto& [name, data] : members)
        ASSERT_NE(zip.CompressStored(name, data.data(), static_cast<int>(data.size())), 0) << name;
    ASSERT_NE(zip.CloseFile(), 0) << path;
}

void WriteOdf(const std::string& path, std::string_view mediaType, Members members,
              const std::vector<ManifestEntry>& more) {
    std::vector<ManifestEntry> entries{{"/", std::string(mediaType)}};
    for (const auto& [name, data] : members)
        entries.push_back({name});
    entries.insert(entries.end(), more.begin(), more.end());
    members["META-INF/manifest.xml"] = Manifest(entries);
    WritePackage(path, members);
}

Members ReadMembers(const CSDUnZip& unzip) {
    Members members;
    if (!unzip.itemTable) return members;
    for (const auto& [name, item] : *unzip.itemTable) {
        if (item.index < 0) continue;
        long size = static_cast<long>(item.size);
        std::string data(static_cast<std::size_t>(size), '\0');
        if (unzip.GetItem(item.index, reinterpret_cast<unsigned char*>(data.data()), size) == 0)
            data = "(unreadable)";
        else
            data.resize(static_cast<std::size_t>(size));
        members[name.utf8()] = data;
    }
    return members;
}

Members ReadPackage(const std::string& path, const std::string& password) {
    CODFUnZip unzip;
    if (!password.empty()) unzip.SetPassword(password);
    unzip.OpenForItems(CTulStringW(path));
    return ReadMembers(unzip);
}

std::string TextContent(std::string_view body) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><office:document-content)"
           R"( xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0")"
           R"( xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0")"
           R"( office:version="1.2"><office:body><office:text>)" +
           std::string(body) + "</office:text></office:body></office:document-content>";
}

} // namespace test
