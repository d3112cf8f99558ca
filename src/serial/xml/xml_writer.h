#pragma once

#include "core/object_access.h"
#include "serial/xml/attribute_list.h"
#include "serial/xml/output_buffer.h"

#include <odfmodel/core/serializer.h>

#include <cstdint>
#include <string>
#include <string_view>
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

    void openText(std::string& target) noexcept { out_.openText(target); }
    /// Writes the declaration and the tree; `name` empty for the root's own name.
    bool writeTree(CSDObject& root, std::string_view name);

private:
    /// An element whose start tag is written and whose children are under way.
    struct Level {
        CSDObject* object;
        const ClassDescriptor* table; ///< null for a caller's own class
        std::size_t next;
        const ChildRow* lastRow; ///< of the child written last: siblings are mostly alike
        std::string name;        ///< only of a caller's own class
        std::string_view tag;
    };

    bool open(const unsigned short* path);
    void writeChildren(std::size_t floor);
    void writeChild(Level& parent, CSDObject& child);
    void startElement(CSDObject& object, const ClassDescriptor& table, std::string_view tag);
    void writeAttributes(const CSDObject& object, const ClassDescriptor& table);
    void writeValue(const AttributeValue& value);
    void pushOrClose(CSDObject& object, const ClassDescriptor* table, std::string_view tag,
                     std::u16string_view text);
    void endElement();
    std::uint64_t usedNamespaces(CSDObject& root, std::string_view rootName) const;
    void declareNamespaces();
    void writeForeignAttributes(const WriteAttributeList& attributes, std::string_view tag, bool isRoot);

    OutputBuffer out_;
    std::vector<Level> open_;
    std::uint64_t declared_ = 0; ///< namespaces that the root declares
    bool rootWritten_ = false;
    Diagnostics* diagnostics_ = nullptr;
    std::string path_;
};

} // namespace ODF::xml
