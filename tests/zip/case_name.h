#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test {

/// Names a parametrised case by its field `name`.
struct CaseName {
    template<typename Case>
    std::string operator()(const testing::TestParamInfo<Case>& given) const {
        return given.param.name;
    }
};

} // namespace test
