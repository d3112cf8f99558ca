#pragma once

#include <cstdint>

namespace test {

/// Bytes that the XML library was given to read, in all threads: each piece, and with it again what was
/// unfinished before it. Reading a file once over is as many bytes as the file has.
std::uint64_t ParsedBytes() noexcept;

} // namespace test
