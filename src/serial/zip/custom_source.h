#pragma once

#include <cstdint>
#include <memory>
#include <zip.h>

namespace ODF::archive {

/// A source of libzip's that this library fills: what all of them answer alike. libzip calls it by commands
/// and owns it.
class CustomSource {
public:
    CustomSource() { zip_error_init(&error_); }
    CustomSource(const CustomSource&) = delete;
    CustomSource& operator=(const CustomSource&) = delete;
    virtual ~CustomSource() { zip_error_fini(&error_); }

    /// Hands a source over to libzip; null, with `error` set unless it is null, when that fails.
    static zip_source_t* handOver(std::unique_ptr<CustomSource> source, zip_error_t* error);

protected:
    /// Answers what `call` doesn't. No call from libzip may throw.
    virtual zip_int64_t answer(void* data, zip_uint64_t length, zip_source_cmd_t command) = 0;
    /// For `ZIP_SOURCE_STAT`: what the source knows of itself.
    virtual void describe(zip_stat_t& status) const = 0;

    zip_int64_t fail(int code, int systemCode = 0) {
        zip_error_set(&error_, code, systemCode);
        return -1;
    }
    zip_int64_t unsupported() { return fail(ZIP_ER_OPNOTSUPP); }
    /// For the commands that move a position: the new one, at most `size`, or -1.
    bool seek(std::uint64_t& position, std::uint64_t size, void* data, zip_uint64_t length);

private:
    static zip_int64_t call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command);

    zip_error_t error_{};
};

} // namespace ODF::archive
