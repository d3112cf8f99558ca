#include "package/manifest.h"

#include "package/sax.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/serial/default_handler.h>

#include <algorithm>

namespace command {
namespace {

/// The part of an algorithm's name that says something: algorithms are named by URIs such as
/// "http://www.w3.org/2001/04/xmlenc#aes256-cbc", older ones by bare names.
std::string ShortName(std::string_view algorithm) {
    const std::size_t hash = algorithm.find('#');
    return std::string(hash == std::string_view::npos ? algorithm : algorithm.substr(hash + 1));
}

class ManifestHandler final : public CSDDefaultHandler {
public:
    explicit ManifestHandler(std::vector<ManifestEntry>& entries) : entries_(entries) {}

    void startElement(const unsigned short* uri, const unsigned short* localName,
                      const unsigned short* /*qName*/, CSDAttribute* attributes) override {
        if (ToView(uri) != uri_.view() && ToView(uri) != olderUri_.view()) return;
        const std::u16string_view name = ToView(localName);
        const auto value = [&](const char16_t* attribute) {
            return ODF::ToUtf8(attributes->GetValue(uri, ToUnits(attribute)));
        };
        if (name == u"file-entry") entries_.push_back({value(u"full-path"), value(u"media-type"), {}});
        if (name == u"algorithm" && !entries_.empty())
            entries_.back().algorithm = ShortName(value(u"algorithm-name"));
    }

private:
    std::vector<ManifestEntry>& entries_;
    CTulStringW uri_{ODF::NamespaceOfPrefix("manifest")};
    CTulStringW olderUri_{"http://openoffice.org/2001/manifest"};
};

} // namespace

std::vector<ManifestEntry> ReadManifest(std::string_view xml) {
    std::vector<ManifestEntry> entries;
    ManifestHandler handler(entries);
    ParseXml(*MakeSaxReader(), xml, handler);
    return entries;
}

std::string MediaTypeOf(const std::vector<ManifestEntry>& entries) {
    const auto root = std::find_if(entries.begin(), entries.end(),
                                   [](const ManifestEntry& entry) { return entry.isRoot(); });
    return root == entries.end() ? std::string() : root->mediaType;
}

std::string EncryptionOf(const std::vector<ManifestEntry>& entries) {
    const auto encrypted = std::find_if(entries.begin(), entries.end(),
                                        [](const ManifestEntry& entry) { return !entry.algorithm.empty(); });
    return encrypted == entries.end() ? std::string() : encrypted->algorithm;
}

} // namespace command
