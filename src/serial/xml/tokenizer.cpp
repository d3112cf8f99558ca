#include "serial/xml/tokenizer.h"

#include "core/utf.h"
#include "serial/xml/byte_scan.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ODF::xml {

using byte_scan::Is;

namespace {

const char* SkipBlank(const char* at, const char* end) noexcept {
    return byte_scan::SkipSlowly(at, end, [](char c) { return Is(c, byte_scan::kBlank); });
}

std::string_view View(const char* at, const char* end) noexcept {
    return {at, static_cast<std::size_t>(end - at)};
}

bool IsHigh(char c) noexcept {
    return static_cast<signed char>(c) < 0;
}

} // namespace

Tokenizer::Outcome Tokenizer::parse(std::string_view bytes, bool isLast) {
    const char* const begin = bytes.data();
    at_ = begin;
    end_ = begin + bytes.size();
    isLast_ = isLast;
    Step step = Step::Next;
    if (offset_ == 0 && !bytes.empty()) step = declaration();
    while (step == Step::Next && at_ != end_ && !control_.isStopped())
        step = token();
    consumed_ = static_cast<std::size_t>(at_ - begin);
    offset_ += consumed_;
    if (control_.isStopped()) return Outcome::Stopped;
    if (step == Step::Unsure) return Outcome::Unsure;
    if (!isLast) return Outcome::More;
    return step == Step::Next && hasRoot_ && openLengths_.empty() ? Outcome::Done : Outcome::Unsure;
}

const char* Tokenizer::fail(Step step) noexcept {
    step_ = step;
    return nullptr;
}

/// After the events of a token: goes on at `next`, unless somebody has ended the parse.
Tokenizer::Step Tokenizer::advance(const char* next, bool isTag) noexcept {
    if (!control_.isStopped()) {
        isAfterTag_ = isTag;
        at_ = next;
    }
    return Step::Next;
}

bool Tokenizer::startsWith(std::string_view prefix) const noexcept {
    return View(at_, end_).starts_with(prefix);
}

Tokenizer::Step Tokenizer::token() {
    if (*at_ != '<') return text();
    if (end_ - at_ < 2) return missing();
    switch (at_[1]) {
    case '/':
        return endTag();
    case '!':
        return markup();
    case '?':
        return instruction();
    default:
        return startTag();
    }
}

/// At the start of a document: what names its encoding.
Tokenizer::Step Tokenizer::declaration() {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    constexpr std::string_view kStart = "<?xml";
    constexpr std::size_t kEnough = 200; // of any that is regular
    if (static_cast<std::size_t>(end_ - at_) < kEnough && !isLast_) return Step::Short;
    const char* at = at_ + (startsWith(kMark) ? kMark.size() : 0);
    if (!View(at, end_).starts_with(kStart) || at + kStart.size() == end_ ||
        !Is(at[kStart.size()], byte_scan::kBlank)) {
        at_ = at;
        return Step::Next;
    }
    at += kStart.size();
    const auto skip = [&](std::string_view name, std::initializer_list<std::string_view> values) {
        const char* const start = SkipBlank(at, end_);
        std::string_view rest = View(start, end_);
        if (start == at || !rest.starts_with(name)) return false;
        rest.remove_prefix(name.size());
        for (const std::string_view value : values)
            for (const char quote : {'"', '\''}) {
                const std::size_t count = value.size() + 3;
                if (rest.size() < count || rest[0] != '=' || rest[1] != quote || rest[count - 1] != quote ||
                    rest.substr(2, value.size()) != value)
                    continue;
                at = rest.data() + count;
                return true;
            }
        return false;
    };
    if (!skip("version", {"1.0"})) return Step::Unsure;
    skip("encoding", {"UTF-8", "utf-8"});
    skip("standalone", {"yes", "no"});
    at = SkipBlank(at, end_);
    if (!View(at, end_).starts_with("?>")) return Step::Unsure;
    at_ = at + 2;
    return Step::Next;
}

