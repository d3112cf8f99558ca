#pragma once

#include <odfmodel/core/reflection.h>

#include <map>
#include <string>
#include <unordered_map>

namespace command {

/// What a class keeps of an element, made for fast questions.
struct ClassView {
    ODF::ClassInfo info;
    std::unordered_map<std::string_view, ODF::AttributeInfo> attributes;
    std::unordered_map<std::string_view, unsigned> children; ///< id by name
    bool keepsText = false;
    bool isDate = false; ///< its text is a date
};

/// All classes by id.
class Classes {
public:
    Classes();

    /// Null for an id that no class has.
    const ClassView* find(unsigned id);
    /// The class of the child `name` of an element of class `parent`; null when it lists none.
    const ClassView* child(const ClassView& parent, const std::string& name);
    /// The class that elements of that name have where no parent lists them; null for none.
    const ClassView* named(const std::string& name);

private:
    std::map<unsigned, ODF::ClassInfo> infos_;
    std::map<unsigned, ClassView> views_; ///< those that were asked for
};

} // namespace command
