#include "devices/pdf/Dates.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using namespace vxhost::pdf;

namespace
{

TEST(PdfDate, CountsSecondsSince1970)
{
    EXPECT_EQ(PdfDate(0), "D:19700101000000Z");
    EXPECT_EQ(PdfDate(951782400), "D:20000229000000Z"); // 11016 days: 30 years with 7 leap days, then 31 + 28
    EXPECT_EQ(PdfDate(-1), "D:19691231235959Z");
}

TEST(PdfDate, HasATimeWhereThereIsOne)
{
    EXPECT_EQ(PdfDate(vxhost::CalendarDate{1994, 3, 5, -1, 0, 0}), "D:19940305");
    EXPECT_EQ(PdfDate(vxhost::CalendarDate{1994, 3, 5, 10, 2, 0}), "D:19940305100200");
}

TEST(PdfDate, StaysInFourDigitYears)
{
    EXPECT_EQ(PdfDate(std::numeric_limits<int64_t>::max()), "D:99991231235959Z");
    EXPECT_EQ(PdfDate(std::numeric_limits<int64_t>::min()), "D:00000101000000Z");
}

} // namespace
