// A table of scripts, each with one pixel of its picture.
#pragma once

#include "tests/unit/raster/Canvas.h"

#include <gtest/gtest.h>
#include <ostream>

namespace vxhost
{

struct PixelCase {
    const char *name;
    const char *script;
    int column, row; // from the top left
    const char *pixel;
};

inline std::string NameOf(const testing::TestParamInfo<PixelCase> &info)
{
    return info.param.name;
}
inline void PrintTo(const PixelCase &c, std::ostream *out)
{
    *out << c.script;
}

} // namespace vxhost
