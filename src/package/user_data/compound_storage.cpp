#ifdef ODFMODEL_USER_DATA

#include "package/paths.h"
#include "package/user_data/compound_file.h"
#include "platform/files.h"
#include "platform/temporary.h"

#include <odfmodel/package/storage.h>

#include <algorithm>
#include <memory>

// The library behind this writes a compound file whole, so an open one is held in memory and written again
// when its work ends and something has changed.

namespace SDPackage {

namespace {

namespace platform = ODF::platform;

constexpr std::uint64_t kMaxFile = std::uint64_t{1} << 30;
constexpr std::size_t kMaxStreamName = 31;

class CompoundStream final : public IStream {
public:
    CompoundStream(std::vector<unsigned char>& bytes, bool& hasChanged)
        : bytes_(bytes), hasChanged_(hasChanged) {}

    unsigned Read(void* buffer, unsigned byteCount) override {
        if (!buffer || position_ >= bytes_.size()) return 0;
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(byteCount, bytes_.size() - position_));
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count,
                    static_cast<unsigned char*>(buffer));
        position_ += count;
        return static_cast<unsigned>(count);
    }

    unsigned Write(const void* buffer, unsigned byteCount) override {
        if (!buffer || byteCount == 0 || position_ > kMaxFile || byteCount > kMaxFile - position_) return 0;
        const std::uint64_t end = position_ + byteCount;
        if (end > bytes_.size()) bytes_.resize(static_cast<std::size_t>(end));
        std::copy_n(static_cast<const unsigned char*>(buffer), byteCount,
                    bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
        position_ = end;
        hasChanged_ = true;
        return byteCount;
    }

    void Seek(std::uint64_t position) override { position_ = position; }
    std::uint64_t Tell() const override { return position_; }
    std::uint64_t GetSize() const override { return bytes_.size(); }

    int SetSize(std::uint64_t byteCount) override {
        if (byteCount > kMaxFile) return 0;
        bytes_.resize(static_cast<std::size_t>(byteCount));
        hasChanged_ = true;
        return 1;
    }

    void Release() override { delete this; }

private:
    ~CompoundStream() override = default;

    std::vector<unsigned char>& bytes_;
    bool& hasChanged_;
    std::uint64_t position_ = 0;
};

class CompoundStorage final : public IStorage {
public:
    CompoundStorage(platform::Path path, CompoundNode root)
        : path_(std::move(path)), root_(std::move(root)) {}

    /// Writes the file next to its place and puts it there.
    bool store() {
        const auto bytes = WriteCompoundFile(root_);
        platform::ReplacementFile file;
        hasChanged_ = false;
        return bytes && file.open(path_) && file.file().write(bytes->data(), bytes->size()) && file.replace();
    }

    IStream* OpenStream(const unsigned short* name) override {
        const auto node = find(name);
        return node != root_.children.end() && !node->isStorage ? makeStream(*node) : nullptr;
    }

    IStream* CreateStream(const unsigned short* name) override {
        const Units text = ToView(name);
        if (text.empty() || text.size() > kMaxStreamName || text.find_first_of(u"/\\:!") != Units::npos)
            return nullptr;
        const auto present = find(name);
        if (present != root_.children.end()) root_.children.erase(present);
        CompoundNode& made = root_.children.emplace_back();
        made.name = ODF::ToUtf8(text);
        hasChanged_ = true;
        return makeStream(made);
    }

    int Release() override {
        const bool isKept = !hasChanged_ || store();
        delete this;
        return isKept ? 1 : 0;
    }

private:
    ~CompoundStorage() override = default;

    IStream* makeStream(CompoundNode& node) { return new CompoundStream(node.bytes, hasChanged_); }

    std::list<CompoundNode>::iterator find(const unsigned short* name) {
        return std::find_if(root_.children.begin(), root_.children.end(), [&](const CompoundNode& node) {
            return EqualIgnoringCase(ODF::ToUtf16(node.name), ToView(name));
        });
    }

    platform::Path path_;
    CompoundNode root_;
    bool hasChanged_ = false;
};

} // namespace

// Both hand the object to a caller who ends it with `Release`.

IStorage* OpenStorage(const unsigned short* path) {
    const auto bytes = platform::ReadFile(path, kMaxFile);
    auto root = bytes ? ReadCompoundFile(*bytes) : std::nullopt;
    return root ? new CompoundStorage(path, std::move(*root)) : nullptr;
}

IStorage* CreateStorage(const unsigned short* path) {
    CompoundNode root;
    root.isStorage = true;
    auto* const storage = new CompoundStorage(path, std::move(root));
    if (storage->store()) return storage;
    storage->Release();
    return nullptr;
}

} // namespace SDPackage

#endif
