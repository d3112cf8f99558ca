#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ODF {

class CODFDoc;
class Document;

/// The members besides the trees, whatever kind of document has them.
class MemberStore {
public:
    using Bytes = std::vector<unsigned char>;

    virtual ~MemberStore() = default;
    /// Nothing for a member that isn't there or can't be read.
    virtual std::optional<Bytes> read(std::string_view name) = 0;
    /// Adds a picture; the name that it got, or empty.
    virtual std::string addPicture(const Bytes& bytes, std::string_view fileName) = 0;
    /// The document, where it is one that can hold objects; else null.
    virtual Document* objects() noexcept { return nullptr; }
};

/// A folder that has no member yet: "Object 1".
std::string FreeObjectFolder(const Document& document);

std::unique_ptr<MemberStore> StoreOf(Document& document);
std::unique_ptr<MemberStore> StoreOf(CODFDoc& document);

} // namespace ODF
