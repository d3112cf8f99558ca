#pragma once

#include <odfmodel/export.h>

#include <concepts>
#include <string>
#include <string_view>
#include <utility>

namespace ODF {

enum class CellKind { Empty, Number, Percentage, Currency, Date, Time, Bool, Text };

/// What a cell holds. Numbers are doubles, so whole numbers keep their digits up to 2^53.
class ODFMODEL_API CellValue {
public:
    CellValue() = default;
    template<typename T>
    requires std::floating_point<T> ||
        (std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char>)CellValue(T number)
        : kind_(CellKind::Number), number_(static_cast<double>(number)) {} // NOLINT
    template<std::same_as<bool> T>
    CellValue(T truth) : kind_(CellKind::Bool), number_(truth ? 1 : 0) {}           // NOLINT
    CellValue(std::string text) : kind_(CellKind::Text), text_(std::move(text)) {}  // NOLINT
    CellValue(std::string_view text) : kind_(CellKind::Text), text_(text) {}        // NOLINT
    CellValue(const char* text) : kind_(CellKind::Text), text_(text ? text : "") {} // NOLINT
    /// 0.25 for 25 %.
    static CellValue Percentage(double number) { return {CellKind::Percentage, number, {}}; }
    /// `code` such as "EUR"; may be empty.
    static CellValue Currency(double number, std::string_view code) {
        return {CellKind::Currency, number, std::string(code)};
    }
    /// "2024-01-31" or "2024-01-31T12:30:00".
    static CellValue Date(std::string_view iso) { return {CellKind::Date, 0, std::string(iso)}; }
    static CellValue Date(int year, unsigned month, unsigned day);
    /// A time of day or a duration, such as "PT12H30M00S".
    static CellValue Time(std::string_view iso) { return {CellKind::Time, 0, std::string(iso)}; }
    static CellValue Time(unsigned hours, unsigned minutes, unsigned seconds = 0);

    CellKind Kind() const noexcept { return kind_; }
    bool IsEmpty() const noexcept { return kind_ == CellKind::Empty; }
    /// Of a number, percentage or currency; 1 or 0 of a bool; else 0.
    double Number() const noexcept { return number_; }
    bool Bool() const noexcept { return kind_ == CellKind::Bool && number_ != 0; }
    /// A text; of a date or time its ISO form; of a currency its code; else empty.
    const std::string& Text() const noexcept { return text_; }
    /// What a cell without a style shows, such as "25%" or "TRUE".
    std::string Shown() const;
    /// Whether a document can hold it: numbers are finite, dates and times are such.
    bool IsValid() const noexcept;

    friend bool operator==(const CellValue&, const CellValue&) = default;

private:
    CellValue(CellKind kind, double number, std::string text)
        : kind_(kind), number_(number), text_(std::move(text)) {}

    CellKind kind_ = CellKind::Empty;
    double number_ = 0;
    std::string text_;
};

} // namespace ODF
