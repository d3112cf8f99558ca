#include <odfmodel/serial/zip.h>

#include "serial/zip/archive_writer.h"
#include "serial/zip/packed_member.h"
#include "serial/zip/packer.h"
#include "serial/zip/spool.h"
#include "serial/zip/target.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

// libzip writes an archive when it is closed, from sources that must live until then. Its callers here expect
// that a member is done with when its call returns: they delete the file or close the archive it came from,
// and they want to know at once when a member can't be read. So each call packs its member into a spool, and
// closing hands libzip ready-made data with sizes and checksum, which it copies as it is.

using namespace ODF;

namespace {
// What the length field of an archive holds; libzip would cut longer names without a word.
constexpr std::size_t kMaxName = 65535;
} // namespace

struct CSDZip::State {
    Diagnostics* diagnostics = nullptr;
    std::unique_ptr<archive::Target> target; ///< set while an archive is open
    bool hasFailed = false;
    int exceptions = 0;     ///< on their way when the archive was begun
    std::uint64_t size = 0; ///< of the finished archive
    archive::Spool spool;
    std::vector<archive::PackedMember> members;
    std::unordered_map<std::string, std::size_t> places;
    archive::Packer packer{spool};
    archive::DosTime now;

    archive::NoteSink notes() const noexcept { return {diagnostics}; }

    int create(std::unique_ptr<archive::Target> made) {
        target = std::move(made);
        if (!target) {
            notes().setStatus(Status::CouldNotWrite);
            return 0;
        }
        now = archive::PresentDosTime();
        exceptions = std::uncaught_exceptions();
        return 1;
    }

    /// What begins an archive: the one before is finished, and a lack of memory begins none.
    template<typename Make>
    int begin(Make make) {
        finish();
        try {
            return create(make());
        } catch (const std::bad_alloc&) {
            reset();
            notes().setStatus(Status::OutOfMemory);
            return 0;
        }
    }

    void reset() noexcept {
        target.reset();
        hasFailed = false;
        exceptions = 0;
        spool = {};
        members.clear();
        places.clear();
    }

    /// Packs a member with `pack`, which fills in what it finds. A member that fails leaves nothing in the
    /// spool.
    template<typename Pack>
    int add(const unsigned short* itemName, Pack pack) {
        if (!target) return 0;
        // An exception that leaves here must not leave an archive that passes for whole.
        const bool hadFailed = std::exchange(hasFailed, true);
        const std::uint64_t before = spool.size();
        try {
            if (!addWhole(itemName, pack)) return 0;
            hasFailed = hadFailed;
            return 1;
        } catch (const std::bad_alloc&) {
            spool.cutTo(before);
            notes().setStatus(Status::OutOfMemory);
            return 0;
        }
    }

    template<typename Pack>
    bool addWhole(const unsigned short* itemName, Pack& pack) {
        archive::PackedMember member;
        member.name = ToUtf8(itemName);
        std::replace(member.name.begin(), member.name.end(), '\\', '/');
        member.name.erase(0, member.name.find_first_not_of('/'));
        member.offset = spool.size();
        member.time = now;
        if (member.name.empty() || member.name.size() > kMaxName || !pack(member)) {
            spool.cutTo(member.offset);
            notes().add(NoteCode::WriteFailed, Severity::Error, member.name,
                        spool.fault().empty() ? "the member can't be put into the archive" : spool.fault());
            return false;
        }
        member.packedSize = spool.size() - member.offset;
        const auto place = places.find(member.name);
        if (place == places.end()) {
            members.push_back(std::move(member));
            places.emplace(members.back().name, members.size() - 1);
        } else {
            notes().add(NoteCode::MemberDuplicate, Severity::Warning, member.name,
                        "a second member of this name takes the place of the first");
            members[place->second] = std::move(member);
        }
        return true;
    }

    bool writeMembers() {
        archive::ArchiveWriter writer(*target);
        for (const archive::PackedMember& member : members) {
            const auto bytes = [this, start = member.offset](std::uint64_t offset,
                                                             std::span<unsigned char> place) {
                return spool.read(start + offset, place);
            };
            if (!writer.add(member, bytes)) return isWritten(writer, false);
        }
        return isWritten(writer, writer.finish());
    }

    bool isWritten(const archive::ArchiveWriter& writer, bool isDone) {
        if (writer.isOutOfMemory()) notes().setStatus(Status::OutOfMemory);
        size = writer.size();
        return isDone;
    }

