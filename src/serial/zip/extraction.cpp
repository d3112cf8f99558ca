#include "serial/zip/extraction.h"

#include "platform/files.h"
#include "serial/zip/inflate.h"
#include "serial/zip/member_path.h"
#include "serial/zip/member_stream.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace ODF::archive {

namespace {

/// What an archive whose members share bytes may take: more than any honest one needs.
constexpr std::uint64_t kMaxOfSharing = std::uint64_t{256} << 20;

struct Job {
    std::size_t index;
    MemberPath path;
};

class Extraction {
public:
    Extraction(const CSDZipHandle& handle, const Limits& limits, const NoteSink& notes)
        : handle_(handle), reader_(handle), limits_(limits), notes_(notes) {}

    bool run(const platform::Path& folder) {
        folder_ = folder.utf8();
        if (!platform::CreateFolders(folder, true) || !writer_.open(folder)) {
            notes_.add(NoteCode::WriteFailed, Severity::Error, {},
                       "can't make the folder " + folder_ + ": " + platform::LastFault());
            notes_.setStatus(Status::NoTemporaryFolder);
            return false;
        }
        const std::size_t length = platform::Absolute(folder).utf8().size() + 2;
        const std::vector<Job> jobs = plan(platform::kMaxPath - std::min(length, platform::kMaxPath));
        mostBytes_ = mostBytes(jobs);
        prepareKeys(jobs);
        return std::all_of(jobs.begin(), jobs.end(), [&](const Job& job) { return extract(job); });
    }

private:
    void skip(const Member& member, std::string_view why) const {
        notes_.add(NoteCode::MemberSkipped, Severity::Warning, member.name, why);
    }

    /// What goes where. Of two members with one place the later one counts, however their names are written.
    std::vector<Job> plan(std::size_t room) const {
        std::vector<Job> jobs;
        std::unordered_map<std::string, std::size_t> places;
        for (std::size_t index = 0; index < handle_.members().size(); ++index) {
            const Member& member = handle_.members()[index];
            const char* fault = nullptr;
            auto path = ToMemberPath(member.name, room, fault);
            if (path && member.isSpecial) fault = "a link or device";
            if (fault) {
                skip(member, fault);
                continue;
            }
            const auto [place, isNew] = places.try_emplace(path->joined(), jobs.size());
            if (isNew)
                jobs.push_back({index, std::move(*path)});
            else
                takePlace(jobs[place->second], index);
        }
        return jobs;
    }

    /// Of two names for one place the directory has noted those that are the same.
    void takePlace(Job& job, std::size_t index) const {
        const Member& member = handle_.members()[index];
        const Member& before = handle_.members()[job.index];
        if (member.name != before.name)
            notes_.add(NoteCode::MemberDuplicate, Severity::Warning, member.name,
                       "takes the place of " + before.name + ", which is the same file");
        job.index = index;
    }

    /// What all members may take together. Each byte of the archive belongs to one member, unless it was made
    /// to fill the disk; so more than the whole of it can become doesn't come out.
    std::uint64_t mostBytes(const std::vector<Job>& jobs) const {
        std::uint64_t packed = 0;
        for (const Job& job : jobs) {
            const std::uint64_t more = handle_.members()[job.index].packedSize;
            packed += std::min(more, UINT64_MAX - packed);
        }
        const std::uint64_t most = std::min(limits_.totalBytes, LargestInflated(handle_.byteCount()));
        return packed > handle_.byteCount() ? std::min(most, kMaxOfSharing) : most;
    }

    void prepareKeys(const std::vector<Job>& jobs) const {
        if (!handle_.decryption()) return;
        std::vector<const crypto::EncryptedRow*> rows;
        for (const Job& job : jobs) {
            const Member& member = handle_.members()[job.index];
            if (member.encryption && member.packedSize > 0) rows.push_back(member.encryption);
        }
        handle_.decryption()->deriveKeys(rows);
    }

