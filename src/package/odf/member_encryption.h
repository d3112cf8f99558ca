#pragma once

#include "serial/crypto/package_encryption.h"
#include "serial/zip/archive.h"
#include "serial/zip/deflate.h"

#include <odfmodel/core/diagnostics.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ODF::package {

/// A member on its way into an encrypted archive.
struct EncryptionJob {
    std::vector<unsigned char> bytes; ///< deflated, then encrypted
    std::uint64_t plainSize = 0;
    std::string xml; ///< its encryption data for the manifest
};

/// Encrypts on all processors: finding the keys takes longer than everything else in a save. `Cancelled` when
/// the caller doesn't want to go on.
Status EncryptMembers(const crypto::PackageEncryption& encryption, std::span<EncryptionJob> jobs,
                      const archive::NoteSink& notes);

} // namespace ODF::package
