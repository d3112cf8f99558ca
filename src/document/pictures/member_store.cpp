#include "document/pictures/member_store.h"

#include "platform/files.h"

#include <odfmodel/document/odf_document.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/part_factories.h>

#include <algorithm>
#include <unordered_set>

namespace ODF {
namespace {

class PackageStore final : public MemberStore {
public:
    explicit PackageStore(Document& document) noexcept : document_(document) {}

    std::optional<Bytes> read(std::string_view name) override {
        Bytes bytes;
        if (!document_.HasMember(name) || !document_.ReadMember(name, bytes)) return std::nullopt;
        return bytes;
    }
    std::string addPicture(const Bytes& bytes, std::string_view fileName) override {
        return document_.AddPicture(bytes, fileName);
    }
    Document* objects() noexcept override { return document_.IsFlat() ? nullptr : &document_; }

private:
    Document& document_;
};

/// Members as files: a new one goes into the document's own folder, which it has until it is saved.
class FolderStore final : public MemberStore {
public:
    explicit FolderStore(CODFDoc& document) noexcept : document_(document) {}

    std::optional<Bytes> read(std::string_view name) override {
        const CODFPart* const part = find(name);
        return part ? platform::ReadFile(platform::Path(part->GetLocalPath())) : std::nullopt;
    }
    std::string addPicture(const Bytes& bytes, std::string_view fileName) override {
        const CTulStringW own = document_.MakeFolder();
        if (own.IsEmpty()) return {};
        const platform::Path folder = platform::Path(own) / platform::Path("Pictures");
        const platform::Path wanted = folder / platform::Path(platform::Path(fileName).name());
        platform::Path file = wanted;
        for (unsigned number = 2; platform::IsTaken(file) || find("Pictures/" + file.name()); ++number)
            file = folder / platform::Path(wanted.stem() + '-' + std::to_string(number) + wanted.extension());
        if (!platform::CreateFolders(folder, true) || !platform::WriteFile(file, bytes)) return {};
        const CODFPart* const part = AddPictureFile(document_.GetRootPart(), file.text());
        return part ? ToUtf8(part->GetPackagePath()) : std::string();
    }

private:
    const CODFPart* find(std::string_view name) const {
        std::vector<ISDPart*> parts;
        if (CODFPart* const root = document_.GetRootPart()) root->GetChildParts(&parts);
        for (const ISDPart* const part : parts) {
            if (!part) continue;
            std::string path = ToUtf8(part->GetPackagePath());
            std::replace(path.begin(), path.end(), '\\', '/');
            if (path == name) return static_cast<const CODFPart*>(part);
        }
        return nullptr;
    }

    CODFDoc& document_;
};

} // namespace

std::string FreeObjectFolder(const Document& document) {
    std::unordered_set<std::string> taken;
    for (const std::string& name : document.Members())
        taken.insert(name.substr(0, name.find('/')));
    for (unsigned number = 1;; ++number)
        if (std::string folder = "Object " + std::to_string(number); !taken.contains(folder)) return folder;
}

std::unique_ptr<MemberStore> StoreOf(Document& document) {
    return std::make_unique<PackageStore>(document);
}
std::unique_ptr<MemberStore> StoreOf(CODFDoc& document) {
    return std::make_unique<FolderStore>(document);
}

} // namespace ODF
