#pragma once

#include <odfmodel/serial/sax_reader.h>

#include <memory>

namespace command {

struct SaxReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};
using SaxReader = std::unique_ptr<CSDSaxReader, SaxReaderRelease>;

inline SaxReader MakeSaxReader() {
    return SaxReader(CreateSaxReader());
}

} // namespace command
