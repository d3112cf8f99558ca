#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ODF::crypto {

/// Bytes of a text in the standard alphabet. Blanks are passed over; the text ends at the first `=` or at a
/// character that belongs nowhere.
std::vector<unsigned char> FromBase64(std::string_view text);
/// The text with its padding, in one line.
std::string ToBase64(std::span<const unsigned char> bytes);

} // namespace ODF::crypto
