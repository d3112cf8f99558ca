#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// A folder of the test's own, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const noexcept { return path_; }
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, std::string_view data);
/// What is directly in `folder`, in name order.
std::vector<std::string> EntriesOf(const std::filesystem::path& folder);

/// Sets an environment variable for the life of the object.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value);
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable();

private:
    const char* name_;
    std::string before_;
    bool wasSet_;
};

} // namespace test
