#include "office/losses.h"

#include <odfmodel/core/object.h>
#include <odfmodel/core/reflection.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace test {

namespace {

/// One piece of markup: "<name attributes>", "</name>", "<name/>", "<?...?>".
struct Tag {
    std::string_view whole;
    std::string_view name;
    bool isEnd = false;
    bool isEmpty = false;
};

constexpr std::string_view kBlank = " \t\r\n";

Tag TagAt(std::string_view xml, std::size_t start) {
    // No value of the samples holds a bare ">".
    Tag tag;
    tag.whole = xml.substr(start, xml.find('>', start) + 1 - start);
    tag.isEnd = tag.whole.substr(1, 1) == "/";
    tag.isEmpty = tag.whole.ends_with("/>");
    const std::size_t begin = tag.isEnd ? 2 : 1;
    tag.name = tag.whole.substr(begin, tag.whole.find_first_of(" \t\r\n/>", begin) - begin);
    return tag;
}

/// The value that the class of `element` writes for a true or false; nothing when it lists no such boolean.
std::optional<std::string> Written(std::string_view element, std::string_view attribute,
                                   std::string_view value) {
    const auto info = ODF::ClassOfElement(element);
    if (!info) return {};
    for (const ODF::AttributeInfo& row : info->attributes())
        if (row.name == attribute && row.type == ODF::AttributeType::Bool) {
            const std::unique_ptr<CSDObject> object(info->create());
            ODF::SetAttributeText(*object, attribute, value);
            for (const ODF::AttributeText& written : ODF::AttributesOf(*object))
                if (written.name == attribute) return written.value;
        }
    return {};
}

std::string KeptTag(const Tag& tag) {
    std::string result;
    std::string_view rest = tag.whole;
    while (!rest.empty()) {
        const std::size_t equals = rest.find("=\"");
        const std::size_t end = equals == std::string_view::npos ? equals : rest.find('"', equals + 2);
        if (end == std::string_view::npos) break;
        const std::size_t start = rest.find_last_of(kBlank, equals);
        const std::string_view name = rest.substr(start + 1, equals - start - 1);
        const std::string_view value = rest.substr(equals + 2, end - equals - 2);
        result += rest.substr(0, start);
        const auto written = value == "true" || value == "false" ? Written(tag.name, name, value)
                                                                 : std::optional<std::string>();
        if (name != "xml:id")
            result.append(" ").append(name).append("=\"").append(written ? *written : value).append("\"");
        rest.remove_prefix(end + 1);
    }
    return result.append(rest);
}

bool IsDropped(std::string_view name, std::string_view parent) {
    if (name == "text:meta" || name == "text:drop-down" || (name == "draw:a" && parent == "draw:page"))
        return true;
    const std::string_view prefix = name.substr(0, name.find(':'));
    return prefix == "prefixOne" || name == "test" ||
           name == "draw:element1"; // of the sample with foreign elements
}

bool HasNoText(std::string_view name) {
    constexpr std::string_view kNames[] = {"text:bookmark-ref", "text:reference-ref", "text:note-ref",
                                           "text:sequence-ref", "text:script"};
    return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

} // namespace

std::string AsKept(std::string_view xml) {
    struct Link {
        std::size_t depth; ///< of the elements in it
        std::string text;
        std::string children;
    };
    std::string result;
    std::vector<Link> links;
    std::vector<std::string_view> open;
    std::size_t dropDepth = 0; // of the outermost element that goes; 0 for none
    const auto put = [&](std::string_view piece) {
        (links.empty() ? result : links.back().children) += piece;
    };
    for (std::size_t place = 0; place < xml.size();) {
        if (xml[place] != '<') {
            const std::string_view text =
                xml.substr(place, std::min(xml.find('<', place), xml.size()) - place);
            place += text.size();
            if (dropDepth != 0 || (!open.empty() && HasNoText(open.back()))) continue;
            if (!links.empty() && links.back().depth == open.size())
                links.back().text += text;
            else
                put(text);
            continue;
        }
        const Tag tag = TagAt(xml, place);
        place += tag.whole.size();
        if (tag.name.starts_with('?') || tag.name.starts_with('!')) {
            put(tag.whole);
        } else if (tag.isEnd) {
            if (!links.empty() && links.back().depth == open.size()) {
                const Link link = links.back();
                links.pop_back();
                put(link.text + link.children);
            }
            if (dropDepth == 0) put(tag.whole);
            if (dropDepth == open.size()) dropDepth = 0;
            open.pop_back();
        } else {
            const std::string_view parent = open.empty() ? std::string_view() : open.back();
            if (!tag.isEmpty) open.push_back(tag.name);
            if (dropDepth == 0 && IsDropped(tag.name, parent)) {
                if (!tag.isEmpty) dropDepth = open.size();
                continue;
            }
            if (dropDepth != 0) continue;
            put(KeptTag(tag));
            if (tag.name == "text:a" && !tag.isEmpty) links.push_back({open.size(), {}, {}});
        }
    }
    return result;
}

} // namespace test
