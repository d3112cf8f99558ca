#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace test {

/// A document among the samples. Their list is `CORPUS.tsv` in their folder.
struct Sample {
    std::string name;     ///< below its folder, such as "text/letter.odt"
    std::string path;     ///< where it lies
    std::string group;    ///< its first folder, such as "text"
    std::string password; ///< empty for a document in clear

    bool isDamaged() const { return group == "damaged"; }
    bool isEncrypted() const { return !password.empty(); }
    bool isFlat() const { return path.ends_with(".fods"); }
    bool isFormula() const { return path.ends_with(".odf"); }
};

void PrintTo(const Sample& sample, std::ostream* out);

/// The samples of the project itself and, where it is there, of the large collection.
std::vector<Sample> AllSamples();
/// Those that open in full with the password that they have.
std::vector<Sample> GoodSamples();
/// The samples of the collection in one group; empty when it isn't there.
std::vector<Sample> SamplesOf(const std::string& group);
/// True when the large collection is there.
bool HasCollection();
/// Names a parametrised test after its sample.
std::string NameOf(const Sample& sample);

} // namespace test
