#include "document/text/sheet_row.h"

#include "document/text/paragraph_text.h"

#include <algorithm>

namespace ODF::reading {
namespace {

/// Columns of the widest sheet that office programs know.
constexpr std::size_t kMaxColumns = 16384;

} // namespace

unsigned CopyBudget::take(unsigned repeat, std::size_t length) {
    const std::size_t wanted = std::max(repeat, 1U) - 1;
    const std::size_t granted = std::min(wanted, bytes_ / (length + 1));
    bytes_ -= granted * (length + 1);
    isSpent_ = isSpent_ || granted < wanted;
    return static_cast<unsigned>(granted) + 1;
}

unsigned CopyBudget::takeBlanks(unsigned count) {
    isSpent_ = isSpent_ || count > kMaxBlanks;
    return count == 0 ? 0 : take(std::min(count, kMaxBlanks), 0);
}

void SheetRow::addCell(const std::string& text, unsigned repeat, CopyBudget& budget) {
    if (text.empty()) {
        pendingTabs_ = std::min(pendingTabs_ + std::max(repeat, 1U), kMaxColumns);
        return;
    }
    for (unsigned count = budget.take(repeat, text.size()); count > 0; --count) {
        if (pendingTabs_ > 0) line_.append(budget.take(static_cast<unsigned>(pendingTabs_), 0), '\t');
        line_ += text;
        pendingTabs_ = 1;
    }
}

void SheetRow::print(const LineSink& out, CopyBudget& budget) const {
    if (!line_.empty())
        for (unsigned count = budget.take(repeat_, line_.size()); count > 0; --count)
            out(line_);
    for (const std::string& line : attached_)
        out(line);
}

} // namespace ODF::reading
