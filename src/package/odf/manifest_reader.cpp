#include "package/odf/manifest.h"

#include "serial/xml/expat_parser.h"

#include <utility>

namespace ODF::package {

namespace {
// Encryption data is two levels below a row, and nothing known is deeper.
constexpr std::size_t kDeepest = 32;
} // namespace

/// Builds the elements of a manifest.
class ManifestReader final : public xml::ParserEvents {
public:
    ManifestReader(const Limits& limits, std::size_t mostNodes)
        : parser_(*this, control_, limits, false), nodesLeft_(mostNodes) {}

    Manifest::ReadResult read(std::span<const unsigned char> bytes, ManifestElement& root) {
        const bool isRead = parser_.parse(bytes.data(), bytes.size(), true);
        while (open_.size() > 1)
            close();
        if (!open_.empty()) root = std::move(open_.front());
        if (isRead) return Manifest::ReadResult::Ok;
        return isTooLarge_ ? Manifest::ReadResult::TooLarge : Manifest::ReadResult::Damaged;
    }

private:
    void startElement(std::string_view name, xml::Attributes attributes) override {
        ManifestElement element{std::string(name), {}, {}};
        const std::size_t nodes = 1 + attributes.size();
        for (const auto& [attribute, value] : attributes.first(nodes <= nodesLeft_ ? attributes.size() : 0))
            element.attributes.emplace_back(attribute, value);
        if (nodes > nodesLeft_ || open_.size() == kDeepest) {
            isTooLarge_ = nodes > nodesLeft_;
            control_.stop("more than a manifest may hold",
                          isTooLarge_ ? xml::StopKind::Size : xml::StopKind::Depth);
            return;
        }
        nodesLeft_ -= nodes;
        open_.push_back(std::move(element));
    }

    void endElement(std::string_view) override {
        if (open_.size() > 1) close();
    }

    void characterData(std::string_view, bool) override {}

    void close() {
        ManifestElement element = std::move(open_.back());
        open_.pop_back();
        open_.back().children.push_back(std::move(element));
    }

    xml::ParseControl control_;
    xml::ExpatParser parser_;
    std::size_t nodesLeft_;
    bool isTooLarge_ = false;
    std::vector<ManifestElement> open_;
};

Manifest::ReadResult Manifest::read(std::span<const unsigned char> bytes, const Limits& limits,
                                    std::size_t mostNodes) {
    ManifestElement root;
    ReadResult result = ManifestReader(limits, mostNodes).read(bytes, root);
    const std::string_view name(root.name);
    if (name.substr(name.find(':') + 1) != "manifest") return ReadResult::Damaged;
    *this = Manifest();
    root_ = std::move(root);
    index();
    return result;
}

} // namespace ODF::package
