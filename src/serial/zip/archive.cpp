#include "serial/zip/archive.h"

#include "serial/zip/archive_source.h"
#include "serial/zip/directory_check.h"
#include "serial/zip/inflate.h"

#include <utility>

using namespace ODF;
using archive::Member;
using archive::NoteSink;

namespace ODF::archive {

void NoteSink::add(NoteCode code, Severity severity, std::string_view member, std::string_view text) const {
    if (diagnostics) diagnostics->add(code, severity, member, text);
}

void NoteSink::setStatus(Status status) const noexcept {
    if (diagnostics) diagnostics->setStatus(status);
}

namespace {

/// libzip's error value with its end of life.
class Error {
public:
    Error() { zip_error_init(&value_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
    ~Error() { zip_error_fini(&value_); }
    zip_error_t* get() noexcept { return &value_; }
    std::string text() { return zip_error_strerror(&value_); }

private:
    zip_error_t value_{};
};

/// The upper half of a member's outer attributes.
std::uint32_t UnixMode(zip_t* archive, zip_uint64_t index) {
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0) return 0;
    return attributes >> 16U;
}

bool IsSpecial(std::uint32_t unixMode) noexcept {
    constexpr std::uint32_t typeMask = 0170000;
    constexpr std::uint32_t regular = 0100000;
    constexpr std::uint32_t folder = 0040000;
    const std::uint32_t type = unixMode & typeMask;
    return type != 0 && type != regular && type != folder;
}

} // namespace

} // namespace ODF::archive

namespace {
/// The end record of an archive without members.
constexpr std::uint64_t kSmallestArchive = 22;
} // namespace

std::unique_ptr<CSDZipHandle> CSDZipHandle::openFile(const platform::Path& path, const Limits& limits,
                                                     const NoteSink& notes) {
    platform::InputFile file(path);
    if (!file.isOpen()) {
        notes.setStatus(Status::NotReadable);
        return nullptr;
    }
    const std::uint64_t byteCount = file.size();
    const auto read = [&file](std::uint64_t offset, std::span<unsigned char> target) {
        return file.readAt(offset, target.data(), target.size()) ==
               static_cast<std::ptrdiff_t>(target.size());
    };
    const std::uint64_t start = archive::CheckDirectory(read, byteCount, notes);
    return open([&](zip_error_t* error) { return archive::MakeFileSource(std::move(file), start, error); },
                byteCount - start, limits, notes);
}

std::unique_ptr<CSDZipHandle> CSDZipHandle::openMemory(std::span<const unsigned char> bytes,
                                                       const Limits& limits, const NoteSink& notes) {
    const auto read = [bytes](std::uint64_t offset, std::span<unsigned char> target) {
        if (offset > bytes.size() || target.size() > bytes.size() - offset) return false;
        const auto from = bytes.subspan(static_cast<std::size_t>(offset), target.size());
        std::copy(from.begin(), from.end(), target.begin());
        return true;
    };
    const std::uint64_t start = archive::CheckDirectory(read, bytes.size(), notes);
    const std::span<const unsigned char> last = bytes.subspan(static_cast<std::size_t>(start));
    return open(
        [last](zip_error_t* error) { return archive::MakeMemorySource(last.data(), last.size(), error); },
        last.size(), limits, notes);
}

std::unique_ptr<CSDZipHandle> CSDZipHandle::openMemory(std::vector<unsigned char> bytes, const Limits& limits,
                                                       const NoteSink& notes) {
    const std::span<const unsigned char> view(bytes);
    auto handle = openMemory(view, limits, notes);
    if (handle) handle->ownBytes_ = std::move(bytes); // the buffer itself stays where it is
    return handle;
}

template<typename MakeSource>
std::unique_ptr<CSDZipHandle> CSDZipHandle::open(MakeSource makeSource, std::uint64_t byteCount,
                                                 const Limits& limits, const NoteSink& notes) {
    // libzip takes an empty file for an empty archive.
    if (byteCount < kSmallestArchive) {
        notes.add(NoteCode::General, Severity::Error, {}, "too short for a zip archive");
        notes.setStatus(Status::NotAnArchive);
        return nullptr;
    }
    std::unique_ptr<CSDZipHandle> handle(new CSDZipHandle); // NOLINT: private constructor
    archive::Error error;
    if (!handle->openSource(makeSource(error.get()), error.get(), limits, notes)) return nullptr;
    handle->byteCount_ = byteCount;
    handle->readDirectory(notes);
    return handle;
}

bool CSDZipHandle::openSource(zip_source_t* source, zip_error_t* error, const Limits& limits,
                              const NoteSink& notes) {
    if (source) archive_.reset(zip_open_from_source(source, ZIP_RDONLY, error));
    if (!archive_) {
        if (source) zip_source_free(source);
        notes.add(NoteCode::General, Severity::Error, {}, zip_error_strerror(error));
        notes.setStatus(zip_error_code_zip(error) == ZIP_ER_MEMORY ? Status::OutOfMemory
                                                                   : Status::NotAnArchive);
        return false;
    }
    const zip_int64_t count = zip_get_num_entries(archive_.get(), 0);
    if (count < 0 || static_cast<std::uint64_t>(count) > limits.members || count > INT32_MAX) {
        notes.add(NoteCode::SizeLimit, Severity::Error, {}, "more members than the limits allow");
        notes.setStatus(Status::LimitExceeded);
        return false;
    }
    return true;
}

void CSDZipHandle::readDirectory(const NoteSink& notes) {
    const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive_.get(), 0));
    members_.reserve(static_cast<std::size_t>(count));
    for (zip_uint64_t index = 0; index < count; ++index) {
        Member& member = members_.emplace_back();
        zip_stat_t status;
        zip_stat_init(&status);
        if (zip_stat_index(archive_.get(), index, 0, &status) != 0 || !status.name) {
            member.isSpecial = true;
            continue;
        }
        member.name = status.name;
        member.size = status.size;
        member.packedSize = status.comp_size;
        member.crc = status.crc;
        member.method = status.comp_method;
        member.mostBytes = archive::LargestInflated(std::min(member.packedSize, byteCount_));
        member.isZipEncrypted = status.encryption_method != ZIP_EM_NONE;
        member.isFolder = member.name.ends_with('/') || member.name.ends_with('\\');
        member.unixMode = archive::UnixMode(archive_.get(), index);
        member.isSpecial = archive::IsSpecial(member.unixMode);
        member.time = status.mtime;
    }
    byName_.reserve(members_.size());
    for (std::size_t index = 0; index < members_.size(); ++index) {
        // The last one counts: programs that change an archive in place add the newer one after the older.
        const auto [place, isNew] = byName_.try_emplace(members_[index].name, index);
        if (isNew) continue;
        place->second = index;
        notes.add(NoteCode::MemberDuplicate, Severity::Warning, members_[index].name,
                  "a second member of this name; the last one is read");
    }
}

const Member* CSDZipHandle::member(std::int64_t index) const noexcept {
    return index >= 0 && static_cast<std::uint64_t>(index) < members_.size()
               ? &members_[static_cast<std::size_t>(index)]
               : nullptr;
}

std::int64_t CSDZipHandle::find(std::string_view name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? -1 : static_cast<std::int64_t>(found->second);
}

ZipItemTable CSDZipHandle::makeTable() const {
    ZipItemTable table;
    for (const auto& [name, index] : byName_) {
        const Member& member = members_[index];
        ZipItem item;
        item.size = static_cast<long long>(member.plainSize());
        if (member.isReadable()) item.index = static_cast<int>(index);
        table.insert_or_assign(CTulStringW(name), item);
    }
    return table;
}

void CSDZipHandle::setEncryption(std::vector<crypto::EncryptedRow> rows,
                                 std::unique_ptr<crypto::PackageDecryption> decryption) {
    rows_ = std::move(rows);
    decryption_ = std::move(decryption);
    for (const crypto::EncryptedRow& row : rows_) {
        const std::int64_t index = find(row.path);
        if (index >= 0) members_[static_cast<std::size_t>(index)].encryption = &row;
    }
}
