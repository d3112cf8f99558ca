#pragma once

#include "tree.h"

#include <string>
#include <vector>

namespace odfpython {

/// What elements are looked for by: a class, a tag, or "*" for any.
class Matcher {
public:
    Matcher() = default;
    /// None is any element. Throws TypeError and ValueError for what names no elements.
    explicit Matcher(py::handle what);
    explicit Matcher(std::string_view tag);
    bool operator()(const CSDObject& object) const;

private:
    unsigned id_ = 0; ///< 0 for any
    std::string tag_; ///< of a foreign element
};

/// Where to look: "text:p", "table:table/table:table-row", ".//text:span" or a class.
class Path {
public:
    explicit Path(py::handle what);
    /// What it leads to from `root`, in document order; the first alone on demand.
    std::vector<CSDObject*> find(CSDObject& root, bool isFirstOnly) const;

private:
    struct Step {
        bool isDeep = false;
        Matcher matches;
    };
    std::vector<Step> steps_;
};

} // namespace odfpython
