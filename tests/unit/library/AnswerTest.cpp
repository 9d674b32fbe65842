// What a worker tells comes back whole, within its bounds, or is refused.
#include "library/pipe/Answer.h"

#include "host/fonts/ListedFonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace vxhost
{
namespace
{

// All fields of a record: one more makes these wrong.
auto FieldsOf(const HeaderFacts &record)
{
    const auto &[a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q] = record;
    return std::tie(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q);
}

auto FieldsOf(const Omitted &record)
{
    const auto &[a, b, c, d, e, f, g] = record;
    return std::tie(a, b, c, d, e, f, g);
}

auto FieldsOf(const Confinement &record)
{
    const auto &[a, b, c, d] = record;
    return std::tie(a, b, c, d);
}

auto FieldsOf(const Counts &record)
{
    const auto &[a, b, c, d, e, f, g, h] = record;
    return std::tie(a, b, c, d, e, f, g, h);
}

auto FieldsOf(const Failure &record)
{
    const auto &[a, b, c] = record;
    return std::tie(a, b, c);
}

auto FieldsOf(const Box &record)
{
    const auto &[a, b, c, d] = record;
    return std::tie(a, b, c, d);
}

auto FieldsOf(const Report &record)
{
    const auto &[a, b, c] = record;
    return std::tie(a, b, c);
}

auto FieldsOf(const FontUse &record)
{
    const auto &[a, b, c, d, e, f, g] = record;
    return std::tie(a, b, c, d, e, f, g);
}

template <typename Record>
bool IsSame(const Record &one, const Record &two)
{
    return FieldsOf(one) == FieldsOf(two);
}

void ExpectSame(const Outcome &one, const Outcome &two)
{
    const auto &[result, box, headerAccepted, monochrome, bytesRead, bytesTotal, bytesUnpacked, damage,
                 peakHeap, memoryLimitHit, failure, lackedFont, unknownCharacters, undrawnTexts, placedTexts,
                 reports, fonts, counts, layers, spots, end, fault, salvage, unshown, date, objections,
                 page] = one;
    EXPECT_EQ(std::tie(result, headerAccepted, monochrome, bytesRead, bytesTotal, bytesUnpacked, damage,
                       peakHeap, memoryLimitHit, lackedFont, unknownCharacters, undrawnTexts, placedTexts),
              std::tie(two.result, two.headerAccepted, two.monochrome, two.bytesRead, two.bytesTotal,
                       two.bytesUnpacked, two.damage, two.peakHeap, two.memoryLimitHit, two.lackedFont,
                       two.unknownCharacters, two.undrawnTexts, two.placedTexts));
    EXPECT_TRUE(IsSame(box, two.box));
    EXPECT_TRUE(IsSame(failure, two.failure));
    EXPECT_TRUE(std::ranges::equal(reports, two.reports, IsSame<Report>));
    EXPECT_TRUE(std::ranges::equal(fonts, two.fonts, IsSame<FontUse>));
    EXPECT_TRUE(IsSame(counts, two.counts));
    EXPECT_EQ(layers, two.layers);
    EXPECT_EQ(spots, two.spots);
    EXPECT_EQ(end, two.end);
    EXPECT_EQ(fault, two.fault);
    EXPECT_EQ(salvage, two.salvage);
    EXPECT_EQ(unshown, two.unshown);
    EXPECT_EQ(date, two.date);
    EXPECT_EQ(objections, two.objections);
    EXPECT_TRUE(IsSame(page.box, two.page.box));
    EXPECT_EQ(std::tie(page.tooWide, page.tooHigh), std::tie(two.page.tooWide, two.page.tooHigh));
}

void ExpectSame(const Answer &one, const Answer &two)
{
    const auto &[header, outcome, omitted, confinement, passes, needsFonts] = one;
    EXPECT_TRUE(IsSame(header, two.header));
    ExpectSame(outcome, two.outcome);
    EXPECT_TRUE(IsSame(omitted, two.omitted));
    EXPECT_TRUE(IsSame(confinement, two.confinement));
    EXPECT_EQ(std::tie(passes, needsFonts), std::tie(two.passes, two.needsFonts));
}

// No two fields that could be mistaken for each other have one value.
Answer MakeAnswer()
{
    Answer answer;
    answer.header = {true,
                     false,
                     true,
                     5,
                     true,
                     "CR LF",
                     "MacBinary",
                     "damaged gzip data",
                     "%!first",
                     "a title",
                     "maker",
                     "yesterday",
                     CalendarDate{1994, 3, 5, 10, 12, 59},
                     true,
                     {"Cyan"},
                     {"Sea", "Sand"},
                     {"Helvetica", "Times", "Courier"}};
    Outcome &outcome = answer.outcome;
    outcome.result = -30601;
    outcome.box = {1.25, -2.5, 300.125, 400};
    outcome.headerAccepted = true;
    outcome.bytesRead = 101;
    outcome.bytesTotal = int64_t{1} << 40;
    outcome.bytesUnpacked = int64_t{1} << 41;
    outcome.damage = "the xz data";
    outcome.peakHeap = 103;
    outcome.memoryLimitHit = true;
    outcome.failure = {FailureKind::BadInput, "a failure", 28};
    outcome.lackedFont = "Frutiger";
    outcome.unknownCharacters = 105;
    outcome.undrawnTexts = 104;
    outcome.placedTexts = 106;
    outcome.reports = {{3, "a heading", "a message"}, {0, "another heading", "another message"}};
    outcome.fonts = {{"Futura", "Jost", "/fonts/jost.otf", FontMatch::Substitute, 11, 12, 13},
                     {"Gill", "", "", FontMatch::Missing, 21, 22, 23}};
    outcome.counts = {31, 32, 33, 34, uint64_t{1} << 50, true, false, true};
    outcome.layers = {{"Ground", -1, true, false, true, false, true, 91, {92, 93, 94}, false},
                      {"Kite", 0, false, true, false, true, false, 95, {96, 97, 98}, true}};
    outcome.spots = {{"Lake", {0.11, 0.12, 0.13, 0.14}, 0.15, 0.16}};
    outcome.end = {false, true, {61, 62, 63, 64, 65, 66, true}, {67, 68}};
    outcome.fault = {71, 72, "a fault"};
    outcome.salvage = {3, {{81, 82, "the first"}, {83, 84, "the second"}, {85, 86, "the third"}}, true};
    outcome.unshown = {111, 112, 113, 114, 115};
    outcome.date = DateOrigin::File;
    outcome.objections = 121;
    outcome.page = {{131, 132, 133, 134}, 135, 136};
    answer.omitted = {41, 42, 43, 44, 45, 46, 47};
    answer.confinement = {true, false, 38, 22};
    answer.passes = 51;
    answer.needsFonts = true;
    return answer;
}

std::vector<std::string> TextsOf(const Answer &answer)
{
    const HeaderFacts &header = answer.header;
    const Outcome &outcome = answer.outcome;
    std::vector<std::string> texts = {header.lineEnds,    header.wrapping,     header.refusal,
                                      outcome.damage,     header.firstLine,    header.title,
                                      header.creator,     header.creationDate, outcome.failure.text,
                                      outcome.lackedFont, outcome.fault.text};
    for (const auto *names : {&header.processColours, &header.customColours, &header.fonts})
        texts.insert(texts.end(), names->begin(), names->end());
    for (const Report &report : outcome.reports)
        texts.insert(texts.end(), {report.title, report.message});
    texts.insert(texts.end(), {"Futura", "Jost", "/fonts/jost.otf", "Gill"});
    return texts;
}

template <typename Number>
std::string With(std::string bytes, size_t at, Number number)
{
    std::memcpy(bytes.data() + at, &number, sizeof number);
    return bytes;
}

template <typename Number>
size_t PlaceOf(const std::string &bytes, Number number)
{
    const size_t at = bytes.find(std::string(reinterpret_cast<const char *>(&number), sizeof number));
    EXPECT_NE(at, std::string::npos);
    return at;
}

void ExpectPrefixesRefused(const std::string &bytes, bool (*isRead)(std::string_view))
{
    EXPECT_TRUE(isRead(bytes));
    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(isRead(std::string_view(bytes).substr(0, length))) << length;
    EXPECT_FALSE(isRead(bytes + '\0'));
}

// The length of a text stands before it.
void ExpectLengthsRefused(const std::string &bytes, const std::vector<std::string> &texts,
                          bool (*isRead)(std::string_view))
{
    for (const std::string &text : texts) {
        const auto length = static_cast<uint32_t>(text.size());
        const size_t at =
            bytes.find(std::string(reinterpret_cast<const char *>(&length), sizeof length) + text);
        ASSERT_NE(at, std::string::npos) << text;
        for (const uint32_t wrong : {length + 1, length - 1, length + 256, uint32_t{4097}, ~uint32_t{0}})
            EXPECT_FALSE(isRead(With(bytes, at, wrong))) << text << " " << wrong;
    }
}

bool IsAnswer(std::string_view bytes)
{
    return ReadAnswer(bytes).has_value();
}

bool IsFontAnswer(std::string_view bytes)
{
    return ReadFonts(bytes).has_value();
}

TEST(Answer, ComesBackAsItWas)
{
    ExpectSame(*ReadAnswer(WriteAnswer(MakeAnswer())), MakeAnswer());
    ExpectSame(*ReadAnswer(WriteAnswer({})), {});
}

TEST(Answer, ThatIsNotWholeIsRefused)
{
    ExpectPrefixesRefused(WriteAnswer(MakeAnswer()), IsAnswer);
}

TEST(Answer, WithAnotherLengthIsRefused)
{
    ExpectLengthsRefused(WriteAnswer(MakeAnswer()), TextsOf(MakeAnswer()), IsAnswer);
}

TEST(Answer, WithWhatIsNoNumberIsRefused)
{
    const std::string bytes = WriteAnswer(MakeAnswer());
    for (const double side : {1.25, -2.5, 300.125, 400.0}) {
        EXPECT_TRUE(IsAnswer(With(bytes, PlaceOf(bytes, side), 1e300)));
        EXPECT_FALSE(IsAnswer(With(bytes, PlaceOf(bytes, side), std::numeric_limits<double>::quiet_NaN())));
        EXPECT_FALSE(IsAnswer(With(bytes, PlaceOf(bytes, side), std::numeric_limits<double>::infinity())));
    }
}

TEST(Answer, WithAKindThatThereIsNotIsRefused)
{
    const std::string bytes = WriteAnswer(MakeAnswer());
    const size_t match = bytes.find("jost.otf") + 8;
    const size_t failure = bytes.find("a failure") - sizeof(uint32_t) - 1;
    EXPECT_EQ(bytes[match], static_cast<char>(FontMatch::Substitute));
    EXPECT_EQ(bytes[failure], static_cast<char>(FailureKind::BadInput));
    for (const size_t at : {match, failure}) {
        EXPECT_TRUE(IsAnswer(With(bytes, at, uint8_t{1})));
        EXPECT_FALSE(IsAnswer(With(bytes, at, static_cast<uint8_t>(FailureKind::BadInput) + uint8_t{1})));
        EXPECT_FALSE(IsAnswer(With(bytes, at, uint8_t{255})));
    }
    EXPECT_FALSE(IsAnswer(With(bytes, match, static_cast<uint8_t>(FontMatch::Missing) + uint8_t{1})));
}

// All that a document, a font or a library can say, as long as the bounds allow and longer.
TEST(Answer, NeverTakesMoreThanItMayAndSaysWhatItLeftOut)
{
    constexpr size_t kMany = 20000;
    for (const size_t length : {0, 1, 100, 1024, 4096, 70000}) {
        const std::string text(length, '\xFF');
        Answer answer;
        for (std::string *field :
             {&answer.header.lineEnds, &answer.header.firstLine, &answer.header.title, &answer.header.creator,
              &answer.header.creationDate, &answer.outcome.lackedFont, &answer.outcome.failure.text,
              &answer.outcome.fault.text})
            *field = text;
        const size_t count = length > 100 ? 2000 : kMany;
        for (auto *names :
             {&answer.header.processColours, &answer.header.customColours, &answer.header.fonts})
            names->assign(count, text);
        answer.outcome.reports.assign(count, {1, text, text});
        answer.outcome.fonts.assign(count, {text, text, text, FontMatch::Exact, 1, 2, 3});
        const std::string bytes = WriteAnswer(answer);
        EXPECT_LE(bytes.size(), kMaxAnswer);
        const std::optional<Answer> read = ReadAnswer(bytes);
        ASSERT_TRUE(read) << length;
        EXPECT_EQ(read->header.title.size(), std::min<size_t>(length, 1024));
        EXPECT_GT(read->outcome.fonts.size(), 0U);
        EXPECT_EQ(read->outcome.fonts.size() + read->omitted.fonts, count);
        EXPECT_EQ(read->outcome.reports.size() + read->omitted.reports, count);
        EXPECT_EQ(read->header.processColours.size() + read->omitted.processColours, count);
        EXPECT_EQ(read->header.customColours.size() + read->omitted.customColours, count);
        EXPECT_EQ(read->header.fonts.size() + read->omitted.declaredFonts, count);
        EXPECT_GT(read->omitted.fonts, 0U);
    }
}

FontList::Entry MakeEntry()
{
    FontList::Entry entry;
    entry.postScriptName = "Jost-Bold";
    entry.familyName = "Family";
    entry.file = "/fonts/jost.otf";
    entry.faceIndex = 65537;
    entry.servedBy = "Other";
    entry.style = {3, -4, true};
    entry.scripts = 5;
    entry.isSubstitute = true;
    return entry;
}

TEST(FontAnswer, ComesBackAsItWas)
{
    const ListedFonts fonts({MakeEntry(), {}});
    const std::optional<FontAnswer> read = ReadFonts(WriteFonts(fonts, {true, false, 38, 22}));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->fonts->Count(), 2);
    const auto &[name, family, file, bytes, face, servedBy, style, scripts, isSubstitute] =
        read->fonts->At(0);
    EXPECT_EQ(std::tie(name, family, file, servedBy),
              std::make_tuple("Jost-Bold", "Family", "/fonts/jost.otf", "Other"));
    EXPECT_EQ(bytes, nullptr);
    EXPECT_EQ(std::tie(face, scripts, isSubstitute), std::make_tuple(65537, 5, true));
    const auto &[weight, width, isSlanted] = style;
    EXPECT_EQ(std::tie(weight, width, isSlanted), std::make_tuple(3, -4, true));
    EXPECT_EQ(read->fonts->At(1).postScriptName, "");
    EXPECT_EQ(read->omitted, 0U);
    EXPECT_TRUE(IsSame(read->confinement, {true, false, 38, 22}));
}

TEST(FontAnswer, ThatIsNotWholeOrOfNoFontIsRefused)
{
    const std::string bytes = WriteFonts(ListedFonts({MakeEntry()}), {});
    ExpectPrefixesRefused(bytes, IsFontAnswer);
    ExpectLengthsRefused(bytes, {"Jost-Bold", "Family", "/fonts/jost.otf", "Other"}, IsFontAnswer);
    EXPECT_FALSE(ReadFonts(WriteFonts(ListedFonts({}), {})));
}

TEST(FontAnswer, HasNoMoreFontsThanCanBeNumbered)
{
    const std::vector<FontList::Entry> entries(kMaxFonts + 3);
    const std::string bytes = WriteFonts(ListedFonts(entries), {});
    const std::optional<FontAnswer> read = ReadFonts(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(static_cast<size_t>(read->fonts->Count()), kMaxFonts);
    EXPECT_EQ(read->omitted, 3U);
    // One more, that is whole.
    const std::string entry = bytes.substr(bytes.size() - (bytes.size() - 18) / kMaxFonts);
    std::string more =
        With(bytes, PlaceOf(bytes, static_cast<uint32_t>(kMaxFonts)), static_cast<uint32_t>(kMaxFonts + 1));
    EXPECT_FALSE(ReadFonts(more + entry));
}

TEST(FontAnswer, NeverTakesMoreThanItMay)
{
    FontList::Entry entry;
    for (std::string *field : {&entry.postScriptName, &entry.familyName, &entry.file, &entry.servedBy})
        *field = std::string(5000, '\xFF');
    const std::vector<FontList::Entry> entries(6000, entry);
    const std::string bytes = WriteFonts(ListedFonts(entries), {});
    EXPECT_LE(bytes.size(), kMaxFontAnswer);
    const std::optional<FontAnswer> read = ReadFonts(bytes);
    ASSERT_TRUE(read);
    EXPECT_GT(read->omitted, 0U);
    EXPECT_EQ(static_cast<size_t>(read->fonts->Count()) + read->omitted, entries.size());
}

} // namespace
} // namespace vxhost
