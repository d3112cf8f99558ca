#include "convert/csv_reader.h"

#include <odfmodel/core/string.h>
#include <odfmodel/document/sheet.h>
#include <odfmodel/elements/table/structure.h>

#include <algorithm>
#include <charconv>

namespace command {
namespace {

std::string ToUtf8Text(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    const bool isLittle = bytes.starts_with("\xFF\xFE");
    if (!isLittle && !bytes.starts_with("\xFE\xFF")) return std::string(bytes);
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const unsigned first = static_cast<unsigned char>(bytes[i]);
        const unsigned second = static_cast<unsigned char>(bytes[i + 1]);
        units += static_cast<char16_t>(isLittle ? second << 8U | first : first << 8U | second);
    }
    return ODF::ToUtf8(units);
}

/// Reads the rows one after the other.
class CsvRows {
public:
    CsvRows(std::string_view text, char separator) : text_(text), separator_(separator) {}

    /// The next row; false at the end.
    bool next(std::vector<std::string>& cells) {
        cells.clear();
        if (at_ >= text_.size()) return false;
        do
            cells.push_back(cell());
        while (take(separator_));
        take('\r');
        take('\n');
        return true;
    }

private:
    bool take(char c) {
        if (at_ >= text_.size() || text_[at_] != c) return false;
        ++at_;
        return true;
    }
    /// A cell in quotes may hold anything, doubled quotes for one; what follows its end belongs to it too.
    std::string cell() {
        std::string value;
        if (take('"'))
            while (at_ < text_.size()) {
                const char c = text_[at_++];
                if (c == '"' && !take('"')) break;
                value += c;
            }
        const char ends[] = {separator_, '\r', '\n', '\0'};
        const std::size_t end = std::min(text_.find_first_of(ends, at_), text_.size());
        value.append(text_, at_, end - at_);
        at_ = end;
        return value;
    }

    std::string_view text_;
    char separator_;
    std::size_t at_ = 0;
};

bool IsDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether a text is a number and no code that only looks like one: it has no leading zeros and not more
/// digits than a number keeps.
bool IsNumber(std::string_view text, double& number) {
    constexpr std::size_t kMaxDigits = 15;
    std::string_view rest = text;
    if (rest.starts_with('-')) rest.remove_prefix(1);
    const std::size_t point = rest.find('.');
    const std::string_view whole = rest.substr(0, point);
    if (!IsDigits(whole) || (whole.size() > 1 && whole.front() == '0')) return false;
    std::size_t digits = whole.size();
    if (point != std::string_view::npos) {
        const std::string_view fraction = rest.substr(point + 1);
        if (!IsDigits(fraction)) return false;
        digits += fraction.size();
    }
    if (digits > kMaxDigits || text == "-0") return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// XML can't hold most control characters.
std::string Cleaned(const std::string& text) {
    std::string clean;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto c = static_cast<unsigned char>(text[at]);
        const bool isControl = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
        const bool isNoCharacter = c == 0xEF && at + 2 < text.size() && text[at + 1] == '\xBF' &&
                                   static_cast<unsigned char>(text[at + 2]) >= 0xBE;
        if (isControl || isNoCharacter)
            clean += kReplacement;
        else
            clean += text[at];
        if (isNoCharacter) at += 2;
    }
    return clean;
}

ODF::CellValue ValueOf(const std::string& text, bool isTextOnly) {
    if (text.empty()) return {};
    double number = 0;
    if (!isTextOnly && IsNumber(text, number)) return number;
    constexpr std::size_t kDateLength = 10;
    if (!isTextOnly && text.size() == kDateLength && text[4] == '-' && text[7] == '-')
        if (ODF::CellValue date = ODF::CellValue::Date(text); date.IsValid()) return date;
    return Cleaned(text);
}

} // namespace

ODF::Document ReadCsv(std::string_view bytes, const CsvInput& options) {
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Spreadsheet);
    ODF::Sheets sheets(document);
    ODF::Sheet& sheet = sheets[0];
    sheet.Table().SetTableName("Sheet1");
    const std::string text = ToUtf8Text(bytes);
    CsvRows rows(text, options.separator);
    std::vector<std::string> cells;
    std::vector<ODF::CellValue> values;
    std::uint32_t next = 0; // the row that AppendRow would fill
    for (std::uint32_t row = 0; rows.next(cells); ++row) {
        values.clear();
        for (const std::string& cell : cells)
            values.push_back(ValueOf(cell, options.isTextOnly));
        while (!values.empty() && values.back().IsEmpty())
            values.pop_back();
        if (values.empty()) continue; // stays empty
        if (row == next) {
            sheet.AppendRow(values);
        } else {
            for (std::uint32_t column = 0; column < values.size(); ++column)
                if (!values[column].IsEmpty()) sheet.Set(row, column, values[column]);
        }
        next = row + 1;
    }
    return document;
}

} // namespace command
