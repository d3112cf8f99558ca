#include "convert/markdown.h"

#include "console.h"

#include <algorithm>
#include <vector>

namespace command {
namespace {

/// Blocks aren't indented further, so that the output of a hostile file stays in proportion to it.
constexpr std::size_t kMaxIndent = 240;
constexpr std::size_t kNoteIndent = 4;
/// A line break within a paragraph.
constexpr std::string_view kBreak = "\\\n";

class Markdown final : public MarkupSink {
public:
    void startParagraph(unsigned level) override {
        line_ = std::string(level, '#') + (level > 0 ? " " : "");
        start_ = line_.size();
    }
    void endParagraph() override {
        std::string line = trimmed(std::move(line_));
        line_.clear();
        if (line.size() <= start_) return;
        if (tables_ > 0) {
            cell_ += (cell_.empty() ? "" : "<br>") + line.substr(start_);
            return;
        }
        if (start_ == 0)
            escapeStarts(line);
        else if (line.back() == '#') // would be the end of a heading's mark
            line.insert(line.size() - 1, "\\");
        addBlock(line);
    }
    void startList(bool isNumbered) override { lists_.push_back({isNumbered, 0}); }
    void endList() override { lists_.pop_back(); }
    void startItem() override {
        List& list = lists_.back();
        const std::string mark = list.isNumbered ? std::to_string(++list.count) + ". " : "- ";
        openMark(mark, mark.size());
    }
    void endItem() override { closeMark(); }
    void startTable() override {
        if (tables_++ == 0) rows_.clear();
    }
    void endTable() override {
        if (--tables_ > 0) return;
        std::size_t columns = 0;
        for (const Row& row : rows_)
            columns = std::max(columns, row.size());
        if (columns == 0) return;
        std::string table;
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            // The first row is the head and has all columns; others may leave the last ones out.
            if (i == 0) rows_[i].resize(columns);
            table += rows_[i].empty() ? "|  |" : "|";
            for (const std::string& cell : rows_[i])
                table += " " + cell + " |";
            table += "\n";
            if (i > 0) continue;
            table += "|";
            for (std::size_t column = 0; column < columns; ++column)
                table += " --- |";
            table += "\n";
        }
        rows_.clear();
        table.pop_back();
        addBlock(table);
    }
    void startRow() override {
        if (tables_ == 1) rows_.emplace_back();
    }
    void endRow() override {}
    void startCell(unsigned /*columns*/, unsigned /*rows*/) override {
        if (tables_ != 1) return;
        cell_.clear();
        line_.clear();
        start_ = 0;
    }
    void endCell() override {
        if (tables_ != 1 || rows_.empty()) return;
        if (!line_.empty()) cell_ += trimmed(std::move(line_)); // of a sheet, without a paragraph
        line_.clear();
        rows_.back().push_back(std::move(cell_));
    }
    void coveredCell() override {
        if (tables_ == 1 && !rows_.empty()) rows_.back().emplace_back();
    }
    void separate() override { addBlock("---"); }

    void text(std::string_view utf8) override {
        const std::string text = Printable(utf8);
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c == '\n' && tables_ > 0) {
                line_ += "<br>";
                continue;
            }
            constexpr std::string_view kSpecial = "\\`*_[]<>|~";
            const bool isEntity = c == '&' && (i + 1 == text.size() || IsEntityStart(text[i + 1]));
            if (isEntity || kSpecial.find(c) != std::string_view::npos) line_ += '\\';
            line_ += c == '\n' || c == '\t' ? ' ' : c;
        }
    }
    void lineBreak() override { line_ += tables_ > 0 ? "<br>" : start_ > 0 ? " " : kBreak; }
    void startLook(const Look& look) override { looks_.push_back({look, line_.size()}); }
    void endLook() override {
        const OpenLook look = looks_.back();
        looks_.pop_back();
        // Marks stand next to letters: blanks and breaks at the ends go outside.
        std::string inner = line_.substr(std::min(look.start, line_.size()));
        std::size_t first = 0;
        while (const std::size_t length = blankAt(std::string_view(inner).substr(first)))
            first += length;
        if (first == inner.size()) return;
        const std::size_t last = trimmed(inner).size();
        line_.resize(line_.size() - inner.size());
        line_.append(inner, 0, first);
        std::string before;
        std::string after;
        const auto wrap = [&](bool is, const std::string& start, const std::string& end) {
            if (!is) return;
            before += start;
            after = end + after;
        };
        wrap(look.look.isBold, "**", "**");
        wrap(look.look.isItalic, "*", "*");
        wrap(look.look.isStruck, "~~", "~~");
        wrap(look.look.isRaised, "<sup>", "</sup>");
        wrap(look.look.isLowered, "<sub>", "</sub>");
        line_ += before + inner.substr(first, last - first) + after;
        line_.append(inner, last);
    }
    void startLink(std::string_view target) override {
        links_.emplace_back(target);
        escapeMark();
        line_ += '[';
    }
    void endLink() override {
        line_ += "](" + target(links_.back()) + ")";
        links_.pop_back();
    }
    void image(const CSDObject& /*object*/, std::string_view link, std::string_view about) override {
        if (!IsHarmlessLink(link)) return text(about);
        line_ += "![";
        text(about);
        line_ += "](" + target(link) + ")";
    }
    void noteMark(unsigned number) override {
        escapeMark();
        line_ += "[^" + std::to_string(number) + "]";
    }
    void startNote(unsigned number) override { openMark("[^" + std::to_string(number) + "]: ", kNoteIndent); }
    void endNote() override { closeMark(); }

    std::string take() { return std::move(out_); }

