// XML of any kind by the tokeniser and by libexpat: whatever the one is sure of, the other reads alike.
#include "tokenizer/two_readers.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view document(reinterpret_cast<const char*>(data), size);
    const test::TwoReaders both = test::ReadTwice(document, static_cast<std::uint32_t>(size) + 1);
    if (both.difference.empty()) return 0;
    std::fprintf(stderr, "%s\n", both.difference.c_str());
    std::abort();
}
