#include "serial/xml/expat_parser.h"

#include "serial/xml/libexpat.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

namespace ODF::xml {

namespace {

std::string_view OrEmpty(const char* text) noexcept {
    return text ? std::string_view(text) : std::string_view();
}

/// A tag is more than its longest value.
constexpr std::size_t kTagBytes = std::size_t{1} << 24;
/// The library counts in int.
constexpr std::size_t kMaxUnfinished = std::size_t{1} << 29;

} // namespace

// The library's callbacks are C: whatever one of ours throws is kept, the parse is stopped, and `finish`
// throws it on.
struct ExpatParser::Callbacks {
    template<typename Call>
    static void guarded(void* data, Call call) noexcept {
        auto& parser = *static_cast<ExpatParser*>(data);
        if (parser.control_.isStopped() || parser.isPassedOver()) return;
        try {
            call(parser.events_);
        } catch (...) {
            parser.thrown_ = std::current_exception();
            parser.control_.stop("");
        }
        if (parser.control_.isStopped()) XML_StopParser(parser.parser_, XML_FALSE);
    }
    /// The bytes that a start tag takes in a file at the least.
    static std::size_t tagBytes(const char* name, const char** attributes) noexcept {
        std::size_t byteCount = std::strlen(name) + 3;
        for (; *attributes; ++attributes)
            byteCount += std::strlen(*attributes) + 2;
        return byteCount;
    }
    static void start(void* data, const char* name, const char** attributes) {
        auto& parser = *static_cast<ExpatParser*>(data);
        if (parser.hasDoctype_ && !parser.deliver(tagBytes(name, attributes))) return;
        guarded(data, [&](ParserEvents& events) {
            parser.attributes_.clear();
            for (; *attributes; attributes += 2)
                parser.attributes_.push_back({attributes[0], attributes[1]});
            events.startElement(name, parser.attributes_);
        });
    }
    static void end(void* data, const char* name) {
        // The end of an empty element comes after its tag, as a token without bytes.
        auto& parser = *static_cast<ExpatParser*>(data);
        if (parser.passedOver_ > 0 && XML_GetCurrentByteCount(parser.parser_) == 0 &&
            static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser.parser_)) == parser.passedOver_)
            return;
        guarded(data, [&](ParserEvents& events) { events.endElement(name); });
    }
    static void characters(void* data, const char* text, int length) {
        auto& parser = *static_cast<ExpatParser*>(data);
        if (parser.hasDoctype_ && !parser.deliver(static_cast<std::size_t>(length))) return;
        guarded(data, [&](ParserEvents& events) {
            events.characterData(std::string_view(text, static_cast<std::size_t>(length)), false);
        });
    }
    static void comment(void* data, const char* text) {
        guarded(data, [&](ParserEvents& events) { events.comment(text); });
    }
    static void instruction(void* data, const char* target, const char* text) {
        guarded(data, [&](ParserEvents& events) { events.processingInstruction(target, text); });
    }
    static void startCdata(void* data) {
        guarded(data, [](ParserEvents& events) { events.startCdata(); });
    }
    static void endCdata(void* data) {
        guarded(data, [](ParserEvents& events) { events.endCdata(); });
    }
    static void startDoctype(void* data, const char* name, const char* systemId, const char* publicId, int) {
        auto& parser = *static_cast<ExpatParser*>(data);
        parser.hasDoctype_ = true;
        if (!parser.wantsDetails_) return;
        guarded(data, [&](ParserEvents& events) {
            events.startDoctype(name, OrEmpty(publicId), OrEmpty(systemId));
        });
    }
    static void endDoctype(void* data) {
        if (!static_cast<ExpatParser*>(data)->wantsDetails_) return;
        guarded(data, [](ParserEvents& events) { events.endDoctype(); });
    }
    /// One that is defined in another file, which is never read.
    static int externalEntity(XML_Parser self, const char* names, const char*, const char*, const char*) {
        guarded(XML_GetUserData(self), [&](ParserEvents& events) { events.skippedEntity(OrEmpty(names)); });
        return XML_STATUS_OK;
    }
    static void skippedEntity(void* data, const char* name, int) {
        guarded(data, [&](ParserEvents& events) { events.skippedEntity(name); });
    }
};

ExpatParser::ExpatParser(ParserEvents& events, ParseControl& control, const Limits& limits, bool wantsDetails)
    : events_(events), control_(control), parser_(XML_ParserCreate(nullptr)),
      mostUnfinished_(std::min(limits.textBytes, kMaxUnfinished) + kTagBytes),
      mostGrowth_(limits.entityFreeBytes), wantsDetails_(wantsDetails) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_, this);
    XML_SetElementHandler(parser_, &Callbacks::start, &Callbacks::end);
    XML_SetCharacterDataHandler(parser_, &Callbacks::characters);
    XML_SetParamEntityParsing(parser_, XML_PARAM_ENTITY_PARSING_NEVER);