Tokenizer::Step Tokenizer::text() {
    if (openLengths_.empty()) { // layout around the root
        const char* const stop = SkipBlank(at_, end_);
        if (stop == at_) return Step::Unsure;
        at_ = stop;
        return Step::Next;
    }
    bool isPlain = true;
    const char* at = at_;
    for (;;) {
        at = byte_scan::TextStop(at, end_);
        if (at == end_) return missing(); // also at the last byte: the root isn't closed
        const char c = *at;
        if (c == '<') break;
        if (c == ']') {
            if (end_ - at < 3) return missing();
            if (at[1] == ']' && at[2] == '>') return Step::Unsure;
            ++at;
        } else if (IsHigh(c)) {
            const char* const past = byte_scan::LongCharacters(at, end_);
            if (past == at) return end_ - at < 4 ? missing() : Step::Unsure;
            at = past;
        } else if (Is(c, byte_scan::kBlank)) {
            isPlain &= c != '\r';
            ++at;
        } else if (c == '&') {
            isPlain = false;
            char character[4];
            char* out = character;
            at = pastReference(at, out);
            if (!at) return step_;
        } else {
            return Step::Unsure;
        }
    }
    if (at + 1 == end_) return missing();
    const bool isWhole = isAfterTag_ && at[1] != '!' && at[1] != '?';
    if (isPlain) {
        events_.characterData(View(at_, at), isWhole);
    } else {
        decodedBytes_.clear();
        decode(at_, at, false);
        events_.characterData(decodedBytes_, isWhole);
    }
    return advance(at, false);
}

/// The place after the reference at `at`, whose character is put at `out`: one of the five entities that need
/// no declaration, or a number.
const char* Tokenizer::pastReference(const char* at, char*& out) {
    constexpr std::ptrdiff_t kMaxBytes = 12;
    const char* const limit = end_ - at > kMaxBytes ? at + kMaxBytes : end_;
    const char* const last = std::find(at, limit, ';');
    if (last == limit) return fail(end_ - at > kMaxBytes ? Step::Unsure : missing());
    const std::string_view name = View(at + 1, last);
    if (name.starts_with('#')) {
        const bool isHex = name.starts_with("#x");
        const char* const first = at + (isHex ? 3 : 2);
        std::uint32_t number = 0;
        const auto [stop, error] = std::from_chars(first, last, number, isHex ? 16 : 10);
        if (error != std::errc() || stop != last || !IsXmlCharacter(number)) return fail(Step::Unsure);
        out = PutUtf8(out, number);
        return last + 1;
    }
    struct Entity {
        std::string_view name;
        char character;
    };
    constexpr Entity kEntities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
    for (const Entity& entity : kEntities)
        if (name == entity.name) {
            *out++ = entity.character;
            return last + 1;
        }
    return fail(Step::Unsure);
}

Tokenizer::Step Tokenizer::startTag() {
    if (!Is(at_[1], byte_scan::kNameStart) || (hasRoot_ && openLengths_.empty())) return Step::Unsure;
    const char* at = byte_scan::NameEnd(at_ + 2, end_);
    const std::string_view name = View(at_ + 1, at);
    at = attributes(at);
    if (!at) return step_;
    const bool isEmpty = *at == '/';
    if (hasDuplicate()) return Step::Unsure;
    events_.startElement(name, attributes_);
    hasRoot_ = true;
    if (!isEmpty)
        open(name);
    else if (!control_.isStopped())
        events_.endElement(name);
    return advance(at + (isEmpty ? 2 : 1), true);
}

void Tokenizer::open(std::string_view name) {
    openNames_.append(name);
    openLengths_.push_back(static_cast<std::uint32_t>(name.size()));
}

/// Reads what comes after the name of a start tag, and returns its last '>' or "/>".
const char* Tokenizer::attributes(const char* at) {
    attributes_.clear();
    decoded_.clear();
    decodedBytes_.clear();
    for (;;) {
        const char* const next = SkipBlank(at, end_);
        if (next == end_) return fail(missing());
        if (*next == '>') {
            at = next;
            break;
        }
        if (*next == '/') {
            if (next + 1 == end_) return fail(missing());
            if (next[1] != '>') return fail(Step::Unsure);
            at = next;
            break;
        }
        if (next == at || !Is(*next, byte_scan::kNameStart)) return fail(Step::Unsure);
        at = attribute(next);
        if (!at) return nullptr;
    }
    for (const Decoded& decoded : decoded_)
        attributes_[decoded.index].value =
            std::string_view(decodedBytes_.data() + decoded.offset, attributes_[decoded.index].value.size());
    return at;
}

