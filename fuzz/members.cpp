// One member of any kind in a package that is right otherwise: manifests, relationships, content types,
// encryption. What was saved without a word opens again.
#include <odfmodel/odfmodel.h>

#include <zip.h>

#include <array>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

struct Member {
    const char* name;
    std::string_view bytes;
};

constexpr std::string_view kContent =
    R"(<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0" )"
    R"(xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" office:version="1.2">)"
    R"(<office:body><office:text><text:p>x</text:p></office:text></office:body></office:document-content>)";
constexpr std::string_view kManifest =
    R"(<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0" )"
    R"(manifest:version="1.2"><manifest:file-entry manifest:full-path="/" )"
    R"(manifest:media-type="application/vnd.oasis.opendocument.text"/>)"
    R"(<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>)"
    R"(</manifest:manifest>)";
constexpr std::string_view kRelations =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
    R"(<Relationship Id="rId1" Target="word/document.xml" Type=)"
    R"("http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument"/></Relationships>)";
constexpr std::string_view kTypes =
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
    R"(<Default Extension="png" ContentType="image/png"/><Override PartName="/word/document.xml" ContentType=)"
    R"("application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>)";

constexpr std::array<Member, 5> kDocument{{
    {"mimetype", "application/vnd.oasis.opendocument.text"},
    {"content.xml", kContent},
    {"meta.xml", {}},
    {"Object 1/content.xml", kContent},
    {"META-INF/manifest.xml", kManifest},
}};
constexpr std::array<Member, 5> kPackage{{
    {"[Content_Types].xml", kTypes},
    {"_rels/.rels", kRelations},
    {"word/document.xml", "<w:document xmlns:w=\"urn:w\"/>"},
    {"word/_rels/document.xml.rels", kRelations},
    {"word/media/image1.png", "x"},
}};

/// The members as an archive, the one at `place` with other bytes.
std::vector<unsigned char> Pack(const std::array<Member, 5>& members, std::size_t place,
                                std::string_view bytes) {
    zip_source_t* const target = zip_source_buffer_create(nullptr, 0, 0, nullptr);
    zip_t* const archive = zip_open_from_source(target, ZIP_CREATE, nullptr);
    zip_source_keep(target);
    for (std::size_t i = 0; i < members.size(); ++i) {
        const std::string_view held = i == place ? bytes : members[i].bytes;
        zip_source_t* const source = zip_source_buffer(archive, held.data(), held.size(), 0);
        const zip_int64_t index = zip_file_add(archive, members[i].name, source, ZIP_FL_ENC_UTF_8);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
    }
    if (zip_close(archive) != 0) std::abort();
    zip_stat_t stat;
    zip_source_stat(target, &stat);
    std::vector<unsigned char> packed(stat.size);
    zip_source_open(target);
    zip_source_read(target, packed.data(), packed.size());
    zip_source_close(target);
    zip_source_free(target);
    return packed;
}

void TryDocument(const std::vector<unsigned char>& file, bool isEncrypted) {
    ODF::OpenOptions options;
    if (isEncrypted) options.password = "Secret123";
    options.limits.totalBytes = 16U << 20;
    options.limits.keyWork = 20'000;
    options.limits.argon2MemoryKiB = 1024;
    ODF::Document document;
    if (!document.Open(file, options)) return;
    document.Content();
    document.Meta();
    document.RemovePassword();
    std::vector<unsigned char> saved;
    if (!document.Save(saved, {.fixedTime = 0})) return;
    ODF::Document again;
    if (!again.Open(saved, options)) std::abort();
}

void TryPackage(std::vector<unsigned char>& file, bool isKept) {
    SDPackage::IPackage package;
    if (isKept) package.SetFidelity(ODF::Fidelity::Everything);
    if (!package.OpenMemory(file.data(), static_cast<unsigned>(file.size()), CTulStringW("file.docx").c_str(),
                            nullptr))
        return;
    const std::string path = "/tmp/odfmodel-fuzz-" + std::to_string(getpid()) + ".docx";
    if (!package.Save(path) || !isKept) return;
    SDPackage::IPackage again;
    if (!again.Open(path, 1)) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size < 1) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const bool isFirst = (data[0] & 8) == 0;
    const bool isSecond = (data[0] & 16) == 0;
    std::vector<unsigned char> file = Pack(isFirst ? kDocument : kPackage, data[0] % 5, bytes);
    if (isFirst)
        TryDocument(file, isSecond);
    else
        TryPackage(file, isSecond);
    return 0;
}
