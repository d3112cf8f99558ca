#pragma once

#include "serial/crypto/encryption_data.h"

#include <vector>

namespace ODF::crypto {

/// What a manifest says about encryption.
struct EncryptedRows {
    std::vector<EncryptedRow> rows;
    bool isWellFormed = true; ///< false: the rows up to the fault are there
};

/// Reads the rows with encryption data out of a manifest. Names are told by their local part, since files
/// differ in the URI of the manifest's namespace and in the one of later additions.
EncryptedRows ReadEncryptedRows(ByteView manifest, const Limits& limits);

} // namespace ODF::crypto
