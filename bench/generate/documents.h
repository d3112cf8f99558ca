#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace bench {

// Makers of large `content.xml` files of known shape. The same arguments give the same bytes on every
// machine. `size` scales the number of repeated things; 1 is the size that the documentation tells of.

/// 100,000 paragraphs: spans, notes, links, bookmarks, headings, lists, a few tables; about 60 MB.
std::string MakeTextContent(double size);
/// 1,000,000 cells: numbers, texts, dates, percentages, some of them repeated.
std::string MakeSheetContent(double size);
/// 500 slides with some twenty shapes each.
std::string MakeSlidesContent(double size);
/// 20,000 automatic styles of the widest classes, each with the few properties that a style has.
std::string MakeStylesContent(double size);

/// Writes an Open Packaging archive with about `parts` parts in two levels of relationships.
void MakePackage(const std::string& path, unsigned parts);

/// The standard engine is the same everywhere, the standard distributions are not.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    /// 0 to `count` - 1; the slight bias doesn't matter here.
    unsigned below(unsigned count) { return static_cast<unsigned>(engine_() % count); }
    unsigned between(unsigned first, unsigned last) { return first + below(last - first + 1); }
    bool oneIn(unsigned count) { return below(count) == 0; }
    template<typename List>
    auto of(const List& list) {
        return list[below(static_cast<unsigned>(std::size(list)))];
    }

private:
    std::mt19937_64 engine_;
};

/// Appends its arguments, texts and whole numbers, one after the other.
template<typename... Pieces>
void Put(std::string& out, const Pieces&... pieces) {
    const auto put = [&out](const auto& piece) {
        if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(piece)>>)
            out += std::to_string(piece);
        else
            out += std::string_view(piece);
    };
    (put(pieces), ...);
}

/// Words of several lengths, a few of them beyond ASCII.
void PutWords(std::string& out, Random& random, unsigned count);
/// A length such as "12.34cm".
std::string Length(Random& random, unsigned centimetres);
/// A colour such as "#12ab34" out of 200.
std::string Colour(Random& random);

/// `office:document-content` around automatic styles and the body's content element, such as "text".
std::string WrapContent(std::string_view styles, std::string_view kind, std::string_view body);

} // namespace bench
