#include "usage/suggestion.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <numeric>

namespace command {
namespace {

/// Letters to change, add, take away or swap until one word is the other.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> older(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> now(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        now[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t same = a[i - 1] == b[j - 1] ? 0 : 1;
            now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + same});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                now[j] = std::min(now[j], older[j - 2] + 1);
        }
        older.swap(last);
        last.swap(now);
    }
    return last.back();
}

std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::string WithSuggestion(const std::string& fault, std::string_view typed,
                           const std::vector<std::string>& words) {
    const std::string nearest = Nearest(typed, words);
    return nearest.empty() ? fault : fault + "; did you mean " + nearest + "?";
}

} // namespace

std::string Nearest(std::string_view typed, const std::vector<std::string>& words) {
    constexpr std::size_t kMaxTyped = 64; // longer than any word
    if (typed.empty() || typed.size() > kMaxTyped) return {};
    std::string nearest;
    std::size_t least = std::max<std::size_t>(typed.size() / 3, 1) + 1;
    for (const std::string& word : words) {
        const bool isHead = typed.size() >= 3 && word.starts_with(typed);
        const std::size_t distance = isHead ? 0 : Distance(typed, word);
        if (distance >= least) continue;
        least = distance;
        nearest = word;
    }
    return nearest;
}

std::vector<std::string> VerbNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const verb : app.get_subcommands({}))
        if (!verb->get_group().empty()) names.push_back(verb->get_name());
    return names;
}

std::string UnknownVerb(const CLI::App& app, const std::string& typed) {
    return WithSuggestion("there is no command " + typed, typed, VerbNames(app));
}

std::string UsageFault(const CLI::App& app, const std::string& reason) {
    const std::vector<CLI::App*> verbs = app.get_subcommands();
    const CLI::App& verb = verbs.empty() ? app : *verbs.front();
    std::vector<std::string> rest = verb.remaining();
    const auto option = std::find_if(rest.begin(), rest.end(), [](const std::string& word) {
        return word.size() > 1 && word.front() == '-';
    });
    if (option != rest.end())
        return WithSuggestion("there is no option " + *option, option->substr(0, option->find('=')),
                              OptionNames(verb));
    if (verbs.empty() && !rest.empty()) return UnknownVerb(app, rest.front());
    return reason;
}

} // namespace command
