#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace bench {

/// A folder of this process, removed with what it holds.
class WorkFolder {
public:
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// A generated document: its content in memory, and the package with it on disk.
struct Sample {
    std::string name;
    std::string xml;
    std::string packagePath;
    std::size_t elements = 0;
    std::size_t attributes = 0;
};

/// Makes samples when they are first asked for.
class Samples {
public:
    explicit Samples(double size) : size_(size) {}

    /// One of `names()`.
    const Sample& get(const std::string& name);
    /// An Open Packaging archive with about that many parts.
    const std::string& package(unsigned parts);
    const WorkFolder& folder() const { return folder_; }

    static constexpr std::string_view kNames[] = {"text", "sheet", "slides", "styles"};

private:
    Sample make(const std::string& name) const;

    double size_;
    WorkFolder folder_;
    std::map<std::string, Sample> samples_;
    std::map<unsigned, std::string> packages_;
};

} // namespace bench
