#pragma once

#include "samples.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <iosfwd>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace bench {

/// The times and counters of a run, by the name of the benchmark.
class Results {
public:
    void add(const std::vector<benchmark::BenchmarkReporter::Run>& runs);

    bool has(const std::string& name) const { return runs_.count(name) > 0; }
    /// Median of the CPU time of one iteration in seconds.
    double seconds(const std::string& name) const;
    /// How far the slowest repetition is above the quickest, as a part of the median.
    double spread(const std::string& name) const;
    double counter(const std::string& name, const std::string& counter) const;

private:
    struct Entry {
        std::vector<double> seconds;
        std::map<std::string, double> counters;
    };
    std::map<std::string, Entry> runs_;
};

/// Any of the library's reporters, which also keeps what it reports. On the console only the medians are
/// shown.
template<typename Reporter>
class KeepingReporter final : public Reporter {
public:
    using Runs = std::vector<benchmark::BenchmarkReporter::Run>;

    template<typename... Arguments>
    explicit KeepingReporter(Results& results, Arguments... arguments)
        : Reporter(arguments...), results_(results) {}
    void ReportRuns(const Runs& runs) override {
        results_.add(runs);
        if constexpr (std::is_same_v<Reporter, benchmark::ConsoleReporter>) {
            Runs medians;
            std::copy_if(runs.begin(), runs.end(), std::back_inserter(medians), [](const auto& run) {
                return run.aggregate_name == "median" || run.error_occurred;
            });
            if (!medians.empty()) Reporter::ReportRuns(medians);
        } else {
            Reporter::ReportRuns(runs);
        }
    }

private:
    Results& results_;
};

/// Speeds, memory and ratios of one run as a table.
void PrintSummary(std::ostream& out, const Results& results, Samples& samples);

} // namespace bench
