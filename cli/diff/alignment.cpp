#include "diff/alignment.h"

#include <algorithm>
#include <limits>
#include <map>
#include <unordered_map>

namespace command {
namespace {

struct Child {
    const CSDObject* object;
    TreeHash hash;
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

using Places = std::vector<std::pair<std::size_t, std::size_t>>;

/// Places of children that are there once in both stretches and have the same number, other than 0.
Places Unique(const Children& before, const Children& after, const Gap& gap,
              std::uint64_t TreeHash::*number) {
    struct Found {
        std::size_t after = 0;
        unsigned countBefore = 0, countAfter = 0;
    };
    std::unordered_map<std::uint64_t, Found> found;
    for (std::size_t i = gap.firstBefore; i < gap.endBefore; ++i)
        ++found[before[i].hash.*number].countBefore;
    for (std::size_t i = gap.firstAfter; i < gap.endAfter; ++i) {
        Found& at = found[after[i].hash.*number];
        at.after = i;
        ++at.countAfter;
    }
    Places unique;
    for (std::size_t i = gap.firstBefore; i < gap.endBefore; ++i) {
        const std::uint64_t own = before[i].hash.*number;
        if (const Found& at = found[own]; own != 0 && at.countBefore == 1 && at.countAfter == 1)
            unique.emplace_back(i, at.after);
    }
    return unique;
}

/// The longest part of the pairs that goes up on both sides.
Places Rising(const Places& pairs) {
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
    Places rising;
    for (std::size_t i = ends.empty() ? pairs.size() : ends.back(); i < pairs.size(); i = previous[i])
        rising.push_back(pairs[i]);
    std::reverse(rising.begin(), rising.end());
    return rising;
}

void Trim(const Children& before, const Children& after, Gap& gap) {
    while (gap.firstBefore < gap.endBefore && gap.firstAfter < gap.endAfter &&
           before[gap.firstBefore].hash.all == after[gap.firstAfter].hash.all) {
        ++gap.firstBefore;
        ++gap.firstAfter;
    }
    while (gap.firstBefore < gap.endBefore && gap.firstAfter < gap.endAfter &&
           before[gap.endBefore - 1].hash.all == after[gap.endAfter - 1].hash.all) {
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
        if (before[i].hash.all != after[next].hash.all)
            pairs.emplace_back(before[i].object, after[next].object);
        ++next;
    }
    for (; next < gap.endAfter; ++next)
        pairs.emplace_back(nullptr, after[next].object);
}

/// Divides a stretch where children have the same number, and pairs what is between them by `pairGap`. Those
/// of the same number are pairs too, unless they are alike.
template<typename PairGap>
void PairAround(const Children& before, const Children& after, const Gap& all,
                std::uint64_t TreeHash::*number, Pairs& pairs, PairGap pairGap) {
    Gap gap = all;
    for (const auto& [placeBefore, placeAfter] : Rising(Unique(before, after, all, number))) {
        gap.endBefore = placeBefore;
        gap.endAfter = placeAfter;
        pairGap(gap);
        if (before[placeBefore].hash.all != after[placeAfter].hash.all)
            pairs.emplace_back(before[placeBefore].object, after[placeAfter].object);
        gap.firstBefore = placeBefore + 1;
        gap.firstAfter = placeAfter + 1;
    }
    gap.endBefore = all.endBefore;
    gap.endAfter = all.endAfter;
    pairGap(gap);
}

} // namespace

Pairs Align(const CSDObject& parentBefore, const TreeHashes& hashesBefore, const CSDObject& parentAfter,
            const TreeHashes& hashesAfter) {
    const Children before = ChildrenOf(parentBefore, hashesBefore);
    const Children after = ChildrenOf(parentAfter, hashesAfter);
    Pairs pairs;
    Gap all{0, before.size(), 0, after.size()};
    Trim(before, after, all);
    PairAround(before, after, all, &TreeHash::all, pairs, [&](Gap gap) {
        Trim(before, after, gap);
        PairAround(before, after, gap, &TreeHash::text, pairs,
                   [&](const Gap& inner) { PairByClass(before, after, inner, pairs); });
    });
    return pairs;
}

} // namespace command
