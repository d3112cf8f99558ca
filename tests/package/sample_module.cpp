// A user data module: it keeps a greeting in its stream and writes down what it is asked to do in the file
// that the environment variable SAMPLE_MODULE_LOG names. SAMPLE_MODULE_PREFIX and SAMPLE_MODULE_STREAM
// replace its names; the value "null" stands for none.

#include <odfmodel/package/storage.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

void Log(const std::string& line) {
    if (const char* const file = std::getenv("SAMPLE_MODULE_LOG"))
        std::ofstream(file, std::ios::app) << line << '\n';
}

const unsigned short* Name(const char* variable, const char16_t* usual, std::u16string& store) {
    const char* const value = std::getenv(variable);
    if (!value) return ToUnits(usual);
    if (std::string(value) == "null") return nullptr;
    store.assign(value, value + std::char_traits<char>::length(value));
    return ToUnits(store.c_str());
}

struct Work {
    int calls = 0;
};

std::u16string prefix;
std::u16string stream;

} // namespace

#define SAMPLE_EXPORT extern "C" __attribute__((visibility("default")))

SAMPLE_EXPORT void* Open(SDPackage::IStream* opened) {
    Log(opened ? "open" : "open without a stream");
    return new Work;
}

#ifndef SAMPLE_WITHOUT_CREATE
SAMPLE_EXPORT void Create() {
    Log("create");
}
#endif

SAMPLE_EXPORT int Write(void* handle, SDPackage::IStream* opened, int fill) {
    ++static_cast<Work*>(handle)->calls;
    if (fill != 0) {
        const std::string greeting = "hello";
        opened->SetSize(0);
        opened->Seek(0);
        Log("fill");
        return opened->Write(greeting.data(), static_cast<unsigned>(greeting.size())) == greeting.size() ? 1
                                                                                                         : 0;
    }
    std::string held(opened->GetSize(), '\0');
    opened->Read(held.data(), static_cast<unsigned>(held.size()));
    Log("take " + held);
    return std::getenv("SAMPLE_MODULE_FAILS") ? 0 : 1;
}

SAMPLE_EXPORT void Close(void* handle) {
    Log("close after " + std::to_string(static_cast<Work*>(handle)->calls));
    delete static_cast<Work*>(handle);
}

SAMPLE_EXPORT const unsigned short* GetUserPrefixName() {
    return Name("SAMPLE_MODULE_PREFIX", u"Ab", prefix);
}

SAMPLE_EXPORT const unsigned short* GetUserStreamName() {
    return Name("SAMPLE_MODULE_STREAM", u"greeting", stream);
}
