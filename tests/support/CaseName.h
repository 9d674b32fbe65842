// Names each case of a table after its name field, so that a failure reads as the sentence that is false.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace vxtest
{

struct CaseName {
    template <typename Case>
    std::string operator()(const testing::TestParamInfo<Case> &info) const
    {
        return info.param.name;
    }
};

} // namespace vxtest
