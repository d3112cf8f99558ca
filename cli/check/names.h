#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace command {

/// Texts that are kept once, so that equal ones have one address.
class NamePool {
public:
    const std::string* get(std::string_view text);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
    };
    std::unordered_set<std::string, Hash, std::equal_to<>> texts_; // nodes stay where they are
};

/// Resolves the qualified names of one file. A resolved name has the customary prefix of its namespace; one
/// of a namespace that isn't known stands as "{uri}local".
class ScopedNames {
public:
    explicit ScopedNames(NamePool& pool);

    /// Takes in the declarations among the attributes of a start tag, given as expat gives them.
    void enter(const char* const* attributes);
    void leave();

    const std::string* element(std::string_view qname);
    /// Unprefixed attributes of MathML elements count as MathML's own, which is how their class lists them.
    const std::string* attribute(std::string_view qname, bool isOfMath);
    /// The URI that a prefix is bound to here; null for none.
    const std::string* boundTo(std::string_view prefix) const;

    static bool isDeclaration(std::string_view qname);

private:
    struct Binding {
        std::string prefix;
        const std::string* uri;
    };
    using Cache = std::unordered_map<std::string, const std::string*>;
    const std::string* resolve(Cache& cache, std::string_view qname, std::string_view defaultUri);

    NamePool& pool_;
    std::vector<Binding> bindings_;
    std::vector<std::size_t> scopes_; ///< number of bindings outside each open element
    Cache elements_;                  ///< what was resolved since the bindings changed last
    Cache attributes_;
    Cache mathAttributes_;
};

/// True for names of MathML.
bool IsMathName(const std::string& name);

} // namespace command
