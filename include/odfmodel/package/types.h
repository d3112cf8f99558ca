#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/package/text.h>

#include <map>
#include <vector>

namespace SDPackage {

class IPart;

/// Parts by package path, ignoring case.
using PartMap = std::map<CTulStringW, IPart*, IgnoreCaseLess>;
/// Text to text, in binary order.
using Map = std::map<CTulStringW, CTulStringW>;
/// Member name to the file that holds its bytes, in binary order.
using FileMap = std::map<CTulStringW, CTulStringW>;
using ByteVector = std::vector<unsigned char>;

/// Sees each XML member that is read from an archive: its bytes, the kind "XMLFile" and the member's name. A
/// result of 0 ends the reading with a failure.
using XmlCallback = int (*)(void* data, int size, const unsigned short* kind, const unsigned short* itemName);

/// One line of a save plan. The texts and the memory stay the caller's.
struct ZipItemSpec {
    const unsigned short* name = nullptr; ///< name of the member in the new archive
    const unsigned short* path = nullptr; ///< file that holds the bytes, or null
    void* data = nullptr;                 ///< memory that holds the bytes, or null
    int size = -1;                        ///< byte count of `data`; -1 when the bytes aren't in memory
    int sourceIndex = -1;                 ///< member of the open archive to copy; -1 when the bytes are new
};

using ZipItemVector = std::vector<ZipItemSpec>;

/// An archive in memory, as the conversions of the user data module hand it out. It belongs to the caller,
/// who frees it with `ReleaseMemoryArchive`.
struct MemoryArchive {
    void* mapping = nullptr; ///< handle of the mapping object
    void* view = nullptr;    ///< the mapped bytes; null on the large memory route
    unsigned size = 0;       ///< bytes of the archive
};

} // namespace SDPackage
