#pragma once

#include "exit_code.h"
#include "package/members.h"

#include <odfmodel/document/open_document.h>

#include <string>

namespace command {

class Passwords;

/// Opens a document with the passwords of the options or the terminal. `password`, if given, is the one that
/// was tried last, empty for none. `isStrict` refuses archives that other programs may read otherwise.
ODF::Result TryOpen(ODF::Document& document, const std::string& path, const Passwords& passwords,
                    std::string* password = nullptr, bool isStrict = false);
/// The same, and tells what was met. `CannotOpen` when the document is damaged, too; then it is open with
/// what could be read.
ExitCode OpenDocument(ODF::Document& document, const std::string& path, const Passwords& passwords,
                      bool isStrict = false);

/// The file that a document was opened from, in clear.
class DocumentFile final : public MemberSource {
public:
    /// `document` must outlive this object.
    explicit DocumentFile(const ODF::Document& document);
    MemberBytes read(std::string_view name) const override;

private:
    const ODF::Document& document_;
};

/// A whole file from the disk, for flat documents, which are one. It isn't whole beyond the library's bound
/// on members.
MemberBytes ReadWholeFile(const std::string& path);

} // namespace command
