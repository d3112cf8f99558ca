// A file of any kind opened by `Document`, its objects read, and saved: what was saved opens again and says
// the same.
#include <odfmodel/odfmodel.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    ODF::OpenOptions options;
    options.password = "Secret123";
    options.limits.totalBytes = 64U << 20;
    options.limits.memberBytes = 32U << 20;
    options.limits.members = 2000;
    options.limits.pbkdf2Iterations = 2000;
    options.limits.argon2MemoryKiB = 4096;
    ODF::Document document;
    if (!document.Open(std::span(data, size), options)) return 0;
    for (const std::string& object : document.Objects())
        document.Root(object + "/content.xml");
    document.RemovePassword();
    std::vector<unsigned char> saved;
    if (!document.Save(saved, {.fixedTime = 0})) return 0;
    ODF::Document again;
    if (!again.Open(saved, options)) std::abort();
    std::vector<unsigned char> twice;
    if (!again.Save(twice, {.fixedTime = 0}) || twice != saved) std::abort();
    return 0;
}
