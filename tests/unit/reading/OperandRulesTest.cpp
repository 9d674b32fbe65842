// The table of what operators want is the plug-in's: each is given what it wants, one operand too few, one too many, and one
// of another kind, and the plug-in refuses what the table explains and nothing else.
#include "host/reading/OperandRules.h"

#include "host/Plugin.h"
#include "host/fonts/FixedFontList.h"
#include "host/reading/LineTokens.h"
#include "tests/unit/host/RecordingDevice.h"

#include <vx/HostCall.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{
namespace
{

constexpr std::string_view kHeader =
    "%!PS-Tavro-3.0\n%%BoundingBox: 0 0 100 100\n%VX5_FileFormat 3\n%%EndComments\n"
    "%%BeginSetup\n%VX5_BeginGradient: (g)\n(g) 0 2 Bd\n0 0 50 0 Bs\n1 0 50 100 Bs\nBD\n";
constexpr std::string_view kText =
    "0 To 1 0 0 1 0 0 0 Tp TP 0 Tr /_Helvetica 12 Tf\n";                    // operators of text may follow
constexpr std::string_view kGradient = "Bb 1 (g) 0 0 1 0 1 0 0 1 0 0 Bg\n"; // those of gradients

using Words = std::vector<std::string>;

class OperandRulesTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string error;
        plugin_ = Plugin::Load(VX_PLUGIN_PATH, &error);
        ASSERT_NE(plugin_, nullptr) << error;
    }

    bool IsRefused(const std::string &lines, bool isInSetup)
    {
        const std::string bytes = std::string(kHeader) + (isInSetup ? lines : "") + "%%EndSetup\n" +
                                  (isInSetup ? "" : lines) + "%%EOF\n";
        std::string error;
        const auto document = Document::FromMemory(std::as_bytes(std::span(bytes)), &error);
        ParseOptions options;
        options.fonts = &fonts_;
        options.widths = &fonts_;
        vxtest::RecordingDevice device;
        Page page;
        page.box = {0, 0, 100, 100};
        const int16_t result = plugin_->Draw(*document, options, page, device).result;
        EXPECT_TRUE(result == kVXOk || result == kVXBadFormat) << result;
        return result == kVXBadFormat;
    }

    // Holds the table's answer against the plug-in's, which it returns.
    bool Compare(std::string_view name, const Words &operands, bool isInSetup)
    {
        std::string line;
        for (const std::string &operand : operands)
            line += operand + " ";
        OperandStack stack;
        LineTokens tokens(line);
        for (Token token = tokens.Next(); token.kind != TokenKind::End; token = tokens.Next())
            stack.Take(token, line, 0);
        line.append(name).append("\n");
        const bool isOfGradients = name.starts_with('B') && name.size() == 2;
        const std::string before(isInSetup ? "" : isOfGradients ? kGradient : kText);
        const bool isRefused = IsRefused(before + line, isInSetup);
        const std::string why = ExplainOperands(name, stack, isInSetup);
        EXPECT_EQ(isRefused, !why.empty()) << line << why;
        return isRefused;
    }

    std::unique_ptr<Plugin> plugin_;
    FixedFontList fonts_{{"Helvetica"}};
};

std::string WordFor(char wanted)
{
    switch (wanted) {
    case 'n':
        return "2";
    case 's':
        return "(g)"; // the name of the gradient
    case 'l':
        return "/_Helvetica";
    case 'a':
    case 'v':
        return "[1 2]";
    default:
        return "1";
    }
}

// Returns what suits the first choice, or the last.
Words WordsFor(std::string_view wants, bool isFirst)
{
    const size_t bar = wants.find('|');
    if (bar != std::string_view::npos)
        wants = isFirst ? wants.substr(0, bar) : wants.substr(wants.rfind('|') + 1);
    Words words;
    for (const char wanted : wants) {
        if (wanted != '*' && wanted != '~')
            words.push_back(WordFor(wanted));
    }
    return words;
}

TEST_F(OperandRulesTest, AreThoseOfThePlugIn)
{
    for (const bool isInSetup : {false, true}) {
        for (const auto &[name, wants] : OperandRules(isInSetup)) {
            for (const bool isFirst : {true, false}) {
                const Words words = WordsFor(wants, isFirst);
                EXPECT_FALSE(Compare(name, words, isInSetup)) << name;
                Words few = words;
                if (!few.empty())
                    few.pop_back();
                Words many = words;
                many.emplace_back("1");
                const bool mindsFew = Compare(name, few, isInSetup),
                           mindsMany = Compare(name, many, isInSetup);
                if (wants.find_first_of("*|~") == std::string_view::npos) {
                    EXPECT_EQ(mindsFew, !words.empty()) << name;
                    EXPECT_TRUE(mindsMany) << name;
                }
                many = words;
                many.insert(many.begin(), "1");
                (void)Compare(name, many, isInSetup);
                for (size_t i = 0; i < words.size(); ++i) {
                    for (const char *other : {"3", "1.5", "(g)", "/g", "//g", "[1 2]", "[1 (a)]", "<67>"}) {
                        Words wrong = words;
                        wrong[i] = other;
                        (void)Compare(name, wrong, isInSetup);
                    }
                }
            }
        }
    }
}

TEST_F(OperandRulesTest, HaveEachOperatorThatMindsItsOperands)
{
    std::vector<std::string> names;
    for (char first = '!'; first <= '~'; ++first) {
        names.emplace_back(1, first);
        for (char second = '!'; second <= '~'; ++second)
            names.push_back({first, second});
    }
    size_t tried = 0;
    for (const std::string &name : names) {
        LineTokens tokens(name);
        const Token token = tokens.Next();
        if (token.kind != TokenKind::Operator || token.end != name.size())
            continue;
        for (const bool isInSetup : {false, true}) {
            if (isInSetup && !(name.starts_with('B') && name.size() == 2))
                continue;
            const auto rules = OperandRules(isInSetup);
            if (std::ranges::find(rules, name, &OperandRule::name) != rules.end())
                continue;
            std::string lines;
            for (const char *operands : {"", "1", "(g)", "/g", "[1 2]", "1 2 (a) /b [1] 6 7 8 9 10 11 12 13"})
                lines.append(isInSetup ? "" : kText).append(operands).append(" ").append(name).append("\n");
            EXPECT_FALSE(IsRefused(lines, isInSetup)) << name;
            ++tried;
        }
    }
    EXPECT_GT(tried, 6900U);
}

TEST_F(OperandRulesTest, AnArrayHasItsMost)
{
    for (const size_t elements : {256, 257}) {
        std::string array = "[";
        for (size_t i = 0; i < elements; ++i)
            array += i % 100 == 99 ? "1\n" : "1 "; // lines have a most as well
        EXPECT_EQ(IsRefused(array + "] 0 d\n", false), elements == 257);
        OperandStack stack;
        const std::string line = array + "] 0";
        LineTokens of(line);
        for (Token token = of.Next(); token.kind != TokenKind::End; token = of.Next())
            stack.Take(token, line, 0);
        EXPECT_EQ(ExplainOperands("d", stack, false), elements == 256
                                                          ? ""
                                                          : "\"d\" wants 1 array and 1 number, but operand 1 "
                                                            "is an array of 257 numbers, and may have 256");
    }
}

} // namespace
} // namespace vxhost
