#include "serial/crypto/package_decryption.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>
#include <vector>

namespace ODF::crypto {

namespace {
// Beyond this, more threads only wait for each other's memory.
constexpr unsigned kMostThreads = 8;
// A package of many members may ask for this many times what one member may ask for.
constexpr double kMostWork = 100;

double Share(double part, double whole) noexcept {
    return part / std::max(whole, 1.0);
}
} // namespace

PackageDecryption::PackageDecryption(ByteView password, const Limits& limits)
    : password_(password), limits_(limits) {}

bool PackageDecryption::isUsable(const EncryptedRow& row) const noexcept {
    return row.data.isSupported() && row.data.isAllowed(limits_);
}

bool PackageDecryption::mayAfford(const EncryptionData& data) {
    work_ += data.derivation == KeyDerivation::Argon2id
                 ? Share(data.argon2Iterations, limits_.argon2Iterations) *
                       Share(data.argon2MemoryKiB, limits_.argon2MemoryKiB)
                 : Share(data.iterations, limits_.pbkdf2Iterations);
    return work_ <= kMostWork;
}

ByteView PackageDecryption::startKey(Digest digest) {
    Secret& key = startKeys_[digest == Digest::Sha1 ? 0 : 1];
    if (key.empty()) key = HashSecret(digest, password_.view());
    return key.view();
}

void PackageDecryption::deriveKeys(std::span<const EncryptedRow* const> rows) {
    struct Job {
        const EncryptedRow* row;
        ByteView startKey;
        std::optional<Secret> key;
    };
    std::vector<Job> jobs;
    for (const EncryptedRow* row : rows)
        if (isUsable(*row) && !keys_.contains(row) && mayAfford(row->data))
            jobs.push_back({row, startKey(*row->data.startKeyDigest), {}});
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isOutOfMemory = false;
    const auto work = [&]() noexcept {
        try {
            for (std::size_t index = next++; index < jobs.size(); index = next++)
                jobs[index].key = DeriveKey(jobs[index].row->data, jobs[index].startKey);
        } catch (const std::bad_alloc&) { // nothing may leave a thread
            isOutOfMemory = true;
        }
    };
    {
        // The calling thread works too; where no thread can be had it does everything.
        std::vector<std::jthread> threads;
        const std::size_t processors = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
        const bool isHeavy = std::any_of(jobs.begin(), jobs.end(), [](const Job& job) {
            return job.row->data.derivation == KeyDerivation::Argon2id; // each would take its own large block
        });
        const std::size_t wanted = isHeavy ? 1 : std::min(processors, jobs.size());
        try {
            while (threads.size() + 1 < wanted)
                threads.emplace_back(work);
        } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch)
        }
        work();
    }
    if (isOutOfMemory) throw std::bad_alloc();
    for (Job& job : jobs)
        if (job.key) keys_[job.row] = std::move(*job.key);
}

DecryptResult PackageDecryption::decrypt(const EncryptedRow& row, Bytes& bytes) {
    const EncryptedRow* const asked = &row;
    deriveKeys({&asked, 1});
    const auto key = keys_.find(&row);
    if (key != keys_.end()) return DecryptMember(row.data, key->second.view(), bytes);
    return work_ > kMostWork ? DecryptResult::TooMuchWork : DecryptResult::Damaged;
}

} // namespace ODF::crypto
