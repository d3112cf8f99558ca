#include "summary.h"

#include "benchmarks.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace bench {
namespace {

std::string Fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

void Row(std::ostream& out, const std::string& label, const std::vector<std::string>& cells) {
    out << std::left << std::setw(14) << label << std::right;
    for (const std::string& cell : cells)
        out << std::setw(16) << cell;
    out << '\n';
}

} // namespace

void Results::add(const std::vector<benchmark::BenchmarkReporter::Run>& runs) {
    for (const auto& run : runs) {
        if (run.run_type != benchmark::BenchmarkReporter::Run::RT_Iteration || run.error_occurred) continue;
        Entry& entry = runs_[run.run_name.function_name];
        entry.seconds.push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
        for (const auto& [name, value] : run.counters)
            entry.counters[name] = value;
    }
}

double Results::seconds(const std::string& name) const {
    std::vector<double> sorted = runs_.at(name).seconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
}

double Results::spread(const std::string& name) const {
    const auto [low, high] =
        std::minmax_element(runs_.at(name).seconds.begin(), runs_.at(name).seconds.end());
    return (*high - *low) / seconds(name);
}

double Results::counter(const std::string& name, const std::string& counter) const {
    const auto& counters = runs_.at(name).counters;
    const auto at = counters.find(counter);
    return at == counters.end() ? 0 : at->second;
}

void PrintSummary(std::ostream& out, const Results& results, Samples& samples) {
    constexpr std::array<std::string_view, 6> kModels{"odfmodel", "odfmodel_everything", "libxml2",
                                                      "pugixml",  "pugixml_inplace",     "expat"};
    constexpr std::array<std::string_view, 3> kTreePhases{"build", "destroy", "write"};
    constexpr std::array<std::string_view, 4> kFilePhases{"unzip", "zip", "open", "save"};
    for (const std::string_view sampleName : Samples::kNames) {
        const std::string name(sampleName);
        if (!results.has(BenchmarkName("build", "odfmodel", name))) continue;
        const Sample& sample = samples.get(name);
        const double megabytes = static_cast<double>(sample.xml.size()) / 1e6;
        out << '\n'
            << name << ": " << Fixed(megabytes, 1) << " MB of XML, " << sample.elements << " elements, "
            << sample.attributes
            << " attributes; MB/s by the median of CPU time (spread of the repetitions)\n";
        std::vector<std::string> header(kModels.begin(), kModels.end());
        header.emplace_back("time : libxml2");
        Row(out, "", header);
        const auto cell = [&](const std::string& run) {
            return results.has(run) ? Fixed(megabytes / results.seconds(run), 1) + " (" +
                                          Fixed(results.spread(run) * 100, 0) + "%)"
                                    : std::string("-");
        };
        for (const std::string_view phase : kTreePhases) {
            std::vector<std::string> cells;
            for (const std::string_view model : kModels)
                cells.push_back(cell(BenchmarkName(phase, model, name)));
            const std::string own = BenchmarkName(phase, "odfmodel", name);
            const std::string peer = BenchmarkName(phase, "libxml2", name);
            cells.push_back(results.has(own) && results.has(peer)
                                ? Fixed(results.seconds(own) / results.seconds(peer), 2)
                                : "-");
            Row(out, std::string(phase), cells);
        }
        std::vector<std::string> cells;
        for (const std::string_view model : kModels) {
            const std::string run = BenchmarkName("build", model, name);
            cells.push_back(results.has(run) && model != "expat"
                                ? Fixed(results.counter(run, kBytesPerElement), 1)
                                : "-");
        }
        const std::string peer = BenchmarkName("build", "libxml2", name);
        cells.push_back(results.has(peer) ? Fixed(results.counter(BenchmarkName("build", "odfmodel", name),
                                                                  kBytesPerElement) /
                                                      results.counter(peer, kBytesPerElement),
                                                  2)
                                          : "-");
        Row(out, "bytes/element", cells);
        for (const std::string_view phase : kFilePhases)
            Row(out, std::string(phase), {cell(BenchmarkName(phase, "odfmodel", name))});
    }
    out << "\nOpen Packaging archives: microseconds a part, by the median of CPU time\n";
    std::vector<std::string> header;
    for (const unsigned parts : kPackageSizes)
        header.push_back(std::to_string(parts) + " parts");
    Row(out, "", header);
    for (const std::string_view phase : {"package_open", "package_save"}) {
        std::vector<std::string> cells;
        for (const unsigned parts : kPackageSizes) {
            const std::string run = BenchmarkName(phase, "odfmodel", std::to_string(parts));
            cells.push_back(
                results.has(run) ? Fixed(results.seconds(run) * 1e6 / results.counter(run, kParts), 2) : "-");
        }
        Row(out, std::string(phase), cells);
    }
}

} // namespace bench
