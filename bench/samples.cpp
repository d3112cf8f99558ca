#include "samples.h"

#include "generate/documents.h"
#include "models.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/zip.h>

#include <stdexcept>
#include <stdlib.h>

namespace bench {
namespace {

constexpr std::string_view kTextType = "application/vnd.oasis.opendocument.text";

/// What is measured must be what documents are made of, not what the reader passes over.
void RequireKnown(const Sample& sample) {
    ODF::Diagnostics diagnostics;
    OdfModel model;
    if (!model.build(sample.xml, &diagnostics)) throw std::runtime_error(sample.name + " isn't well formed");
    for (const auto* counts :
         {&diagnostics.unknownElements(), &diagnostics.unknownAttributes(), &diagnostics.droppedText()})
        if (!counts->empty())
            throw std::runtime_error(sample.name + " holds an unknown " + counts->begin()->first);
}

void Add(CSDZip& zip, const std::string& name, const std::string& text) {
    if (zip.Compress(name, const_cast<char*>(text.data()), static_cast<int>(text.size())) == 0)
        throw std::runtime_error("can not add " + name);
}

void WritePackage(const Sample& sample) {
    CSDZip zip;
    const std::string type(kTextType);
    std::string manifest;
    Put(manifest, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<manifest:manifest ",
        "xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\" manifest:version=\"1.2\">",
        "<manifest:file-entry manifest:full-path=\"/\" manifest:media-type=\"", type, "\"/>",
        "<manifest:file-entry manifest:full-path=\"content.xml\" "
        "manifest:media-type=\"text/xml\"/></manifest:manifest>");
    if (zip.CreareZipFile(sample.packagePath) == 0)
        throw std::runtime_error("can not create " + sample.packagePath);
    zip.CompressStored("mimetype", type.data(), static_cast<int>(type.size()));
    Add(zip, "content.xml", sample.xml);
    Add(zip, "META-INF/manifest.xml", manifest);
    if (zip.CloseFile() == 0) throw std::runtime_error("can not write " + sample.packagePath);
}

} // namespace

WorkFolder::WorkFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "odfmodel_bench_XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("can not make a temporary folder");
    path_ = name;
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Sample Samples::make(const std::string& name) const {
    Sample sample;
    sample.name = name;
    sample.xml = name == "text"     ? MakeTextContent(size_)
                 : name == "sheet"  ? MakeSheetContent(size_)
                 : name == "slides" ? MakeSlidesContent(size_)
                                    : MakeStylesContent(size_);
    sample.packagePath = folder_ / (name + ".odt");
    ExpatModel counter;
    if (!counter.build(sample.xml)) throw std::runtime_error(name + " isn't well formed");
    sample.elements = counter.elements();
    sample.attributes = counter.attributes();
    RequireKnown(sample);
    WritePackage(sample);
    return sample;
}

const Sample& Samples::get(const std::string& name) {
    const auto known = samples_.find(name);
    return known != samples_.end() ? known->second : samples_.emplace(name, make(name)).first->second;
}

const std::string& Samples::package(unsigned parts) {
    std::string& path = packages_[parts];
    if (path.empty()) {
        const std::string made = folder_ / (std::to_string(parts) + ".pptx");
        MakePackage(made, parts);
        path = made;
    }
    return path;
}

} // namespace bench
