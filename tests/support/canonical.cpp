#include "support/canonical.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <optional>
#include <tuple>

namespace test {

namespace {

/// More than the texts and nodes of any document that is worth a comparison; less than a bomb of entities.
constexpr std::size_t kMaxExpansion = std::size_t{1} << 28;
constexpr int kMaxEntityDepth = 40;

std::string_view ToText(const xmlChar* text) {
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

struct Name {
    std::string_view uri;
    std::string_view local;
    std::string_view prefix;

    bool operator==(const Name& other) const { return uri == other.uri && local == other.local; }
    std::string qualified() const {
        return prefix.empty() ? std::string(local) : std::string(prefix) + ':' + std::string(local);
    }
    /// With the namespace, for two names that only differ there.
    std::string full() const { return qualified() + " of \"" + std::string(uri) + '"'; }
};

template<typename Node>
Name NameOf(const Node& node) {
    if (!node.ns) return {{}, ToText(node.name), {}};
    return {ToText(node.ns->href), ToText(node.name), ToText(node.ns->prefix)};
}

/// Declares what the document itself defines. An external part of its type counts as empty, or else it would
/// be loaded.
void DeclareEntity(void* parser, const xmlChar* name, int type, const xmlChar* publicId,
                   const xmlChar* systemId, xmlChar* content) {
    xmlChar nothing[] = {0};
    if (type == XML_EXTERNAL_PARAMETER_ENTITY)
        xmlSAX2EntityDecl(parser, name, XML_INTERNAL_PARAMETER_ENTITY, nullptr, nullptr, nothing);
    else
        xmlSAX2EntityDecl(parser, name, type, publicId, systemId, content);
}

/// A parsed document, or why it can't be compared.
class Parsed {
public:
    explicit Parsed(std::string_view xml) {
        if (xml.size() > INT_MAX) {
            fault_ = "larger than the parser takes";
            return;
        }
        const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                                  xmlFreeParserCtxt);
        parser->sax->externalSubset = nullptr;
        parser->sax->entityDecl = DeclareEntity;
        int options =
            XML_PARSE_DTDATTR | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_COMPACT;
        // Depth and size are free where no entity can multiply them; UTF-16 hides its entities from a look.
        if (xml.find("<!DOCTYPE") == xml.npos && xml.find('\0') == xml.npos) options |= XML_PARSE_HUGE;
        document_.reset(xmlCtxtReadMemory(parser.get(), xml.data(), static_cast<int>(xml.size()), nullptr,
                                          nullptr, options));
        if (document_ && xmlDocGetRootElement(document_.get())) return;
        const char* const message = parser->lastError.message;
        fault_ = "not well-formed, line " + std::to_string(parser->lastError.line) + ": " +
                 (message ? message : "no element");
        while (fault_.back() == '\n')
            fault_.pop_back();
    }

    const std::string& fault() const { return fault_; }
    xmlNode* children() const { return document_->children; }
    const xmlNode* root() const { return xmlDocGetRootElement(document_.get()); }

private:
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document_{nullptr, xmlFreeDoc};
    std::string fault_;
};

enum class Kind { Element, Text, Comment, Instruction, Entity };

/// A child as the comparison sees it.
struct Item {
    Kind kind = Kind::Text;
    xmlNode* node = nullptr; ///< of an element
    std::string name;        ///< of an instruction or an entity
    std::string text;

