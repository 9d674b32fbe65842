// A parse context ready for its first operator, on a recording host, for tests that look inside it.
#pragma once

#include "host/toolbox/HostContext.h"
#include "plugin/body/Body.h"
#include "plugin/body/ParseLine.h"
#include "plugin/setup/VXSetUp.h"
#include "tests/support/RecordingHost.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vxtest
{

class ParsingContext : public testing::Test
{
  protected:
    ParsingContext()
    {
        vx::InitializeGlobals(&context);
        context.memoryProcs = host.record.memory;
        context.refCon = host.record.drawing;
        context.procs = host.procs();
        context.problemProc = host.record.report;
        EXPECT_TRUE(vx::InitializeStringBuffer(&stringBuffer, vx::kStringBufferSize, context.memoryProcs));
        EXPECT_TRUE(vx::InitializePostScriptObjectBuffer(&pool, vx::kObjectPoolSize, context.memoryProcs));
        vx::InitializePostScriptObjectList(&stack);
        context.stringBuffer = &stringBuffer;
        context.objectBuffer = &pool;
        context.operandStack = &stack;
        vx::InitializeGradientState(&gradients);
        vx::InitFontEncodingObject(&encoding, 5);
        context.gradientSetup = &gradients;
        context.encodingSetup = &encoding;
        context.setupEnded = 1;
    }

    ~ParsingContext() override
    {
        // This releases what the line has defined, as after a parse.
        vx::SetUpRecord setup = {nullptr, &encoding};
        host.record.setup = &setup;
        vx::DeallocateFontDataObj(&host.record);
        host.record.setup = nullptr;
        vx::TerminatePostScriptObjectBuffer(&pool);
        vx::TerminateStringBuffer(&stringBuffer);
        EXPECT_EQ(host.liveBlocks, 0);
    }

    // The line's text must outlive the operands that it leaves.
    vx::Result Interpret(std::string_view line)
    {
        text_ = line;
        vx::BigString view = {reinterpret_cast<const uint8_t *>(text_.data()),
                              static_cast<int32_t>(text_.size())};
        return vx::ParseLine(&view, &context);
    }

    RecordingHost host;
    const vxhost::HostScope scope{&host.toolbox};
    vx::ParseContext context = {};
    vx::StringBuffer stringBuffer = {};
    vx::PostScriptObjectBuffer pool = {};
    vx::PostScriptObjectList stack = {};
    vx::GradientState gradients = {};
    vx::FontEncodingObject encoding = {};

  private:
    std::string text_;
};

} // namespace vxtest
