#include <odfmodel/serial/sax_reader.h>

#include "platform/files.h"
#include "serial/xml/handler_driver.h"
#include "serial/xml/tree_builder.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/default_handler.h>
#include <odfmodel/serial/unzip.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

CSDSaxReader::~CSDSaxReader() = default;

namespace ODF::xml {
namespace {

/// A parse that feeds the content handler, piece by piece.
struct HandlerParse {
    HandlerDriver driver;
    ExpatParser parser;
    CSDDefaultHandler& handler;

    HandlerParse(CSDDefaultHandler& target, const Limits& limits)
        : driver(target, limits), parser(driver, limits, true), handler(target) {
        driver.setParser(parser);
        handler.startDocument();
    }
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
        return withTree(*root, [&](ExpatParser& parser, TreeBuilder& builder) {
            return feedFile(path, parser, &builder);
        });
    }
    bool ParseMemory(const void* data, std::size_t byteCount, CSDObject* root) override {
        if (!root || (!data && byteCount > 0)) return false;
        return withTree(*root, [&](ExpatParser& parser, TreeBuilder& builder) {
            builder.setSourceBytes(byteCount);
            return parser.parse(byteCount > 0 ? data : "", byteCount, true) || fail(parser);
        });
    }
    bool ParseWithHandler(const unsigned short* path) override {
        HandlerParse parse(target(), limits_);
        const bool done = feedFile(path, parse.parser);
        if (done) parse.handler.endDocument();
        return done;
    }
    bool BeginChunks() override {
        chunks_ = std::make_unique<HandlerParse>(target(), limits_);
        chunksFailed_ = false;
        return true;
    }
    bool ParseChunk(const void* data, int byteCount, int) override {
        if (!chunks_ || chunksFailed_ || byteCount < 0 || (!data && byteCount > 0)) return false;
        if (byteCount == 0) return true;
        chunksFailed_ = !chunks_->parser.parse(data, static_cast<std::size_t>(byteCount), false) &&
                        !fail(chunks_->parser);
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

    template<typename Feed>
    bool withTree(CSDObject& root, Feed feed) {
        TreeBuilder builder(root, limits_, fidelity_);
        cost_ = {};
        ExpatParser parser(builder, limits_, fidelity_ == Fidelity::Everything);
        builder.setParser(parser);
        hasMatchedRoot_ = false;
        const bool done = feed(parser, builder);
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

    bool feedFile(const unsigned short* path, ExpatParser& parser, TreeBuilder* builder = nullptr) {
        constexpr std::size_t kPiece = 1U << 16;
        constexpr std::size_t kMost = 1U << 28;
        platform::InputFile file;
        if (!path || !file.open(platform::Path(path))) {
            note(NoteCode::MemberUnreadable, "the file can not be read");
            return false;
        }
        for (std::uint64_t offset = 0;;) {
            const std::size_t wanted = std::clamp(parser.wanted(), kPiece, kMost);
            const std::ptrdiff_t count = file.readAt(offset, parser.buffer(wanted), wanted);
            if (count < 0) {
                note(NoteCode::MemberUnreadable, "the file can not be read to its end");
                return false;
            }
            offset += static_cast<std::uint64_t>(count);
            if (builder) builder->setSourceBytes(offset);
            if (offset > limits_.partBytes) {
                note(NoteCode::SizeLimit, "the part is too large", parser.line(), parser.column());
                return false;
            }
            const bool isLast = static_cast<std::size_t>(count) < wanted;
            if (!parser.parseBuffer(static_cast<std::size_t>(count), isLast)) return fail(parser);
            if (isLast) return true;
        }
    }

    bool finishChunks() {
        const auto parse = std::move(chunks_);
        if (!parse || chunksFailed_) return false;
        if (!parse->parser.parse("", 0, true)) return fail(parse->parser);
        parse->handler.endDocument();
        return true;
    }

    /// Notes why the parse has ended; always false.
    bool fail(const ExpatParser& parser) {
        note(CodeOf(parser.kind()), parser.error(), parser.line(), parser.column());
        return false;
    }
    void note(NoteCode code, std::string_view text, unsigned long line = 0, unsigned long column = 0) {
        if (diagnostics_) diagnostics_->add(code, Severity::Error, member_, text, line, column);
    }

    IdleHandler idle_;
    CSDDefaultHandler* handler_ = nullptr;
    Limits limits_;
    Fidelity fidelity_ = Fidelity::Listed;
    TreeCost cost_;
    Diagnostics* diagnostics_ = nullptr;
    std::string member_;
    std::unique_ptr<HandlerParse> chunks_;
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