    std::string describe() const;
};

/// Shortens what a message quotes, from a little before `at`.
std::string Excerpt(std::string_view text, std::size_t at = 0) {
    constexpr std::size_t kBefore = 20;
    constexpr std::size_t kLength = 80;
    const std::size_t start = at > kBefore ? at - kBefore : 0;
    return (start ? "\"..." : "\"") + std::string(text.substr(start, kLength)) +
           (text.size() > start + kLength ? "...\"" : "\"");
}

std::string BeforeAndAfter(std::string_view before, std::string_view after) {
    const auto parting = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto at = static_cast<std::size_t>(parting.first - before.begin());
    return Excerpt(before, at) + " before, " + Excerpt(after, at) + " after";
}

std::string Item::describe() const {
    switch (kind) {
    case Kind::Element:
        return "element " + NameOf(*node).full();
    case Kind::Text:
        return "text " + Excerpt(text);
    case Kind::Comment:
        return "comment " + Excerpt(text);
    case Kind::Instruction:
        return "processing instruction " + name;
    case Kind::Entity:
        return "entity " + name;
    }
    return {};
}

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == text.npos;
}

/// Elements in which blank text between other elements is a space for the reader of the document.
bool HoldsRuns(const xmlNode& element) {
    constexpr std::array<std::string_view, 7> kNames{"p",    "h",          "span",     "a",
                                                     "meta", "meta-field", "ruby-base"};
    const Name name = NameOf(element);
    return name.uri == "urn:oasis:names:tc:opendocument:xmlns:text:1.0" &&
           std::find(kNames.begin(), kNames.end(), name.local) != kNames.end();
}

/// Lists children: text in one piece, entities replaced by what they stand for.
class Lister {
public:
    /// Of an element, or the nodes of a document when there is none.
    std::vector<Item> list(const xmlNode* element, xmlNode* first) {
        items_.clear();
        add(first, 0);
        if (!element || HoldsRuns(*element)) return std::move(items_);
        const auto isText = [](const Item& item) { return item.kind == Kind::Text; };
        const bool hasElements = std::any_of(items_.begin(), items_.end(),
                                             [](const Item& item) { return item.kind == Kind::Element; });
        const bool hasText = std::any_of(items_.begin(), items_.end(), [&](const Item& item) {
            return isText(item) && !IsBlank(item.text);
        });
        if (hasElements && !hasText) std::erase_if(items_, isText);
        return std::move(items_);
    }
    bool isExhausted() const { return spent_ > kMaxExpansion; }

private:
    void add(xmlNode* node, int depth) {
        for (; node && !isExhausted(); node = node->next) {
            const std::string_view content =
                node->type == XML_ELEMENT_NODE || node->type == XML_ENTITY_REF_NODE ? std::string_view()
                                                                                    : ToText(node->content);
            spent_ += content.size() + 1;
            switch (node->type) {
            case XML_ELEMENT_NODE:
                items_.push_back({Kind::Element, node, {}, {}});
                break;
            case XML_TEXT_NODE:
            case XML_CDATA_SECTION_NODE:
                if (content.empty()) break;
                if (items_.empty() || items_.back().kind != Kind::Text) items_.emplace_back();
                items_.back().text += content;
                break;
            case XML_COMMENT_NODE:
                items_.push_back({Kind::Comment, nullptr, {}, std::string(content)});
                break;
            case XML_PI_NODE:
                items_.push_back(
                    {Kind::Instruction, nullptr, std::string(ToText(node->name)), std::string(content)});
                break;
            case XML_ENTITY_REF_NODE:
                addEntity(*node, depth + 1);
                break;
            default: // the document type
                break;
            }
        }
    }

    void addEntity(const xmlNode& reference, int depth) {
        const xmlEntity* const entity = xmlGetDocEntity(reference.doc, reference.name);
        if (entity && entity->etype == XML_INTERNAL_GENERAL_ENTITY && depth < kMaxEntityDepth) {
            add(entity->children, depth);
            return;
        }
        std::string source;
        if (entity)
            source = std::string(ToText(entity->ExternalID)) + ' ' + std::string(ToText(entity->SystemID));
        items_.push_back({Kind::Entity, nullptr, std::string(ToText(reference.name)), source});
    }

    std::vector<Item> items_;
    std::size_t spent_ = 0;
};

struct Attribute {
    Name name;
    std::string value;
};

std::vector<Attribute> AttributesOf(const xmlNode& element) {
    std::vector<Attribute> attributes;
    for (const xmlAttr* attribute = element.properties; attribute; attribute = attribute->next) {
        const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
            xmlNodeListGetString(element.doc, attribute->children, 1), xmlFree);
        attributes.push_back({NameOf(*attribute), std::string(ToText(value.get()))});
    }
    std::sort(attributes.begin(), attributes.end(), [](const Attribute& a, const Attribute& b) {
        return std::tie(a.name.uri, a.name.local) < std::tie(b.name.uri, b.name.local);
    });
    return attributes;
}

/// What could be a prefix at the start of a value; empty when nothing could.
std::string_view LeadingPrefix(std::string_view value) {
    const auto isLetter = [](char unit) {
        return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || unit == '_' || (unit & 0x80);
    };
    const auto isInName = [&](char unit) {
        return isLetter(unit) || (unit >= '0' && unit <= '9') || unit == '-' || unit == '.';
    };
    const std::string_view prefix = value.substr(0, value.find(':'));
    if (prefix.size() == value.size() || prefix.empty() || !isLetter(prefix.front())) return {};
    return std::all_of(prefix.begin(), prefix.end(), isInName) ? prefix : std::string_view();
}

/// The namespace that a prefix stands for at an element.
std::optional<std::string_view> Binding(xmlNode& element, std::string_view prefix) {
    const std::string name(prefix);
    const xmlNs* const binding =
        xmlSearchNs(element.doc, &element, reinterpret_cast<const xmlChar*>(name.c_str()));
    if (!binding) return std::nullopt;
    return ToText(binding->href);
}

/// What differs between two values of one attribute; empty when they mean the same.
std::string ValueDifference(xmlNode& element, std::string_view before, xmlNode& other,
                            std::string_view after) {
    const std::string_view prefix = LeadingPrefix(before);
    const std::string_view otherPrefix = LeadingPrefix(after);
    if (before == after && prefix.empty()) return {};
    const auto binding = prefix.empty() ? std::nullopt : Binding(element, prefix);
    const auto otherBinding = otherPrefix.empty() ? std::nullopt : Binding(other, otherPrefix);
    if (before != after) {
        const bool isSame = binding && binding == otherBinding &&
                            before.substr(prefix.size()) == after.substr(otherPrefix.size());
        return isSame ? std::string() : BeforeAndAfter(before, after);
    }
    if (!binding || binding == otherBinding) return {};
    return Excerpt(before) + ", whose prefix is bound to " + Excerpt(*binding) + " before, " +
           (otherBinding ? "to " + Excerpt(*otherBinding) : "to nothing") + " after";
}

