#include "commands.h"
#include "console.h"
#include "io/input.h"
#include "package/attributes.h"
#include "package/open_document.h"
#include "package/sax.h"
#include "password.h"
#include "verb.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/serial/default_handler.h>

#include <algorithm>
#include <iostream>
#include <limits>

namespace command {
namespace {

constexpr std::string_view kContentPart = "content.xml";

struct TreeOptions {
    std::string path;
    std::string part{kContentPart};
    std::size_t depth = std::numeric_limits<std::size_t>::max();
    Passwords passwords;
};

/// Beyond this depth lines aren't indented further, so that the output of a hostile file stays in proportion
/// to it.
constexpr std::size_t kMaxIndent = 60;

std::string NameOf(const CSDObject& object) {
    if (object.GetID() == ODF::kForeignElementId) {
        const auto& foreign = static_cast<const ODF::CForeignElement&>(object);
        return "CForeignElement " + CustomaryName(foreign.GetNamespace(), foreign.GetLocalName());
    }
    const auto info = ODF::ClassOf(object);
    return info ? std::string(info->className()).append(" ").append(info->elementName()) : "(unknown class)";
}

/// The text that an object has itself; that of runs is theirs.
std::string OwnText(const CSDObject& object) {
    if (object.GetID() == ODF::kCommentId || object.GetID() == ODF::kProcessingInstructionId)
        return static_cast<const CSDStringValueObject&>(object).Getval().utf8();
    const std::vector<CSDObject*>* const children = object.GetObjectList();
    const bool hasRuns =
        children && std::any_of(children->begin(), children->end(),
                                [](const CSDObject* child) { return child && ODF::IsTextRun(*child); });
    if (hasRuns) return {};
    if (const auto* const date = dynamic_cast<const CSDDateTimeValueObject*>(&object))
        return date->GetRawText().utf8();
    return ODF::TextOf(object);
}

void PrintObject(const CSDObject& object, std::size_t depth, AttributeReader& attributes) {
    std::cout << std::string(2 * std::min(depth, kMaxIndent), ' ');
    if (depth > kMaxIndent) std::cout << '[' << depth << "] ";
    const std::string text = OwnText(object);
    if (object.GetID() == ODF::kCommentId)
        std::cout << "(comment) ";
    else if (object.GetID() == ODF::kProcessingInstructionId)
        std::cout << "(processing instruction) ";
    else if (!ODF::IsTextRun(object)) {
        std::cout << Quoted(NameOf(object));
        for (const AttributeWords& attribute : attributes.attributesOf(object))
            std::cout << ' ' << Quoted(attribute.name) << "=\"" << Quoted(attribute.value) << '"';
        if (!text.empty()) std::cout << " \"" << Quoted(text) << '"';
        std::cout << '\n';
        return;
    }
    std::cout << '"' << Quoted(text) << "\"\n";
}

void PrintTree(const CSDObject& root, std::size_t mostDepth) {
    struct Level {
        const std::vector<CSDObject*>* children;
        std::size_t next;
    };
    std::vector<Level> open;
    AttributeReader attributes;
    const auto enter = [&](const CSDObject& object) {
        PrintObject(object, open.size(), attributes);
        open.push_back({open.size() < mostDepth ? object.GetObjectList() : nullptr, 0});
    };
    enter(root);
    while (!open.empty() && std::cout) {
        Level& level = open.back();
        if (!level.children || level.next >= level.children->size())
            open.pop_back();
        else if (const CSDObject* const child = (*level.children)[level.next++])
            enter(*child);
    }
}

/// The tree of a member whose root element no class has; null when it isn't XML.
std::unique_ptr<CSDObject> ReadForeignTree(std::string_view xml) {
    class RootName final : public CSDDefaultHandler {
    public:
        void startElement(const unsigned short* uri, const unsigned short* localName,
                          const unsigned short* /*qName*/, CSDAttribute* /*attributes*/) override {
            if (!root) root.reset(ODF::CForeignElement::Create(ODF::ToUtf8(uri), ODF::ToUtf8(localName)));
        }
        std::unique_ptr<CSDObject> root;
    };
    RootName handler;
    const SaxReader reader = MakeSaxReader();
    if (ParseXml(*reader, xml, handler) && handler.root &&
        ODF::FromXml(xml, *handler.root, ODF::Fidelity::Everything))
        return std::move(handler.root);
    return nullptr;
}

ExitCode ComplainMissing(const TreeOptions& options, const DocumentFile& file) {
    std::string names;
    for (const Member& member : file.members())
        if (member.name.ends_with(".xml")) names += (names.empty() ? "" : ", ") + member.name;
    Complain(options.path, "there is no part " + options.part + "; there are " + names);
    return ExitCode::CannotOpen;
}

ExitCode PrintPart(ODF::Document& document, const TreeOptions& options) {
    const std::vector<std::string> atOnce = document.Trees();
    const bool isReadAtOnce = std::find(atOnce.begin(), atOnce.end(), options.part) != atOnce.end();
    ODF::Result result;
    if (const CSDObject* const root = document.Root(options.part, &result)) {
        PrintTree(*root, options.depth);
        // The notes about trees that are read at once were told when the document was opened.
        if (!result && !isReadAtOnce) Complain(options.path, result.Text());
        return result ? ExitCode::Ok : ExitCode::CannotOpen;
    }
    const DocumentFile file(document);
    const MemberBytes member = file.read(options.part);
    if (!file.find(options.part)) return ComplainMissing(options, file);
    if (const std::unique_ptr<CSDObject> root = ReadForeignTree(member.text())) {
        PrintTree(*root, options.depth);
        return ExitCode::Ok;
    }
    Complain(options.path, "the part " + options.part + " is no XML that can be read");
    return ExitCode::CannotOpen;
}

ExitCode Run(const TreeOptions& options) {
    ODF::Document document;
    const ExitCode opened = OpenDocument(document, options.path, options.passwords);
    if (!document.IsOpen()) return opened;
    if (!document.IsFlat()) return Worst(opened, PrintPart(document, options));
    if (options.part != kContentPart) {
        Complain(options.path, "a flat document has no parts");
        return ExitCode::CannotOpen;
    }
    PrintTree(*document.Flat(), options.depth);
    return opened;
}

ExitCode Show(TreeOptions& options) {
    options.path = InputPath(options.path);
    const bool isReady = !options.path.empty() && options.passwords.prepare();
    return isReady ? Run(options) : ExitCode::CannotOpen;
}

} // namespace

void AddTree(CLI::App& app, ExitCode& exitCode) {
    const auto [verb, options] = AddVerb<TreeOptions>(
        app, exitCode, Show, "tree",
        "Shows the element tree of a part, a line an element: class, element name, attributes, text");
    verb.add_option("FILE", options.path, "OpenDocument file")->required()->type_name("");
    verb.add_option("--part", options.part, "Part to show, such as styles.xml or \"Object 1/content.xml\"")
        ->capture_default_str()
        ->type_name("NAME");
    verb.add_option("--depth", options.depth, "Levels below the root to show; all without it")
        ->type_name("N")
        ->check([](const std::string& text) {
            return text.starts_with('-') ? std::string("less than 0 levels") : std::string();
        });
    options.passwords.addOptions(verb);
}

} // namespace command
