#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace test {

/// What the tokeniser and libexpat make of one document.
struct TwoReaders {
    std::string difference; ///< where they disagree, empty for nowhere
    bool isSure = false;    ///< the tokeniser has read the document to its end
    bool isWellFormed = false;
};

/// Reads a document with libexpat alone, with the tokeniser and libexpat after it, and the same again with
/// the document in pieces whose sizes come from `seed`. All have to give the same events and end alike.
TwoReaders ReadTwice(std::string_view document, std::uint32_t seed);

} // namespace test
