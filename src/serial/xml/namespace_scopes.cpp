#include "serial/xml/namespace_scopes.h"

namespace ODF::xml {

NamespaceScopes::NamespaceScopes() {
    declare("xml", "http://www.w3.org/XML/1998/namespace");
}

void NamespaceScopes::declare(std::string_view prefix, std::string_view uri) {
    const auto at = byPrefix_.find(prefix);
    std::vector<std::size_t>& places = at != byPrefix_.end() ? at->second : byPrefix_[std::string(prefix)];
    places.push_back(bindings_.size());
    bindings_.push_back({std::string(prefix), std::string(uri)});
    customary_ = 0; // looked up again when it is asked for
    scope_ = nextScope_++;
    if (prefix.empty()) updateDefault();
}

void NamespaceScopes::leave(const Mark& mark) {
    if (bindings_.size() == mark.bindings) return;
    bool isDefault = false;
    for (; bindings_.size() > mark.bindings; bindings_.pop_back()) {
        isDefault = isDefault || bindings_.back().prefix.empty();
        byPrefix_.find(bindings_.back().prefix)->second.pop_back();
    }
    customary_ = mark.customary;
    scope_ = mark.scope;
    if (isDefault) updateDefault();
}

void NamespaceScopes::updateDefault() {
    const std::string* const uri = uriOf({});
    hasDefault_ = uri && !uri->empty();
}

const std::string* NamespaceScopes::uriOf(std::string_view prefix) const {
    const auto at = byPrefix_.find(prefix);
    return at == byPrefix_.end() || at->second.empty() ? nullptr : &bindings_[at->second.back()].uri;
}

std::optional<std::string_view> NamespaceScopes::prefixOf(std::string_view uri, std::string_view wish,
                                                          bool isAttribute) const {
    if (!wish.empty() || !isAttribute)
        if (const std::string* const bound = uriOf(wish); bound && *bound == uri) return wish;
    for (std::size_t i = bindings_.size(); i-- > 0;) {
        const Declaration& binding = bindings_[i];
        if (binding.uri == uri && (!isAttribute || !binding.prefix.empty()) &&
            byPrefix_.find(binding.prefix)->second.back() == i)
            return binding.prefix;
    }
    return std::nullopt;
}

std::string_view NamespaceScopes::declareFree(std::string_view uri, std::string_view wish) {
    std::string prefix(wish);
    for (unsigned number = 1; prefix.empty() || uriOf(prefix); ++number)
        prefix = "ns" + std::to_string(number);
    declare(prefix, uri);
    return bindings_.back().prefix;
}

bool NamespaceScopes::findCustomary(NamespaceIndex index) {
    const NamespaceRow& row = Namespace(index);
    const std::string* const uri = uriOf(row.prefix);
    if (!uri || *uri != row.uri) return false;
    customary_ |= std::uint64_t{1} << index;
    return true;
}

} // namespace ODF::xml
