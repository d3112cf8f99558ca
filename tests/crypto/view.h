#pragma once

#include "serial/crypto/crypto.h"

#include <string_view>

namespace test {

/// The bytes of a string, as the ciphers take them.
inline ODF::crypto::ByteView View(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

} // namespace test
