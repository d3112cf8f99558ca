#include "serial/xml/name_table.h"

#include "serial/xml/byte_scan.h"

namespace ODF::xml {

const ForeignName& ResolvedName::kept(std::string_view qname, bool isElement) const {
    const std::size_t colon = qname.find(':');
    if (colon == std::string_view::npos && !isElement) {
        // A default namespace isn't one of attributes.
        if (bare_.isEmpty()) bare_ = ForeignName({}, {}, local);
        return bare_;
    }
    if (kept_.isEmpty())
        kept_ = ForeignName(
            uri, colon == std::string_view::npos ? std::string_view() : qname.substr(0, colon), local);
    return kept_;
}

NameTable::NameTable() : places_(256) {
    bind("xml", Namespace(FindNamespaceByPrefix("xml")).uri);
}

void NameTable::bind(std::string_view prefix, std::string_view uri) {
    byPrefix_[std::string(prefix)].push_back(bindings_.size());
    bindings_.push_back({std::string(prefix), std::string(uri), FindNamespaceByUri(uri)});
}

bool NameTable::enterScope(Attributes attributes) {
    const std::size_t before = bindings_.size();
    for (const auto& [qname, value] : attributes)
        if (isDeclaration(qname)) bind(qname.size() > 6 ? qname.substr(6) : std::string_view(), value);
    if (bindings_.size() == before) return false;
    scopes_.push_back({scope_, before});
    scope_ = nextScope_++;
    return true;
}

void NameTable::leaveScope() {
    for (; bindings_.size() > scopes_.back().bindings; bindings_.pop_back())
        byPrefix_.find(bindings_.back().prefix)->second.pop_back();
    scope_ = scopes_.back().id; // what was resolved in the outer scope holds again
    scopes_.pop_back();
}

std::vector<std::pair<std::string_view, std::string_view>> NameTable::scopeDeclarations() const {
    std::vector<std::pair<std::string_view, std::string_view>> result;
    for (std::size_t i = scopes_.back().bindings; i < bindings_.size(); ++i)
        result.emplace_back(bindings_[i].prefix, bindings_[i].uri);
    return result;
}

const ResolvedName& NameTable::element(std::string_view qname) {
    Resolution& known = entry(qname).asElement;
    if (known.scope != scope_) known = {scope_, resolve(qname, true, false)};
    return *known.name;
}

const CTulStringW& NameTable::spelled() {
    if (last_->qname16.IsEmpty()) last_->qname16 = CTulStringW(std::string_view(last_->qname));
    return last_->qname16;
}

const ResolvedName& NameTable::attribute(std::string_view qname, NamespaceIndex owner) {
    Entry& names = entry(qname);
    const bool isMath = owner == kMathNamespace;
    Resolution& known = isMath ? names.asMathAttribute : names.asAttribute;
    if (known.scope != scope_) known = {scope_, resolve(qname, false, isMath)};
    return *known.name;
}

NameTable::Entry& NameTable::entry(std::string_view qname) {
    Entry* next = last_->next;
    if (!next || !SameName(next->qname, qname)) {
        next = &find(qname);
        last_->next = next;
    }
    last_ = next;
    return *next;
}

NameTable::Entry& NameTable::find(std::string_view qname) {
    for (;;) {
        std::size_t at = hash_(qname) & (places_.size() - 1);
        for (; places_[at] != 0; at = (at + 1) & (places_.size() - 1))
            if (Entry& found = entries_[places_[at] - 1]; found.qname == qname) return found;
        if (entries_.size() * 2 < places_.size()) {
            entries_.emplace_back().qname = qname;
            places_[at] = static_cast<std::uint32_t>(entries_.size());
            return entries_.back();
        }
        std::vector<std::uint32_t> larger(places_.size() * 2);
        for (std::uint32_t index = 1; index <= entries_.size(); ++index) {
            std::size_t place = hash_(entries_[index - 1].qname) & (larger.size() - 1);
            while (larger[place] != 0)
                place = (place + 1) & (larger.size() - 1);
            larger[place] = index;
        }
        places_ = std::move(larger);
    }
}

const ResolvedName* NameTable::resolve(std::string_view qname, bool isElement, bool isMath) {
    const std::size_t colon = qname.find(':');
    const std::string_view prefix =
        colon == std::string_view::npos ? std::string_view() : qname.substr(0, colon);
    const std::string_view local = colon == std::string_view::npos ? qname : qname.substr(colon + 1);
    // MathML's own attributes stand without a prefix, and are asked for under its URI.
    if (prefix.empty() && !isElement)
        return isMath ? canonical(kMathNamespace, Namespace(kMathNamespace).uri, local, qname)
                      : canonical(kNoNamespace, {}, local, qname);
    if (const auto known = byPrefix_.find(prefix); known != byPrefix_.end() && !known->second.empty()) {
        const Binding& binding = bindings_[known->second.back()];
        return canonical(binding.nameSpace, binding.uri, local, qname);
    }
    return canonical(prefix.empty() ? kNoNamespace : kUnknownNamespace, {}, local, qname);
}

const ResolvedName* NameTable::canonical(NamespaceIndex nameSpace, std::string_view uri,
                                         std::string_view local, std::string_view qname) {
    std::string name;
    std::string key;
    if (nameSpace == kUnknownNamespace) {
        name = qname;
        key.append("{").append(uri).append("}").append(qname);
    } else {
        name = Namespace(nameSpace).prefix;
        if (!name.empty()) name += ':';
        name += local;
        key = name;
    }
    if (const auto known = resolved_.find(key); known != resolved_.end()) return &known->second;
    ResolvedName& made = resolved_[key];
    made.canonical16 = CTulStringW(std::string_view(name));
    made.uri16 = CTulStringW(uri);
    made.local16 = CTulStringW(local);
    made.canonical = std::move(name);
    made.uri = uri;
    made.local = local;
    made.nameSpace = nameSpace;
    made.id = static_cast<std::uint32_t>(resolved_.size() - 1);
    return &made;
}

} // namespace ODF::xml
