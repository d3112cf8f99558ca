#pragma once

#include <odfmodel/document/sheet.h>

#include <optional>
#include <vector>

namespace ODF {

/// The merged cells of a sheet, found by any cell in them.
class Merges {
public:
    explicit Merges(const Sheet& sheet);
    std::optional<CellRange> find(const CellAddress& cell) const noexcept;

private:
    struct Merge {
        CellRange range;
        bool isEachRow;      ///< each row of the range is merged by itself: the row is repeated
        bool isEachColumn;   ///< the same for its columns
        std::uint32_t reach; ///< the last row of this and all earlier ranges
    };
    std::vector<Merge> merges_; ///< by their first rows
};

} // namespace ODF
