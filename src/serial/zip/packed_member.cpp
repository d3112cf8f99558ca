#include "serial/zip/packed_member.h"

#include "platform/environment.h"
#include "serial/zip/custom_source.h"
#include "system/clock.h"

#include <odfmodel/core/date_time.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <new>
#include <utility>

namespace ODF::archive {

namespace {

DosTime FromSystemTime(const SYSTEMTIME& when) noexcept {
    // Archives can't tell of years before 1980 or after 2107.
    if (when.wYear < 1980) return {0, 1U << 5U | 1U};
    const unsigned year = std::min<unsigned>(when.wYear, 2107) - 1980U;
    return {static_cast<zip_uint16_t>(unsigned{when.wHour} << 11U | unsigned{when.wMinute} << 5U |
                                      unsigned{when.wSecond} / 2U),
            static_cast<zip_uint16_t>(year << 9U | unsigned{when.wMonth} << 5U | unsigned{when.wDay})};
}

/// Shows one packed member to libzip.
class PackedSource final : public CustomSource {
public:
    PackedSource(const PackedMember& member, PackedBytes bytes) noexcept
        : member_(member), bytes_(std::move(bytes)) {}

private:
    void describe(zip_stat_t& status) const override {
        status.valid = ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_CRC;
        status.size = member_.size;
        status.comp_size = member_.packedSize;
        status.comp_method = member_.method;
        status.crc = member_.crc;
    }

    zip_int64_t answer(void* data, zip_uint64_t length, zip_source_cmd_t command) override {
        switch (command) {
        case ZIP_SOURCE_OPEN:
            done_ = 0;
            return 0;
        case ZIP_SOURCE_READ: {
            const std::uint64_t count = std::min<std::uint64_t>(length, member_.packedSize - done_);
            return read({static_cast<unsigned char*>(data), static_cast<std::size_t>(count)});
        }
        case ZIP_SOURCE_SUPPORTS:
            return ZIP_SOURCE_SUPPORTS_READABLE;
        default:
            return unsupported();
        }
    }

    zip_int64_t read(std::span<unsigned char> target) noexcept {
        try {
            if (!target.empty() && !bytes_(done_, target)) return fail(ZIP_ER_READ);
        } catch (const std::bad_alloc&) { // what calls this is libzip
            return fail(ZIP_ER_MEMORY);
        }
        done_ += target.size();
        return static_cast<zip_int64_t>(target.size());
    }

    const PackedMember& member_;
    PackedBytes bytes_;
    std::uint64_t done_ = 0;
};

} // namespace

DosTime ToDosTime(std::int64_t seconds) {
    return FromSystemTime(system::LocalTime(seconds));
}

DosTime ToUtcDosTime(std::int64_t seconds) {
    return FromSystemTime(system::UtcTime(seconds));
}

DosTime PresentDosTime() {
    const std::string epoch = platform::GetEnvironment("SOURCE_DATE_EPOCH").value_or(std::string());
    std::int64_t seconds = 0;
    const auto parsed = std::from_chars(epoch.data(), epoch.data() + epoch.size(), seconds);
    const bool isFixed =
        !epoch.empty() && parsed.ec == std::errc() && parsed.ptr == epoch.data() + epoch.size();
    return FromSystemTime(isFixed ? system::UtcTime(seconds) : system::LocalNow());
}

bool AddPacked(zip_t* archive, const PackedMember& member, PackedBytes bytes) {
    zip_source_t* const made =
        CustomSource::handOver(std::make_unique<PackedSource>(member, std::move(bytes)), nullptr);
    if (!made) return false;
    const zip_int64_t index = zip_file_add(archive, member.name.c_str(), made, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(made);
        return false;
    }
    const auto place = static_cast<zip_uint64_t>(index);
    return (member.method != ZIP_CM_STORE ||
            zip_set_file_compression(archive, place, ZIP_CM_STORE, 0) == 0) &&
           (!member.unixMode || zip_file_set_external_attributes(archive, place, 0, ZIP_OPSYS_UNIX,
                                                                 *member.unixMode << 16U) == 0) &&
           zip_file_set_dostime(archive, place, member.time.time, member.time.date, 0) == 0;
}

} // namespace ODF::archive
