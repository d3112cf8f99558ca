#pragma once

#include "core/namespaces.h"
#include "serial/xml/name_table.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ODF::xml {

/// The namespace declarations in force while a tree is written. They follow those of the file, element by
/// element, so that prefixes in values keep their meaning; names are written with whatever prefix is in force
/// for their namespace.
class NamespaceScopes {
public:
    NamespaceScopes();

    /// What was in force before an element.
    struct Mark {
        std::size_t bindings;
        std::uint64_t customary;
        std::uint32_t scope;
    };
    Mark mark() const noexcept { return {bindings_.size(), customary_, scope_}; }
    void leave(const Mark& mark);

    /// Puts a declaration in force; an empty prefix is the default namespace.
    void declare(std::string_view prefix, std::string_view uri);
    /// The prefix in force for a namespace, preferably `wish`; nothing when there is none. An attribute needs
    /// one that isn't empty.
    std::optional<std::string_view> prefixOf(std::string_view uri, std::string_view wish,
                                             bool isAttribute) const;
    /// Declares a namespace under a prefix that nothing else has, `wish` if that is free.
    std::string_view declareFree(std::string_view uri, std::string_view wish);
    /// The URI of a prefix; null when nothing declares it.
    const std::string* uriOf(std::string_view prefix) const;
    /// Whether names of the namespace may be written with its customary prefix.
    bool isCustomary(NamespaceIndex index) {
        if (index == kNoNamespace) return !hasDefault_;
        return index >= kNamespaceCount || (customary_ >> index & 1U) != 0 || findCustomary(index);
    }

    struct Declaration {
        std::string prefix;
        std::string uri;
    };
    const std::vector<Declaration>& declarations() const noexcept { return bindings_; }
    /// Tells one set of declarations in force from all others.
    std::uint32_t scope() const noexcept { return scope_; }

private:
    bool findCustomary(NamespaceIndex index);
    void updateDefault();

    std::vector<Declaration> bindings_;
    /// Positions of each prefix in `bindings_`, the one in force last.
    std::unordered_map<std::string, std::vector<std::size_t>, NameHash, std::equal_to<>> byPrefix_;
    std::uint64_t customary_ = 0; ///< namespaces known to be in force under their customary prefix
    std::uint32_t scope_ = 0;
    std::uint32_t nextScope_ = 1;
    bool hasDefault_ = false;
};

} // namespace ODF::xml
