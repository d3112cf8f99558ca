#pragma once

#include "core/arena.h"
#include "core/object_access.h"
#include "core/text_maker.h"
#include "serial/xml/attribute_list.h"
#include "serial/xml/name_table.h"
#include "serial/xml/parser_events.h"

#include <odfmodel/core/diagnostics.h>

#include <unordered_map>
#include <vector>

namespace ODF::xml {

/// Builds a tree of element objects from the events of a parse. Objects of the element classes are filled by
/// their tables; a caller's own classes are driven by their virtual operations.
class TreeBuilder final : public ParserEvents {
public:
    TreeBuilder(CSDObject& root, ParseControl& control, const Limits& limits, Fidelity fidelity)
        : root_(root), control_(control), limits_(limits), keepsAll_(fidelity == Fidelity::Everything) {
        setSourceBytes(0);
    }
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;
    ~TreeBuilder();

    /// Bytes of the document, as far as they are known yet: the more, the larger the tree may become.
    void setSourceBytes(std::uint64_t byteCount) noexcept {
        most_.objects = limits_.freeObjects + byteCount * limits_.objectsPerByte;
        most_.textBytes = limits_.freeTreeBytes + byteCount * limits_.treeBytesPerByte;
    }
    const TreeCost& cost() const noexcept { return cost_; }
    /// What was met that no class lists, for the diagnostics.
    void report(Diagnostics& diagnostics) const;

    /// Whether the document began with the element that the root object stands for; its name as read.
    bool hasMatchedRoot() const noexcept { return hasMatchedRoot_; }
    const std::string& rootName() const noexcept { return rootName_; }

    void startElement(std::string_view name, Attributes attributes) override;
    void endElement(std::string_view name) override;
    void characterData(std::string_view text, bool isWhole) override;
    void comment(std::string_view text) override;
    void processingInstruction(std::string_view target, std::string_view data) override;
    void skippedEntity(std::string_view name) override;
    /// Hands over what a parse was gathering when it ended at a fault.
    void finish();

private:
    static constexpr std::int32_t kNotLooked = -2;
    static constexpr std::int32_t kUnknown = -1;

    /// What the parse has learnt about one class: its rows by the number of a name. Filled as names are met.
    struct ClassNames {
        struct Child {
            std::int32_t row = kNotLooked;
            ClassNames* names = nullptr; ///< of the child's class
            bool hasOwnName = false;
        };
        const ClassDescriptor* table = nullptr;
        std::vector<Child> childRows;
        std::vector<std::int32_t> attributeRows;
        std::vector<ValuePool::Usage> usage; ///< of the attributes, by their rows
        std::vector<std::pair<const ResolvedName*, std::size_t>> unknownAttributes;
    };
    struct Level {
        CSDObject* object;
        ClassNames* names; ///< null for an object without table
        bool hasScope;
        Arena* arena;             ///< has room reserved for the object's attributes; null for the heap
        std::size_t firstPending; ///< where its own children begin in `pending_`
        bool hasRuns = false;     ///< holds text between children although its class has no place for it
        bool hasOwnName = false;  ///< the parent lists the class under another name
    };

    void flushText();
    void takeText(std::string_view text);
    bool createChild(Level& child, const ResolvedName& name, std::string_view qname, Attributes attributes);
    void readAttributes(const Level& level, const ResolvedName& element, Attributes attributes);
    ClassNames& namesOf(const ClassDescriptor& table);
    void keepText(Level& level, std::string_view text);
    void keepDeclarations(CSDObject& object);
    void keepAttribute(const ResolvedName& name, std::string_view qname, std::string_view value);
    void addMarkup(unsigned id, std::string_view text);
    void addTextRun(std::u16string_view text);
    bool hasChildren(const Level& level) const noexcept;
    void close(Level& level);
    /// Makes an object that becomes the next child of the open one, and tells the arena that has `byteCount`
    /// more reserved for what belongs to it; null for the heap.
    CSDObject* makeChild(CSDObject* (*make)(unsigned, Arena*), unsigned id, std::size_t byteCount,
                         Arena*& arena);
    /// Gives every open object the children it has so far: before anything of a caller's own is called.
    void settle();

    CSDObject& root_;
    ParseControl& control_;
    Limits limits_;
    const bool keepsAll_;
    TreeCost cost_;
    TreeCost most_;
    NameTable names_;
    ValuePool pool_;
    std::unordered_map<const ClassDescriptor*, ClassNames> classes_;
    std::vector<Level> open_;
    /// Children of the open objects that aren't in their lists yet. An object gets its list in one piece at
    /// its end tag, so that no list grows step by step.
    std::vector<CSDObject*> pending_;
    Arena arena_;
    std::string rootName_;
    bool hasMatchedRoot_ = false;
    unsigned skipDepth_ = 0; ///< open elements below, and with, an unknown one
    std::string text_;
    TextMaker texts_;
    std::u16string units_;
    std::vector<ReadValue> values_;
    std::vector<KeptAttribute> kept_; ///< attributes of the present start tag that its class doesn't list
    std::vector<std::uint32_t> seen_; ///< by the numbers of names: the start tag that had the attribute last
    std::uint32_t startTag_ = 0;
    ReadAttributeList list_;
    std::unordered_map<const ResolvedName*, std::size_t> unknownElements_;
    std::unordered_map<const char*, std::size_t> droppedText_;
};

} // namespace ODF::xml
