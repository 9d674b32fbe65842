// Dates of headers, in the forms that were found in drawings and that programs of their time wrote.
#include "host/reading/HeaderDate.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace vxhost
{
namespace
{

struct DateCase {
    const char *name, *text, *date; // "": cannot be read in one way
};

const DateCase kDates[] = {
    {"MonthFirst", "(3/25/94) (10:12 AM)", "1994-03-25T10:12:00"},
    {"DayFirst", "25/3/94 22:12", "1994-03-25T22:12:00"},
    {"EitherWay", "(3/5/94) (10:12 AM)", ""},
    {"TheSameEitherWay", "(5/5/94) (1:02 PM)", "1994-05-05T13:02:00"},
    {"Midnight", "12/31/99 12:00 AM", "1999-12-31T00:00:00"},
    {"Noon", "12/31/99 12:00 pm", "1999-12-31T12:00:00"},
    {"WithSeconds", "3/25/94, 10:12:59", "1994-03-25T10:12:59"},
    {"YearFirst", "1994-03-05", "1994-03-05"},
    {"YearFirstSlashes", "1994/3/5 7:08", "1994-03-05T07:08:00"},
    {"DotsAreDayFirst", "5.3.1994", "1994-03-05"},
    {"MonthByName", "March 5, 1994", "1994-03-05"},
    {"ShortNames", "Sat Mar  5 10:12:00 1994", "1994-03-05T10:12:00"},
    {"DayThenMonth", "5 Mar 94", "1994-03-05"},
    {"ThisCentury", "13/1/07", "2007-01-13"},
    {"LeapDay", "29/2/96", "1996-02-29"},
    {"NoLeapDay", "29/2/95", ""},
    {"NoSuchMonth", "25/13/94", ""},
    {"NoSuchHour", "25/3/94 25:00", ""},
    {"ThirteenInTheAfternoon", "25/3/94 13:00 PM", ""},
    {"BothHalves", "25/3/94 1:00 AM PM", ""},
    {"TwoDates", "25/3/94 26/3/94", ""},
    {"TimeAlone", "10:12", ""},
    {"Words", "last Tuesday", ""},
    {"Empty", "", ""},
    {"GermanWords", "5. März 1994 um 10:12 Uhr", "1994-03-05T10:12:00"},
    {"GermanShort", "Sa., 5. Dez. 94", "1994-12-05"},
    {"GermanWithoutUmlaut", "5 Maerz 1994", "1994-03-05"},
    {"FrenchWords", "le 1er août 1994 à 22:12", "1994-08-01T22:12:00"},
    {"FrenchFebruary", "12 février 1995", "1995-02-12"},
    {"FrenchJuneAndJuly", "12 juin 1995", "1995-06-12"},
    {"FrenchJuly", "12 juillet 1995", "1995-07-12"},
    {"EnglishOrdinal", "March 5th, 1994", "1994-03-05"},
    {"LastYearOfTheCentury", "13/1/70", "1970-01-13"},
    {"FirstYearOfThis", "13/1/69", "2069-01-13"},
    {"NoMonthByName", "5 Marzipan! 94", ""},
    {"HugeNumber", "99999999999/1/1", ""},
};

class HeaderDates : public testing::TestWithParam<DateCase>
{
};

TEST_P(HeaderDates, AreReadSo)
{
    const std::optional<CalendarDate> date = ReadHeaderDate(GetParam().text).date;
    EXPECT_EQ(date ? IsoText(*date) : "", GetParam().date);
}
INSTANTIATE_TEST_SUITE_P(Dates, HeaderDates, testing::ValuesIn(kDates), vxtest::CaseName());

TEST(HeaderDate, IsOpenWhereOnlyTheOrderWouldDecide)
{
    EXPECT_TRUE(ReadHeaderDate("(3/5/94) (10:12 AM)").isOrderOpen);
    EXPECT_TRUE(ReadHeaderDate("3-5-94").isOrderOpen);
    for (const char *text :
         {"3/25/94", "25/3/94", "5/5/94", "5.3.94", "1994/3/5", "5 March 94", "13/13/94", "", "3/5/94 99:00"})
        EXPECT_FALSE(ReadHeaderDate(text).isOrderOpen) << text;
}

TEST(HeaderDate, TakesTheOrderThatIsSaidWhereNothingElseDecides)
{
    EXPECT_EQ(IsoText(*ReadHeaderDate("3/5/94", DateOrder::MonthFirst).date), "1994-03-05");
    EXPECT_EQ(IsoText(*ReadHeaderDate("3/5/94", DateOrder::DayFirst).date), "1994-05-03");
    for (const DateOrder order : {DateOrder::MonthFirst, DateOrder::DayFirst}) {
        EXPECT_EQ(IsoText(*ReadHeaderDate("3/25/94", order).date), "1994-03-25");
        EXPECT_EQ(IsoText(*ReadHeaderDate("25/3/94", order).date), "1994-03-25");
        EXPECT_EQ(IsoText(*ReadHeaderDate("5.3.94", order).date), "1994-03-05");
        EXPECT_FALSE(ReadHeaderDate("3/5/94", order).isOrderOpen);
    }
}

} // namespace
} // namespace vxhost
