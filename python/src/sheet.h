#pragma once

#include "tree.h"

#include <odfmodel/document/sheet.h>

#include <memory>
#include <optional>

namespace odfpython {

/// A table with the view of it. The view is made again when something else has changed its tree.
class Sheet {
public:
    explicit Sheet(const Element& table) : table_(table) {}

    ODF::Sheet& operator*();
    ODF::Sheet* operator->() { return &**this; }
    const Element& table() const noexcept { return table_; }
    Tree& tree() const noexcept { return *table_.tree(); }
    /// The view has written, and knows what; other views of the table don't.
    void wrote();
    /// What has to be written to a cell goes by here: texts that Python holds live on.
    void set(std::uint32_t row, std::uint32_t column, const ODF::CellValue& value,
             const std::string* formula = nullptr);

private:
    Element table_;
    std::optional<ODF::Sheet> view_;
    std::size_t version_ = 0;
    std::size_t written_ = 0;
};

py::object MakeSheet(const Element& table);
/// The cells that `range` names, such as "A1:C3", or all that are used for None.
ODF::CellRange RangeOf(Sheet& sheet, const py::object& range);
/// Throws ValueError for more cells than anyone wants in memory.
void RequireSize(const ODF::CellRange& range, std::uint64_t maxCells);
void BindSheet(py::module_& module);
/// Adds what data frames are filled from and by.
void BindFrames(py::module_& module);

} // namespace odfpython
