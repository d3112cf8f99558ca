#include "diff/tree_hashes.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

#include <functional>
#include <vector>

namespace command {
namespace {

std::uint64_t Mixed(std::uint64_t hash, std::uint64_t more) {
    hash ^= more + 0x9E3779B97F4A7C15U + (hash << 6U) + (hash >> 2U);
    hash *= 0xBF58476D1CE4E5B9U;
    return hash ^ (hash >> 31U);
}

std::uint64_t Mixed(std::uint64_t hash, const std::string& text) {
    return Mixed(hash, std::hash<std::string>()(text));
}

} // namespace

std::string StepName(const CSDObject& object) {
    if (ODF::IsTextRun(object)) return "text()";
    if (object.GetID() == ODF::kCommentId) return "comment()";
    if (object.GetID() == ODF::kProcessingInstructionId) return "processing-instruction()";
    if (object.GetID() == ODF::kForeignElementId) {
        const auto& foreign = static_cast<const ODF::CForeignElement&>(object);
        return CustomaryName(foreign.GetNamespace(), foreign.GetLocalName());
    }
    const auto info = ODF::ClassOf(object);
    return info ? std::string(info->elementName()) : "?";
}

std::string OwnText(const CSDObject& object) {
    if (object.GetID() == ODF::kCommentId || object.GetID() == ODF::kProcessingInstructionId)
        return static_cast<const CSDStringValueObject&>(object).Getval().utf8();
    return ODF::TextOf(object);
}

TreeHashes::TreeHashes(const CSDObject& root) {
    struct Level {
        const CSDObject* object;
        std::size_t next;
        std::uint64_t hash;
    };
    AttributeReader attributes;
    std::vector<Level> open;
    const auto enter = [&](const CSDObject& object) {
        std::uint64_t hash = Mixed(object.GetID(), OwnText(object));
        if (object.GetID() == ODF::kForeignElementId) hash = Mixed(hash, StepName(object));
        // The order of attributes means nothing.
        std::uint64_t all = 0;
        for (const AttributeWords& attribute : attributes.attributesOf(object))
            all += Mixed(Mixed(1, attribute.name), attribute.value);
        open.push_back({&object, 0, Mixed(hash, all)});
    };
    enter(root);
    while (!open.empty()) {
        Level& level = open.back();
        const std::vector<CSDObject*>* const children = level.object->GetObjectList();
        if (children && level.next < children->size()) {
            if (const CSDObject* const child = (*children)[level.next++]) enter(*child);
            continue;
        }
        const std::uint64_t hash = level.hash;
        hashes_.emplace(level.object, hash);
        open.pop_back();
        if (!open.empty()) open.back().hash = Mixed(open.back().hash, hash);
    }
}

} // namespace command
