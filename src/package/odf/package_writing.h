#pragma once

#include "package/odf/package_state.h"

namespace ODF::package {

/// The archive of the package in its present state.
Status WritePackage(const OdfPackage::State& state, const OdfPackage::WriteOptions& options,
                    std::vector<unsigned char>& archive, const archive::NoteSink& notes);

} // namespace ODF::package
