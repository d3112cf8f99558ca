#pragma once

#include <odfmodel/core/object.h>
#include <odfmodel/core/string.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

// What an object holds beyond its class: what only some objects have, and what a tree of full fidelity keeps
// of its file. It hangs in the slot after the attributes, so objects without any of it pay nothing.
namespace ODF {

/// The name of an element or attribute that no class lists. Names that are alike share their memory.
class ForeignName {
public:
    ForeignName() = default;
    ForeignName(std::string_view uri, std::string_view prefix, std::string_view local);
    explicit ForeignName(CTulStringW key) noexcept : key_(std::move(key)) {}

    bool isEmpty() const noexcept { return key_.IsEmpty(); }
    /// Empty for a name without a namespace, and for one whose prefix nothing declares.
    std::u16string_view uri() const noexcept { return part(0); }
    /// The prefix that the file or the caller wrote; a wish, since another may be in force where it is
    /// written.
    std::u16string_view prefix() const noexcept { return part(1); }
    std::u16string_view local() const noexcept { return part(2); }
    /// All of it as one string, to be made a name again.
    const CTulStringW& key() const noexcept { return key_; }
    /// Whether both mean the same, whatever their prefixes.
    bool means(const ForeignName& other) const noexcept;

private:
    std::u16string_view part(unsigned index) const noexcept;

    CTulStringW key_; ///< URI, prefix and local name, with a unit between them that no XML contains
};

/// One attribute as the file has it: of those that the class doesn't list, or one that it lists with other
/// words than the class would write.
struct KeptAttribute {
    static constexpr std::int32_t kNotListed = -1;

    ForeignName name; ///< empty for a listed attribute under its customary name
    CTulStringW value;
    std::int32_t row = kNotListed; ///< of the class's table
};

/// A namespace declaration of an element.
struct NamespaceDeclaration {
    CTulStringW prefix; ///< empty for the default namespace
    CTulStringW uri;
};

/// What hardly any object keeps.
struct KeptMarkup {
    std::vector<NamespaceDeclaration> declarations;
    /// Children of an object whose class has no list for them.
    std::vector<CSDObject*> content;
    /// Comments and processing instructions before the root element and after it.
    std::vector<CSDObject*> before;
    std::vector<CSDObject*> after;
    /// The file has the element under its class's name, where the parent lists the class under another.
    bool hasOwnName = false;

    KeptMarkup() = default;
    KeptMarkup(const KeptMarkup&) = delete;
    KeptMarkup& operator=(const KeptMarkup&) = delete;
    ~KeptMarkup();
};

struct Extras {
    std::unique_ptr<std::vector<CTulStringW>> maintainElementList;
    unsigned errorCode = 0;
    std::vector<KeptAttribute> attributes;
    std::unique_ptr<KeptMarkup> markup;

    KeptMarkup& requireMarkup();
    /// The words that the file has for a listed attribute, or null.
    const KeptAttribute* find(unsigned row) const noexcept;
    void forget(unsigned row) noexcept;
};

} // namespace ODF
