#include <odfmodel/serial/unzip.h>

#include "serial/zip/encrypted_archive.h"
#include "serial/zip/extraction.h"
#include "serial/zip/unzip_state.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace ODF;

namespace {

// Reads of that many members may be interleaved without starting any of them again.
constexpr std::size_t kMaxStreams = 4;

} // namespace

std::size_t CSDUnZip::State::Stream::read(std::span<unsigned char> buffer) {
    if (member) return member->read(buffer);
    const std::ptrdiff_t count = file.readAt(position, buffer.data(), buffer.size());
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool CSDUnZip::State::take(std::unique_ptr<CSDZipHandle> opened) {
    if (opened && handlesEncryption)
        opened = archive::MakeReadable(std::move(opened), password, limits, notes());
    if (!opened) {
        close();
        return false;
    }
    handle = std::move(opened);
    table = handle->makeTable();
    return true;
}

void CSDUnZip::State::close() noexcept {
    streams.clear();
    handle.reset();
    view.unmap();
    mapping = nullptr;
    mappingSize = 0;
    folder = {};
    folderFiles.clear();
    table.clear();
}

int CSDUnZip::State::find(const unsigned short* name) const {
    const auto found = table.find(CTulStringW(name));
    return found == table.end() ? -1 : found->second.index;
}

const std::string* CSDUnZip::State::folderFile(int index) const noexcept {
    return index >= 0 && static_cast<std::size_t>(index) < folderFiles.size()
               ? &folderFiles[static_cast<std::size_t>(index)]
               : nullptr;
}

bool CSDUnZip::State::openStream(int index, Stream& stream) const {
    stream.index = index;
    if (const std::string* const name = folderFile(index)) return stream.file.open(folder / *name);
    if (!handle) return false;
    stream.member = std::make_unique<archive::MemberStream>(*handle, index, limits.memberBytes);
    return true;
}

CSDUnZip::State::Stream* CSDUnZip::State::streamAt(int index, std::uint32_t cursor, bool isStart) {
    const auto found = std::find_if(streams.begin(), streams.end(), [&](const Stream& stream) {
        return stream.index == index && static_cast<std::uint32_t>(stream.position) == cursor;
    });
    if (!isStart && found != streams.end()) {
        std::rotate(found, found + 1, streams.end());
        return &streams.back();
    }
    Stream stream;
    if (!openStream(index, stream)) return nullptr;
    // Its stream had to make room for others: read on to the place where the caller is.
    std::array<unsigned char, 4096> passed{};
    while (!isStart && stream.position < cursor) {
        const auto wanted = std::min<std::uint64_t>(passed.size(), cursor - stream.position);
        const std::size_t count = stream.read(std::span(passed).first(static_cast<std::size_t>(wanted)));
        if (count == 0) return nullptr;
        stream.position += count;
    }
    if (streams.size() >= kMaxStreams) streams.erase(streams.begin());
    streams.push_back(std::move(stream));
    return &streams.back();
}

void CSDUnZip::State::drop(const Stream* stream) {
    streams.erase(streams.begin() + (stream - streams.data()));
}

CSDUnZip::CSDUnZip() : state_(std::make_unique<State>()) {}

CSDUnZip::~CSDUnZip() = default;

int CSDUnZip::OpenZipFileNonDecompress(const unsigned short* path) {
    CloseFile();
    return bind(state_->take(CSDZipHandle::openFile(path, state_->limits, state_->notes())));
}

int CSDUnZip::OpenZipFileNonDecompress(void* data, unsigned byteCount) {
    CloseFile();
    if (!data && byteCount > 0) return 0;
    const std::span<const unsigned char> bytes(static_cast<const unsigned char*>(data), byteCount);
    return bind(state_->take(CSDZipHandle::openMemory(bytes, state_->limits, state_->notes())));
}

int CSDUnZip::LargeMemoryOpenZipFileNonDecompress(void* mapping, unsigned byteCount) {
    CloseFile();
    state_->view = MemoryView(mapping, byteCount, false);
    if (!state_->view.data()) {
        state_->notes().setStatus(Status::NotReadable);
        return 0;
    }
    const std::span<const unsigned char> bytes(state_->view.data(), state_->view.size());
    if (!state_->take(CSDZipHandle::openMemory(bytes, state_->limits, state_->notes()))) return 0;
    state_->mapping = mapping;
    state_->mappingSize = byteCount;
    return bind(true);
}

/// Shows the outcome of an open in the public fields.
int CSDUnZip::bind(bool isOpen) {
    itemTable = isOpen ? &state_->table : nullptr;
    zipHandle = isOpen ? state_->handle.get() : nullptr;
    return isOpen ? 1 : 0;
}

int CSDUnZip::IsVariableMemoryMap() const {
    return state_->mapping ? 1 : 0;
}

void* CSDUnZip::GetMemoryMapHandle() const {
    return state_->mapping;
}

unsigned CSDUnZip::GetMemoryMapSize() const {
    return state_->mappingSize;
}

int CSDUnZip::GetItemIndex(const unsigned short* itemName) const {
    return state_->find(itemName);
}

int CSDUnZip::GetItemSize(const unsigned short* itemName, long& size, int& /*extra*/) const {
    return GetItemSize(state_->find(itemName), size);
}

int CSDUnZip::GetItemSize(int index, long& size) const {
    if (const std::string* const name = state_->folderFile(index)) {
        const auto bytes = platform::FileSize(state_->folder / *name);
        if (bytes) size = static_cast<long>(*bytes);
        return bytes ? 1 : 0;
    }
    const archive::Member* const member = state_->handle ? state_->handle->member(index) : nullptr;
    if (!member || !member->isReadable()) return 0;
    size = static_cast<long>(member->plainSize());
    return 1;
}

int CSDUnZip::GetItem(int index, unsigned char* buffer, long& size) const {
    const auto capacity = static_cast<std::size_t>(std::max(size, 0L));
    if (!buffer && capacity > 0) return 0;
    std::size_t done = 0;
    const auto receive = [&](std::span<const unsigned char> piece) {
        const bool fits = piece.size() <= capacity - done;
        if (fits && !piece.empty()) std::memcpy(buffer + done, piece.data(), piece.size());
        if (fits) done += piece.size();
        return fits;
    };
    if (const std::string* const name = state_->folderFile(index)) {
        const auto data = platform::ReadFile(state_->folder / *name, state_->limits.memberBytes);
        const bool isRead = data && receive(*data);
        size = static_cast<long>(data && !isRead ? data->size() : done);
        return isRead ? 1 : 0;
    }
    const archive::Member* const member = state_->handle ? state_->handle->member(index) : nullptr;
    if (!member || !member->isReadable()) return 0;
    const archive::ReadResult result =
        archive::MemberReader(*state_->handle).read(index, state_->limits.memberBytes, receive);
    const bool isTooSmall = result == archive::ReadResult::Refused;
    if (!isTooSmall) archive::NoteResult(result, *member, state_->notes());
    size = static_cast<long>(isTooSmall ? member->plainSize() : done);
    return result == archive::ReadResult::Ok ? 1 : 0;
}

int CSDUnZip::GetItem(int index, const unsigned short* path) const {
    if (const std::string* const name = state_->folderFile(index)) {
        const auto data = platform::ReadFile(state_->folder / *name, state_->limits.memberBytes);
        return data && platform::WriteFile(path, *data) ? 1 : 0;
    }
    return state_->handle &&
                   archive::ExtractOne(*state_->handle, index, path, state_->limits, state_->notes())
               ? 1
               : 0;
}

int CSDUnZip::Decompress(const unsigned short* folder) {
    return state_->handle && archive::ExtractAll(*state_->handle, folder, state_->limits, state_->notes())
               ? 1
               : 0;
}

int CSDUnZip::Decompress(const unsigned short* itemName, const unsigned short* path) {
    return GetItem(state_->find(itemName), path);
}

int CSDUnZip::Decompress(const unsigned short* itemName, void* buffer, int capacity, int& cursor,
                         int& byteCount) {
    // The cursor is the place in the member, in bytes. Beyond 4 GiB it starts at 0 again, which a start tells
    // from by its byte count.
    const bool isStart = cursor == 0 && byteCount == 0;
    byteCount = 0;
    const int index = state_->find(itemName);
    if (index < 0 || !buffer || capacity <= 0) return 0;
    State::Stream* const stream = state_->streamAt(index, static_cast<std::uint32_t>(cursor), isStart);
    if (!stream) return 0;
    const std::size_t count =
        stream->read({static_cast<unsigned char*>(buffer), static_cast<std::size_t>(capacity)});
    if (count == 0) {
        if (stream->member)
            archive::NoteResult(stream->member->result(), *state_->handle->member(index), state_->notes());
        state_->drop(stream);
        return 0;
    }
    stream->position += count;
    cursor = static_cast<int>(static_cast<std::uint32_t>(stream->position));
    byteCount = static_cast<int>(count);
    return 1;
}

int CSDUnZip::CloseFile() {
    const bool wasOpen = itemTable != nullptr;
    bind(false);
    state_->close();
    return wasOpen ? 1 : 0;
}

int CSDUnZip::OpenAndExtract(const unsigned short* path, const unsigned short* folder) {
    if (OpenZipFileNonDecompress(path) == 0) return 0;
    if (keepCompressed != 0 || Decompress(folder) != 0) return 1;
    CloseFile();
    return 0;
}

int CSDUnZip::OpenForItems(const unsigned short* path) {
    return OpenZipFileNonDecompress(path);
}

int CSDUnZip::OpenFolder(const unsigned short* folder) {
    CloseFile();
    const platform::Path root(folder);
    bool isWithinLimits = true;
    const bool isRead =
        !root.empty() && platform::Walk(root, [&](const std::string& name, platform::FileKind kind) {
            if (kind != platform::FileKind::File) return true;
            isWithinLimits = state_->folderFiles.size() < state_->limits.members;
            if (!isWithinLimits) return false;
            ZipItem item;
            item.size = static_cast<long long>(platform::FileSize(root / name).value_or(0));
            item.index = static_cast<int>(state_->folderFiles.size());
            state_->table.insert_or_assign(CTulStringW(name), item);
            state_->folderFiles.push_back(name);
            return true;
        });
    if (!isRead || !isWithinLimits) {
        state_->notes().setStatus(isRead ? Status::LimitExceeded : Status::NotReadable);
        state_->close();
        return 0;
    }
    state_->folder = root;
    itemTable = &state_->table;
    return 1;
}

void CSDUnZip::SetLimits(const Limits& limits) {
    state_->limits = limits;
}

const Limits& CSDUnZip::GetLimits() const {
    return state_->limits;
}

void CSDUnZip::SetDiagnostics(Diagnostics* diagnostics) {
    state_->diagnostics = diagnostics;
}

Diagnostics* CSDUnZip::GetDiagnostics() const {
    return state_->diagnostics;
}

CODFUnZip::CODFUnZip() {
    state().handlesEncryption = true;
}

CODFUnZip::~CODFUnZip() = default;

void CODFUnZip::SetPassword(const unsigned short* password) {
    std::string text = ToUtf8(password);
    const std::span<unsigned char> bytes(reinterpret_cast<unsigned char*>(text.data()), text.size());
    state().password = crypto::Secret(bytes);
    crypto::Wipe(bytes);
}

int CODFUnZip::OpenAndExtract(const unsigned short* path, const unsigned short* folder) {
    return CSDUnZip::OpenAndExtract(path, folder);
}

int CODFUnZip::OpenForItems(const unsigned short* path) {
    return CSDUnZip::OpenForItems(path);
}
