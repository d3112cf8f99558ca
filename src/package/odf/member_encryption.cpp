#include "package/odf/member_encryption.h"

#include "platform/threads.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace ODF::package {

namespace {

Status Encrypt(const crypto::PackageEncryption& encryption, EncryptionJob& job) noexcept {
    try {
        std::optional<crypto::EncryptedMember> member = encryption.encrypt(std::move(job.bytes));
        if (!member) return Status::UnsupportedEncryption;
        job.bytes = std::move(member->bytes);
        job.xml = crypto::ToManifestText(member->data);
        return Status::Ok;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
}

} // namespace

Status EncryptMembers(const crypto::PackageEncryption& encryption, std::span<EncryptionJob> jobs,
                      const archive::NoteSink& notes) {
    std::atomic<std::size_t> next = 0;
    std::atomic<Status> status = Status::Ok;
    const auto work = [&](bool mayAsk) noexcept {
        for (std::size_t index = next++; index < jobs.size() && status == Status::Ok; index = next++) {
            const bool goesOn = !mayAsk || notes.goesOn({Progress::Step::Keys, {}, index, jobs.size()});
            const Status result = goesOn ? Encrypt(encryption, jobs[index]) : Status::Cancelled;
            if (result != Status::Ok) status = result;
        }
    };
    platform::OnThreads(std::min<std::size_t>(platform::Processors(), jobs.size()), work);
    return status;
}

} // namespace ODF::package
