#pragma once

#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace test {

inline int Add(CSDZip& zip, std::string_view name, std::string data) {
    return zip.Compress(name, static_cast<void*>(data.data()), static_cast<int>(data.size()));
}

/// The member's plain bytes, or a text in brackets that says what went wrong.
inline std::string Item(const CSDUnZip& unzip, std::string_view name) {
    const int index = unzip.GetItemIndex(name);
    long size = 0;
    if (index < 0 || unzip.GetItemSize(index, size) == 0) return "(none)";
    std::string data(static_cast<std::size_t>(size), '\0');
    if (unzip.GetItem(index, reinterpret_cast<unsigned char*>(data.data()), size) == 0) return "(unreadable)";
    data.resize(static_cast<std::size_t>(size));
    return data;
}

/// The names of the members in the order in which they are in the archive.
inline std::vector<std::string> NamesInOrder(const CSDUnZip& unzip) {
    std::map<int, std::string> byIndex;
    for (const auto& [name, item] : *unzip.itemTable)
        byIndex[item.index] = name.utf8();
    std::vector<std::string> names;
    for (const auto& [index, name] : byIndex)
        names.push_back(name);
    return names;
}

/// Opens an archive whose bytes stay with the caller.
inline int Open(CSDUnZip& unzip, std::string& archive) {
    return unzip.OpenZipFileNonDecompress(archive.data(), static_cast<unsigned>(archive.size()));
}

} // namespace test
