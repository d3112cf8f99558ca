// Benchmarks of the library, beside other readers of XML on the same bytes in the same run.
//
//   odfmodel_bench [--size=1.0] [--write=<folder>] [google-benchmark's own options]
//
// `--size` scales the generated documents, `--write` writes their XML into a folder and ends. By default each
// benchmark is repeated five times, in random order with the others; a table of medians and ratios follows.
#include "benchmarks.h"
#include "summary.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace {

/// Takes the argument "`name`=value" out of the list.
std::optional<std::string> Take(std::vector<std::string>& arguments, const std::string& name) {
    for (auto at = arguments.begin(); at != arguments.end(); ++at) {
        if (!at->starts_with(name + "=")) continue;
        const std::string value = at->substr(name.size() + 1);
        arguments.erase(at);
        return value;
    }
    return std::nullopt;
}

bool Contains(const std::vector<std::string>& arguments, std::string_view text) {
    for (const std::string& argument : arguments)
        if (argument.find(text) != std::string::npos) return true;
    return false;
}

int Run(std::vector<std::string> arguments) {
    const double size = std::strtod(Take(arguments, "--size").value_or("1").c_str(), nullptr);
    if (!(size > 0)) {
        std::cerr << "--size wants a number above 0\n";
        return 2;
    }
    bench::Samples samples(size);
    if (const auto folder = Take(arguments, "--write")) {
        for (const std::string_view name : bench::Samples::kNames) {
            const bench::Sample& sample = samples.get(std::string(name));
            std::ofstream(*folder + "/" + sample.name + ".xml", std::ios::binary) << sample.xml;
        }
        return 0;
    }
    // Before the caller's own options, which win.
    arguments.insert(arguments.begin() + 1,
                     {"--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true"});
    const bool isJson = Contains(arguments, "--benchmark_format=json");
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 2;

    bench::RegisterTrees(samples);
    bench::RegisterFiles(samples);
    bench::RegisterPackages(samples);
    bench::RegisterStorage(samples);
    bench::Results results;
    if (isJson) {
        bench::KeepingReporter<benchmark::JSONReporter> reporter(results);
        benchmark::RunSpecifiedBenchmarks(&reporter);
    } else {
        bench::KeepingReporter<benchmark::ConsoleReporter> reporter(results,
                                                                    benchmark::ConsoleReporter::OO_Tabular);
        benchmark::RunSpecifiedBenchmarks(&reporter);
    }
    bench::PrintSummary(isJson ? std::cerr : std::cout, results, samples);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run({argv, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "odfmodel_bench: " << error.what() << '\n';
        return 1;
    }
}
