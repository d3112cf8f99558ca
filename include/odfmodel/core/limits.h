#pragma once

#include <cstddef>
#include <cstdint>

namespace ODF {

/// What a tree takes of the bounds on all trees of a document.
struct TreeCost {
    std::uint64_t objects = 0;
    std::uint64_t textBytes = 0; ///< of texts and attribute values, in UTF-8
};

/// Bounds against hostile input. Each default is far above what honest documents hold and far below what
/// would hurt the host; a host may set its own before `Open`.
struct Limits {
    /// Deepest nesting of elements. Real documents stay below 100; lists and sections nest without a limit of
    /// their own, so this is what bounds them.
    unsigned depth = 4096;
    /// Attributes of one element; the widest class lists 172.
    unsigned attributes = 4096;
    /// UTF-8 bytes of one stretch of character data or of one attribute value.
    std::size_t textBytes = std::size_t{256} << 20;
    /// Bytes of XML in one part.
    std::uint64_t partBytes = std::uint64_t{4} << 30;
    /// Members of one archive; the largest real one seen holds about 2,000, office suites go to some 10,000.
    std::size_t members = 1'000'000;
    /// Uncompressed bytes of one member and of all members together: a deflate bomb stops here.
    std::uint64_t memberBytes = std::uint64_t{4} << 30;
    std::uint64_t totalBytes = std::uint64_t{16} << 30;
    /// Key derivation work that one member of an encrypted package may ask for.
    std::uint32_t pbkdf2Iterations = 10'000'000;
    std::uint32_t argon2Iterations = 64;
    std::uint32_t argon2Lanes = 64;
    std::uint32_t argon2MemoryKiB = 1U << 18;
    /// The same for all keys that are derived during one `Open`, in iterations of PBKDF2 for 20 bytes of key:
    /// some 0.2 microseconds each. A KiB that Argon2 fills counts as 6. A hundred members of an office
    /// suite's usual 100,000 iterations fit. Saving may take ten times as much, since all members are read.
    std::uint64_t keyWork = 20'000'000;
    /// How much larger than the source an XML part may grow through entities, once it is past
    /// `entityFreeBytes`.
    float entityAmplification = 100.0F;
    std::uint64_t entityFreeBytes = std::uint64_t{8} << 20;
    /// Objects, and bytes of texts and attribute values, that the trees of one document may have: so many for
    /// any file, and more by the size of the file, as it is packed. Elements of a few bytes pack a
    /// thousandfold and take 100 bytes and more each as objects; a sheet of ten million cells has 30 million
    /// objects and packs to some 30 MB. What memory all of it takes is bounded with it, whatever the content
    /// is made by.
    std::uint64_t freeObjects = 2'000'000;
    std::uint32_t objectsPerByte = 4;
    std::uint64_t freeTreeBytes = std::uint64_t{64} << 20;
    std::uint32_t treeBytesPerByte = 100;
};

} // namespace ODF
