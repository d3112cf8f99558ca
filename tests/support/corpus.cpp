#include "support/corpus.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>

namespace test {

namespace {

std::vector<Sample> Read(const std::filesystem::path& folder) {
    std::vector<Sample> samples;
    std::ifstream list(folder / "CORPUS.tsv");
    std::string line;
    std::getline(list, line); // the headings
    while (std::getline(list, line)) {
        std::vector<std::string> fields;
        std::istringstream text(line);
        for (std::string field; std::getline(text, field, '\t');)
            fields.push_back(field);
        if (fields.empty()) continue;
        const std::string& name = fields.front();
        constexpr std::size_t kPassword = 5;
        samples.push_back({name, (folder / name).string(), name.substr(0, name.find('/')),
                           fields.size() > kPassword ? fields[kPassword] : std::string()});
    }
    return samples;
}

const std::filesystem::path kCollection = ODFMODEL_CORPUS;

} // namespace

void PrintTo(const Sample& sample, std::ostream* out) {
    *out << sample.name;
}

bool HasCollection() {
    return std::filesystem::exists(kCollection / "CORPUS.tsv");
}

std::vector<Sample> AllSamples() {
    std::vector<Sample> samples = Read(ODFMODEL_TEST_DATA);
    std::vector<Sample> collection = Read(kCollection);
    samples.insert(samples.end(), collection.begin(), collection.end());
    return samples;
}

std::vector<Sample> GoodSamples() {
    std::vector<Sample> samples = AllSamples();
    std::erase_if(samples, [](const Sample& sample) { return sample.isDamaged() || sample.isFlat(); });
    return samples;
}

std::vector<Sample> SamplesOf(const std::string& group) {
    std::vector<Sample> samples = Read(kCollection);
    std::erase_if(samples, [&](const Sample& sample) { return sample.group != group; });
    return samples;
}

std::string NameOf(const Sample& sample) {
    std::string name = sample.name;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char unit) { return std::isalnum(unit) == 0; }, '_');
    return name;
}

} // namespace test
