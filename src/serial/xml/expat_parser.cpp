#include "serial/xml/expat_parser.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

// The library declares its bounds on entity expansion only to those who know that it was built with DTD
// support.
#ifndef XML_DTD
#define XML_DTD
#endif
#include <expat.h>

namespace ODF::xml {

// The library's callbacks are C: whatever one of ours throws is kept, the parse is stopped, and `finish`
// throws it on.
struct ExpatParser::Callbacks {
    template<typename Call>
    static void guarded(void* data, Call call) noexcept {
        auto& parser = *static_cast<ExpatParser*>(data);
        if (parser.isStopped()) return;
        try {
            call(parser.events_);
        } catch (...) {
            parser.thrown_ = std::current_exception();
            parser.stop(Stop::Request, {});
        }
    }
    /// The bytes that a start tag takes in a file at the least.
    static std::size_t tagBytes(const char* name, const char** attributes) noexcept {
        std::size_t byteCount = std::strlen(name) + 3;
        for (; *attributes; ++attributes)
            byteCount += std::strlen(*attributes) + 2;
        return byteCount;
    }
    static bool grows(void* data, std::size_t byteCount) {
        auto& parser = *static_cast<ExpatParser*>(data);
        return parser.hasDoctype_ && !parser.deliver(byteCount);
    }
    static void start(void* data, const char* name, const char** attributes) {
        if (static_cast<ExpatParser*>(data)->hasDoctype_ && grows(data, tagBytes(name, attributes))) return;
        guarded(data, [&](ParserEvents& events) { events.startElement(name, attributes); });
    }
    static void end(void* data, const char* name) {
        guarded(data, [&](ParserEvents& events) { events.endElement(name); });
    }
    static void characters(void* data, const char* text, int length) {
        if (grows(data, static_cast<std::size_t>(length))) return;
        guarded(data, [&](ParserEvents& events) {
            events.characterData(std::string_view(text, static_cast<std::size_t>(length)));
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
        guarded(data, [&](ParserEvents& events) { events.startDoctype(name, publicId, systemId); });
    }
    static void endDoctype(void* data) {
        if (!static_cast<ExpatParser*>(data)->wantsDetails_) return;
        guarded(data, [](ParserEvents& events) { events.endDoctype(); });
    }
    /// One that is defined in another file, which is never read.
    static int externalEntity(XML_Parser self, const char* names, const char*, const char*, const char*) {
        guarded(XML_GetUserData(self),
                [&](ParserEvents& events) { events.skippedEntity(names ? names : ""); });
        return XML_STATUS_OK;
    }
    static void skippedEntity(void* data, const char* name, int) {
        guarded(data, [&](ParserEvents& events) { events.skippedEntity(name); });
    }
};

namespace {

/// Unfinished tokens up to here cost too little, however often they are read, to hold anything back.
constexpr std::size_t kShortToken = std::size_t{1} << 14;
/// A tag is more than its longest value.
constexpr std::size_t kTagBytes = std::size_t{1} << 24;
constexpr std::size_t kPiece = std::size_t{1} << 24;
/// The library counts in int, and its buffer holds twice what it needs.
constexpr std::size_t kLargestPiece = std::size_t{1} << 28;

} // namespace

ExpatParser::ExpatParser(ParserEvents& events, const Limits& limits, bool wantsDetails)
    : events_(events), parser_(XML_ParserCreate(nullptr)),
      mostTokenBytes_(std::min<std::size_t>(limits.textBytes, kLargestPiece) + kTagBytes),
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
    if (held_.size() - heldBytes_ < capacity)
        held_.resize(std::max(heldBytes_ + capacity, std::min(held_.size() * 2, wantedBytes_ + capacity)));
    return held_.data() + heldBytes_;
}

bool ExpatParser::parseBuffer(std::size_t byteCount, bool isLast) {
    heldBytes_ += byteCount;
    return parseHeld(isLast);
}

bool ExpatParser::parse(const void* data, std::size_t byteCount, bool isLast) {
    const char* const bytes = static_cast<const char*>(data);
    if (heldBytes_ == 0 && (byteCount >= wantedBytes_ || isLast)) return feed(bytes, byteCount, isLast);
    std::copy_n(bytes, byteCount, static_cast<char*>(buffer(byteCount)));
    return parseBuffer(byteCount, isLast);
}

bool ExpatParser::parseHeld(bool isLast) {
    if (heldBytes_ < wantedBytes_ && !isLast) return true;
    return feed(held_.data(), std::exchange(heldBytes_, 0), isLast);
}

bool ExpatParser::feed(const char* data, std::size_t byteCount, bool isLast) {
    if (!data) data = "";
    do {
        const std::size_t piece = std::min({byteCount, std::max(kPiece, wantedBytes_), kLargestPiece});
        byteCount -= piece;
        fedBytes_ += piece;
        if (!finish(XML_Parse(parser_, data, static_cast<int>(piece), isLast && byteCount == 0)))
            return false;
        data += piece;
        // The index is that of the token which the library is at: what comes after it waits there.
        const XML_Index index = XML_GetCurrentByteIndex(parser_);
        const std::uint64_t waiting = index < 0 ? 0 : fedBytes_ - static_cast<std::uint64_t>(index);
        if (waiting > mostTokenBytes_) {
            stopped_ = Stop::Size;
            error_ = "a tag or comment is too long";
            return false;
        }
        wantedBytes_ = waiting < kShortToken ? 0 : static_cast<std::size_t>(waiting);
    } while (byteCount > 0);
    return true;
}

void ExpatParser::stop(Stop kind, std::string reason) {
    if (isStopped()) return;
    stopped_ = kind;
    error_ = std::move(reason);
    XML_StopParser(parser_, XML_FALSE);
}

void ExpatParser::stop(std::string reason) {
    const bool isLimit =
        reason.ends_with("too long") || reason.ends_with("too large") || reason.starts_with("too many");
    const Stop kind = reason.ends_with("too deep") ? Stop::Depth : isLimit ? Stop::Size : Stop::Request;
    stop(kind, std::move(reason));
}

bool ExpatParser::deliver(std::size_t byteCount) {
    // Of a byte in a file that isn't UTF-8 come two at the most.
    deliveredBytes_ += byteCount;
    if (deliveredBytes_ <= mostGrowth_ || (deliveredBytes_ - mostGrowth_) / 2 <= fedBytes_) return true;
    stop(Stop::Expansion, "the document grows too much through its entities");
    return false;
}

bool ExpatParser::finish(int status) {
    if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
    if (status == XML_STATUS_OK && !isStopped()) return true;
    if (isStopped()) return false;
    const XML_Error code = XML_GetErrorCode(parser_);
    if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    stopped_ = code == XML_ERROR_AMPLIFICATION_LIMIT_BREACH ? Stop::Expansion : Stop::NotWellFormed;
    error_ = XML_ErrorString(code) ? XML_ErrorString(code) : "parse error";
    return false;
}

unsigned long ExpatParser::line() const noexcept {
    return XML_GetCurrentLineNumber(parser_);
}
unsigned long ExpatParser::column() const noexcept {
    return XML_GetCurrentColumnNumber(parser_) + 1;
}

} // namespace ODF::xml
