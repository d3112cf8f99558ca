#include "check/compare_xml.h"

#include "check/values.h"

#include <algorithm>
#include <vector>

namespace command {
namespace {

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string Join(const std::vector<std::string>& pieces, std::string_view between) {
    std::string result;
    for (const std::string& piece : pieces) {
        if (&piece != &pieces.front()) result += between;
        result += piece;
    }
    return result;
}

class Comparison {
public:
    Comparison(XmlEvents& before, XmlEvents& after, const ClassView* root, Classes& classes,
               Findings& findings)
        : before_(before), after_(after), root_(root), classes_(classes), findings_(findings) {}

    void run() {
        while (step()) {
        }
        settleMarkup(outside_);
        if (!before_.fault().empty()) findings_.add(FindingKind::XmlFault, {}, before_.fault());
        // What was written must be well formed, and whole unless the file itself ended early.
        if (!after_.fault().empty()) findings_.add(FindingKind::XmlFault, kWrittenFile, after_.fault());
    }

private:
    /// A comment or processing instruction, and how much text that isn't blank is before it since the
    /// last child.
    struct Markup {
        XmlEvent::Kind kind;
        std::string text;
        std::size_t place;

        friend bool operator==(const Markup&, const Markup&) = default;
    };
    /// What one side has between two children.
    struct Stretch {
        std::string text;
        std::vector<Markup> markup;
        std::size_t place = 0;   ///< bytes that aren't blank
        std::size_t counted = 0; ///< of the text, for `place`

        void clear() {
            text.clear();
            place = counted = 0;
        }
    };
    /// An element that is on both sides.
    struct Level {
        const std::string* name = nullptr;
        const ClassView* view = nullptr; ///< null for a class that isn't known
        Stretch before;                  ///< since the last child
        Stretch after;
        std::vector<std::string> differentBefore; ///< the texts that differ
        std::vector<std::string> differentAfter;
    };

    bool step() {
        const XmlEvent* const a = next(before_, true);
        const XmlEvent* const b = next(after_, false);
        if (!a) {
            // Behind a fault the levels that are still open end on their own.
            if (before_.fault().empty() && b) addExtra(*b);
            return false;
        }
        const bool starts = a->kind == XmlEvent::Kind::Start;
        const bool meets = b && b->kind == a->kind && a->name == b->name;
        if (starts && meets) {
            enter(*a, *b);
        } else if (starts) {
            addLost(*a);
            return true; // popped with all below it
        } else if (meets) {
            finishText();
            levels_.pop_back();
        } else if (b) {
            addExtra(*b);
            return true;
        } else {
            return false;
        }
        before_.pop();
        after_.pop();
        return true;
    }

    /// The next start or end of an element; what is before it is taken in.
    const XmlEvent* next(XmlEvents& events, bool isBefore) {
        const XmlEvent* event = events.peek();
        for (; event; events.pop(), event = events.peek()) {
            switch (event->kind) {
            case XmlEvent::Kind::Start:
            case XmlEvent::Kind::End:
                return event;
            case XmlEvent::Kind::Text:
                stretch(isBefore).text += event->text;
                break;
            case XmlEvent::Kind::Comment:
            case XmlEvent::Kind::Instruction:
                addMarkup(stretch(isBefore), *event);
                break;
            case XmlEvent::Kind::Doctype:
                if (isBefore) findings_.add(FindingKind::DoctypeDropped, event->text);
                break;
            case XmlEvent::Kind::Entity:
                if (isBefore) findings_.add(FindingKind::EntityLost, event->text);
                break;
            }
        }
        return nullptr;
    }

    Stretch& stretch(bool isBefore) {
        Level& level = levels_.empty() ? outside_ : levels_.back();
        return isBefore ? level.before : level.after;
    }

    static void addMarkup(Stretch& stretch, const XmlEvent& event) {
        for (; stretch.counted < stretch.text.size(); ++stretch.counted)
            if (!IsBlank(std::string_view(stretch.text).substr(stretch.counted, 1))) ++stretch.place;
        stretch.markup.push_back({event.kind, event.text, stretch.place});
    }

    void enter(const XmlEvent& a, const XmlEvent& b) {
        const ClassView* view = root_;
        if (levels_.empty()) {
            settleMarkup(outside_);
        } else {
            settle(levels_.back());
            view = levels_.back().view ? classes_.child(*levels_.back().view, *a.name) : nullptr;
            if (!view) view = classes_.named(*a.name);
        }
        compareAttributes(a, b, view);
        Level& level = levels_.emplace_back();
        level.name = a.name;
        level.view = view;
    }

