#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace test {

/// True when the published schemas of the format are there.
bool HasSchemas();
/// One of them, read; that takes a while.
class Schema {
public:
    /// By its file name, such as "odf1.2.rng".
    explicit Schema(const std::string& name);
    ~Schema();
    Schema(const Schema&) = delete;
    Schema& operator=(const Schema&) = delete;

    /// What is wrong first in a document; empty for a valid one.
    std::string fault(std::string_view xml) const;

private:
    struct Rules;
    std::unique_ptr<Rules> rules_;
};

} // namespace test
