#include "convert/markdown.h"

#include "console.h"
#include "convert/markup.h"

#include <algorithm>
#include <vector>

namespace command {
namespace {

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
        if (start_ == 0) escapeStart(line);
        addBlock(line);
    }
    void startList(bool isNumbered) override { lists_.push_back({isNumbered, 0}); }
    void endList() override {
        lists_.pop_back();
        marker_.clear();
    }
    void startItem() override {
        if (lists_.empty()) return;
        List& list = lists_.back();
        marker_ = list.isNumbered ? std::to_string(++list.count) + ". " : "- ";
        indents_.push_back(marker_.size());
    }
    void endItem() override {
        if (indents_.empty()) return;
        indents_.pop_back();
        marker_.clear();
    }
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
    void startCell(unsigned columns, unsigned /*rows*/) override {
        if (tables_ != 1) return;
        cell_.clear();
        line_.clear();
        start_ = 0;
        columns_ = columns;
    }
    void endCell() override {
        if (tables_ != 1 || rows_.empty()) return;
        if (!line_.empty()) cell_ += trimmed(std::move(line_)); // of a sheet, without a paragraph
        line_.clear();
        rows_.back().push_back(std::move(cell_));
        for (; columns_ > 1; --columns_) // cells that a merged one covers
            rows_.back().emplace_back();
    }
    void separate() override { addBlock("---"); }

    void text(std::string_view utf8) override {
        for (const char c : Printable(utf8)) {
            if (c == '\n' && tables_ > 0) {
                line_ += "<br>";
                continue;
            }
            constexpr std::string_view kSpecial = "\\`*_[]<>|~";
            if (kSpecial.find(c) != std::string_view::npos) line_ += '\\';
            line_ += c == '\n' || c == '\t' ? ' ' : c;
        }
    }
    void lineBreak() override { line_ += tables_ > 0 ? "<br>" : "\\\n"; }
    void startLook(const Look& look) override { looks_.push_back({look, line_.size()}); }
    void endLook() override {
        const OpenLook look = looks_.back();
        looks_.pop_back();
        // Marks stand next to letters: blanks at the ends go outside.
        std::string inner = line_.substr(std::min(look.start, line_.size()));
        const std::size_t first = inner.find_first_not_of(' ');
        if (first == std::string::npos) return;
        const std::size_t last = inner.find_last_not_of(' ') + 1;
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
    void noteMark(unsigned number) override { line_ += "[^" + std::to_string(number) + "]"; }
    void startNote(unsigned number) override {
        marker_ = "[^" + std::to_string(number) + "]: ";
        indents_.push_back(4);
    }
    void endNote() override {
        indents_.pop_back();
        marker_.clear();
    }

    std::string take() { return std::move(out_); }

private:
    using Row = std::vector<std::string>;
    struct List {
        bool isNumbered;
        unsigned count;
    };
    struct OpenLook {
        Look look;
        std::size_t start; ///< in the line
    };

    static std::string trimmed(std::string text) {
        text.erase(text.find_last_not_of(" \n\\") == std::string::npos ? 0
                                                                       : text.find_last_not_of(" \n") + 1);
        return text;
    }
    /// Blanks and brackets would end the target.
    static std::string target(std::string_view link) {
        std::string out;
        for (const char c : Quoted(link))
            switch (c) {
            case ' ':
                out += "%20";
                break;
            case '(':
                out += "%28";
                break;
            case ')':
                out += "%29";
                break;
            case '<':
                out += "%3C";
                break;
            case '>':
                out += "%3E";
                break;
            default:
                out += c;
            }
        return out;
    }
    /// What at the start of a line would make it a heading, an item or a line.
    static void escapeStart(std::string& line) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first == std::string::npos) return;
        if (std::string_view("#+-=").find(line[first]) != std::string_view::npos) line.insert(first, "\\");
        const std::size_t digits = line.find_first_not_of("0123456789", first);
        if (digits != std::string::npos && digits > first && (line[digits] == '.' || line[digits] == ')'))
            line.insert(digits, "\\");
        line.erase(0, first); // four blanks would make it code
    }
    void addBlock(const std::string& block) {
        const std::size_t levels = indents_.size();
        std::size_t indent = 0;
        for (std::size_t i = 0; i + (marker_.empty() ? 0 : 1) < levels; ++i)
            indent += indents_[i];
        const std::string first = std::string(indent, ' ') + marker_;
        const std::string others(marker_.empty() || levels == 0 ? indent : indent + indents_.back(), ' ');
        // Items stand together, all else is set off by an empty line.
        const bool isItem = !marker_.empty() && !lists_.empty();
        if (!out_.empty() && !(isItem && isBehindItem_)) out_ += '\n';
        isBehindItem_ = isItem || (isBehindItem_ && levels > 0 && !lists_.empty());
        std::size_t start = 0;
        for (bool isFirst = true; start <= block.size(); isFirst = false) {
            const std::size_t end = std::min(block.find('\n', start), block.size());
            out_.append(isFirst ? first : others).append(block, start, end - start) += '\n';
            start = end + 1;
        }
        marker_.clear();
    }

    std::string out_;
    std::string line_;
    std::size_t start_ = 0; ///< of the text, after the mark of a heading
    std::string marker_;    ///< of an item or note, before its first block
    std::vector<List> lists_;
    std::vector<std::size_t> indents_;
    bool isBehindItem_ = false;
    std::vector<OpenLook> looks_;
    std::vector<std::string> links_;
    unsigned tables_ = 0;
    std::vector<Row> rows_;
    std::string cell_;
    unsigned columns_ = 1;
};

} // namespace

std::string ToMarkdown(ODF::Document& document, bool& isCut) {
    Markdown sink;
    isCut = !WriteMarkup(document, sink);
    return sink.take();
}

} // namespace command
