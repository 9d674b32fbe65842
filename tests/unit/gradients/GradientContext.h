// A parse context with the real setup objects, so that what the gradient operators allocate is released as in a parse.
#pragma once

#include "tests/unit/body/ParsingContext.h"

#include <string>
#include <string_view>

namespace vxtest
{

class GradientContext : public ParsingContext
{
  protected:
    GradientContext()
    {
        EXPECT_TRUE(vx::InitParseSetUp(&host.record, 5));
        state = vx::GetSetUpRecord(&host.record)->gradients;
        context.gradientSetup = state;
    }

    ~GradientContext() override { vx::TerminateSetUp(&host.record); }

    vx::Result InSetup(std::string_view line)
    {
        context.setupEnded = 0;
        const vx::Result result = Interpret(line);
        context.setupEnded = 1;
        return result;
    }

    // What the line makes the host do.
    std::string Calls(std::string_view line, vx::Result result = vx::kOk)
    {
        host.lines.clear();
        EXPECT_EQ(Interpret(line), result) << line;
        return host.Joined();
    }

    vx::GradientState *state;
};

} // namespace vxtest
