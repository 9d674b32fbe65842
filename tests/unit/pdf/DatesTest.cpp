#include "devices/pdf/Dates.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

using namespace vxhost::pdf;

namespace
{

struct DateCase {
    const char *name, *text, *date; // "": cannot be read in one way
};

const DateCase kDates[] = {
    {"MonthFirst", "(3/25/94) (10:12 AM)", "D:19940325101200"},
    {"DayFirst", "25/3/94 22:12", "D:19940325221200"},
    {"EitherWay", "(3/5/94) (10:12 AM)", ""},
    {"TheSameEitherWay", "(5/5/94) (1:02 PM)", "D:19940505130200"},
    {"Midnight", "12/31/99 12:00 AM", "D:19991231000000"},
    {"Noon", "12/31/99 12:00 pm", "D:19991231120000"},
    {"WithSeconds", "3/25/94, 10:12:59", "D:19940325101259"},
    {"YearFirst", "1994-03-05", "D:19940305"},
    {"YearFirstSlashes", "1994/3/5 7:08", "D:19940305070800"},
    {"DotsAreDayFirst", "5.3.1994", "D:19940305"},
    {"MonthByName", "March 5, 1994", "D:19940305"},
    {"ShortNames", "Sat Mar  5 10:12:00 1994", "D:19940305101200"},
    {"DayThenMonth", "5 Mar 94", "D:19940305"},
    {"ThisCentury", "13/1/07", "D:20070113"},
    {"LeapDay", "29/2/96", "D:19960229"},
    {"NoLeapDay", "29/2/95", ""},
    {"NoSuchMonth", "25/13/94", ""},
    {"NoSuchHour", "25/3/94 25:00", ""},
    {"ThirteenInTheAfternoon", "25/3/94 13:00 PM", ""},
    {"BothHalves", "25/3/94 1:00 AM PM", ""},
    {"TwoDates", "25/3/94 26/3/94", ""},
    {"TimeAlone", "10:12", ""},
    {"Words", "last Tuesday", ""},
    {"Empty", "", ""},
    {"HugeNumber", "99999999999/1/1", ""},
};

class PdfDates : public testing::TestWithParam<DateCase>
{
};

TEST_P(PdfDates, AreReadSo)
{
    EXPECT_EQ(PdfDateOf(GetParam().text).value_or(""), GetParam().date);
}
INSTANTIATE_TEST_SUITE_P(Pdf, PdfDates, testing::ValuesIn(kDates), vxtest::CaseName());

TEST(PdfDate, CountsSecondsSince1970)
{
    EXPECT_EQ(PdfDate(0), "D:19700101000000Z");
    EXPECT_EQ(PdfDate(951782400), "D:20000229000000Z"); // 11016 days: 30 years with 7 leap days, then 31 + 28
    EXPECT_EQ(PdfDate(-1), "D:19691231235959Z");
}

TEST(PdfDate, StaysInFourDigitYears)
{
    EXPECT_EQ(PdfDate(std::numeric_limits<int64_t>::max()), "D:99991231235959Z");
    EXPECT_EQ(PdfDate(std::numeric_limits<int64_t>::min()), "D:00000101000000Z");
}

} // namespace
