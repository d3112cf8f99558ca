#include "package/listed_document.h"

#include "password.h"

#include <algorithm>

namespace command {

ODF::Status OpenListed(ODF::CODFDoc& document, const std::string& path, const std::string& password) {
    if (!password.empty()) document.SetPassword(std::string_view(password));
    document.Open(path);
    return document.GetDiagnostics().status();
}

ODF::Status OpenListed(ODF::CODFDoc& document, const std::string& path, const Passwords& passwords) {
    return passwords.open(path, [&](const std::string* password) {
        return OpenListed(document, path, password ? *password : std::string());
    });
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
