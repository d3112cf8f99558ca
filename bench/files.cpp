// Documents and packages as files: the archive alone, and the whole of opening and saving.
#include "benchmarks.h"

#include <odfmodel/odfmodel.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>

namespace bench {
namespace {

void Unzip(benchmark::State& state, const Sample& sample, const std::string& folder) {
    for ([[maybe_unused]] auto unused : state) {
        {
            CSDUnZip unzip;
            if (unzip.OpenAndExtract(CTulStringW(sample.packagePath), CTulStringW(folder)) == 0)
                state.SkipWithError("not extracted");
        }
        state.PauseTiming();
        std::filesystem::remove_all(folder);
        state.ResumeTiming();
    }
}

void Zip(benchmark::State& state, const Sample& sample, const std::string& path) {
    for ([[maybe_unused]] auto unused : state) {
        CSDZip zip;
        if (zip.CreareZipFile(path) == 0 ||
            zip.Compress("content.xml", const_cast<char*>(sample.xml.data()),
                         static_cast<int>(sample.xml.size())) == 0 ||
            zip.CloseFile() == 0)
            state.SkipWithError("not packed");
    }
}

void Open(benchmark::State& state, const Sample& sample) {
    for ([[maybe_unused]] auto unused : state) {
        auto document = std::make_unique<ODF::CODFDoc>();
        if (document->Open(sample.packagePath) == 0) state.SkipWithError("not opened");
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
}

void Save(benchmark::State& state, const Sample& sample, const std::string& path) {
    for ([[maybe_unused]] auto unused : state) {
        state.PauseTiming();
        auto document = std::make_unique<ODF::CODFDoc>();
        if (document->Open(sample.packagePath) == 0) state.SkipWithError("not opened");
        state.ResumeTiming();
        document->Save(path);
        state.PauseTiming();
        if (document->GetDiagnostics().status() != ODF::Status::Ok) state.SkipWithError("not saved");
        document.reset();
        state.ResumeTiming();
    }
}

void PackageOpen(benchmark::State& state, const std::string& path) {
    std::size_t parts = 0;
    for ([[maybe_unused]] auto unused : state) {
        auto package = std::make_unique<SDPackage::IPackage>();
        if (package->Open(path) == 0) state.SkipWithError("not opened");
        state.PauseTiming();
        parts = package->GetParts()->size();
        package.reset();
        state.ResumeTiming();
    }
    state.counters[kParts] = static_cast<double>(parts);
}

void PackageSave(benchmark::State& state, const std::string& path, const std::string& target) {
    std::size_t parts = 0;
    for ([[maybe_unused]] auto unused : state) {
        state.PauseTiming();
        auto package = std::make_unique<SDPackage::IPackage>();
        if (package->Open(path) == 0) state.SkipWithError("not opened");
        parts = package->GetParts()->size();
        state.ResumeTiming();
        if (package->Save(target) == 0) state.SkipWithError("not saved");
        state.PauseTiming();
        package.reset();
        state.ResumeTiming();
    }
    state.counters[kParts] = static_cast<double>(parts);
}

template<typename Call>
void Register(std::string_view phase, const std::string& sample, Call call) {
    benchmark::RegisterBenchmark(BenchmarkName(phase, "odfmodel", sample).c_str(), call)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void RegisterFiles(Samples& samples) {
    for (const std::string_view view : Samples::kNames) {
        const std::string name(view);
        const auto onSample = [&](std::string_view phase, auto call) {
            Register(phase, name, [&samples, name, call](benchmark::State& state) {
                const Sample& sample = samples.get(name);
                call(state, sample);
                state.SetBytesProcessed(static_cast<std::int64_t>(sample.xml.size()) *
                                        static_cast<std::int64_t>(state.iterations()));
            });
        };
        onSample("unzip", [&samples](auto& state, const Sample& sample) {
            Unzip(state, sample, samples.folder() / "extracted");
        });
        onSample("zip", [&samples](auto& state, const Sample& sample) {
            Zip(state, sample, samples.folder() / "packed.zip");
        });
        onSample("open", [](auto& state, const Sample& sample) { Open(state, sample); });
        onSample("save", [&samples](auto& state, const Sample& sample) {
            Save(state, sample, samples.folder() / "saved.odt");
        });
    }
}

void RegisterPackages(Samples& samples) {
    for (const unsigned parts : kPackageSizes) {
        Register("package_open", std::to_string(parts),
                 [&samples, parts](benchmark::State& state) { PackageOpen(state, samples.package(parts)); });
        Register("package_save", std::to_string(parts), [&samples, parts](benchmark::State& state) {
            PackageSave(state, samples.package(parts), samples.folder() / "saved.pptx");
        });
    }
}

} // namespace bench