const char* Tokenizer::attribute(const char* at) {
    const char* const nameEnd = byte_scan::NameEnd(at, end_);
    const std::string_view name = View(at, nameEnd);
    at = SkipBlank(nameEnd, end_);
    if (at == end_) return fail(missing());
    if (*at != '=') return fail(Step::Unsure);
    at = SkipBlank(at + 1, end_);
    if (at == end_) return fail(missing());
    const char quote = *at;
    if (quote != '"' && quote != '\'') return fail(Step::Unsure);
    attributes_.push_back({name, {}});
    return value(at + 1, quote);
}

/// Reads the value of the last attribute, and returns the place after its quote.
const char* Tokenizer::value(const char* at, char quote) {
    const char* const begin = at;
    bool isPlain = true;
    for (;;) {
        at = byte_scan::ValueStop(at, end_, quote);
        if (at == end_) return fail(missing());
        const char c = *at;
        if (c == quote) break;
        if (IsHigh(c)) {
            const char* const past = byte_scan::LongCharacters(at, end_);
            if (past == at) return fail(end_ - at < 4 ? missing() : Step::Unsure);
            at = past;
            continue;
        }
        isPlain = false;
        if (c == '&') {
            char character[4];
            char* out = character;
            at = pastReference(at, out);
            if (!at) return nullptr;
        } else if (Is(c, byte_scan::kBlank)) {
            ++at;
        } else {
            return fail(Step::Unsure);
        }
    }
    if (isPlain) {
        attributes_.back().value = View(begin, at);
    } else {
        const std::size_t offset = decodedBytes_.size();
        decode(begin, at, true);
        decoded_.push_back({attributes_.size() - 1, offset});
        // The bytes may move until the tag is complete; for now only the length counts.
        attributes_.back().value = std::string_view(decodedBytes_).substr(offset);
    }
    return at + 1;
}

/// Appends text that has been checked to the decoded bytes: references resolved, each line end a newline; in
/// a value each blank a space.
void Tokenizer::decode(const char* at, const char* end, bool isValue) {
    while (at != end) {
        if (*at == '&') {
            char character[4];
            char* out = character;
            at = pastReference(at, out);
            decodedBytes_.append(character, out);
            continue;
        }
        const char* const stop =
            isValue ? byte_scan::ValueStop(at, end, '&') : byte_scan::MarkStop(at, end, '&');
        decodedBytes_.append(at, stop);
        at = stop;
        if (at == end || *at == '&') continue;
        if (*at == '\r' && at + 1 != end && at[1] == '\n') ++at;
        const bool isBlank = Is(*at, byte_scan::kBlank);
        decodedBytes_.push_back(isBlank ? (isValue ? ' ' : *at == '\r' ? '\n' : *at) : *at);
        ++at;
    }
}

