#include <odfmodel/serial/sax_reader.h>

#include "platform/files.h"
#include "serial/xml/document_parse.h"
#include "serial/xml/handler_driver.h"
#include "serial/xml/tree_builder.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/default_handler.h>
#include <odfmodel/serial/unzip.h>

#include <array>
#include <memory>
#include <optional>

CSDSaxReader::~CSDSaxReader() = default;

namespace ODF::xml {
namespace {

/// A parse that feeds the content handler.
struct HandlerParse {
    ParseControl control;
    CSDDefaultHandler& handler;
    HandlerDriver driver;

    HandlerParse(CSDDefaultHandler& target, const Limits& limits)
        : handler(target), driver(target, control, limits) {
        handler.startDocument();
    }
};

/// The same, with the document in pieces.
struct ChunkParse : HandlerParse {
    ExpatParser parser;

    ChunkParse(CSDDefaultHandler& target, const Limits& limits)
        : HandlerParse(target, limits), parser(driver, control, limits, true) {}
};

/// Serves a parse without a handler, which only tells whether the document is well formed.
struct IdleHandler final : CSDDefaultHandler {};

NoteCode CodeOf(StopKind kind) noexcept {
    switch (kind) {
    case StopKind::Depth:
        return NoteCode::DepthLimit;
    case StopKind::Size:
        return NoteCode::SizeLimit;
    case StopKind::Content:
        break;
    }
    return NoteCode::XmlNotWellFormed;
}

class SaxReader final : public CSDSaxReader {
public:
    bool ParseFile(const unsigned short* path, CSDObject* root) override {
        if (!root) return false;
        return withTree(*root, [&](DocumentParse& parse) { return parseFile(path, parse); });
    }
    bool ParseMemory(const void* data, std::size_t byteCount, CSDObject* root) override {
        if (!root || (!data && byteCount > 0)) return false;
        return withTree(*root, [&](DocumentParse& parse) {
            return parse.memory({static_cast<const char*>(data), byteCount});
        });
    }
    bool ParseWithHandler(const unsigned short* path) override {
        return withHandler([&](DocumentParse& parse) { return parseFile(path, parse); });
    }
    bool ParseMemoryWithHandler(const void* data, std::size_t byteCount) override {
        if (!data && byteCount > 0) return false;
        return withHandler([&](DocumentParse& parse) {
            return parse.memory({static_cast<const char*>(data), byteCount});
        });
    }
    bool BeginChunks() override {
        chunks_ = std::make_unique<ChunkParse>(target(), limits_);
        chunksFailed_ = false;
        return true;
    }
    bool ParseChunk(const void* data, int byteCount, int) override {
        if (!chunks_ || chunksFailed_ || byteCount < 0 || (!data && byteCount > 0)) return false;
        if (byteCount == 0) return true;
        chunksFailed_ = !parseChunk(*chunks_, data, static_cast<std::size_t>(byteCount), false);
        return !chunksFailed_;
    }
    void EndChunks() override { finishChunks(); }
    void SetFeature(const unsigned short*, bool) override {}
    void SetContentHandler(CSDDefaultHandler* handler) override { handler_ = handler; }
    bool ParseItem(const unsigned short* itemName, CSDUnZip* unzip) override {
        if (!itemName || !unzip || unzip->GetItemIndex(itemName) < 0) return false;
        BeginChunks();
        std::array<unsigned char, 16384> piece;
        int cursor = 0;
        int byteCount = 0;
        while (unzip->Decompress(itemName, piece.data(), static_cast<int>(piece.size()), cursor, byteCount) !=
               0)
            if (byteCount > 0 && !ParseChunk(piece.data(), byteCount, cursor)) break;
        return finishChunks();
    }
    bool HasMatchedRoot() const override { return hasMatchedRoot_; }
    void SetLimits(const Limits& limits) override { limits_ = limits; }
    void SetFidelity(Fidelity fidelity) override { fidelity_ = fidelity; }
    TreeCost GetCost() const override { return cost_; }
    void SetDiagnostics(Diagnostics* diagnostics, std::string_view member) override {
        diagnostics_ = diagnostics;
        member_ = member;
    }

private:
    CSDDefaultHandler& target() { return handler_ ? *handler_ : idle_; }

    template<typename Parse>
    bool withTree(CSDObject& root, Parse run) {
        ParseControl control;
        TreeBuilder builder(root, control, limits_, fidelity_);
        cost_ = {};
        DocumentParse parse(builder, control, limits_, fidelity_ == Fidelity::Everything);
        parse.onBytes = [&](std::uint64_t byteCount) { builder.setSourceBytes(byteCount); };
        hasMatchedRoot_ = false;
        const ParseResult result = run(parse);
        const bool done = tell(result, control, parse.position());
        builder.finish();
        cost_ = builder.cost();
        hasMatchedRoot_ = builder.hasMatchedRoot();
        if (diagnostics_) {
            builder.report(*diagnostics_);
            if (!builder.rootName().empty() && !hasMatchedRoot_)
                diagnostics_->add(NoteCode::General, Severity::Warning, member_,
                                  "unexpected root element " + builder.rootName());
        }
        return done;
    }

    template<typename Parse>
    bool withHandler(Parse run) {
        HandlerParse events(target(), limits_);
        DocumentParse parse(events.driver, events.control, limits_, true);
        const ParseResult result = run(parse);
        if (!tell(result, events.control, parse.position())) return false;
        events.handler.endDocument();
        return true;
    }

    static ParseResult parseFile(const unsigned short* path, DocumentParse& parse) {
        platform::InputFile file;
        if (!path || !file.open(platform::Path(path))) return ParseResult::Unreadable;
        return parse.file(file);
    }

    bool parseChunk(ChunkParse& chunks, const void* data, std::size_t byteCount, bool isLast) {
        const bool isParsed = chunks.parser.parse(data, byteCount, isLast);
        return tell(isParsed ? ParseResult::Ok : ParseResult::Stopped, chunks.control,
                    chunks.parser.position());
    }

    bool finishChunks() {
        const auto parse = std::move(chunks_);
        if (!parse || chunksFailed_) return false;
        if (!parseChunk(*parse, "", 0, true)) return false;
        parse->handler.endDocument();
        return true;
    }

    /// Notes why a parse has ended; true when it was at the end of the document.
    bool tell(ParseResult result, const ParseControl& control, Position at) {
        switch (result) {
        case ParseResult::Ok:
            return true;
        case ParseResult::Stopped:
            note(CodeOf(control.kind()), control.reason(), at);
            break;
        case ParseResult::Unreadable:
            note(NoteCode::MemberUnreadable, "the file can't be read");
            break;
        case ParseResult::TooLarge:
            note(NoteCode::SizeLimit, "the part is too large", at);
            break;
        }
        return false;
    }
    void note(NoteCode code, std::string_view text, Position at = {}) {
        if (diagnostics_) diagnostics_->add(code, Severity::Error, member_, text, at.line, at.column);
    }

    IdleHandler idle_;
    CSDDefaultHandler* handler_ = nullptr;
    Limits limits_;
    Fidelity fidelity_ = Fidelity::Listed;
    TreeCost cost_;
    Diagnostics* diagnostics_ = nullptr;
    std::string member_;
    std::unique_ptr<ChunkParse> chunks_;
    bool chunksFailed_ = false;
    bool hasMatchedRoot_ = false;
};

} // namespace
} // namespace ODF::xml

CSDSaxReader* CreateSaxReader() {
    return new ODF::xml::SaxReader;
}

void ReleaseSaxReader(CSDSaxReader* reader) {
    delete reader;
}
