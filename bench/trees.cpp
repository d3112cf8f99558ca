// Trees in memory: build, destroy and write, by each model.
#include "benchmarks.h"
#include "models.h"

#include <benchmark/benchmark.h>

namespace bench {
namespace {

void CountBytes(benchmark::State& state, const Sample& sample) {
    state.SetBytesProcessed(static_cast<std::int64_t>(sample.xml.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

template<typename Model>
void Build(benchmark::State& state, const Sample& sample) {
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto unused : state) {
        state.PauseTiming();
        ReturnFreeMemory();
        const std::size_t before = ResidentBytes();
        Model model;
        model.prepare(sample.xml);
        state.ResumeTiming();
        if (!model.build(sample.xml)) state.SkipWithError("not parsed");
        state.PauseTiming();
        bytes = ResidentBytes() - before;
        model.clear();
        state.ResumeTiming();
    }
    CountBytes(state, sample);
    state.counters[kBytesPerElement] = static_cast<double>(bytes) / static_cast<double>(sample.elements);
}

template<typename Model>
void Destroy(benchmark::State& state, const Sample& sample) {
    for ([[maybe_unused]] auto unused : state) {
        state.PauseTiming();
        Model model;
        model.prepare(sample.xml);
        if (!model.build(sample.xml)) state.SkipWithError("not parsed");
        state.ResumeTiming();
        model.clear();
    }
    CountBytes(state, sample);
}

template<typename Model>
void Write(benchmark::State& state, const Sample& sample, const std::string& path) {
    Model model;
    model.prepare(sample.xml);
    if (!model.build(sample.xml)) state.SkipWithError("not parsed");
    for ([[maybe_unused]] auto unused : state)
        if (!model.write(path)) state.SkipWithError("not written");
    CountBytes(state, sample);
}

template<typename Call>
void Register(std::string_view phase, std::string_view model, const std::string& sample, Call call) {
    benchmark::RegisterBenchmark(BenchmarkName(phase, model, sample).c_str(), call)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

template<typename Model>
void RegisterModel(Samples& samples, const std::string& name) {
    Register("build", Model::kName, name,
             [&samples, name](benchmark::State& state) { Build<Model>(state, samples.get(name)); });
    if constexpr (requires(Model model) { model.write(""); }) {
        Register("destroy", Model::kName, name,
                 [&samples, name](benchmark::State& state) { Destroy<Model>(state, samples.get(name)); });
        Register("write", Model::kName, name, [&samples, name](benchmark::State& state) {
            Write<Model>(state, samples.get(name), samples.folder() / "written.xml");
        });
    }
}

} // namespace

void RegisterTrees(Samples& samples) {
    for (const std::string_view view : Samples::kNames) {
        const std::string name(view);
        RegisterModel<OdfModel>(samples, name);
        RegisterModel<WholeOdfModel>(samples, name);
        RegisterModel<Libxml2Model>(samples, name);
        RegisterModel<PugiModel>(samples, name);
        RegisterModel<PugiInPlaceModel>(samples, name);
        RegisterModel<ExpatModel>(samples, name);
    }
}

} // namespace bench