/// Walks two documents in step.
class Comparison {
public:
    explicit Comparison(std::size_t most) : most_(most) {}

    std::vector<std::string> run(const Parsed& before, const Parsed& after) {
        enter({}, before_.list(nullptr, before.children()), after_.list(nullptr, after.children()));
        while (!open_.empty() && found_.size() < most_) {
            if (before_.isExhausted() || after_.isExhausted()) {
                report("too large once its entities are resolved");
                break;
            }
            step();
        }
        if (found_.size() > most_) found_.resize(most_);
        return std::move(found_);
    }

private:
    struct Open {
        std::string name;
        std::vector<Item> before;
        std::vector<Item> after;
        std::size_t next = 0;
        std::size_t elements = 0; ///< met so far
    };

    void enter(std::string name, std::vector<Item> before, std::vector<Item> after) {
        open_.push_back({std::move(name), std::move(before), std::move(after)});
    }

    void report(std::string_view what) {
        std::string path;
        for (std::size_t i = 1; i < open_.size(); ++i)
            path += '/' + open_[i].name + '[' + std::to_string(open_[i - 1].elements) + ']';
        found_.push_back((path.empty() ? "/" : path) + ": " + std::string(what));
    }

    void step() {
        Open& open = open_.back();
        const std::size_t at = open.next++;
        const bool isAtEnd = at == open.before.size();
        if (isAtEnd || at == open.after.size()) {
            if (!isAtEnd)
                report("lost: " + open.before[at].describe());
            else if (at < open.after.size())
                report("added: " + open.after[at].describe());
            open_.pop_back();
            return;
        }
        const Item& item = open.before[at];
        const Item& other = open.after[at];
        const bool isOther = item.kind != other.kind || item.name != other.name ||
                             (item.node && !(NameOf(*item.node) == NameOf(*other.node)));
        if (isOther) {
            report(item.describe() + " before, " + other.describe() + " after");
            open_.pop_back();
        } else if (item.node) {
            ++open.elements;
            xmlNode& element = *item.node;
            xmlNode& otherElement = *other.node;
            enter(NameOf(element).qualified(), before_.list(&element, element.children),
                  after_.list(&otherElement, otherElement.children));
            compareAttributes(element, otherElement);
        } else if (item.text != other.text) {
            const std::string_view what = item.kind == Kind::Comment       ? "comment "
                                          : item.kind == Kind::Instruction ? "processing instruction "
                                          : item.kind == Kind::Entity      ? "entity "
                                                                           : "text ";
            report(std::string(what) + BeforeAndAfter(item.text, other.text));
        }
    }

    void compareAttributes(xmlNode& element, xmlNode& other) {
        const std::vector<Attribute> before = AttributesOf(element);
        const std::vector<Attribute> after = AttributesOf(other);
        const auto same = [](const std::vector<Attribute>& all, const Attribute& one) {
            return std::find_if(all.begin(), all.end(),
                                [&](const Attribute& attribute) { return attribute.name == one.name; });
        };
        for (const Attribute& attribute : before) {
            const auto found = same(after, attribute);
            const std::string start = "attribute " + attribute.name.qualified() + ": ";
            if (found == after.end()) {
                report(start + Excerpt(attribute.value) + " lost");
            } else {
                const std::string difference = ValueDifference(element, attribute.value, other, found->value);
                if (!difference.empty()) report(start + difference);
            }
        }
        for (const Attribute& attribute : after)
            if (same(before, attribute) == before.end())
                report("attribute " + attribute.name.qualified() + ": " + Excerpt(attribute.value) +
                       " added");
    }

    std::size_t most_;
    Lister before_;
    Lister after_;
    std::vector<Open> open_;
    std::vector<std::string> found_;
};

} // namespace

std::vector<std::string> CanonicalDifferences(std::string_view before, std::string_view after,
                                              std::size_t most) {
    const Parsed first(before);
    if (!first.fault().empty()) return {"before: " + first.fault()};
    const Parsed second(after);
    if (!second.fault().empty()) return {"after: " + second.fault()};
    return Comparison(most).run(first, second);
}

std::string CanonicalDifference(std::string_view before, std::string_view after) {
    const std::vector<std::string> differences = CanonicalDifferences(before, after, 1);
    return differences.empty() ? std::string() : differences.front();
}

std::pair<std::string, std::string> RootElement(std::string_view xml) {
    const Parsed document(xml);
    if (!document.fault().empty()) return {};
    const Name name = NameOf(*document.root());
    return {std::string(name.uri), std::string(name.local)};
}

} // namespace test
