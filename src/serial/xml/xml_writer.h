#pragma once

#include "core/object_access.h"
#include "serial/xml/attribute_list.h"
#include "serial/xml/namespace_scopes.h"
#include "serial/xml/output_buffer.h"

#include <odfmodel/core/serializer.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ODF::xml {

/// Writes trees of element objects. Objects of the element classes are written by their tables, in a loop, so
/// that a tree may be as deep as it likes; a caller's own classes are asked through `WriteElement`.
class XmlWriter final : public CSDSerializer {
public:
    ~XmlWriter() override;

    bool WriteObject(const unsigned short* name, CSDObject* object, CSDAttribute* attributes,
                     const unsigned short* text, int flag) override;
    void WriteRaw(const unsigned short* text, int length) override;
    bool SerializeToFile(const unsigned short* path, CSDObject* root) override;
    bool OpenMemory(void* buffer, int byteCapacity) override;
    bool OpenFile(const unsigned short* path) override;
    int Close() override;
    void SetDiagnostics(Diagnostics* diagnostics) override { diagnostics_ = diagnostics; }
    void SetFidelity(Fidelity fidelity) override { keepsAll_ = fidelity == Fidelity::Everything; }

    void openText(std::string& target) noexcept { out_.openText(target); }
    /// Writes the declaration and the tree; `name` empty for the root's own name.
    bool writeTree(CSDObject& root, std::string_view name);
    /// The version of the format that what was written with full fidelity needs; extensions don't count.
    FormatVersion newest() const noexcept { return newest_; }

private:
    /// An element whose start tag is written and whose children are under way.
    struct Level {
        CSDObject* object;
        const ClassDescriptor* table; ///< null for a caller's own class
        std::size_t next;
        const ChildRow* lastRow; ///< of the child written last: siblings are mostly alike
        std::string name;        ///< only of a name that isn't in a table
        std::string_view tag;
        NamespaceScopes::Mark outer{};
        bool skipsRuns = false; ///< the text was written as a value
    };

    void need(FormatVersion since) noexcept {
        if (since > newest_ && since != FormatVersion::Extended) newest_ = since;
    }
    bool open(const unsigned short* path);
    void writeChildren(std::size_t floor);
    bool hasOwnName(const CSDObject& child) const noexcept;
    void writeChild(Level& parent, CSDObject& child);
    void startElement(CSDObject& object, const ClassDescriptor& table, std::string_view tag,
                      NamespaceIndex nameSpace);
    void startWhole(CSDObject& object, const ClassDescriptor& table, std::string_view tag,
                    NamespaceIndex nameSpace);
    void writeWholeAttributes(const CSDObject& object, const ClassDescriptor& table, const Extras* extras);
    void writeMarkup(const CSDObject& object);
    void writeOutside(const std::vector<CSDObject*>& markup, bool isAfter);
    std::string nameInForce(NamespaceIndex nameSpace, std::string_view qname, bool isAttribute);
    const std::string& foreignName(const ForeignName& name, bool isAttribute);
    void putDeclaration(std::string_view prefix, std::string_view uri);
    void putAttribute(std::string_view name, std::u16string_view value);
    void writeAttributes(const CSDObject& object, const ClassDescriptor& table);
    void writeValue(const AttributeValue& value);
    void pushOrClose(CSDObject& object, const ClassDescriptor* table, std::string_view tag,
                     std::u16string_view text, const NamespaceScopes::Mark& outer);
    void endElement();
    std::uint64_t usedNamespaces(CSDObject& root, std::string_view rootName) const;
    void declareNamespaces();
    void writeForeignAttributes(const WriteAttributeList& attributes, std::string_view tag, bool isRoot);

    OutputBuffer out_;
    std::vector<Level> open_;
    std::uint64_t declared_ = 0; ///< namespaces that the root declares
    bool rootWritten_ = false;
    bool keepsAll_ = false;
    bool failed_ = false; ///< something can't be written at all
    FormatVersion newest_ = FormatVersion::Base;
    NamespaceScopes scopes_;
    /// How a foreign name is written, as an element and as an attribute.
    struct ForeignText {
        std::uint32_t scope = UINT32_MAX;
        std::string text;
    };
    std::unordered_map<const unsigned short*, std::array<ForeignText, 2>> foreignNames_;
    Diagnostics* diagnostics_ = nullptr;
    std::string path_;
};

} // namespace ODF::xml
