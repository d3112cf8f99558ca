// A package file of any kind: opened as a document, walked and saved.
#include <odfmodel/odfmodel.h>

#include <cstdio>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string stem = "/tmp/odfmodel-fuzz-" + std::to_string(getpid());
    const std::string path = stem + ".odt";
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    ODF::CODFDoc document;
    ODF::Limits limits;
    limits.totalBytes = 64U << 20;
    limits.memberBytes = 32U << 20;
    limits.members = 2000;
    limits.pbkdf2Iterations = 2000;
    document.SetLimits(limits);
    document.SetPassword("Secret123");
    if (document.Open(path)) document.Save(stem + "-out.odt");
    return 0;
}
