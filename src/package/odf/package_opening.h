#pragma once

#include "package/odf/package_state.h"

namespace ODF::package {

/// Fills a new state from the bytes of an archive.
Status OpenPackage(OdfPackage::State& state, std::vector<unsigned char> bytes,
                   const archive::NoteSink& notes);

} // namespace ODF::package
