#pragma once

#include "core/object_access.h"
#include "serial/xml/attribute_list.h"
#include "serial/xml/expat_parser.h"
#include "serial/xml/name_table.h"

#include <odfmodel/core/diagnostics.h>

#include <unordered_map>
#include <vector>

namespace ODF::xml {

/// Builds a tree of element objects from the events of a parse. Objects of the element classes are filled by
/// their tables; a caller's own classes are driven by their virtual operations.
class TreeBuilder final : public ParserEvents {
public:
    TreeBuilder(CSDObject& root, const Limits& limits) : root_(root), limits_(limits) {}

    void setParser(ExpatParser& parser) noexcept { parser_ = &parser; }
    /// What was met that no class lists, for the diagnostics.
    void report(Diagnostics& diagnostics) const;

    /// Whether the document began with the element that the root object stands for; its name as read.
    bool hasMatchedRoot() const noexcept { return hasMatchedRoot_; }
    const std::string& rootName() const noexcept { return rootName_; }

    void startElement(const char* name, const char** attributes) override;
    void endElement(const char* name) override;
    void characterData(std::string_view text) override;
    /// Hands over the text that a parse was gathering when it ended at a fault.
    void finish();

private:
    /// What the parse has learnt about one class: its rows by the number of a name. Filled as names are met.
    struct ClassNames {
        const ClassDescriptor* table = nullptr;
        std::vector<std::int32_t> childRows;
        std::vector<std::int32_t> attributeRows;
        std::vector<std::pair<const ResolvedName*, std::size_t>> unknownAttributes;
    };
    struct Level {
        CSDObject* object;
        ClassNames* names; ///< null for an object without table
        bool hasScope;
    };

    static constexpr std::int32_t kNotLooked = -2;
    static constexpr std::int32_t kUnknown = -1;

    void flushText();
    CSDObject* createChild(const Level& parent, const ResolvedName& name);
    void readAttributes(CSDObject& object, ClassNames* names, const ResolvedName& element,
                        const char** attributes);
    ClassNames* namesOf(const CSDObject& object);

    CSDObject& root_;
    Limits limits_;
    ExpatParser* parser_ = nullptr;
    NameTable names_;
    ValuePool pool_;
    std::unordered_map<const ClassDescriptor*, ClassNames> classes_;
    std::vector<Level> open_;
    std::string rootName_;
    bool hasMatchedRoot_ = false;
    unsigned skipDepth_ = 0; ///< open elements below, and with, an unknown one
    std::string text_;
    std::u16string units_;
    std::vector<ReadValue> values_;
    ReadAttributeList list_;
    std::unordered_map<const ResolvedName*, std::size_t> unknownElements_;
    std::unordered_map<const char*, std::size_t> droppedText_;
};

} // namespace ODF::xml
