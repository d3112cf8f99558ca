#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// One member of an archive that is put together byte by byte, so that it can lie.
struct RawMember {
    std::string name;
    std::string data; ///< as it is in the archive
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint32_t size = 0; ///< the claimed size of the plain data
    std::uint32_t externalAttributes = 0;
    std::uint16_t flags = 0x800; ///< the name is UTF-8
};

inline void AppendNumber(std::string& out, std::uint64_t number, int bytes) {
    for (int place = 0; place < bytes; ++place)
        out += static_cast<char>(number >> (8 * place) & 0xFFU);
}

inline std::uint32_t PlainCrc32(std::string_view data) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char unit : data) {
        crc ^= static_cast<unsigned char>(unit);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? crc >> 1U ^ 0xEDB88320U : crc >> 1U;
    }
    return ~crc;
}

/// A stored member that tells the truth.
inline RawMember Stored(std::string name, std::string data) {
    RawMember member{std::move(name), std::move(data)};
    member.crc = PlainCrc32(member.data);
    member.size = static_cast<std::uint32_t>(member.data.size());
    return member;
}

inline std::string RawArchive(const std::vector<RawMember>& members) {
    std::string archive;
    std::string directory;
    for (const RawMember& member : members) {
        const std::size_t offset = archive.size();
        std::string common;
        AppendNumber(common, member.flags, 2);
        AppendNumber(common, member.method, 2);
        AppendNumber(common, 0x58214000, 4); // some day in 2024
        AppendNumber(common, member.crc, 4);
        AppendNumber(common, member.data.size(), 4);
        AppendNumber(common, member.size, 4);
        AppendNumber(common, member.name.size(), 2);
        AppendNumber(common, 0, 2);
        archive += std::string("PK\3\4") + std::string("\x14\0", 2) + common + member.name + member.data;
        directory += std::string("PK\1\2") + std::string("\x14\3\x14\0", 4) + common;
        AppendNumber(directory, 0, 2 + 2 + 2);
        AppendNumber(directory, member.externalAttributes, 4);
        AppendNumber(directory, offset, 4);
        directory += member.name;
    }
    std::string end = "PK\5\6";
    AppendNumber(end, 0, 4);
    AppendNumber(end, members.size(), 2);
    AppendNumber(end, members.size(), 2);
    AppendNumber(end, directory.size(), 4);
    AppendNumber(end, archive.size(), 4);
    AppendNumber(end, 0, 2);
    return archive + directory + end;
}

} // namespace test
