#include "serial/xml/memory_xml.h"

#include "serial/xml/xml_writer.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/serial/sax_reader.h>

#include <memory>

namespace ODF {

std::string ToXml(CSDObject& object, std::string_view name, Fidelity fidelity) {
    std::string result;
    xml::XmlWriter writer;
    writer.openText(result);
    writer.SetFidelity(fidelity);
    return writer.writeTree(object, name) && writer.Close() >= 0 ? result : std::string();
}

std::string xml::ToXml(CSDObject& root, FormatVersion& newest) {
    std::string result;
    XmlWriter writer;
    writer.openText(result);
    writer.SetFidelity(Fidelity::Everything);
    if (!writer.writeTree(root, {}) || writer.Close() < 0) return {};
    newest = writer.newest();
    return result;
}

bool FromXml(std::string_view xml, CSDObject& root, Fidelity fidelity) {
    const std::unique_ptr<CSDSaxReader, decltype(&ReleaseSaxReader)> reader(CreateSaxReader(),
                                                                            &ReleaseSaxReader);
    reader->SetFidelity(fidelity);
    return reader->ParseMemory(xml.data(), xml.size(), &root);
}

} // namespace ODF
