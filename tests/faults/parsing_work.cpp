#include "faults/parsing_work.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

// The program's own functions of these names come before the library's, in the manner of the C library's
// allocator.
struct XML_ParserStruct;

namespace {

constinit std::atomic<std::uint64_t> parsedBytes = 0;

std::mutex mutex;
struct Work {
    long fed = 0;
    long unfinished = 0;
};
std::map<XML_ParserStruct*, Work> works; // of each parser that is in use

template<typename Function>
Function* Original(const char* name) noexcept {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

using Index = long(XML_ParserStruct*);
using Parse = int(XML_ParserStruct*, const char*, int, int);
using ParseBuffer = int(XML_ParserStruct*, int, int);
using Free = void(XML_ParserStruct*);

/// Adds the piece that is parsed by `parse`, and what the parser has from before it without having come to
/// its end.
template<typename Call>
int Counted(XML_ParserStruct* parser, int byteCount, Call parse) {
    const int result = parse();
    const long start = Original<Index>("XML_GetCurrentByteIndex")(parser);
    const std::lock_guard lock(mutex);
    Work& work = works[parser];
    parsedBytes += static_cast<std::uint64_t>(work.unfinished + byteCount);
    work.fed += byteCount;
    work.unfinished = work.fed - std::max(start, 0L);
    return result;
}

} // namespace

namespace test {

std::uint64_t ParsedBytes() noexcept {
    return parsedBytes;
}

} // namespace test

extern "C" {
[[gnu::visibility("default")]] int XML_Parse(XML_ParserStruct* parser, const char* text, int byteCount,
                                             int isLast) {
    return Counted(parser, byteCount,
                   [&] { return Original<Parse>("XML_Parse")(parser, text, byteCount, isLast); });
}
[[gnu::visibility("default")]] int XML_ParseBuffer(XML_ParserStruct* parser, int byteCount, int isLast) {
    return Counted(parser, byteCount,
                   [&] { return Original<ParseBuffer>("XML_ParseBuffer")(parser, byteCount, isLast); });
}
[[gnu::visibility("default")]] void XML_ParserFree(XML_ParserStruct* parser) {
    {
        const std::lock_guard lock(mutex);
        works.erase(parser);
    }
    Original<Free>("XML_ParserFree")(parser);
}
}