    void compareAttributes(const XmlEvent& a, const XmlEvent& b, const ClassView* view) {
        const auto name = [&](const XmlAttribute& attribute) { return *a.name + "@" + *attribute.name; };
        for (const XmlAttribute& was : a.attributes) {
            const auto is = find(b, was.name);
            const ODF::AttributeInfo* const info = infoOf(view, *was.name);
            if (is == b.attributes.end())
                findings_.add(info ? FindingKind::AttributeLost : FindingKind::UnknownAttribute, name(was),
                              Example(was.value));
            else if (is->value != was.value)
                findings_.add(CompareValues(info, was.value, is->value), name(was),
                              Change(was.value, is->value));
            else if (was.valueNamespace && was.valueNamespace != is->valueNamespace)
                findings_.add(FindingKind::PrefixLost, name(was), Change(was.value, *was.valueNamespace));
        }
        for (const XmlAttribute& is : b.attributes)
            if (find(a, is.name) == a.attributes.end())
                findings_.add(FindingKind::AttributeAdded, name(is), Example(is.value));
    }

    static auto find(const XmlEvent& event, const std::string* name)
        -> std::vector<XmlAttribute>::const_iterator {
        return std::find_if(event.attributes.begin(), event.attributes.end(),
                            [&](const XmlAttribute& attribute) { return attribute.name == name; });
    }

    static const ODF::AttributeInfo* infoOf(const ClassView* view, const std::string& name) {
        if (!view) return nullptr;
        const auto at = view->attributes.find(name);
        return at == view->attributes.end() ? nullptr : &at->second;
    }

    void addLost(const XmlEvent& element) {
        const bool isListed =
            !levels_.empty() && levels_.back().view && classes_.child(*levels_.back().view, *element.name);
        const std::string name = pathOf(element);
        const std::size_t below = skip(before_);
        findings_.add(isListed ? FindingKind::ElementLost : FindingKind::UnknownElement, name, {}, below);
    }

    /// What is written without having been read; an end tag here is that of an element whose end was lost.
    void addExtra(const XmlEvent& event) {
        if (event.kind != XmlEvent::Kind::Start) {
            after_.pop();
            return;
        }
        const std::string name = pathOf(event);
        const std::size_t below = skip(after_);
        findings_.add(FindingKind::ElementAdded, name, {}, below);
    }

    std::string pathOf(const XmlEvent& element) const {
        return levels_.empty() ? *element.name : *levels_.back().name + "/" + *element.name;
    }

    /// Passes over the element that starts here; the number of elements below it.
    static std::size_t skip(XmlEvents& events) {
        std::size_t below = 0;
        std::size_t depth = 0;
        for (const XmlEvent* event = events.peek(); event; event = events.peek()) {
            if (event->kind == XmlEvent::Kind::Start && depth++ > 0) ++below;
            const bool isDone = event->kind == XmlEvent::Kind::End && --depth == 0;
            events.pop();
            if (isDone) break;
        }
        return below;
    }

    /// Compares what is between two children.
    void settle(Level& level) {
        settleMarkup(level);
        const std::string& before = level.before.text;
        const std::string& after = level.after.text;
        const bool isLayout = after.empty() && IsBlank(before) && level.view && !level.view->keepsText;
        if (before != after && !isLayout) {
            level.differentBefore.push_back(before);
            level.differentAfter.push_back(after);
        }
        level.before.clear();
        level.after.clear();
    }

    void settleMarkup(Level& level) {
        addMissing(FindingKind::MarkupLost, level.before.markup, level.after.markup);
        addMissing(FindingKind::MarkupAdded, level.after.markup, level.before.markup);
        level.before.markup.clear();
        level.after.markup.clear();
    }

    /// Adds what is in `these` without being in `others`, which has it in the same order otherwise.
    void addMissing(FindingKind kind, const std::vector<Markup>& these, const std::vector<Markup>& others) {
        auto from = others.begin();
        for (const Markup& markup : these) {
            const auto same = std::find(from, others.end(), markup);
            if (same != others.end())
                from = same + 1;
            else
                findings_.add(kind,
                              markup.kind == XmlEvent::Kind::Comment ? "comment" : "processing instruction",
                              Example(markup.text));
        }
    }

    void finishText() {
        Level& level = levels_.back();
        settle(level);
        if (level.differentBefore.empty()) return;
        const std::string was = Join(level.differentBefore, "");
        const std::string is = Join(level.differentAfter, "");
        if (was == is) {
            constexpr std::string_view kChild = "<>";
            findings_.add(FindingKind::TextMoved, *level.name,
                          Change(Join(level.differentBefore, kChild), Join(level.differentAfter, kChild)));
            return;
        }
        FindingKind kind = FindingKind::TextChanged;
        if (level.view && level.view->isDate)
            kind = CompareDates(was, is);
        else if (is.empty())
            kind = FindingKind::TextDropped;
        findings_.add(kind, *level.name, Change(was, is));
    }

    XmlEvents& before_;
    XmlEvents& after_;
    const ClassView* root_;
    Classes& classes_;
    Findings& findings_;
    Level outside_; ///< around the root element
    std::vector<Level> levels_;
};

} // namespace

void CompareXml(XmlEvents& before, XmlEvents& after, const ClassView* root, Classes& classes,
                Findings& findings) {
    Comparison(before, after, root, classes, findings).run();
}

} // namespace command
