#include <odfmodel/package/relationship.h>

#include "package/paths.h"
#include "package/xml_text.h"

#include <utility>
#include <vector>

namespace SDPackage {

namespace {

constexpr bool IsHexDigit(char16_t unit) noexcept {
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') || (unit >= u'A' && unit <= u'F');
}

/// Escapes in targets. The line feed's is what readers of these files expect, not its number in ASCII.
constexpr std::pair<char16_t, Units> kTargetEscapes[] = {{u'&', u"&amp;"}, {u' ', u"%20"}, {u'\n', u"%10"},
                                                         {u'"', u"%22"},   {u'[', u"%5b"}, {u']', u"%5d"}};

Units EscapeOf(char16_t unit) noexcept {
    for (const auto& [plain, escaped] : kTargetEscapes)
        if (plain == unit) return escaped;
    return {};
}

std::vector<Units> StepsOf(Units path) {
    std::vector<Units> steps;
    ForEachStep(path, [&](Units step) { steps.push_back(step); });
    return steps;
}

} // namespace

CTulStringW EscapeTarget(const CTulStringW& target) {
    const std::u16string text = WithoutForbidden(target.view());
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const Units escaped = EscapeOf(text[i]);
        if (!escaped.empty()) {
            result += escaped;
        } else if (text[i] == u'%') {
            const bool isEscape = i + 2 < text.size() && IsHexDigit(text[i + 1]) && IsHexDigit(text[i + 2]);
            result += isEscape ? u"%" : u"%25";
        } else {
            AppendEscaped(result, text[i]);
        }
    }
    return result;
}

CTulStringW UnescapeTarget(const CTulStringW& target) {
    CTulStringW result = target;
    for (const auto& [plain, escaped] : kTargetEscapes)
        result.Replace(CTulStringW(escaped), CTulStringW(Units(&plain, 1)));
    return result;
}

void MakeRelativeTarget(const CTulStringW& from, const CTulStringW& to, CTulStringW& out) {
    const std::vector<Units> source = StepsOf(from.view());
    const std::vector<Units> target = StepsOf(to.view());
    std::size_t common = 0;
    while (common + 1 < source.size() && common + 1 < target.size() && source[common] == target[common])
        ++common;
    std::u16string result;
    for (std::size_t left = common; left + 1 < source.size(); ++left)
        result += u"../";
    for (std::size_t i = common; i < target.size(); ++i) {
        if (i > common) result += u'/';
        result += target[i];
    }
    out = CTulStringW(result);
}

IRelationship::~IRelationship() = default;

const unsigned short* IRelationship::GetId() const {
    return id_;
}

const unsigned short* IRelationship::GetType() const {
    return type_;
}

const unsigned short* IRelationship::GetTarget() const {
    return target_;
}

TargetMode IRelationship::GetTargetMode() const {
    return targetMode_;
}

void IRelationship::SetId(const unsigned short* id) {
    id_ = id;
}

void IRelationship::SetType(const unsigned short* type) {
    type_ = type;
}

void IRelationship::SetTargetMode(TargetMode mode) {
    targetMode_ = mode;
}

void IRelationship::SetTarget(const unsigned short* target) {
    target_ = target;
}

CTulStringW IRelationship::ToXml() const {
    CTulStringW text;
    text.Format(u"%s%s %s=\"%s\" %s=\"%s\" %s=\"%s\" %s %s", u"<", u"Relationship", u"Id",
                EscapeAttribute(id_.view()), u"Type", EscapeAttribute(type_.view()), u"Target",
                EscapeTarget(target_), targetMode_ == TargetModeExternal ? u"TargetMode=\"External\"" : u"",
                u"/>");
    return text;
}

} // namespace SDPackage
