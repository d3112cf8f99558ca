#pragma once

#include <odfmodel/document/odf_document.h>

#include <string>
#include <utility>
#include <vector>

namespace command {

class Passwords;

/// Opens a package into the plain model, with the passwords of the options or the terminal.
ODF::Status OpenListed(ODF::CODFDoc& document, const std::string& path, const Passwords& passwords);
/// The same with a known password; empty for none.
ODF::Status OpenListed(ODF::CODFDoc& document, const std::string& path, const std::string& password);
/// The parts that have an element tree, by their path with `/`, in the order of the package.
std::vector<std::pair<std::string, ODF::CODFPart*>> TreesOf(const ODF::CDocument& document);

/// Whether an open or a save of the plain model was done, be it without what a damaged file doesn't give.
constexpr bool IsDone(ODF::Status status) noexcept {
    return status == ODF::Status::Ok || status == ODF::Status::Damaged;
}

} // namespace command
