#include "models.h"

#include <odfmodel/elements/office/document.h>
#include <odfmodel/odfmodel.h>

#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <unistd.h>

namespace bench {
namespace {

struct ReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};
struct SerializerRelease {
    void operator()(CSDSerializer* serializer) const { ReleaseSerialize(serializer); }
};

// Blanks between two elements are text in a paragraph, and the other models keep them too.
constexpr unsigned kPugiFlags = pugi::parse_default | pugi::parse_ws_pcdata;

} // namespace

OdfModel::OdfModel(ODF::Fidelity fidelity) : fidelity_(fidelity) {}
OdfModel::~OdfModel() {
    clear();
}

bool OdfModel::build(const std::string& xml, ODF::Diagnostics* diagnostics) {
    root_ = ODF::COfficeDocumentContent::Create();
    const std::unique_ptr<CSDSaxReader, ReaderRelease> reader(CreateSaxReader());
    reader->SetFidelity(fidelity_);
    reader->SetDiagnostics(diagnostics, "content.xml");
    return reader->ParseMemory(xml.data(), xml.size(), root_);
}

bool OdfModel::write(const std::string& path) {
    const std::unique_ptr<CSDSerializer, SerializerRelease> serializer(CreateSerialize());
    serializer->SetFidelity(fidelity_);
    return serializer->SerializeToFile(path, root_);
}

void OdfModel::clear() {
    CSDObject::Delete(root_);
    root_ = nullptr;
}

Libxml2Model::~Libxml2Model() {
    clear();
}

bool Libxml2Model::build(const std::string& xml) {
    document_ = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                              XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_COMPACT);
    return document_ != nullptr;
}

bool Libxml2Model::write(const std::string& path) {
    return xmlSaveFile(path.c_str(), document_) > 0;
}

void Libxml2Model::clear() {
    xmlFreeDoc(document_);
    document_ = nullptr;
}

PugiModel::PugiModel() : document_(std::make_unique<pugi::xml_document>()) {}
PugiModel::~PugiModel() = default;

bool PugiModel::build(const std::string& xml) {
    return static_cast<bool>(document_->load_buffer(xml.data(), xml.size(), kPugiFlags, pugi::encoding_utf8));
}

bool PugiModel::write(const std::string& path) {
    return document_->save_file(path.c_str(), "", pugi::format_raw, pugi::encoding_utf8);
}

void PugiModel::clear() {
    document_->reset();
}

void PugiInPlaceModel::prepare(const std::string& xml) {
    buffer_ = std::make_unique<char[]>(xml.size());
    std::copy(xml.begin(), xml.end(), buffer_.get());
}

bool PugiInPlaceModel::build(const std::string& xml) {
    return static_cast<bool>(
        document_->load_buffer_inplace(buffer_.get(), xml.size(), kPugiFlags, pugi::encoding_utf8));
}

void PugiInPlaceModel::clear() {
    PugiModel::clear();
    buffer_.reset();
}

bool ExpatModel::build(const std::string& xml) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              &XML_ParserFree);
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const char*, const char** attributes) {
            auto& counter = *static_cast<ExpatModel*>(data);
            ++counter.elements_;
            for (; *attributes; attributes += 2)
                ++counter.attributes_;
        },
        [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser.get(), [](void*, const char*, int) {});
    constexpr std::size_t kPiece = std::size_t{1} << 24;
    for (std::size_t at = 0; at < xml.size(); at += kPiece) {
        const std::size_t size = std::min(kPiece, xml.size() - at);
        if (XML_Parse(parser.get(), xml.data() + at, static_cast<int>(size), at + size == xml.size()) !=
            XML_STATUS_OK)
            return false;
    }
    return true;
}

std::size_t AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::size_t ResidentBytes() {
    // In pages: the whole, what of it is in memory, and what of that stands for files.
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    std::size_t shared = 0;
    statm >> size >> resident >> shared;
    return (resident - shared) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void ReturnFreeMemory() {
    malloc_trim(0);
}

} // namespace bench
