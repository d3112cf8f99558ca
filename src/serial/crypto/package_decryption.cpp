#include "serial/crypto/package_decryption.h"

#include "platform/threads.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <vector>

namespace ODF::crypto {

PackageDecryption::PackageDecryption(ByteView password, const Limits& limits)
    : password_(password), limits_(limits), workLeft_(limits.keyWork) {}

bool PackageDecryption::isUsable(const EncryptedRow& row) const noexcept {
    return row.data.isSupported() && row.data.isAllowed(limits_);
}

bool PackageDecryption::mayAfford(const EncryptionData& data) noexcept {
    const std::uint64_t work = data.work();
    isExhausted_ = isExhausted_ || work > workLeft_;
    if (isExhausted_) return false; // also for smaller ones, so that the order of members doesn't tell
    workLeft_ -= work;
    return true;
}

void PackageDecryption::allowMore(std::uint64_t times) noexcept {
    const std::uint64_t more = limits_.keyWork > UINT64_MAX / 2 / std::max<std::uint64_t>(times, 1)
                                   ? UINT64_MAX / 2
                                   : limits_.keyWork * times;
    workLeft_ = std::max(workLeft_, more);
    isExhausted_ = false;
}

ByteView PackageDecryption::startKey(Digest digest) {
    Secret& key = startKeys_[digest == Digest::Sha1 ? 0 : 1];
    if (key.empty()) key = HashSecret(digest, password_.view());
    return key.view();
}

bool PackageDecryption::deriveKeys(std::span<const EncryptedRow* const> rows, const GoesOn& goesOn) {
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
    std::atomic<bool> isEnded = false;
    const auto work = [&](bool mayAsk) noexcept {
        try {
            for (std::size_t index = next++; index < jobs.size() && !isEnded; index = next++) {
                if (mayAsk && goesOn && !goesOn(index, jobs.size())) isEnded = true;
                jobs[index].key = DeriveKey(jobs[index].row->data, jobs[index].startKey);
            }
        } catch (const std::bad_alloc&) { // nothing may leave a thread
            isOutOfMemory = true;
        }
    };
    const bool isHeavy = std::any_of(jobs.begin(), jobs.end(), [](const Job& job) {
        return job.row->data.derivation == KeyDerivation::Argon2id; // each would take its own large block
    });
    platform::OnThreads(isHeavy ? 1 : std::min<std::size_t>(platform::Processors(), jobs.size()), work);
    if (isOutOfMemory) throw std::bad_alloc();
    for (Job& job : jobs)
        if (job.key) keys_[job.row] = std::move(*job.key);
    return !isEnded;
}

DecryptResult PackageDecryption::decrypt(const EncryptedRow& row, Bytes& bytes) {
    const EncryptedRow* const asked = &row;
    deriveKeys({&asked, 1});
    const auto key = keys_.find(&row);
    if (key != keys_.end()) return DecryptMember(row.data, key->second.view(), bytes);
    return isExhausted_ ? DecryptResult::TooMuchWork : DecryptResult::Damaged;
}

} // namespace ODF::crypto
