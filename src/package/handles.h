#pragma once

#include <odfmodel/serial/sax_reader.h>

#include <memory>

namespace SDPackage {

struct ReaderDeleter {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};
struct SerializerDeleter {
    void operator()(CSDSerializer* serializer) const { ReleaseSerialize(serializer); }
};

using ReaderHandle = std::unique_ptr<CSDSaxReader, ReaderDeleter>;
using SerializerHandle = std::unique_ptr<CSDSerializer, SerializerDeleter>;

} // namespace SDPackage
