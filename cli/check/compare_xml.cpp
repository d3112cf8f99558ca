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
        if (!before_.fault().empty()) findings_.add(FindingKind::XmlFault, {}, before_.fault());
        // What was written must be well formed, and whole unless the file itself ended early.
        if (!after_.fault().empty()) findings_.add(FindingKind::XmlFault, "(written)", after_.fault());
    }

private:
    /// An element that stands on both sides.
    struct Level {
        const std::string* name;
        const ClassView* view; ///< null for a class that isn't known
        std::string before;    ///< character content since the last child
        std::string after;
        std::vector<std::string> differentBefore; ///< the stretches that differ
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

    /// The next start or end of an element; what stands before it is taken in.
    const XmlEvent* next(XmlEvents& events, bool isBefore) {
        const XmlEvent* event = events.peek();
        for (; event; events.pop(), event = events.peek()) {
            switch (event->kind) {
            case XmlEvent::Kind::Start:
            case XmlEvent::Kind::End:
                return event;
            case XmlEvent::Kind::Text:
                if (!levels_.empty())
                    (isBefore ? levels_.back().before : levels_.back().after) += event->text;
                break;
            case XmlEvent::Kind::Markup:
                if (isBefore) findings_.add(FindingKind::MarkupDropped, event->text);
                break;
            case XmlEvent::Kind::Entity:
                if (isBefore) findings_.add(FindingKind::EntityLost, event->text);
                break;
            }
        }
        return nullptr;
    }

    void enter(const XmlEvent& a, const XmlEvent& b) {
        const ClassView* view = root_;
        if (!levels_.empty()) {
            settleText(levels_.back());
            view = levels_.back().view ? classes_.child(*levels_.back().view, *a.name) : nullptr;
        }
        compareAttributes(a, b, view);
        levels_.push_back({a.name, view, {}, {}, {}, {}});
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

    /// Compares what stands between two children.
    static void settleText(Level& level) {
        const bool isLayout =
            level.after.empty() && IsBlank(level.before) && level.view && !level.view->keepsText;
        if (level.before != level.after && !isLayout) {
            level.differentBefore.push_back(level.before);
            level.differentAfter.push_back(level.after);
        }
        level.before.clear();
        level.after.clear();
    }

    void finishText() {
        Level& level = levels_.back();
        settleText(level);
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
    std::vector<Level> levels_;
};

} // namespace

void CompareXml(XmlEvents& before, XmlEvents& after, const ClassView* root, Classes& classes,
                Findings& findings) {
    Comparison(before, after, root, classes, findings).run();
}

} // namespace command
