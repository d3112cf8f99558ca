#include "package/odf/member_encryption.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace ODF::package {

namespace {

// Beyond this, more threads only wait for each other's memory.
constexpr unsigned kMostThreads = 8;

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

std::vector<unsigned char> MemberDeflater::deflateIfSmaller(std::span<const unsigned char> plain) {
    if (plain.size() > archive::kLargestWholeDeflate) {
        std::vector<unsigned char> deflated = deflate(plain);
        return deflated.size() < plain.size() ? std::move(deflated) : std::vector<unsigned char>();
    }
    const std::span<const unsigned char> deflated = whole_.deflate(plain);
    return {deflated.begin(), deflated.end()};
}

std::vector<unsigned char> MemberDeflater::deflate(std::span<const unsigned char> plain) {
    std::vector<unsigned char> deflated;
    if (plain.size() <= archive::kLargestWholeDeflate) deflated = deflateIfSmaller(plain);
    if (!deflated.empty()) return deflated;
    archive::Deflater pieces([&](std::span<const unsigned char> piece) {
        deflated.insert(deflated.end(), piece.begin(), piece.end());
        return true;
    });
    if (!pieces.add(plain) || !pieces.finish()) throw std::bad_alloc(); // all that it fails for
    return deflated;
}

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
    {
        // The calling thread works too; where no thread can be had it does everything.
        std::vector<std::jthread> threads;
        const std::size_t wanted = std::min<std::size_t>(
            std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads), jobs.size());
        try {
            while (threads.size() + 1 < wanted)
                threads.emplace_back(work, false);
        } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch)
        }
        work(true);
    }
    return status;
}

} // namespace ODF::package
