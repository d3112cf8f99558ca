#pragma once

#include "support/files.h"

#include <gtest/gtest.h>

namespace test {

/// A folder for the files of a test, and next to it the only temporary directory that the library sees.
/// Nothing may be left there at the end, whatever went wrong on the way.
template<typename Base = testing::Test>
class InWorkspace : public Base {
protected:
    InWorkspace() {
        std::filesystem::create_directory(files.path());
        std::filesystem::create_directory(temporary.path() / "tmp");
    }

    /// Path of a file of the test.
    std::string file(std::string_view name) const { return files / name; }
    std::vector<std::string> temporaryEntries() const { return EntriesOf(temporary / "tmp"); }

    void TearDown() override {
        EXPECT_EQ(temporaryEntries(), std::vector<std::string>()) << "left in the temporary directory";
        Base::TearDown();
    }

private:
    TemporaryFolder files;
    TemporaryFolder temporary;
    ScopedVariable directory{"TMPDIR", temporary / "tmp"};
};

} // namespace test