    /// False ends the extraction.
    bool extract(const Job& job) {
        const Member& member = handle_.members()[job.index];
        if (member.isFolder) {
            if (!writer_.createFolder(job.path.steps)) skip(member, "the folder can't be made");
            return true;
        }
        if (!member.isReadable()) {
            NoteResult(ReadResult::Unsupported, member, notes_);
            return true;
        }
        platform::OutputFile file = writer_.createFile(job.path.steps);
        if (!file.isOpen()) {
            if (writer_.isNameFault()) {
                skip(member, "the system can't store a file of this name here");
                return true;
            }
            return failToWrite(member);
        }
        const ReadResult result = reader_.read(static_cast<std::int64_t>(job.index),
                                               std::min(limits_.memberBytes, mostBytes_ - total_),
                                               [&](std::span<const unsigned char> piece) {
                                                   total_ += piece.size();
                                                   return file.write(piece.data(), piece.size());
                                               });
        if (!file.close() || result == ReadResult::Refused) return failToWrite(member);
        NoteResult(result, member, notes_);
        return result != ReadResult::TooLarge;
    }

    bool failToWrite(const Member& member) const {
        notes_.add(NoteCode::WriteFailed, Severity::Error, member.name,
                   "the extracted file can't be written in " + folder_ + ": " + platform::LastFault());
        notes_.setStatus(Status::CouldNotWrite);
        return false;
    }

    const CSDZipHandle& handle_;
    MemberReader reader_;
    const Limits& limits_;
    const NoteSink& notes_;
    platform::FolderWriter writer_;
    std::uint64_t mostBytes_ = 0;
    std::uint64_t total_ = 0;
    std::string folder_;
};

} // namespace

void NoteResult(ReadResult result, const Member& member, const NoteSink& notes) {
    switch (result) {
    case ReadResult::Ok:
        return;
    case ReadResult::TooLarge:
        notes.add(NoteCode::SizeLimit, Severity::Error, member.name, ToText(result));
        notes.setStatus(Status::LimitExceeded);
        return;
    case ReadResult::NotRead:
        notes.add(NoteCode::ReadFailed, Severity::Error, member.name, ToText(result));
        notes.setStatus(Status::NotReadable);
        return;
    case ReadResult::WrongKey:
        notes.add(NoteCode::ChecksumMismatch, Severity::Error, member.name, ToText(result));
        return;
    default:
        notes.add(NoteCode::MemberUnreadable, Severity::Error, member.name, ToText(result));
    }
}

bool ExtractAll(const CSDZipHandle& handle, const platform::Path& folder, const Limits& limits,
                const NoteSink& notes) {
    return Extraction(handle, limits, notes).run(folder);
}

bool ExtractOne(const CSDZipHandle& handle, std::int64_t index, const platform::Path& path,
                const Limits& limits, const NoteSink& notes) {
    const Member* const member = handle.member(index);
    if (!member || !member->isReadable()) return false;
    platform::OutputFile file;
    if (!file.create(path)) {
        notes.add(NoteCode::WriteFailed, Severity::Error, member->name,
                  "the extracted file can't be written");
        return false;
    }
    std::uint64_t total = 0;
    const ReadResult result =
        MemberReader(handle).read(index, limits.memberBytes, [&](std::span<const unsigned char> piece) {
            total += piece.size();
            return file.write(piece.data(), piece.size());
        });
    const bool isWritten = file.close() && result != ReadResult::Refused;
    if (!isWritten)
        notes.add(NoteCode::WriteFailed, Severity::Error, member->name, "the file can't be written");
    NoteResult(result, *member, notes);
    const bool isUseful = result == ReadResult::Ok || (result == ReadResult::Damaged && total > 0);
    if (isWritten && isUseful) return true;
    if (platform::IsFile(path)) platform::RemoveFile(path);
    return false;
}

} // namespace ODF::archive
