// Runs a fuzzer's function without a fuzzing engine: on the files of the folders given, then on changed
// copies of them.
//   fuzz_NAME [-runs=N] [-seed=N] FOLDER...
// Without coverage it finds less than an engine, but it needs no other compiler and is as good at what was
// found once.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMaxBytes = std::size_t{1} << 16;
constexpr std::string_view kLast = "fuzz-last-input";

std::vector<Bytes> ReadAll(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file() && entry.file_size() <= kMaxBytes) names.push_back(entry.path());
    std::sort(names.begin(), names.end()); // the same inputs in each run
    std::vector<Bytes> all;
    for (const auto& name : names) {
        std::ifstream file(name, std::ios::binary);
        all.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return all;
}

/// A change of one place: bits, numbers that are near a bound, pieces gone, doubled or from another input.
void Change(Bytes& bytes, const std::vector<Bytes>& seeds, std::mt19937_64& random) {
    const auto below = [&](std::size_t bound) {
        return static_cast<std::size_t>(random() % std::max<std::size_t>(bound, 1));
    };
    const std::size_t at = below(bytes.size());
    const std::size_t count =
        std::min(below(std::size_t{1} << below(10)) + 1, bytes.size() - std::min(at, bytes.size()));
    const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = place + static_cast<std::ptrdiff_t>(count);
    switch (random() % 6) {
    case 0:
        if (!bytes.empty()) *place ^= static_cast<unsigned char>(1U << below(8));
        break;
    case 1:
        if (!bytes.empty())
            *place = std::to_array<unsigned char>({0, 0xFF, 0x7F, 0x80, '<', '&', '"', '>'})[below(8)];
        break;
    case 2:
        bytes.erase(place, end);
        break;
    case 3: {
        const Bytes piece(place, end);
        bytes.insert(place, piece.begin(), piece.end());
        break;
    }
    case 4: {
        const Bytes& other = seeds[below(seeds.size())];
        const std::size_t from = below(other.size());
        const auto first = other.begin() + static_cast<std::ptrdiff_t>(from);
        bytes.insert(place, first, first + static_cast<std::ptrdiff_t>(std::min(count, other.size() - from)));
        break;
    }
    default:
        for (auto byte = place; byte != end; ++byte)
            *byte = static_cast<unsigned char>(random());
    }
    if (bytes.size() > kMaxBytes) bytes.resize(kMaxBytes);
}

/// Where the input is when the process dies of it.
void Run(const Bytes& bytes) {
    std::ofstream(std::string(kLast), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int count, char** arguments) {
    std::uint64_t runs = 1000;
    std::uint64_t seed = 1;
    std::vector<Bytes> seeds;
    for (int i = 1; i < count; ++i) {
        const std::string_view argument = arguments[i];
        if (argument.starts_with("-runs="))
            runs = std::strtoull(arguments[i] + 6, nullptr, 10);
        else if (argument.starts_with("-seed="))
            seed = std::strtoull(arguments[i] + 6, nullptr, 10);
        else
            for (Bytes& bytes : ReadAll(argument))
                seeds.push_back(std::move(bytes));
    }
    if (seeds.empty()) {
        std::fputs("no inputs\n", stderr);
        return 1;
    }
    std::mt19937_64 random(seed);
    for (const Bytes& bytes : seeds)
        Run(bytes);
    for (std::uint64_t i = 0; i < runs; ++i) {
        Bytes bytes = seeds[random() % seeds.size()];
        for (std::uint64_t changes = random() % 4 + 1; changes > 0; --changes)
            Change(bytes, seeds, random);
        Run(bytes);
    }
    std::filesystem::remove(kLast);
    std::printf("%zu inputs and %llu changed ones: no fault\n", seeds.size(),
                static_cast<unsigned long long>(runs));
    return 0;
}
