#include "serial/crypto/manifest_reader.h"

#include "serial/crypto/base64.h"
#include "serial/xml/libexpat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

namespace ODF::crypto {

namespace {

std::string_view LocalPart(std::string_view name) noexcept {
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// False when `text` is no number or one that doesn't fit; `number` is then left alone.
template<typename Number>
bool ReadNumber(std::string_view text, Number& number) noexcept {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

struct Parse {
    EncryptedRows result;
    EncryptedRow row; ///< the row that is open
    bool isInsideRow = false;
    bool isEncrypted = false;
    std::size_t mostRows = 0;
};

using SetAttribute = void (*)(EncryptedRow& row, std::string_view value);

/// What each attribute of each element does to the row.
struct AttributeRow {
    std::string_view element;
    std::string_view attribute;
    SetAttribute set;
};

template<std::uint32_t EncryptionData::*field>
void SetNumber(EncryptedRow& row, std::string_view value) {
    if (!ReadNumber(value, row.data.*field)) row.data.isWithinRange = false;
}

constexpr std::array<AttributeRow, 14> kAttributes{{
    {"file-entry", "full-path", [](EncryptedRow& row, std::string_view value) { row.path = value; }},
    {"file-entry", "size",
     [](EncryptedRow& row, std::string_view value) {
         std::uint64_t size = 0;
         if (ReadNumber(value, size)) row.size = size;
     }},
    {"encryption-data", "checksum-type",
     [](EncryptedRow& row, std::string_view value) { row.data.setChecksumType(value); }},
    {"encryption-data", "checksum",
     [](EncryptedRow& row, std::string_view value) { row.data.checksum = FromBase64(value); }},
    {"algorithm", "algorithm-name",
     [](EncryptedRow& row, std::string_view value) { row.data.setAlgorithm(value); }},
    {"algorithm", "initialisation-vector",
     [](EncryptedRow& row, std::string_view value) { row.data.vector = FromBase64(value); }},
    {"start-key-generation", "start-key-generation-name",
     [](EncryptedRow& row, std::string_view value) { row.data.setStartKeyGeneration(value); }},
    {"key-derivation", "key-derivation-name",
     [](EncryptedRow& row, std::string_view value) { row.data.setKeyDerivation(value); }},
    {"key-derivation", "salt",
     [](EncryptedRow& row, std::string_view value) { row.data.salt = FromBase64(value); }},
    {"key-derivation", "key-size",
     [](EncryptedRow& row, std::string_view value) {
         std::size_t size = 0;
         if (ReadNumber(value, size))
             row.data.rowKeySize = size;
         else
             row.data.isWithinRange = false;
     }},
    {"key-derivation", "iteration-count", SetNumber<&EncryptionData::iterations>},
    {"key-derivation", "argon2-iterations", SetNumber<&EncryptionData::argon2Iterations>},
    {"key-derivation", "argon2-memory", SetNumber<&EncryptionData::argon2MemoryKiB>},
    {"key-derivation", "argon2-lanes", SetNumber<&EncryptionData::argon2Lanes>},
}};

void XMLCALL OnStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    auto& parse = *static_cast<Parse*>(user);
    const std::string_view element = LocalPart(name);
    if (element == "file-entry") {
        parse.row = {};
        parse.isInsideRow = true;
        parse.isEncrypted = false;
    } else if (element == "encryption-data") {
        parse.isEncrypted = parse.isInsideRow;
    }
    if (!parse.isInsideRow) return;
    for (; *attributes; attributes += 2) {
        const std::string_view attribute = LocalPart(attributes[0]);
        const auto found = std::find_if(kAttributes.begin(), kAttributes.end(), [&](const AttributeRow& row) {
            return row.element == element && row.attribute == attribute;
        });
        if (found != kAttributes.end()) found->set(parse.row, attributes[1]);
    }
}

void XMLCALL OnEnd(void* user, const XML_Char* name) {
    auto& parse = *static_cast<Parse*>(user);
    if (LocalPart(name) != "file-entry") return;
    if (parse.isInsideRow && parse.isEncrypted && parse.result.rows.size() < parse.mostRows)
        parse.result.rows.push_back(std::move(parse.row));
    parse.isInsideRow = false;
}

} // namespace

EncryptedRows ReadEncryptedRows(ByteView manifest, const Limits& limits) {
    Parse parse;
    parse.mostRows = limits.members;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    if (!parser) {
        parse.result.isWellFormed = false;
        return std::move(parse.result);
    }
    // Growth through entities is bounded by the parser itself, and external ones aren't loaded without a
    // handler.
    XML_SetUserData(parser.get(), &parse);
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    constexpr std::size_t largestPiece = std::size_t{1} << 20;
    while (parse.result.isWellFormed) {
        const ByteView piece = manifest.first(std::min(manifest.size(), largestPiece));
        manifest = manifest.subspan(piece.size());
        const bool isLast = manifest.empty();
        parse.result.isWellFormed =
            XML_Parse(parser.get(), reinterpret_cast<const char*>(piece.data()),
                      static_cast<int>(piece.size()), isLast ? XML_TRUE : XML_FALSE) == XML_STATUS_OK;
        if (isLast) break;
    }
    return std::move(parse.result);
}

} // namespace ODF::crypto