    /// The one step that puts the archive in its place. Whatever fails before leaves the target as it was.
    int finish() noexcept {
        if (!target) return 0;
        bool isWritten = false;
        try {
            errno = 0;
            isWritten = !hasFailed && writeMembers() && target->finish(size);
            if (!isWritten) {
                const std::string cause = errno != 0 ? ": " + platform::LastFault() : std::string();
                notes().setStatus(Status::CouldNotWrite);
                notes().add(NoteCode::WriteFailed, Severity::Error, {},
                            "the archive can't be written" + cause);
            } else if (target->loss()) {
                notes().add(NoteCode::TargetChanged, Severity::Warning, {}, target->loss());
            }
        } catch (const std::bad_alloc&) {
            notes().setStatus(Status::OutOfMemory);
        }
        reset();
        return isWritten ? 1 : 0;
    }

    int finish(int& byteCount) {
        const int result = finish();
        byteCount = result != 0 && size <= INT32_MAX ? static_cast<int>(size) : 0;
        return result;
    }
};

CSDZip::CSDZip() : state_(std::make_unique<State>()) {}

CSDZip::~CSDZip() {
    // What an exception leaves behind is half an archive, which its maker never called done.
    if (std::uncaught_exceptions() > state_->exceptions) state_->reset();
    state_->finish();
}

int CSDZip::CreareZipFile(const unsigned short* path) {
    return state_->begin([&] { return archive::MakeFileTarget(path); });
}

int CSDZip::CreareZipFile(void* buffer, int capacity) {
    return state_->begin([&]() -> std::unique_ptr<archive::Target> {
        if (!buffer || capacity < 0) return nullptr;
        return archive::MakeMemoryTarget(
            {static_cast<unsigned char*>(buffer), static_cast<std::size_t>(capacity)});
    });
}

int CSDZip::LargeMemoryCreareZipFile(void* mapping, int capacity) {
    return state_->begin([&] {
        return capacity < 0 ? nullptr
                            : archive::MakeMappingTarget(mapping, static_cast<std::size_t>(capacity));
    });
}

int CSDZip::Compress(const unsigned short* itemName, const unsigned short* path, int packed) {
    return state_->add(itemName, [&](archive::PackedMember& member) {
        return state_->packer.packFile(member, path, packed != 0);
    });
}

int CSDZip::Compress(const unsigned short* itemName, void* data, int byteCount) {
    return state_->add(itemName, [&](archive::PackedMember& member) {
        if (byteCount < 0 || (!data && byteCount > 0)) return false;
        return state_->packer.packBytes(
            member, {static_cast<const unsigned char*>(data), static_cast<std::size_t>(byteCount)}, false);
    });
}

int CSDZip::CompressStored(const unsigned short* itemName, const void* data, int byteCount) {
    return state_->add(itemName, [&](archive::PackedMember& member) {
        if (byteCount < 0 || (!data && byteCount > 0)) return false;
        return state_->packer.packBytes(
            member, {static_cast<const unsigned char*>(data), static_cast<std::size_t>(byteCount)}, true);
    });
}

int CSDZip::CompressLargeMemory(const unsigned short* itemName, const unsigned short* path, int packed) {
    return Compress(itemName, path, packed);
}

int CSDZip::CompressLargeMemory(const unsigned short* itemName, void* data, int byteCount) {
    return Compress(itemName, data, byteCount);
}

int CSDZip::CopyItem(CSDZipHandle* source, int index, const unsigned short* itemName) {
    return state_->add(itemName, [&](archive::PackedMember& member) {
        return source && state_->packer.packMember(member, *source, index, state_->notes());
    });
}

int CSDZip::CopyItemLargeMemory(CSDZipHandle* source, void* /*mapping*/, unsigned long /*mappingSize*/,
                                int index, const unsigned short* itemName) {
    // The handle knows its own mapping.
    return CopyItem(source, index, itemName);
}

int CSDZip::CloseFile() {
    return state_->finish();
}

int CSDZip::CloseMemoryFile(int& byteCount) {
    return state_->finish(byteCount);
}

int CSDZip::CloseLargeMemoryFile(int& byteCount) {
    return state_->finish(byteCount);
}

void CSDZip::Discard() {
    state_->reset();
}

void CSDZip::SetDiagnostics(Diagnostics* diagnostics) {
    state_->diagnostics = diagnostics;
}