bool Tokenizer::hasDuplicate() {
    constexpr std::size_t kMaxCompared = 16;
    if (attributes_.size() <= kMaxCompared) {
        for (std::size_t i = 1; i < attributes_.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (SameName(attributes_[i].name, attributes_[j].name)) return true;
        return false;
    }
    sorted_.clear();
    for (const Attribute& attribute : attributes_)
        sorted_.push_back(attribute.name);
    std::sort(sorted_.begin(), sorted_.end());
    return std::adjacent_find(sorted_.begin(), sorted_.end()) != sorted_.end();
}

Tokenizer::Step Tokenizer::endTag() {
    if (openLengths_.empty()) return Step::Unsure;
    const std::size_t length = openLengths_.back();
    const char* at = at_ + 2;
    if (static_cast<std::size_t>(end_ - at) <= length) return missing();
    const std::string_view name(openNames_.data() + openNames_.size() - length, length);
    if (!SameName(View(at, at + length), name)) return Step::Unsure;
    at = SkipBlank(at + length, end_);
    if (at == end_) return missing();
    if (*at != '>') return Step::Unsure;
    events_.endElement(name);
    openNames_.erase(openNames_.size() - length);
    openLengths_.pop_back();
    return advance(at + 1, true);
}

Tokenizer::Step Tokenizer::markup() {
    constexpr std::string_view kComment = "<!--";
    constexpr std::string_view kCdata = "<![CDATA[";
    if (startsWith(kComment)) return comment();
    if (startsWith(kCdata)) return cdata();
    return View(at_, end_).size() < kCdata.size() ? missing() : Step::Unsure;
}

/// The next `mark` from `at` on, with everything before it checked.
const char* Tokenizer::untilMark(const char* at, std::string_view mark) {
    for (;;) {
        at = byte_scan::MarkStop(at, end_, mark.front());
        if (at == end_) return fail(missing());
        if (*at == mark.front()) {
            if (View(at, end_).starts_with(mark)) return at;
            if (static_cast<std::size_t>(end_ - at) < mark.size()) return fail(missing());
            ++at;
        } else if (IsHigh(*at)) {
            const char* const past = byte_scan::LongCharacters(at, end_);
            if (past == at) return fail(end_ - at < 4 ? missing() : Step::Unsure);
            at = past;
        } else if (Is(*at, byte_scan::kBlank)) {
            ++at;
        } else {
            return fail(Step::Unsure);
        }
    }
}

Tokenizer::Step Tokenizer::comment() {
    const char* const begin = at_ + 4;
    const char* const stop = untilMark(begin, "--");
    if (!stop) return step_;
    if (stop + 2 == end_) return missing();
    if (stop[2] != '>') return Step::Unsure;
    if (wantsDetails_) events_.comment(withLineEnds(begin, stop));
    return advance(stop + 3, false);
}

Tokenizer::Step Tokenizer::cdata() {
    if (openLengths_.empty()) return Step::Unsure;
    const char* const begin = at_ + 9;
    const char* const stop = untilMark(begin, "]]>");
    if (!stop) return step_;
    if (wantsDetails_) events_.startCdata();
    if (stop != begin) events_.characterData(withLineEnds(begin, stop), false);
    if (wantsDetails_) events_.endCdata();
    return advance(stop + 3, false);
}

Tokenizer::Step Tokenizer::instruction() {
    const char* at = at_ + 2;
    if (at == end_) return missing();
    if (!Is(*at, byte_scan::kNameStart)) return Step::Unsure;
    at = byte_scan::NameEnd(at, end_);
    if (end_ - at < 2) return missing();
    const std::string_view target = View(at_ + 2, at);
    if (target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
        (target[2] | 0x20) == 'l')
        return Step::Unsure;
    if (!View(at, end_).starts_with("?>") && !Is(*at, byte_scan::kBlank)) return Step::Unsure;
    at = SkipBlank(at, end_);
    const char* const stop = untilMark(at, "?>");
    if (!stop) return step_;
    if (wantsDetails_) events_.processingInstruction(target, withLineEnds(at, stop));
    return advance(stop + 2, false);
}

/// The bytes with each line end as a single newline; for what has no references.
std::string_view Tokenizer::withLineEnds(const char* at, const char* end) {
    if (!std::memchr(at, '\r', static_cast<std::size_t>(end - at))) return View(at, end);
    decodedBytes_.clear();
    for (; at != end; ++at)
        if (*at != '\r')
            decodedBytes_.push_back(*at);
        else if (at + 1 == end || at[1] != '\n')
            decodedBytes_.push_back('\n');
    return decodedBytes_;
}

Position Advance(Position from, std::string_view before) noexcept {
    for (std::size_t i = 0; i < before.size(); ++i) {
        const char c = before[i];
        if (c == '\n' || c == '\r') {
            if (c == '\n' && i > 0 && before[i - 1] == '\r') continue;
            ++from.line;
            from.column = 1;
        } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++from.column;
        }
    }
    return from;
}

} // namespace ODF::xml
