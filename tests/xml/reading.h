#pragma once

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/serial/sax_reader.h>

#include <memory>
#include <string_view>

namespace test {

struct ReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};

/// A reader with its own diagnostics.
struct Reader {
    Reader() { reader->SetDiagnostics(&diagnostics, "content.xml"); }
    explicit Reader(const ODF::Limits& limits) : Reader() { reader->SetLimits(limits); }

    bool parse(std::string_view xml, CSDObject& root) {
        return reader->ParseMemory(xml.data(), xml.size(), &root);
    }
    /// The one note there is.
    ODF::Note note() const { return diagnostics.notes().size() == 1 ? diagnostics.notes()[0] : ODF::Note(); }

    ODF::Diagnostics diagnostics;
    std::unique_ptr<CSDSaxReader, ReaderRelease> reader{CreateSaxReader()};
};

} // namespace test
