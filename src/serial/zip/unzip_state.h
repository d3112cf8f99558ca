#pragma once

#include "serial/zip/archive.h"
#include "serial/zip/member_stream.h"

#include <odfmodel/platform/memory_mapping.h>
#include <odfmodel/serial/unzip.h>

#include <memory>
#include <string>
#include <vector>

/// What is behind a reader's public fields.
struct CSDUnZip::State {
    /// A member that is being read in pieces.
    struct Stream {
        int index = -1;
        std::uint64_t position = 0;
        std::unique_ptr<ODF::archive::MemberStream> member;
        ODF::platform::InputFile file; ///< instead of `member` on a folder
        std::size_t read(std::span<unsigned char> buffer);
    };

    ODF::Limits limits;
    ODF::Diagnostics* diagnostics = nullptr;
    bool handlesEncryption = false;
    ODF::crypto::Secret password; ///< UTF-8

    ZipItemTable table;
    ODF::MemoryView view; ///< of `mapping`; must outlive the handle on it
    void* mapping = nullptr;
    unsigned mappingSize = 0;
    std::unique_ptr<CSDZipHandle> handle;
    ODF::platform::Path folder;           ///< set when bound to a folder instead of an archive
    std::vector<std::string> folderFiles; ///< relative names by index
    std::vector<Stream> streams;          ///< the one used last at the end

    ODF::archive::NoteSink notes() const noexcept { return {diagnostics}; }
    bool isFolder() const noexcept { return !folder.empty(); }
    /// Takes an opened archive over and, where asked for, makes its encrypted members readable.
    bool take(std::unique_ptr<CSDZipHandle> opened);
    void close() noexcept;

    int find(const unsigned short* name) const;
    /// Relative file of a folder, or null.
    const std::string* folderFile(int index) const noexcept;
    /// The stream that is at `cursor` in the member; opened and moved there when there is none.
    Stream* streamAt(int index, std::uint32_t cursor, bool isStart);
    bool openStream(int index, Stream& stream) const;
    void drop(const Stream* stream);
};
