#pragma once

#include "serial/zip/archive.h"

namespace ODF::archive {

/// Makes the encrypted members of an ODF archive readable, if it has any: reads the encryption data out of
/// its manifest and tries the password. Of a package that is encrypted as a whole the archive inside comes
/// back. Null, with the status set, when the password is missing or wrong or the encryption isn't known.
std::unique_ptr<CSDZipHandle> MakeReadable(std::unique_ptr<CSDZipHandle> handle,
                                           const crypto::Secret& password, const Limits& limits,
                                           const NoteSink& notes);

} // namespace ODF::archive
