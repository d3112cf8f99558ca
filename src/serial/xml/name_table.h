#pragma once

#include "core/kept.h"
#include "core/namespaces.h"
#include "core/value_pool.h"
#include "serial/xml/parser_events.h"

#include <odfmodel/core/string.h>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ODF::xml {

/// A name after its prefix has been resolved.
struct ResolvedName {
    std::string
        canonical; ///< with the customary prefix of its namespace; as in the file where that isn't known
    std::string uri;
    std::string local;
    CTulStringW canonical16;
    CTulStringW uri16;
    CTulStringW local16;
    NamespaceIndex nameSpace = kNoNamespace;
    std::uint32_t id = 0; ///< small number of its own within one parse

    /// The name for an object that keeps it, with the prefix of `qname`; made when it is first asked for.
    const ForeignName& kept(std::string_view qname, bool isElement) const;
    mutable ValuePool::Usage usage; ///< of the values of kept attributes

private:
    mutable ForeignName kept_;
    mutable ForeignName bare_; ///< without a namespace
};

/// Hash of names, with a seed of each table's own.
struct NameHash {
    using is_transparent = void;
    std::uint64_t seed = HashSeed();
    std::size_t operator()(std::string_view text) const noexcept { return HashBytes(text, seed); }
};

/// Names of one parse. Each distinct name of the file is resolved once in each scope of namespace
/// declarations, and from then on costs one hash lookup, or one comparison where it follows the name that it
/// followed the last time: documents repeat the same few sequences of names.
class NameTable {
public:
    NameTable();
    NameTable(const NameTable&) = delete;
    NameTable& operator=(const NameTable&) = delete;

    /// Takes the declarations among a start tag's attributes; true when there are any, and `leaveScope` is
    /// due at the end tag.
    bool enterScope(Attributes attributes);
    void leaveScope();
    /// Number of declarations that the present scope has itself, for the callbacks about prefixes.
    std::vector<std::pair<std::string_view, std::string_view>> scopeDeclarations() const;

    const ResolvedName& element(std::string_view qname);
    /// The name that was asked for last, as in the file.
    const CTulStringW& spelled();
    /// An attribute of an element of the namespace `owner`.
    const ResolvedName& attribute(std::string_view qname, NamespaceIndex owner);

    static bool isDeclaration(std::string_view qname) noexcept {
        return qname.starts_with('x') && qname.starts_with("xmlns") && (qname.size() == 5 || qname[5] == ':');
    }

private:
    struct Resolution {
        std::uint32_t scope = UINT32_MAX;
        const ResolvedName* name = nullptr;
    };
    /// A name as it is in the file, with what it meant last in each of its roles.
    struct Entry {
        std::string qname;
        CTulStringW qname16; ///< made when it is first asked for
        Resolution asElement;
        Resolution asAttribute;
        Resolution asMathAttribute;
        Entry* next = nullptr; ///< what was asked for after it the last time
    };
    struct Binding {
        std::string prefix;
        std::string uri;
        NamespaceIndex nameSpace;
    };
    struct Scope {
        std::uint32_t id;
        std::size_t bindings; ///< number of bindings before it
    };

    void bind(std::string_view prefix, std::string_view uri);
    Entry& entry(std::string_view qname);
    Entry& find(std::string_view qname);
    const ResolvedName* resolve(std::string_view qname, bool isElement, bool isMath);
    const ResolvedName* canonical(NamespaceIndex nameSpace, std::string_view uri, std::string_view local,
                                  std::string_view qname);

    NameHash hash_;
    std::vector<std::uint32_t> places_; ///< open addressing into entries_, 0 for free, else index + 1
    std::deque<Entry> entries_;
    std::unordered_map<std::string, ResolvedName, NameHash, std::equal_to<>> resolved_;
    std::vector<Binding> bindings_;
    /// Bindings of each prefix, the one in force last: a hostile file declares as many as it likes.
    std::unordered_map<std::string, std::vector<std::size_t>, NameHash, std::equal_to<>> byPrefix_;
    std::vector<Scope> scopes_;
    Entry first_;           ///< comes before the first name
    Entry* last_ = &first_; ///< the name asked for last
    std::uint32_t scope_ = 0;
    std::uint32_t nextScope_ = 1;
};

} // namespace ODF::xml
