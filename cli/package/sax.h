#pragma once

#include <odfmodel/serial/sax_reader.h>

#include <memory>
#include <string_view>

namespace command {

struct SaxReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};
using SaxReader = std::unique_ptr<CSDSaxReader, SaxReaderRelease>;

inline SaxReader MakeSaxReader() {
    return SaxReader(CreateSaxReader());
}

/// Feeds a handler with XML; false when it ends at a fault.
inline bool ParseXml(CSDSaxReader& reader, std::string_view xml, CSDDefaultHandler& handler) {
    reader.SetContentHandler(&handler);
    return reader.ParseMemoryWithHandler(xml.data(), xml.size());
}

} // namespace command
