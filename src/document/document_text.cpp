#include <odfmodel/document/document_text.h>

#include "document/text/reading.h"

#include <odfmodel/document/open_document.h>
#include <odfmodel/elements/office/document.h>

namespace ODF {
namespace {

using reading::Element;

/// Takes in the styles that lists and headings are numbered by. Automatic styles beside them are of no use to
/// the content.
void TakeStyles(const CSDObject& root, reading::ListStyles& styles) {
    struct Level {
        const CSDObject* object;
        std::size_t next;
        Element element;
    };
    reading::Elements elements;
    std::vector<Level> open;
    const auto enter = [&](const CSDObject& object) {
        const Element element = elements.find(object);
        if (element == Element::AutomaticStyles || object.GetID() == COfficeMasterStyles::kId) return;
        styles.start(element, reading::Attributes(object));
        open.push_back({&object, 0, element});
    };
    enter(root);
    while (!open.empty()) {
        Level& level = open.back();
        const std::vector<CSDObject*>* const children = level.object->GetObjectList();
        if (!children || level.next >= children->size()) {
            styles.end(level.element);
            open.pop_back();
        } else if (const CSDObject* const child = (*children)[level.next++]) {
            enter(*child);
        }
    }
}

/// Appends each line with its end.
LineSink Into(std::string& text) {
    return [&text](std::string_view line) { text.append(line) += '\n'; };
}

} // namespace

bool ForEachLine(const CSDObject& content, const CSDObject* styles, const LineSink& line,
                 const ReadingOptions& options) {
    reading::ListStyles known;
    if (styles) TakeStyles(*styles, known);
    reading::Reading reading(known, options, line);
    reading.read(content);
    return !reading.isCut();
}

bool ForEachLine(Document& document, const LineSink& line, const ReadingOptions& options) {
    const CSDObject* const content = document.IsFlat() ? document.Flat() : document.Root("content.xml");
    return !content || ForEachLine(*content, document.Styles(), line, options);
}

std::string DocumentText(const CSDObject& content, const CSDObject* styles, const ReadingOptions& options) {
    std::string text;
    ForEachLine(content, styles, Into(text), options);
    return text;
}

std::string DocumentText(Document& document, const ReadingOptions& options) {
    std::string text;
    ForEachLine(document, Into(text), options);
    return text;
}

} // namespace ODF
