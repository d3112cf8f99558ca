#include "office/suite.h"

#include "support/process.h"

#include <chrono>
#include <cstdio>

namespace test {

namespace {

constexpr std::chrono::seconds kTime{180};

bool Succeeds(const std::vector<std::string>& command) {
    const Ending ending = Run(command, kTime);
    if (ending.code == 0) return true;
    std::fprintf(stderr, "%s: code %d%s\n%s\n", command.front().c_str(), ending.code,
                 ending.isTimeout ? ", out of time" : "", ending.output.c_str());
    return false;
}

} // namespace

bool OfficeSuite::isInstalled() {
    return HasProgram("soffice");
}

bool OfficeSuite::convert(const std::string& filter, const std::string& folder,
                          const std::vector<std::string>& files) const {
    std::vector<std::string> command{"soffice",    "-env:UserInstallation=file://" + profile_,
                                     "--headless", "--norestore",
                                     "--nologo",   "--convert-to",
                                     filter,       "--outdir",
                                     folder};
    command.insert(command.end(), files.begin(), files.end());
    return Succeeds(command);
}

bool OfficeSuite::drive(const char* task, const std::string& password,
                        const std::vector<std::string>& files) const {
    std::vector<std::string> command{"/usr/bin/python3", ODFMODEL_SOURCE_DIR "/tests/office/encrypt.py", task,
                                     profile_, password};
    command.insert(command.end(), files.begin(), files.end());
    return Succeeds(command);
}

bool OfficeSuite::encrypt(const std::string& password,
                          const std::vector<std::string>& sourcesAndTargets) const {
    return drive("encrypt", password, sourcesAndTargets);
}

bool OfficeSuite::decrypt(const std::string& password,
                          const std::vector<std::string>& sourcesAndTargets) const {
    return drive("decrypt", password, sourcesAndTargets);
}

} // namespace test
