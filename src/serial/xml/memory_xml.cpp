#include "serial/xml/memory_xml.h"

#include "serial/xml/xml_writer.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/serial/sax_reader.h>

#include <memory>

namespace ODF {
namespace {

std::string Write(CSDObject& object, std::string_view name, Fidelity fidelity, FormatVersion* newest) {
    std::string result;
    xml::XmlWriter writer;
    writer.openText(result);
    writer.SetFidelity(fidelity);
    const bool isWritten = writer.writeTree(object, name) && writer.Close() >= 0;
    if (newest) *newest = writer.newest();
    return isWritten ? result : std::string();
}

} // namespace

std::string ToXml(CSDObject& object, std::string_view name, Fidelity fidelity) {
    return Write(object, name, fidelity, nullptr);
}

std::string xml::ToXml(CSDObject& root, FormatVersion& newest) {
    return Write(root, {}, Fidelity::Everything, &newest);
}

bool FromXml(std::string_view xml, CSDObject& root, Fidelity fidelity) {
    const std::unique_ptr<CSDSaxReader, decltype(&ReleaseSaxReader)> reader(CreateSaxReader(),
                                                                            &ReleaseSaxReader);
    reader->SetFidelity(fidelity);
    return reader->ParseMemory(xml.data(), xml.size(), &root);
}

} // namespace ODF
