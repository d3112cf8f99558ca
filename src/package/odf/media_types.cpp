#include "package/odf/media_types.h"

#include <algorithm>
#include <array>
#include <string>

namespace ODF::package {

namespace {

struct MediaKind {
    std::string_view key; ///< an extension in lower case, or the first bytes
    std::string_view mediaType;
};

constexpr std::array<MediaKind, 34> kMediaExtensions{{
    {"xml", "text/xml"},        {"rdf", "application/rdf+xml"},
    {"png", "image/png"},       {"jpg", "image/jpeg"},
    {"jpeg", "image/jpeg"},     {"gif", "image/gif"},
    {"svg", "image/svg+xml"},   {"bmp", "image/bmp"},
    {"tif", "image/tiff"},      {"tiff", "image/tiff"},
    {"webp", "image/webp"},     {"wmf", "image/x-wmf"},
    {"emf", "image/x-emf"},     {"pdf", "application/pdf"},
    {"zip", "application/zip"}, {"mp3", "audio/mpeg"},
    {"ogg", "audio/ogg"},       {"wav", "audio/x-wav"},
    {"flac", "audio/flac"},     {"mp4", "video/mp4"},
    {"webm", "video/webm"},     {"mpg", "video/mpeg"},
    {"mpeg", "video/mpeg"},     {"avi", "video/x-msvideo"},
    {"mov", "video/quicktime"}, {"ttf", "font/ttf"},
    {"otf", "font/otf"},        {"woff", "font/woff"},
    {"woff2", "font/woff2"},    {"txt", "text/plain"},
    {"css", "text/css"},        {"html", "text/html"},
    {"js", "text/javascript"},  {"json", "application/json"},
}};

constexpr std::array<MediaKind, 6> kBeginnings{{
    {"\x89PNG\r\n\x1A\n", "image/png"},
    {"\xFF\xD8\xFF", "image/jpeg"},
    {"GIF8", "image/gif"},
    {"%PDF-", "application/pdf"},
    {"<?xml", "text/xml"},
    {"\xD7\xCD\xC6\x9A", "image/x-wmf"},
}};

constexpr std::array<std::string_view, 8> kCompressed{
    "image/png",       "image/jpeg", "image/gif",  "image/webp",
    "application/zip", "font/woff",  "font/woff2", "application/x-7z-compressed"};

std::string LowerExtension(std::string_view name) {
    const auto place = name.find_last_of("./\\");
    if (place == std::string_view::npos || name[place] != '.' || name.size() - place > 8) return {};
    std::string extension(name.substr(place + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return extension;
}

} // namespace

std::string_view MediaTypeFor(std::string_view name, std::span<const unsigned char> bytes) noexcept {
    const std::string extension = LowerExtension(name); // short enough to need no memory
    for (const MediaKind& kind : kMediaExtensions)
        if (kind.key == extension) return kind.mediaType;
    const std::string_view start(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const MediaKind& kind : kBeginnings)
        if (start.starts_with(kind.key)) return kind.mediaType;
    return {};
}

bool IsCompressed(std::string_view mediaType) noexcept {
    const bool isSound = mediaType.starts_with("audio/") && mediaType != "audio/x-wav";
    return isSound || mediaType.starts_with("video/") ||
           std::find(kCompressed.begin(), kCompressed.end(), mediaType) != kCompressed.end();
}

} // namespace ODF::package
