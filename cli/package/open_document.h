#pragma once

#include <odfmodel/document/odf_document.h>

#include <string>
#include <utility>
#include <vector>

namespace command {

class Passwords;

/// Opens an OpenDocument package with the passwords of the options or the terminal; a failure is told.
bool OpenDocument(ODF::CODFDoc& document, const std::string& path, const Passwords& passwords);
/// The parts that have an element tree, by their path with `/`, in the order of the package.
std::vector<std::pair<std::string, ODF::CODFPart*>> TreesOf(const ODF::CDocument& document);

} // namespace command
