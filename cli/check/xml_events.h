#pragma once

#include "check/names.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct XML_ParserStruct;

namespace command {

struct XmlAttribute {
    const std::string* name;
    std::string value;
    const std::string*
        valueNamespace; ///< what the prefix that the value begins with is bound to; null for none
};

struct XmlEvent {
    enum class Kind { Start, End, Text, Comment, Instruction, Doctype, Entity };
    Kind kind;
    const std::string* name = nullptr; ///< of an element
    std::string text;                  ///< the text, the comment, the instruction, what the entity is called
    std::vector<XmlAttribute> attributes;
};

/// Gives out a text piece by piece; it must stay as it is meanwhile.
std::function<std::string_view()> Pieces(std::string_view text);

/// Reads one XML file event by event, straight with expat: what `check` compares mustn't pass through the
/// library's own reader, whose faults it would then not see.
class XmlEvents {
public:
    using Source = std::function<std::string_view()>; ///< the next piece of the file, empty at its end

    XmlEvents(NamePool& names, Source source);
    XmlEvents(const XmlEvents&) = delete;
    XmlEvents& operator=(const XmlEvents&) = delete;
    ~XmlEvents();

    /// The next event, valid until it is popped; null at the end or at a fault.
    const XmlEvent* peek();
    void pop() { events_.pop_front(); }
    /// Why the file ended before its end, with the line; empty for a file that is well formed.
    const std::string& fault() const noexcept { return fault_; }

private:
    struct Callbacks;
    XmlEvent& push(XmlEvent::Kind kind);
    void fill();

    ScopedNames names_;
    Source source_;
    std::unique_ptr<XML_ParserStruct, void (*)(XML_ParserStruct*)> parser_;
    std::deque<XmlEvent> events_;
    std::vector<const std::string*> open_;
    std::string fault_;
    bool isAtEnd_ = false;
};

} // namespace command
