#pragma once

#include "samples.h"

#include <string>
#include <string_view>

namespace bench {

inline constexpr char kBytesPerElement[] = "bytes/element";
inline constexpr char kParts[] = "parts";
inline constexpr unsigned kPackageSizes[] = {5'000, 10'000, 20'000};

/// Name of a benchmark: phase, model, what it works on.
inline std::string BenchmarkName(std::string_view phase, std::string_view model, std::string_view sample) {
    return std::string(phase).append("/").append(model).append("/").append(sample);
}

// Each registers its benchmarks; `samples` must live until they have run.
void RegisterTrees(Samples& samples);
void RegisterFiles(Samples& samples);
void RegisterPackages(Samples& samples);
void RegisterStorage(Samples& samples);

} // namespace bench
