#include "package/open_document.h"

#include "console.h"
#include "package/reason.h"
#include "password.h"

#include <algorithm>

namespace command {

bool OpenDocument(ODF::CODFDoc& document, const std::string& path, const Passwords& passwords) {
    const ODF::Status status = passwords.open(path, [&](const std::string* password) {
        if (password) document.SetPassword(std::string_view(*password));
        document.Open(path);
        return document.GetDiagnostics().status();
    });
    if (status != ODF::Status::Ok) Complain(path, Reason(document.GetDiagnostics()));
    return status == ODF::Status::Ok;
}

std::vector<std::pair<std::string, ODF::CODFPart*>> TreesOf(const ODF::CDocument& document) {
    std::vector<std::pair<std::string, ODF::CODFPart*>> trees;
    std::vector<ISDPart*> parts;
    if (const ODF::CODFPart* const root = document.GetRootPart()) root->GetChildParts(&parts);
    for (ISDPart* const child : parts) {
        auto* const part = static_cast<ODF::CODFPart*>(child);
        if (!part || part->GetPartType() != PartTypeXml || !part->GetRootClass()) continue;
        std::string path = ODF::ToUtf8(part->GetPackagePath());
        std::replace(path.begin(), path.end(), '\\', '/');
        trees.emplace_back(std::move(path), part);
    }
    return trees;
}

} // namespace command
