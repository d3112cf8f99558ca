// Compares documents before and after a trip through a program, in any number:
//   package_diff [--password TEXT] BEFORE AFTER [BEFORE AFTER ...]
// Each pair is two files or two folders, whose files of the same name below them are compared. Prints each
// difference; ends with 0 when there is none, with 1 when there are some, with 2 when it was called wrongly.

#include "support/package_difference.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace fs = std::filesystem;

namespace {

std::vector<std::pair<fs::path, fs::path>> PairsOf(const fs::path& before, const fs::path& after) {
    if (!fs::is_directory(before)) return {{before, after}};
    std::vector<std::pair<fs::path, fs::path>> pairs;
    for (const auto& entry : fs::recursive_directory_iterator(before))
        if (entry.is_regular_file())
            pairs.emplace_back(entry.path(), after / fs::relative(entry.path(), before));
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

} // namespace

int main(int count, char** values) {
    std::vector<std::string> arguments(values + 1, values + count);
    std::string password;
    if (arguments.size() > 1 && arguments.front() == "--password") {
        password = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    if (arguments.empty() || arguments.size() % 2 != 0) {
        std::cerr << "package_diff [--password TEXT] BEFORE AFTER [BEFORE AFTER ...]\n";
        return 2;
    }
    int same = 0;
    int different = 0;
    for (std::size_t i = 0; i < arguments.size(); i += 2)
        for (const auto& [before, after] : PairsOf(arguments[i], arguments[i + 1])) {
            std::vector<std::string> differences{"missing"};
            if (fs::exists(before) && fs::exists(after))
                differences = test::PackageDifferences(before.string(), after.string(), password);
            for (const std::string& difference : differences)
                std::cout << before.string() << ": " << difference << '\n';
            ++(differences.empty() ? same : different);
        }
    std::cout << same << " the same, " << different << " different\n";
    return different == 0 ? 0 : 1;
}
