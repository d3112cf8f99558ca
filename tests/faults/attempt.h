#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

namespace test {

/// How attempts ended, by a word for each way, and how often.
using Endings = std::map<std::string, std::size_t>;

/// Runs `attempt` in a process of its own and returns its word; "ended by signal ..." for one that crashed
/// and "took too long" for one that had to be stopped.
std::string Attempt(const std::function<std::string()>& attempt, unsigned seconds = 60);

/// Whether the long form of the suites is asked for.
inline bool IsLongRun() {
    return std::getenv("ODFMODEL_LONG_TESTS") != nullptr;
}

/// Runs `attempt` with 1, 2 ... until it returns an empty string, which says that there is no such fault any
/// more. A short run tries the first `most` and then a growing step; under the address sanitizer, where a
/// process costs ten times as much, a quarter of `most`.
Endings ForEachFault(std::size_t most, const std::function<std::string(std::size_t)>& attempt);

} // namespace test
