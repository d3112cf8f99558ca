#pragma once

#include <string>
#include <vector>

namespace test {

/// The installed office suite, run without a window and with a profile of its own.
class OfficeSuite {
public:
    /// `profile` is a folder for what the suite keeps of its user.
    explicit OfficeSuite(std::string profile) : profile_(std::move(profile)) {}

    static bool isInstalled();

    /// Converts `files` into `folder`, which it creates, in one run. What can't be converted is simply not
    /// there after.
    bool convert(const std::string& filter, const std::string& folder,
                 const std::vector<std::string>& files) const;
    /// Saves each source under its target with a password. False when the installation can't be driven from
    /// outside.
    bool encrypt(const std::string& password, const std::vector<std::string>& sourcesAndTargets) const;
    /// Opens each source with a password and saves it in clear under its target. False as above, and when the
    /// suite can't open one.
    bool decrypt(const std::string& password, const std::vector<std::string>& sourcesAndTargets) const;

private:
    bool drive(const char* task, const std::string& password, const std::vector<std::string>& files) const;
    std::string profile_;
};

} // namespace test