#if XML_MAJOR_VERSION > 2 || (XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION >= 4)
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser_,
                                                             std::max(limits.entityAmplification, 1.0F));
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser_, limits.entityFreeBytes);
#else
#error "libexpat 2.4 or later is needed for its bound on entity expansion"
#endif
    XML_SetDoctypeDeclHandler(parser_, &Callbacks::startDoctype, &Callbacks::endDoctype);
    if (!wantsDetails) return;
    XML_SetCommentHandler(parser_, &Callbacks::comment);
    XML_SetProcessingInstructionHandler(parser_, &Callbacks::instruction);
    XML_SetCdataSectionHandler(parser_, &Callbacks::startCdata, &Callbacks::endCdata);
    XML_SetSkippedEntityHandler(parser_, &Callbacks::skippedEntity);
    XML_SetExternalEntityRefHandler(parser_, &Callbacks::externalEntity);
}

ExpatParser::~ExpatParser() {
    XML_ParserFree(parser_);
}

void* ExpatParser::buffer(std::size_t capacity) {
    void* const place =
        XML_GetBuffer(parser_, static_cast<int>(std::min<std::size_t>(capacity, INT_MAX / 2)));
    if (!place) throw std::bad_alloc();
    return place;
}

bool ExpatParser::parseBuffer(std::size_t byteCount, bool isLast) {
    fed_ += byteCount;
    return finish(XML_ParseBuffer(parser_, static_cast<int>(byteCount), isLast));
}

bool ExpatParser::parse(const void* data, std::size_t byteCount, bool isLast) {
    // What is read again for each small piece doesn't count, and the events of these come at once.
    constexpr std::size_t kSmall = 4096;
    const char* const at = static_cast<const char*>(data);
    const bool isEnough = isLast || unfinished_ < kSmall || held_.size() + byteCount >= unfinished_;
    if (isEnough && held_.empty()) return parsePieces(at, byteCount, isLast);
    held_.append(at, byteCount);
    if (!isEnough) return true;
    const std::string pieces = std::exchange(held_, {});
    return parsePieces(pieces.data(), pieces.size(), isLast);
}

bool ExpatParser::parsePieces(const char* at, std::size_t byteCount, bool isLast) {
    constexpr std::size_t kFedPiece = std::size_t{1} << 24;
    constexpr std::size_t kMax = INT_MAX / 4; // the library counts in int
    do {
        const std::size_t piece = std::min({byteCount, std::max(kFedPiece, wanted()), kMax});
        byteCount -= piece;
        fed_ += piece;
        if (!finish(XML_Parse(parser_, at, static_cast<int>(piece), isLast && byteCount == 0))) return false;
        at += piece;
    } while (byteCount > 0);
    return true;
}

bool ExpatParser::isPassedOver() const noexcept {
    if (passedOver_ == 0) return false;
    const XML_Index at = XML_GetCurrentByteIndex(parser_);
    return at >= 0 && static_cast<std::uint64_t>(at) < passedOver_;
}

bool ExpatParser::deliver(std::size_t byteCount) {
    // Of a byte in a file that isn't UTF-8 come two at the most; blanks and comments around it don't matter.
    delivered_ += byteCount;
    if (delivered_ <= mostGrowth_ || (delivered_ - mostGrowth_) / 2 <= fed_) return true;
    control_.stop("the document grows too much through its entities", StopKind::Size);
    XML_StopParser(parser_, XML_FALSE);
    return false;
}

bool ExpatParser::finish(int status) {
    const XML_Index start = XML_GetCurrentByteIndex(parser_);
    unfinished_ = start < 0 ? 0 : static_cast<std::size_t>(fed_ - static_cast<std::uint64_t>(start));
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    if (control_.isStopped()) return false;
    if (status == XML_STATUS_OK) {
        if (unfinished_ <= mostUnfinished_) return true;
        control_.stop("a tag or comment is too long", StopKind::Size);
        return false;
    }
    const XML_Error code = XML_GetErrorCode(parser_);
    if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    const char* const reason = XML_ErrorString(code);
    control_.stop(reason ? reason : "parse error",
                  code == XML_ERROR_AMPLIFICATION_LIMIT_BREACH ? StopKind::Size : StopKind::Content);
    return false;
}

Position ExpatParser::position() const noexcept {
    return {XML_GetCurrentLineNumber(parser_), XML_GetCurrentColumnNumber(parser_) + 1};
}

} // namespace ODF::xml
