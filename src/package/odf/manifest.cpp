#include "package/odf/manifest.h"

#include "package/xml_text.h"

#include <algorithm>
#include <array>

namespace ODF::package {

namespace {

constexpr std::string_view kNamespace = "urn:oasis:names:tc:opendocument:xmlns:manifest:1.0";
/// The namespace that packages had before, and the one to write.
constexpr std::array<std::string_view, 2> kNamespaces{kNamespace, "http://openoffice.org/2001/manifest"};
constexpr std::string_view kOfficeExtensions =
    "urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0";

std::string_view PrefixOf(std::string_view name) noexcept {
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view LocalOf(std::string_view name) noexcept {
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string Qualified(std::string_view prefix, std::string_view local) {
    std::string name(prefix);
    if (!name.empty()) name += ':';
    return name += local;
}

bool Declares(const ManifestElement& element, std::string_view name) {
    return std::any_of(element.attributes.begin(), element.attributes.end(),
                       [&](const auto& attribute) { return attribute.first == name; });
}

void AppendAttribute(std::string& out, std::string_view name, std::string_view value) {
    out.append(" ").append(name).append("=\"");
    out.append(SDPackage::EscapeAttribute(ToUtf16(value)).utf8()).append("\"");
}

void AppendElement(std::string& out, const ManifestElement& element) { // as deep as the reader allows
    out.append("<").append(element.name);
    for (const auto& [name, value] : element.attributes)
        AppendAttribute(out, name, value);
    if (element.children.empty()) {
        out += "/>";
        return;
    }
    out += '>';
    for (const ManifestElement& child : element.children)
        AppendElement(out, child);
    out.append("</").append(element.name).append(">");
}

} // namespace

Manifest::Manifest() {
    root_.name = "manifest:manifest";
    root_.attributes.emplace_back("xmlns:manifest", kNamespace);
    prefixes_.emplace_back("manifest");
}

/// Finds the prefixes of the namespace and the rows.
void Manifest::index() {
    rows_.clear();
    prefixes_.clear();
    isEncrypted_ = false;
    for (const auto& [name, value] : root_.attributes) {
        const bool isDeclared = std::find(kNamespaces.begin(), kNamespaces.end(), value) != kNamespaces.end();
        if (!isDeclared) continue;
        if (name == "xmlns") prefixes_.emplace_back();
        if (PrefixOf(name) == "xmlns") prefixes_.insert(prefixes_.begin(), std::string(LocalOf(name)));
    }
    // An attribute without a prefix has no namespace, so new ones need a prefix.
    if (!prefixes_.empty() && prefixes_.front().empty()) prefixes_.insert(prefixes_.begin(), "manifest");
    for (std::size_t place = 0; place < root_.children.size(); ++place) {
        const ManifestElement& row = root_.children[place];
        if (!isOwn(row.name, "file-entry")) continue;
        const std::string* const path = attributeOf(row, "full-path");
        if (path) rows_[*path].push_back(place);
        for (const ManifestElement& child : row.children)
            if (isOwn(child.name, "encryption-data")) isEncrypted_ = true;
    }
}

/// In a manifest that declares no known namespace, names are compared by their local part alone.
bool Manifest::isOwn(std::string_view name, std::string_view local) const noexcept {
    return LocalOf(name) == local && (prefixes_.empty() || std::find(prefixes_.begin(), prefixes_.end(),
                                                                     PrefixOf(name)) != prefixes_.end());
}

const std::string* Manifest::attributeOf(const ManifestElement& element,
                                         std::string_view local) const noexcept {
    for (const auto& [name, value] : element.attributes)
        if (isOwn(name, local)) return &value;
    return nullptr;
}

bool Manifest::setAttribute(ManifestElement& element, std::string_view local, std::string_view value) const {
    for (auto& [name, present] : element.attributes) {
        if (!isOwn(name, local)) continue;
        if (present == value) return false;
        present = value;
        return true;
    }
    const std::string_view prefix = prefixes_.empty() ? std::string_view("manifest") : prefixes_.front();
    element.attributes.emplace_back(Qualified(prefix, local), value);
    return true;
}

ManifestElement Manifest::makeRow(std::string_view path) const {
    ManifestElement row;
    // The root's prefix, unless that is of another namespace: the row has to be one of the manifest's own.
    const std::string_view ofRoot = PrefixOf(root_.name);
    const bool isOfRoot =
        prefixes_.empty() || std::find(prefixes_.begin(), prefixes_.end(), ofRoot) != prefixes_.end();
    row.name = Qualified(isOfRoot ? ofRoot : std::string_view(prefixes_.front()), "file-entry");
    setAttribute(row, "full-path", path);
    return row;
}

bool Manifest::contains(std::string_view path) const {
    return rows_.contains(std::string(path));
}

const std::string* Manifest::find(std::string_view path, std::string_view attribute) const {
    const auto found = rows_.find(std::string(path));
    return found == rows_.end() ? nullptr : attributeOf(root_.children[found->second.back()], attribute);
}

void Manifest::set(std::string_view path, std::string_view attribute, std::string_view value) {
    std::string key(path);
    if (!rows_.contains(key)) {
        isChanged_ = true;
        ManifestElement row = makeRow(path);
        // Every reader knows a row by path and media type.
        if (attribute != "media-type") setAttribute(row, "media-type", "");
        if (path == "/") {
            root_.children.insert(root_.children.begin(), std::move(row));
            index();
        } else {
            root_.children.push_back(std::move(row));
            rows_[key].push_back(root_.children.size() - 1);
        }
    }
    for (const std::size_t place : rows_[key])
        if (setAttribute(root_.children[place], attribute, value)) isChanged_ = true;
}

bool Manifest::remove(std::string_view path) {
    const auto found = rows_.find(std::string(path));
    if (found == rows_.end()) return false;
    for (const std::size_t place : found->second)
        root_.children[place] = {};
    rows_.erase(found);
    isChanged_ = true;
    return true;
}

std::size_t Manifest::removeBelow(std::string_view start) {
    const std::size_t count = std::erase_if(rows_, [&](const auto& row) {
        if (!row.first.starts_with(start)) return false;
        for (const std::size_t place : row.second)
            root_.children[place] = {};
        return true;
    });
    if (count > 0) isChanged_ = true;
    return count;
}

std::string Manifest::version() const {
    const std::string* const version = attributeOf(root_, "version");
    return version ? *version : std::string();
}

void Manifest::setVersion(std::string_view version) {
    if (setAttribute(root_, "version", version)) isChanged_ = true;
}

std::string Manifest::text(const RowEncryptions& encryptions) const {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + root_.name;
    for (const auto& [name, value] : root_.attributes)
        AppendAttribute(out, name, value);
    // What is added to the file's own elements has these prefixes.
    if (!Declares(root_, "xmlns:manifest")) AppendAttribute(out, "xmlns:manifest", kNamespace);
    const bool needsExtensions =
        std::any_of(encryptions.begin(), encryptions.end(), [](const auto& encryption) {
            return encryption.second.xml.find(" loext:") != std::string::npos;
        });
    if (needsExtensions && !Declares(root_, "xmlns:loext"))
        AppendAttribute(out, "xmlns:loext", kOfficeExtensions);
    out += '>';

    const auto append = [&](ManifestElement row, std::string_view path) {
        std::erase_if(row.children,
                      [&](const ManifestElement& child) { return isOwn(child.name, "encryption-data"); });
        const auto encryption = encryptions.find(std::string(path));
        out += "\n ";
        if (encryption == encryptions.end()) {
            AppendElement(out, row);
            return;
        }
        setAttribute(row, "size", std::to_string(encryption->second.size));
        out.append("<").append(row.name);
        for (const auto& [name, value] : row.attributes)
            AppendAttribute(out, name, value);
        out.append(">").append(encryption->second.xml);
        for (const ManifestElement& child : row.children)
            AppendElement(out, child);
        out.append("</").append(row.name).append(">");
    };
    for (const ManifestElement& row : root_.children) {
        if (row.name.empty()) continue;
        const std::string* const path =
            isOwn(row.name, "file-entry") ? attributeOf(row, "full-path") : nullptr;
        append(row, path ? std::string_view(*path) : std::string_view());
    }
    std::vector<std::string_view> forgotten;
    for (const auto& encryption : encryptions)
        if (!rows_.contains(encryption.first)) forgotten.push_back(encryption.first);
    std::sort(forgotten.begin(), forgotten.end());
    for (const std::string_view path : forgotten) {
        ManifestElement row = makeRow(path);
        setAttribute(row, "media-type", "");
        append(std::move(row), path);
    }
    return out + "\n</" + root_.name + ">\n";
}

} // namespace ODF::package
