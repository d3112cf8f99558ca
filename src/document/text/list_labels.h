#pragma once

#include "document/text/list_styles.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ODF::reading {

/// What is before a paragraph.
struct Label {
    std::size_t level = 0; ///< depth of lists around it; 0 outside lists
    std::string text;      ///< number or bullet, empty for none
};

/// Counts the items of lists and the headings of a document as they come, and makes their labels.
class ListLabels {
public:
    explicit ListLabels(const ListStyles& styles);

    void startList(const Attributes& attributes);
    void endList();
    /// `isCounted` false for a list header, which has no label.
    void startItem(bool isCounted, const Attributes& attributes);
    void endItem();
    /// A paragraph that is an item of its own.
    void startNumberedParagraph(const Attributes& attributes);
    void endNumberedParagraph();
    /// The label of the paragraph or heading that starts here; `outlineLevel` is the heading's, 0 for a
    /// paragraph.
    Label next(unsigned outlineLevel, const Attributes& attributes);

    /// Text that hangs on a paragraph is in no list but its own.
    void startBlock();
    void endBlock();

private:
    /// The numbers of one list as it goes on, with all lists inside.
    struct Numbers {
        std::array<std::optional<unsigned>, kListLevels> levels;
    };
    struct Item {
        bool isOpen = false;
        bool isCounted = false;
        std::optional<unsigned> start;
    };
    struct List {
        std::string style;
        std::shared_ptr<Numbers> numbers;
        bool isContinued = false; ///< goes on from an earlier one, until its first paragraph
        Item item;
    };

    std::shared_ptr<Numbers> continued(const Attributes& attributes, const std::string& style);
    Label nextOfOutline(unsigned level, const Attributes& attributes);
    static void count(Numbers& numbers, const ListStyle& style, std::size_t level,
                      std::optional<unsigned> start);
    static std::string textOf(const Numbers& numbers, const ListStyle& style, std::size_t level);

    const ListStyles& styles_;
    std::vector<std::vector<List>> blocks_;
    std::shared_ptr<Numbers> outline_ = std::make_shared<Numbers>();
    std::map<std::string, std::shared_ptr<Numbers>> byId_;
    std::map<std::string, std::shared_ptr<Numbers>> byStyle_;  ///< the last list of each style
    std::map<std::string, std::shared_ptr<Numbers>> numbered_; ///< paragraphs of their own, by style
};

} // namespace ODF::reading
