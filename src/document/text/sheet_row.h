#pragma once

#include <odfmodel/document/document_text.h>

#include <cstddef>
#include <string>
#include <vector>

namespace ODF::reading {

/// Bounds what repeated cells, rows and blanks may add to the output: a few bytes of a file can ask for
/// billions of copies.
class CopyBudget {
public:
    /// How often a text of that length, which stands `repeat` times, is printed: at least once.
    unsigned take(unsigned repeat, std::size_t length);
    /// How many blanks of one element are printed.
    unsigned takeBlanks(unsigned count);
    bool isSpent() const noexcept { return isSpent_; }

private:
    std::size_t bytes_ = std::size_t{64} << 20;
    bool isSpent_ = false;
};

/// One row of a sheet while its cells are read: cells are separated by tabs, empty ones at the end leave
/// nothing.
class SheetRow {
public:
    explicit SheetRow(unsigned repeat) : repeat_(repeat) {}

    void addCell(const std::string& text, unsigned repeat, CopyBudget& budget);
    /// A line of text that hangs on the row.
    void attach(std::string line) { attached_.push_back(std::move(line)); }
    void print(const LineSink& out, CopyBudget& budget) const;

private:
    unsigned repeat_;
    std::string line_;
    std::size_t pendingTabs_ = 0;
    std::vector<std::string> attached_;
};

} // namespace ODF::reading
