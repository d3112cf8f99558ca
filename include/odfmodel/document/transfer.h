#pragma once

#include <odfmodel/core/object.h>
#include <odfmodel/export.h>

#include <concepts>
#include <memory>
#include <string>
#include <vector>

namespace ODF {

class CODFDoc;
class Document;

/// Copies content from one document to another together with all that it needs there: styles and what they
/// stand on, fonts, lists, number formats, master pages, pictures and embedded objects.
///
///     ODF::Transfer transfer(from, to);
///     for (const ODF::CTextP& paragraph : from.Text()->Children<ODF::CTextP>())
///         transfer.Append(paragraph, *to.Text());
///
/// Automatic styles are made again where the target has none that says the same. Of common styles, fonts and
/// master pages with one name, those of the target count, so that what is copied looks as its new document
/// does. One transfer copies each style and picture once; use it for all that goes from one document to the
/// other. Both documents must outlive it and not be moved. They may be the same.
class ODFMODEL_API Transfer {
public:
    Transfer(Document& from, Document& to);
    Transfer(Document& from, CODFDoc& to);
    Transfer(CODFDoc& from, Document& to);
    Transfer(CODFDoc& from, CODFDoc& to);
    Transfer(Transfer&& other) noexcept;
    Transfer& operator=(Transfer&& other) noexcept;
    ~Transfer();

    /// A copy for a place at or below `place`, which is in the target, to be put there by the caller. Null
    /// when a class of the caller's own can't be copied.
    template<std::derived_from<CSDObject> T>
    [[nodiscard]] std::unique_ptr<T> Copy(const T& object, const CSDObject& place) {
        return std::unique_ptr<T>(static_cast<T*>(CopyObject(object, place).release()));
    }
    /// The same, put after the other children of `parent`. Borrowed; null also when `parent` holds no
    /// children.
    template<std::derived_from<CSDObject> T>
    T* Append(const T& object, CSDObject& parent) {
        std::unique_ptr<T> copy = Copy(object, parent);
        T* const made = copy.get();
        return parent.Append(std::move(copy)) == TreeChange::Done ? made : nullptr;
    }
    /// What was named but couldn't be brought along, such as "Pictures/logo.png": it isn't in the source, or
    /// the target can't hold it. Embedded objects need a package in memory on both sides. The copies keep the
    /// names.
    const std::vector<std::string>& Missing() const noexcept;

private:
    struct State;
    std::unique_ptr<CSDObject> CopyObject(const CSDObject& object, const CSDObject& place);

    std::unique_ptr<State> state_;
};

} // namespace ODF
