#include "serial/zip/custom_source.h"

namespace ODF::archive {

zip_source_t* CustomSource::handOver(std::unique_ptr<CustomSource> source, zip_error_t* error) {
    zip_source_t* const made = zip_source_function_create(&CustomSource::call, source.get(), error);
    if (made) source.release(); // NOLINT(bugprone-unused-return-value): libzip owns it now
    return made;
}

zip_int64_t CustomSource::call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    auto* const source = static_cast<CustomSource*>(self);
    switch (command) {
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_STAT: {
        auto* const status = static_cast<zip_stat_t*>(data);
        zip_stat_init(status);
        source->describe(*status);
        return sizeof(zip_stat_t);
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&source->error_, data, length);
    case ZIP_SOURCE_FREE:
        delete source; // libzip's way to give up ownership
        return 0;
    default:
        return source->answer(data, length, command);
    }
}

bool CustomSource::seek(std::uint64_t& position, std::uint64_t size, void* data, zip_uint64_t length) {
    const zip_int64_t target = zip_source_seek_compute_offset(position, size, data, length, &error_);
    if (target < 0) return false;
    position = static_cast<std::uint64_t>(target);
    return true;
}

} // namespace ODF::archive
