#include "check/names.h"

#include <odfmodel/core/reflection.h>

namespace command {

const std::string* NamePool::get(std::string_view text) {
    const auto known = texts_.find(text);
    return known != texts_.end() ? &*known : &*texts_.emplace(text).first;
}

ScopedNames::ScopedNames(NamePool& pool) : pool_(pool) {
    bindings_.push_back({"xml", pool_.get(ODF::NamespaceOfPrefix("xml"))});
}

bool ScopedNames::isDeclaration(std::string_view qname) {
    return qname == "xmlns" || qname.starts_with("xmlns:");
}

void ScopedNames::enter(const char* const* attributes) {
    scopes_.push_back(bindings_.size());
    for (const char* const* at = attributes; *at; at += 2) {
        const std::string_view qname(*at);
        if (!isDeclaration(qname)) continue;
        bindings_.push_back({std::string(qname.size() > 6 ? qname.substr(6) : ""), pool_.get(at[1])});
    }
    if (bindings_.size() == scopes_.back()) return;
    elements_.clear();
    attributes_.clear();
    mathAttributes_.clear();
}

void ScopedNames::leave() {
    if (bindings_.size() != scopes_.back()) {
        bindings_.resize(scopes_.back());
        elements_.clear();
        attributes_.clear();
        mathAttributes_.clear();
    }
    scopes_.pop_back();
}

const std::string* ScopedNames::boundTo(std::string_view prefix) const {
    for (auto binding = bindings_.rbegin(); binding != bindings_.rend(); ++binding)
        if (binding->prefix == prefix) return binding->uri->empty() ? nullptr : binding->uri;
    return nullptr;
}

const std::string* ScopedNames::element(std::string_view qname) {
    const std::string* const uri = boundTo({});
    return resolve(elements_, qname, uri ? std::string_view(*uri) : std::string_view());
}

const std::string* ScopedNames::attribute(std::string_view qname, bool isOfMath) {
    return isOfMath ? resolve(mathAttributes_, qname, ODF::NamespaceOfPrefix("math"))
                    : resolve(attributes_, qname, {});
}

const std::string* ScopedNames::resolve(Cache& cache, std::string_view qname, std::string_view defaultUri) {
    const std::string*& known = cache[std::string(qname)];
    if (known) return known;
    const std::size_t colon = qname.find(':');
    const bool hasPrefix = colon != std::string_view::npos;
    const std::string_view local = hasPrefix ? qname.substr(colon + 1) : qname;
    const std::string* const bound = hasPrefix ? boundTo(qname.substr(0, colon)) : nullptr;
    const std::string_view uri = bound       ? std::string_view(*bound)
                                 : hasPrefix ? std::string_view()
                                             : defaultUri;
    const std::string_view prefix = uri.empty() ? std::string_view() : ODF::PrefixOfNamespace(uri);
    std::string name;
    if (!prefix.empty())
        name.append(prefix).append(":").append(local);
    else if (!uri.empty())
        name.append("{").append(uri).append("}").append(local);
    else if (hasPrefix)
        name.append("{}").append(qname); // a prefix that nothing declares
    else
        name = local;
    return known = pool_.get(name);
}

bool IsMathName(const std::string& name) {
    return name.starts_with("math:");
}

} // namespace command
