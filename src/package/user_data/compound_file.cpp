#ifdef ODFMODEL_USER_DATA

#include "package/user_data/compound_file.h"

#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>

#include <iterator>
#include <memory>

namespace SDPackage {

namespace {

// An honest file nests storages a few deep; each level costs stack here and in the library.
constexpr int kDeepest = 32;

struct ObjectDeleter {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};
template<typename T>
using Object = std::unique_ptr<T, ObjectDeleter>;

/// Keeps what the library says about damaged files off the standard error stream.
class QuietLog {
public:
    QuietLog() {
        const auto ignore = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
        for (std::size_t i = 0; i < std::size(kDomains); ++i)
            handlers_[i] = g_log_set_handler(kDomains[i], kLevels, ignore, nullptr);
    }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;
    ~QuietLog() {
        for (std::size_t i = 0; i < std::size(kDomains); ++i)
            g_log_remove_handler(kDomains[i], handlers_[i]);
    }

private:
    static constexpr const char* kDomains[] = {"libgsf:msole", "libgsf"};
    static constexpr auto kLevels =
        static_cast<GLogLevelFlags>(G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE);
    guint handlers_[std::size(kDomains)] = {};
};

class Reader {
public:
    /// No honest file holds more in its streams than it has bytes.
    explicit Reader(std::size_t byteCount) : left_(byteCount) {}

    bool read(GsfInfile* storage, CompoundNode& node, int depth) {
        node.isStorage = true;
        gsf_infile_msole_get_class_id(GSF_INFILE_MSOLE(storage), node.classId.data());
        const int count = gsf_infile_num_children(storage);
        if (depth > kDeepest) return false;
        for (int i = 0; i < count; ++i) {
            const Object<GsfInput> child(gsf_infile_child_by_index(storage, i));
            const char* const name = gsf_infile_name_by_index(storage, i);
            if (!child || !name) return false;
            CompoundNode& made = node.children.emplace_back();
            made.name = name;
            const bool isStorage =
                GSF_IS_INFILE(child.get()) && gsf_infile_num_children(GSF_INFILE(child.get())) >= 0;
            if (!(isStorage ? read(GSF_INFILE(child.get()), made, depth + 1) : readBytes(child.get(), made)))
                return false;
        }
        return true;
    }

private:
    bool readBytes(GsfInput* stream, CompoundNode& node) {
        const gsf_off_t size = gsf_input_size(stream);
        if (size < 0 || static_cast<std::uint64_t>(size) > left_) return false;
        left_ -= static_cast<std::size_t>(size);
        node.bytes.resize(static_cast<std::size_t>(size));
        return size == 0 || gsf_input_read(stream, node.bytes.size(), node.bytes.data()) != nullptr;
    }

    std::size_t left_;
};

bool Write(GsfOutfile* storage, const CompoundNode& node) {
    gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(storage), node.classId.data());
    for (const CompoundNode& child : node.children) {
        const Object<GsfOutput> made(
            gsf_outfile_new_child(storage, child.name.c_str(), child.isStorage ? TRUE : FALSE));
        if (!made) return false;
        const bool isWritten = child.isStorage
                                   ? Write(GSF_OUTFILE(made.get()), child)
                                   : child.bytes.empty() || gsf_output_write(made.get(), child.bytes.size(),
                                                                             child.bytes.data()) != FALSE;
        if (gsf_output_close(made.get()) == FALSE || !isWritten) return false;
    }
    return true;
}

} // namespace

std::optional<CompoundNode> ReadCompoundFile(std::span<const unsigned char> file) {
    const QuietLog quiet;
    const Object<GsfInput> input(
        gsf_input_memory_new(file.data(), static_cast<gsf_off_t>(file.size()), FALSE));
    if (!input) return std::nullopt;
    const Object<GsfInfile> storage(gsf_infile_msole_new(input.get(), nullptr));
    if (!storage) return std::nullopt;
    CompoundNode root;
    if (!Reader(file.size()).read(storage.get(), root, 0)) return std::nullopt;
    return root;
}

std::optional<std::vector<unsigned char>> WriteCompoundFile(const CompoundNode& root) {
    const Object<GsfOutput> output(gsf_output_memory_new());
    if (!output) return std::nullopt;
    const Object<GsfOutfile> storage(gsf_outfile_msole_new(output.get()));
    if (!storage || !Write(storage.get(), root) || gsf_output_close(GSF_OUTPUT(storage.get())) == FALSE)
        return std::nullopt;
    const guint8* const bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(output.get()));
    const auto size = static_cast<std::size_t>(gsf_output_size(output.get()));
    if (!bytes) return std::nullopt;
    return std::vector<unsigned char>(bytes, bytes + size);
}

} // namespace SDPackage

#endif
