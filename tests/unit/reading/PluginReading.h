// A fixture for tests that read documents with the built plug-in and one font.
#pragma once

#include "host/fonts/FixedFontList.h"
#include "host/reading/Reading.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vxtest
{

class PluginReading : public testing::Test
{
  protected:
    static void SetUpTestSuite()
    {
        std::string error;
        installation_.plugin = vxhost::Plugin::Load(VX_PLUGIN_PATH, &error);
        ASSERT_NE(installation_.plugin, nullptr) << error;
        installation_.fonts = std::make_shared<vxhost::FixedFontList>(std::vector<std::string>{"Helvetica"});
    }
    static void TearDownTestSuite() { installation_ = {}; }

    static inline vxhost::Installation installation_;
};

} // namespace vxtest