private:
    using Row = std::vector<std::string>;
    struct List {
        bool isNumbered;
        unsigned count;
    };
    struct Mark {
        std::string text;
        std::size_t indent;
        bool isPending;
    };
    struct OpenLook {
        Look look;
        std::size_t start; ///< in the line
    };

    /// How long the blank or break is that `text` begins with; 0 for none.
    static std::size_t blankAt(std::string_view text) {
        return text.starts_with(' ') ? 1 : text.starts_with(kBreak) ? kBreak.size() : 0;
    }
    static std::string trimmed(std::string text) {
        while (text.ends_with(' ') || text.ends_with(kBreak))
            text.resize(text.size() - (text.back() == ' ' ? 1 : kBreak.size()));
        return text;
    }
    static bool IsEntityStart(char c) { return c == '#' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    /// What would end the target or the cell around it, or be taken for another character.
    static std::string target(std::string_view link) {
        constexpr std::string_view kSpecial = " ()<>&|`";
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        std::string out;
        for (const char c : Quoted(link)) {
            if (c == '&')
                out += "&amp;";
            else if (kSpecial.find(c) != std::string_view::npos)
                (out += '%').append({kDigits[static_cast<unsigned char>(c) >> 4U], kDigits[c & 0xF]});
            else
                out += c;
        }
        return out;
    }
    /// With a "!" before it a link or note would be a picture.
    void escapeMark() {
        if (line_.ends_with('!')) line_.insert(line_.size() - 1, "\\");
    }
    /// What at the start of a line would make it a heading, an item or a rule. Blanks there would make it
    /// code.
    static void escapeStarts(std::string& block) {
        std::string escaped;
        for (std::size_t start = 0; start <= block.size();) {
            const std::size_t end = std::min(block.find('\n', start), block.size());
            std::string_view line = std::string_view(block).substr(start, end - start);
            line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
            if (!line.empty() && std::string_view("#+-=").find(line.front()) != std::string_view::npos)
                escaped += '\\';
            const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
            escaped += line.substr(0, digits);
            line.remove_prefix(digits);
            if (digits > 0 && (line.starts_with('.') || line.starts_with(')'))) escaped += '\\';
            escaped += line;
            if (end < block.size()) escaped += '\n';
            start = end + 1;
        }
        block = std::move(escaped);
    }
    /// The mark of an item or note stands before its first block; all others of its blocks are indented.
    void openMark(const std::string& text, std::size_t indent) {
        marks_.push_back({text, indent, true});
        indent_ += indent;
    }
    void closeMark() {
        indent_ -= marks_.back().indent;
        marks_.pop_back();
    }
    void addBlock(const std::string& block) {
        // Those whose marks are still to come are the inner ones.
        std::string marker;
        std::size_t indent = indent_;
        for (auto mark = marks_.rbegin(); mark != marks_.rend() && mark->isPending; ++mark) {
            marker.insert(0, mark->text);
            indent -= mark->indent;
            mark->isPending = false;
        }
        const std::string first = std::string(std::min(indent, kMaxIndent), ' ') + marker;
        const std::string others(std::min(indent_, kMaxIndent), ' ');
        // Items stand together, all else is set off by an empty line.
        const bool isItem = !marker.empty() && !lists_.empty();
        if (!out_.empty() && !(isItem && isBehindItem_)) out_ += '\n';
        isBehindItem_ = isItem || (isBehindItem_ && !marks_.empty() && !lists_.empty());
        std::size_t start = 0;
        for (bool isFirst = true; start <= block.size(); isFirst = false) {
            const std::size_t end = std::min(block.find('\n', start), block.size());
            out_.append(isFirst ? first : others).append(block, start, end - start) += '\n';
            start = end + 1;
        }
    }

    std::string out_;
    std::string line_;
    std::size_t start_ = 0; ///< of the text, after the mark of a heading
    std::vector<List> lists_;
    std::vector<Mark> marks_; ///< of the open items and notes
    std::size_t indent_ = 0;  ///< the sum of theirs
    bool isBehindItem_ = false;
    std::vector<OpenLook> looks_;
    std::vector<std::string> links_;
    unsigned tables_ = 0;
    std::vector<Row> rows_;
    std::string cell_;
};

} // namespace

Markup ToMarkdown(ODF::Document& document) {
    Markdown sink;
    Markup markup;
    markup.isCut = !WriteMarkup(document, sink);
    markup.text = sink.take();
    return markup;
}

} // namespace command
