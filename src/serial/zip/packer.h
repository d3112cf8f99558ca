#pragma once

#include "platform/files.h"
#include "platform/threads.h"
#include "serial/zip/archive.h"
#include "serial/zip/deflate.h"
#include "serial/zip/packed_member.h"
#include "serial/zip/spool.h"

#include <span>

namespace ODF::archive {

/// The packed bytes of a member of another archive as they are. A wrong checksum of a stored member is noted,
/// since libzip counts it again. Handle and sink's diagnostics must stay.
PackedBytes CopyOfPacked(const CSDZipHandle& source, std::int64_t index, const NoteSink& notes);

/// Packs members into a spool. Each function fills in sizes, checksum and method; false leaves the spool with
/// a torso.
class Packer {
public:
    /// Takes up to `threads` threads for what is large.
    explicit Packer(Spool& spool, unsigned threads = platform::Processors())
        : spool_(spool), deflater_(threads) {}

    bool packBytes(PackedMember& member, std::span<const unsigned char> bytes, bool isStored);
    bool packFile(PackedMember& member, const platform::Path& path, bool isStored);
    /// A member of another archive: its packed bytes as they are, or the clear bytes of one that is
    /// encrypted.
    bool packMember(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes);

private:
    bool packCopy(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes);
    bool packPlain(PackedMember& member, const CSDZipHandle& source, int index, const NoteSink& notes);

    Spool& spool_;
    Deflater deflater_;
};

} // namespace ODF::archive
