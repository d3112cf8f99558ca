#include "convert/html.h"

#include "console.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/flat.h>
#include <odfmodel/elements/elements.h>

#include <vector>

namespace command {
namespace {

/// The media type of a picture that browsers show, by how its Base64 text begins; empty for any other.
std::string_view MediaTypeOf(std::string_view base64) {
    struct Start {
        std::string_view head;
        std::string_view mediaType;
    };
    constexpr Start kStarts[] = {{"iVBORw0KGgo", "image/png"}, {"/9j/", "image/jpeg"},
                                 {"R0lGOD", "image/gif"},      {"UklGR", "image/webp"},
                                 {"PHN2Zy", "image/svg+xml"},  {"PD94bWwg", "image/svg+xml"}};
    for (const Start& start : kStarts)
        if (base64.starts_with(start.head)) return start.mediaType;
    return {};
}

class Html final : public MarkupSink {
public:
    void startParagraph(unsigned level) override {
        tag_.push_back(level == 0 ? "p" : std::string("h").append(std::to_string(level)));
        out_ += "<" + tag_.back() + ">";
    }
    void endParagraph() override {
        out_ += "</" + tag_.back() + ">\n";
        tag_.pop_back();
    }
    void startList(bool isNumbered) override {
        tag_.push_back(isNumbered ? "ol" : "ul");
        out_ += "<" + tag_.back() + ">\n";
    }
    void endList() override { endParagraph(); }
    void startItem() override { out_ += "<li>"; }
    void endItem() override { out_ += "</li>\n"; }
    void startTable() override { out_ += "<table>\n"; }
    void endTable() override { out_ += "</table>\n"; }
    void startRow() override { out_ += "<tr>"; }
    void endRow() override { out_ += "</tr>\n"; }
    void startCell(unsigned columns, unsigned rows) override {
        out_ += "<td";
        if (columns > 1) out_ += " colspan=\"" + std::to_string(columns) + "\"";
        if (rows > 1) out_ += " rowspan=\"" + std::to_string(rows) + "\"";
        out_ += ">";
    }
    void endCell() override { out_ += "</td>"; }
    void coveredCell() override {} // the attributes of the merged one tell
    void separate() override { out_ += "<hr>\n"; }

    void text(std::string_view utf8) override { escape(utf8); }
    void lineBreak() override { out_ += "<br>"; }
    void startLook(const Look& look) override {
        std::string end;
        const auto wrap = [&](bool is, const char* tag) {
            if (!is) return;
            out_ += std::string("<") + tag + ">";
            end.insert(0, std::string("</") + tag + ">");
        };
        wrap(look.isBold, "strong");
        wrap(look.isItalic, "em");
        wrap(look.isStruck, "s");
        wrap(look.isRaised, "sup");
        wrap(look.isLowered, "sub");
        ends_.push_back(std::move(end));
    }
    void endLook() override {
        out_ += ends_.back();
        ends_.pop_back();
    }
    void startLink(std::string_view target) override {
        out_ += "<a href=\"";
        escape(target);
        out_ += "\">";
    }
    void endLink() override { out_ += "</a>"; }
    void image(const CSDObject& object, std::string_view target, std::string_view about) override {
        const auto* const data = object.Child<ODF::COfficeBinaryData>();
        std::string base64 = data ? ODF::TextOf(*data) : std::string();
        std::erase_if(base64, [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; });
        const std::string_view mediaType = MediaTypeOf(base64);
        const bool isClean = base64.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                                      "0123456789+/=") == std::string::npos;
        const bool isLink = mediaType.empty() && IsHarmlessLink(target) && target.starts_with("http");
        if ((mediaType.empty() || !isClean) && !isLink) return escape(about);
        out_ += "<img src=\"";
        if (isLink)
            escape(target);
        else
            out_.append("data:").append(mediaType).append(";base64,").append(base64);
        out_ += "\" alt=\"";
        escape(about);
        out_ += "\">";
    }
    void noteMark(unsigned number) override {
        const std::string text = std::to_string(number);
        out_ += "<sup id=\"mark" + text + "\"><a href=\"#note" + text + "\">" + text + "</a></sup>";
    }
    void startNote(unsigned number) override {
        const std::string text = std::to_string(number);
        if (number == 1) out_ += "<hr>\n";
        out_ += "<div id=\"note" + text + "\"><a href=\"#mark" + text + "\">" + text + "</a>\n";
    }
    void endNote() override { out_ += "</div>\n"; }

    void escape(std::string_view text) {
        for (const char c : Printable(text))
            switch (c) {
            case '<':
                out_ += "&lt;";
                break;
            case '>':
                out_ += "&gt;";
                break;
            case '&':
                out_ += "&amp;";
                break;
            case '"':
                out_ += "&quot;";
                break;
            default:
                out_ += c;
            }
    }
    std::string take() { return std::move(out_); }

private:
    std::string out_;
    std::vector<std::string> tag_;
    std::vector<std::string> ends_;
};

std::string TitleOf(ODF::Document& document) {
    const CSDObject* root = document.Meta();
    if (document.IsFlat()) root = document.Flat();
    const auto* const meta = root ? root->Child<ODF::COfficeMeta>() : nullptr;
    const auto* const title = meta ? meta->Child<ODF::CDcTitle>() : nullptr;
    return title ? ODF::TextOf(*title) : std::string();
}

} // namespace

Markup ToHtml(ODF::Document& document) {
    Markup markup;
    // In one XML file the pictures stand where they are shown, as text that a page can have, too. A formula
    // has no such form, and no pictures.
    ODF::Document flat;
    if (!document.IsFlat() && !document.Formula()) markup.pictures = ODF::ToFlat(document, flat);
    ODF::Document& source = flat.IsOpen() ? flat : document;
    Html body;
    markup.isCut = !WriteMarkup(source, body);
    Html title;
    title.escape(TitleOf(source));
    markup.text = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" + title.take() +
                  "</title>\n</head>\n<body>\n" + body.take() + "</body>\n</html>\n";
    return markup;
}

} // namespace command
