// The built vxparser.so as a host meets it: loaded by path, called through the symbol "main".
#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace
{

void Never(void *)
{
    ADD_FAILURE() << "an entry of the table was called";
}

class Entry : public testing::Test
{
  protected:
    void SetUp() override
    {
        library_ = dlopen(VX_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
        main_ = reinterpret_cast<VXMainProc>(dlsym(library_, "main"));
        ASSERT_NE(main_, nullptr) << dlerror();
        procs_.version = kZRKProcsVersion;
        procs_.count = kZRKProcCount;
        for (ZRKProc &entry : procs_.entry)
            entry = reinterpret_cast<ZRKProc>(Never);
        record_.procs = &procs_;
    }

    void TearDown() override
    {
        if (library_ != nullptr)
            dlclose(library_);
    }

    int16_t Call(int32_t selector)
    {
        int16_t result = 12345;
        main_(selector, &record_, nullptr, &result);
        return result;
    }

    void *library_ = nullptr;
    VXMainProc main_ = nullptr;
    ZRKProcs procs_ = {};
    HostCallRecord record_ = {};
};

TEST_F(Entry, OpensWithAWholeTable)
{
    EXPECT_EQ(Call(kVXOpen), kVXOk);
    EXPECT_EQ(Call(kVXOpenAgain), kVXOk);
}

TEST_F(Entry, RefusesATableWithAHole)
{
    procs_.entry[kZRKProcCount - 1] = nullptr;
    EXPECT_EQ(Call(kVXOpen), kVXBadProcs);
    EXPECT_EQ(Call(kVXOpenAgain), kVXBadProcs);
}

TEST_F(Entry, RefusesNoTable)
{
    record_.procs = nullptr;
    EXPECT_EQ(Call(kVXOpen), kVXBadProcs);
}

TEST_F(Entry, CloseAlwaysSucceeds)
{
    record_ = {};
    EXPECT_EQ(Call(kVXClose), kVXOk);
}

TEST_F(Entry, RefusesUnknownSelectors)
{
    EXPECT_EQ(Call(7), kVXBadSelector);
    EXPECT_EQ(Call(-1), kVXBadSelector);
}

// Only the low half of the selector counts.
TEST_F(Entry, TakesTheLowSixteenBitsOfTheSelector)
{
    EXPECT_EQ(Call(0x10000 + kVXClose), kVXOk);
    EXPECT_EQ(Call(0x1FFFF), kVXBadSelector);
}

// A host without the dialog hands on its own resource error.
TEST_F(Entry, AboutWithoutItsDialogGivesTheHostsError)
{
    EXPECT_EQ(Call(kVXAbout), -192);
}

} // namespace
