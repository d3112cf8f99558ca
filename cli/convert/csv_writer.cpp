#include "convert/csv_writer.h"

#include "convert/bounds.h"

#include <algorithm>

namespace command {
namespace {

class CsvSheet {
public:
    explicit CsvSheet(const CsvOptions& options) : options_(options) {}

    void add(const ODF::Sheet& sheet) {
        std::uint32_t lines = 0;
        for (const ODF::SheetRow& row : sheet.UsedRows()) {
            put("\n", row.Index() - lines);
            const std::string line = lineOf(row) + '\n';
            text_ += line;
            put(line, row.Repeat() - 1);
            lines = row.Index() + row.Repeat();
        }
    }
    std::string take() { return std::move(text_); }
    bool isCut() const { return isCut_; }

private:
    std::string lineOf(const ODF::SheetRow& row) {
        std::string line;
        std::swap(line, text_); // what is put goes into the line
        std::uint32_t column = 0;
        for (const ODF::SheetCell& cell : row.UsedCells()) {
            const std::string_view separator(&options_.separator, 1);
            put(separator, cell.Column() - column);
            const std::string value = quoted(cell.Text());
            text_ += value;
            put(std::string(separator) + value, cell.ColumnRepeat() - 1);
            column = cell.Column() + cell.ColumnRepeat() - 1;
        }
        std::swap(line, text_);
        return line;
    }

    /// Appends `piece` so often, as long as there is room.
    void put(std::string_view piece, std::uint32_t times) {
        const std::size_t fitting = std::min<std::size_t>(times, left_ / piece.size());
        if (fitting < times) isCut_ = true;
        left_ -= fitting * piece.size();
        for (std::size_t i = 0; i < fitting; ++i)
            text_ += piece;
    }

    std::string quoted(std::string text) const {
        const char special[] = {options_.separator, '"', '\n', '\r', '\0'};
        if (text.find_first_of(special) == std::string::npos) return text;
        std::string result = "\"";
        for (const char c : text) {
            if (c == '"') result += '"';
            result += c;
        }
        return result + '"';
    }

    CsvOptions options_;
    std::string text_;
    std::size_t left_ = kMaxCopied;
    bool isCut_ = false;
};

} // namespace

std::string WriteCsv(const ODF::Sheet& sheet, const CsvOptions& options, bool& isCut) {
    CsvSheet writer(options);
    writer.add(sheet);
    isCut = writer.isCut();
    return writer.take();
}

} // namespace command
