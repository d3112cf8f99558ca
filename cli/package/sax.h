#pragma once

#include <odfmodel/serial/sax_reader.h>

#include <algorithm>
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

/// Feeds a handler with XML of any length; false when it ends at a fault.
inline bool ParsePieces(CSDSaxReader& reader, std::string_view xml, CSDDefaultHandler& handler) {
    constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
    reader.SetContentHandler(&handler);
    bool isGood = reader.BeginChunks();
    for (std::size_t at = 0; isGood && at < xml.size(); at += kPieceBytes) {
        const std::string_view piece = xml.substr(at, kPieceBytes);
        isGood = reader.ParseChunk(piece.data(), static_cast<int>(piece.size()), 0);
    }
    reader.EndChunks();
    return isGood;
}

} // namespace command
