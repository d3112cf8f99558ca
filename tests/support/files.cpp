#include "support/files.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace test {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "odfmodel-test-XXXXXX").string();
    if (mkdtemp(name.data())) path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::filesystem::path& path, std::string_view data) {
    std::ofstream(path, std::ios::binary).write(data.data(), static_cast<std::streamsize>(data.size()));
}

std::vector<std::string> EntriesOf(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

ScopedVariable::ScopedVariable(const char* name, const std::string& value) : name_(name) {
    const char* const before = std::getenv(name);
    wasSet_ = before != nullptr;
    if (wasSet_) before_ = before;
    setenv(name, value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
    if (wasSet_)
        setenv(name_, before_.c_str(), 1);
    else
        unsetenv(name_);
}

} // namespace test
