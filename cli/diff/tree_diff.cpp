#include "diff/tree_diff.h"

#include "diff/alignment.h"

#include <odfmodel/document/text.h>

#include <algorithm>
#include <map>
#include <unordered_map>

namespace command {
namespace {

class TreeDiff {
public:
    TreeDiff(const CSDObject& before, const CSDObject& after)
        : hashesBefore_(before), hashesAfter_(after), before_(before), after_(after) {}

    std::vector<Difference> run() {
        if (hashesBefore_.of(before_) == hashesAfter_.of(after_)) return {};
        if (StepName(before_) != StepName(after_)) {
            add(Difference::Kind::Removed, "/" + StepName(before_), ODF::Text(before_), {});
            add(Difference::Kind::Added, "/" + StepName(after_), {}, ODF::Text(after_));
            return std::move(found_);
        }
        open_.push_back({&before_, &after_, "/" + StepName(before_)});
        while (!open_.empty()) {
            const Item item = std::move(open_.back());
            open_.pop_back();
            if (!item.before)
                add(Difference::Kind::Added, item.path, {}, TextOf(*item.after));
            else if (!item.after)
                add(Difference::Kind::Removed, item.path, TextOf(*item.before), {});
            else
                compare(item);
        }
        return std::move(found_);
    }

private:
    struct Item {
        const CSDObject* before;
        const CSDObject* after;
        std::string path;
    };

    static std::string TextOf(const CSDObject& object) {
        const std::string own = OwnText(object);
        return own.empty() ? ODF::Text(object) : own;
    }

    void add(Difference::Kind kind, std::string path, std::string before, std::string after) {
        found_.push_back({kind, std::move(path), std::move(before), std::move(after)});
    }

    void compare(const Item& item) {
        compareAttributes(item);
        std::string before = OwnText(*item.before);
        std::string after = OwnText(*item.after);
        if (before != after) add(Difference::Kind::Text, item.path, std::move(before), std::move(after));
        const Pairs pairs = Align(*item.before, hashesBefore_, *item.after, hashesAfter_);
        if (pairs.empty()) return;
        const Steps stepsBefore = stepsOf(*item.before);
        const Steps stepsAfter = stepsOf(*item.after);
        for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) // the first is taken first
            open_.push_back({pair->first, pair->second,
                             item.path + "/" +
                                 (pair->first ? stepsBefore.at(pair->first) : stepsAfter.at(pair->second))});
    }

    void compareAttributes(const Item& item) {
        std::map<std::string, std::pair<std::string, std::string>> values;
        std::map<std::string, std::pair<bool, bool>> isThere;
        for (AttributeWords& attribute : attributes_.attributesOf(*item.before)) {
            isThere[attribute.name].first = true;
            values[attribute.name].first = std::move(attribute.value);
        }
        for (AttributeWords& attribute : attributes_.attributesOf(*item.after)) {
            isThere[attribute.name].second = true;
            values[attribute.name].second = std::move(attribute.value);
        }
        for (auto& [name, both] : values) {
            const auto [wasThere, isNow] = isThere[name];
            if (wasThere == isNow && both.first == both.second) continue;
            const Difference::Kind kind = !wasThere ? Difference::Kind::Added
                                          : isNow   ? Difference::Kind::Attribute
                                                    : Difference::Kind::Removed;
            add(kind, item.path + "@" + name, std::move(both.first), std::move(both.second));
        }
    }

    /// The steps of a path to each child: a name, with the place among those of that name where there are
    /// more than one.
    using Steps = std::unordered_map<const CSDObject*, std::string>;
    static Steps stepsOf(const CSDObject& parent) {
        std::map<std::string, std::size_t> counts;
        for (const CSDObject& child : parent.Children())
            ++counts[StepName(child)];
        std::map<std::string, std::size_t> places;
        Steps steps;
        for (const CSDObject& child : parent.Children()) {
            std::string name = StepName(child);
            const std::size_t place = ++places[name];
            if (counts[name] > 1) name += "[" + std::to_string(place) + "]";
            steps.emplace(&child, std::move(name));
        }
        return steps;
    }

    TreeHashes hashesBefore_;
    TreeHashes hashesAfter_;
    const CSDObject& before_;
    const CSDObject& after_;
    AttributeReader attributes_;
    std::vector<Item> open_;
    std::vector<Difference> found_;
};

} // namespace

std::vector<Difference> CompareTrees(const CSDObject& before, const CSDObject& after) {
    return TreeDiff(before, after).run();
}

} // namespace command
