#include "diff/alignment.h"

#include <algorithm>
#include <limits>
#include <map>
#include <unordered_map>

namespace command {
namespace {

struct Child {
    const CSDObject* object;
    std::uint64_t hash;
};
using Children = std::vector<Child>;
/// A stretch of both lists.
struct Gap {
    std::size_t firstBefore, endBefore, firstAfter, endAfter;
};

Children ChildrenOf(const CSDObject& parent, const TreeHashes& hashes) {
    Children children;
    for (const CSDObject& child : parent.Children())
        children.push_back({&child, hashes.of(child)});
    return children;
}

/// Places of children that are there once in both stretches and alike.
std::vector<std::pair<std::size_t, std::size_t>> Unique(const Children& before, const Children& after,
                                                        const Gap& gap) {
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    struct Places {
        std::size_t before = kNone, after = kNone;
        unsigned countBefore = 0, countAfter = 0;
    };
    std::unordered_map<std::uint64_t, Places> places;
    for (std::size_t i = gap.firstBefore; i < gap.endBefore; ++i) {
        Places& at = places[before[i].hash];
        at.before = i;
        ++at.countBefore;
    }
    for (std::size_t i = gap.firstAfter; i < gap.endAfter; ++i) {
        Places& at = places[after[i].hash];
        at.after = i;
        ++at.countAfter;
    }
    std::vector<std::pair<std::size_t, std::size_t>> unique;
    for (std::size_t i = gap.firstBefore; i < gap.endBefore; ++i)
        if (const Places& at = places[before[i].hash]; at.countBefore == 1 && at.countAfter == 1)
            unique.emplace_back(i, at.after);
    return unique;
}

/// The longest part of the pairs that goes up on both sides.
std::vector<std::pair<std::size_t, std::size_t>>
Rising(const std::vector<std::pair<std::size_t, std::size_t>>& pairs) {
    std::vector<std::size_t> ends; // by length, the pair that ends the run with the lowest place
    std::vector<std::size_t> previous(pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto at =
            std::lower_bound(ends.begin(), ends.end(), pairs[i].second,
                             [&](std::size_t end, std::size_t place) { return pairs[end].second < place; });
        previous[i] = at == ends.begin() ? pairs.size() : *(at - 1);
        if (at == ends.end())
            ends.push_back(i);
        else
            *at = i;
    }
    std::vector<std::pair<std::size_t, std::size_t>> rising;
    for (std::size_t i = ends.empty() ? pairs.size() : ends.back(); i < pairs.size(); i = previous[i])
        rising.push_back(pairs[i]);
    std::reverse(rising.begin(), rising.end());
    return rising;
}

void Trim(const Children& before, const Children& after, Gap& gap) {
    while (gap.firstBefore < gap.endBefore && gap.firstAfter < gap.endAfter &&
           before[gap.firstBefore].hash == after[gap.firstAfter].hash) {
        ++gap.firstBefore;
        ++gap.firstAfter;
    }
    while (gap.firstBefore < gap.endBefore && gap.firstAfter < gap.endAfter &&
           before[gap.endBefore - 1].hash == after[gap.endAfter - 1].hash) {
        --gap.endBefore;
        --gap.endAfter;
    }
}

/// Takes children of one class for each other, in order; the rest has come or gone.
void PairByClass(const Children& before, const Children& after, const Gap& gap, Pairs& pairs) {
    std::map<std::string, std::vector<std::size_t>> places; // in the second list
    for (std::size_t i = gap.firstAfter; i < gap.endAfter; ++i)
        places[StepName(*after[i].object)].push_back(i);
    std::size_t next = gap.firstAfter;
    for (std::size_t i = gap.firstBefore; i < gap.endBefore; ++i) {
        const std::vector<std::size_t>& same = places[StepName(*before[i].object)];
        const auto at = std::lower_bound(same.begin(), same.end(), next);
        if (at == same.end()) {
            pairs.emplace_back(before[i].object, nullptr);
            continue;
        }
        for (; next < *at; ++next)
            pairs.emplace_back(nullptr, after[next].object);
        if (before[i].hash != after[next].hash) pairs.emplace_back(before[i].object, after[next].object);
        ++next;
    }
    for (; next < gap.endAfter; ++next)
        pairs.emplace_back(nullptr, after[next].object);
}

} // namespace

Pairs Align(const CSDObject& parentBefore, const TreeHashes& hashesBefore, const CSDObject& parentAfter,
            const TreeHashes& hashesAfter) {
    const Children before = ChildrenOf(parentBefore, hashesBefore);
    const Children after = ChildrenOf(parentAfter, hashesAfter);
    Pairs pairs;
    Gap all{0, before.size(), 0, after.size()};
    Trim(before, after, all);
    Gap gap = all;
    auto anchors = Rising(Unique(before, after, all));
    anchors.emplace_back(all.endBefore, all.endAfter);
    for (const auto& [placeBefore, placeAfter] : anchors) {
        gap.endBefore = placeBefore;
        gap.endAfter = placeAfter;
        Trim(before, after, gap);
        PairByClass(before, after, gap, pairs);
        gap.firstBefore = placeBefore + 1;
        gap.firstAfter = placeAfter + 1;
    }
    return pairs;
}

} // namespace command
