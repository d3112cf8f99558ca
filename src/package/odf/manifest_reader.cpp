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
        : parser_(*this, limits, false), nodesLeft_(mostNodes) {}

    Manifest::ReadResult read(std::span<const unsigned char> bytes, ManifestElement& root) {
        const bool isRead = parser_.parse(bytes.data(), bytes.size(), true);
        while (open_.size() > 1)
            close();
        if (!open_.empty()) root = std::move(open_.front());
        if (isRead) return Manifest::ReadResult::Ok;
        return isTooLarge_ ? Manifest::ReadResult::TooLarge : Manifest::ReadResult::Damaged;
    }

private:
    void startElement(const char* name, const char** attributes) override {
        ManifestElement element{name, {}, {}};
        std::size_t nodes = 1;
        for (; *attributes; attributes += 2, ++nodes)
            if (nodes <= nodesLeft_) element.attributes.emplace_back(attributes[0], attributes[1]);
        if (nodes > nodesLeft_ || open_.size() == kDeepest) {
            isTooLarge_ = nodes > nodesLeft_;
            parser_.stop("more than a manifest may hold",
                         isTooLarge_ ? xml::StopKind::Size : xml::StopKind::Depth);
            return;
        }
        nodesLeft_ -= nodes;
        open_.push_back(std::move(element));
    }

    void endElement(const char*) override {
        if (open_.size() > 1) close();
    }

    void characterData(std::string_view) override {}

    void close() {
        ManifestElement element = std::move(open_.back());
        open_.pop_back();
        open_.back().children.push_back(std::move(element));
    }

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
