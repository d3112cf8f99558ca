#include "check/xml_events.h"

#include <expat.h>

#include <algorithm>

namespace command {
namespace {

/// The prefix that a value begins with, such as "of" in "of:=[.A1]"; empty for none.
std::string_view PrefixOf(std::string_view value) {
    const std::size_t colon = value.substr(0, 64).find(':');
    if (colon == std::string_view::npos) return {};
    const std::string_view prefix = value.substr(0, colon);
    const bool isName = std::all_of(prefix.begin(), prefix.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '_' || c == '.';
    });
    return isName ? prefix : std::string_view();
}

} // namespace

std::function<std::string_view()> Pieces(std::string_view text) {
    constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
    return [text]() mutable {
        const std::string_view piece = text.substr(0, kPieceBytes);
        text.remove_prefix(piece.size());
        return piece;
    };
}

struct XmlEvents::Callbacks {
    static XmlEvents& self(void* data) { return *static_cast<XmlEvents*>(data); }

    static void start(void* data, const char* qname, const char** attributes) {
        XmlEvents& events = self(data);
        ScopedNames& names = events.names_;
        names.enter(attributes);
        XmlEvent& event = events.push(XmlEvent::Kind::Start);
        event.name = names.element(qname);
        events.open_.push_back(event.name);
        const bool isMath = IsMathName(*event.name);
        for (const char** at = attributes; *at; at += 2) {
            if (ScopedNames::isDeclaration(*at)) continue;
            const std::string_view prefix = PrefixOf(at[1]);
            event.attributes.push_back(
                {names.attribute(*at, isMath), at[1], prefix.empty() ? nullptr : names.boundTo(prefix)});
        }
    }
    static void end(void* data, const char* /*qname*/) {
        XmlEvents& events = self(data);
        events.push(XmlEvent::Kind::End).name = events.open_.back();
        events.open_.pop_back();
        events.names_.leave();
    }
    static void text(void* data, const char* text, int length) {
        XmlEvents& events = self(data);
        const bool follows = !events.events_.empty() && events.events_.back().kind == XmlEvent::Kind::Text;
        XmlEvent& event = follows ? events.events_.back() : events.push(XmlEvent::Kind::Text);
        event.text.append(text, static_cast<std::size_t>(length));
    }
    static void comment(void* data, const char* text) {
        self(data).push(XmlEvent::Kind::Comment).text = text;
    }
    static void instruction(void* data, const char* target, const char* text) {
        self(data).push(XmlEvent::Kind::Instruction).text = std::string(target).append(" ").append(text);
    }
    static void doctype(void* data, const char* name, const char* /*systemId*/, const char* /*publicId*/,
                        int) {
        self(data).push(XmlEvent::Kind::Doctype).text = name;
    }
    /// Called for entities whose text is in another file. Nothing is loaded.
    static int externalEntity(XML_Parser parser, const char* /*context*/, const char* /*base*/,
                              const char* systemId, const char* /*publicId*/) {
        self(XML_GetUserData(parser)).push(XmlEvent::Kind::Entity).text = systemId ? systemId : "";
        return XML_STATUS_OK;
    }
    static void entity(void* data, const char* name, int isParameterEntity) {
        if (isParameterEntity == 0) self(data).push(XmlEvent::Kind::Entity).text = name;
    }
};

XmlEvents::XmlEvents(NamePool& names, Source source)
    : names_(names), source_(std::move(source)), parser_(XML_ParserCreate(nullptr), &XML_ParserFree) {
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), &Callbacks::start, &Callbacks::end);
    XML_SetCharacterDataHandler(parser_.get(), &Callbacks::text);
    XML_SetCommentHandler(parser_.get(), &Callbacks::comment);
    XML_SetProcessingInstructionHandler(parser_.get(), &Callbacks::instruction);
    XML_SetStartDoctypeDeclHandler(parser_.get(), &Callbacks::doctype);
    XML_SetExternalEntityRefHandler(parser_.get(), &Callbacks::externalEntity);
    XML_SetSkippedEntityHandler(parser_.get(), &Callbacks::entity);
}

XmlEvents::~XmlEvents() = default;

XmlEvent& XmlEvents::push(XmlEvent::Kind kind) {
    XmlEvent& event = events_.emplace_back();
    event.kind = kind;
    return event;
}

const XmlEvent* XmlEvents::peek() {
    while (events_.empty() && !isAtEnd_)
        fill();
    return events_.empty() ? nullptr : &events_.front();
}

void XmlEvents::fill() {
    const std::string_view piece = source_();
    isAtEnd_ = piece.empty();
    if (XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), isAtEnd_ ? 1 : 0) ==
        XML_STATUS_OK)
        return;
    isAtEnd_ = true;
    fault_ = "line " + std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ": " +
             XML_ErrorString(XML_GetErrorCode(parser_.get()));
}

} // namespace command
