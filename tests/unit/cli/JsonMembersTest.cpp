// Tests that members of objects come as they were written, and that what is no object is seen.
#include "cli/options/JsonMembers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vxhost
{

namespace
{

// Returns "key=value" for each member, or the byte that shows that there is no object.
std::vector<std::string> Read(std::string_view text)
{
    size_t badByte = 0;
    const auto members = ReadJsonMembers(text, &badByte);
    if (!members)
        return {std::to_string(badByte)};
    std::vector<std::string> texts;
    for (const JsonMember &member : *members)
        texts.push_back(member.key + "=" + std::string(member.value));
    return texts;
}

struct MembersCase {
    const char *text;
    std::vector<std::string> members;
};

const MembersCase kMembers[] = {
    {"{}", {}},
    {" { \t} ", {}},
    {R"({"a":1})", {"a=1"}},
    {R"( { "a" : 1 , "b":"x" } )", {"a=1", R"(b="x")"}},
    {R"({"\u0061\n":1,"a\n":2})", {"a\n=1", "a\n=2"}},
    {R"({"a":"}\"\\","b":"\\"})", {R"(a="}\"\\")", R"(b="\\")"}},
    {R"({"a":[ 1,{"b":[]} ],"c":{ },"d":[ ]})", {R"(a=[ 1,{"b":[]} ])", "c={ }", "d=[ ]"}},
    {R"({"a":true,"b":false,"c":null})", {"a=true", "b=false", "c=null"}},
    {R"({"a":-0,"b":0.50,"c":1e400,"d":-12E+03,"e":0e-0,"f":12345678901234567890123})",
     {"a=-0", "b=0.50", "c=1e400", "d=-12E+03", "e=0e-0", "f=12345678901234567890123"}},
    {"{\"a\":\"\xC3\xA9\\ud83d\\ude00\"}", {"a=\"\xC3\xA9\\ud83d\\ude00\""}},
    // The byte is the first that is not allowed where it stands; in a string that is damaged it is the quote.
    {"", {"1"}},
    {"[]", {"1"}},
    {"1", {"1"}},
    {"{", {"2"}},
    {"{}}", {"3"}},
    {"{} {}", {"4"}},
    {R"({"a"})", {"5"}},
    {R"({a:1})", {"2"}},
    {R"({"a":})", {"6"}},
    {R"({"a":1,})", {"8"}},
    {R"({"a":1 "b":2})", {"8"}},
    {R"({,"a":1})", {"2"}},
    {R"({"a":[1,]})", {"9"}},
    {R"({"a":[1})", {"8"}},
    {R"({"a":[1}])", {"8"}},
    {R"({"a":{"b"}})", {"10"}},
    {R"({"a":{1:2}})", {"7"}},
    {R"({"a":01})", {"7"}},
    {R"({"a":+1})", {"6"}},
    {R"({"a":-})", {"7"}},
    {R"({"a":.5})", {"6"}},
    {R"({"a":5.})", {"8"}},
    {R"({"a":5.e1})", {"8"}},
    {R"({"a":1e})", {"8"}},
    {R"({"a":1e+})", {"9"}},
    {R"({"a":0x1})", {"7"}},
    {R"({"a":NaN})", {"6"}},
    {R"({"a":truer})", {"10"}},
    {R"({"a":tru})", {"6"}},
    {R"({"a":"b})", {"6"}},
    {R"({"a":"b\"})", {"6"}},
    {R"({"a":"\x"})", {"6"}},
    {R"({"a":"\ud800"})", {"6"}},
    {"{\"a\":\"\t\"}", {"6"}},
    {"{\"a\":\"\xFF\"}", {"6"}},
    {"{\"a\":\r1}", {"6"}}, // a line of it would be two to some readers
    {"\xEF\xBB\xBF{}", {"1"}},
};

TEST(JsonMembersTest, AreThoseOfTheObject)
{
    for (const MembersCase &members : kMembers)
        EXPECT_EQ(Read(members.text), members.members) << members.text;
}

TEST(JsonMembersTest, MayBeNestedAsDeepAsTheyLike)
{
    const size_t depth = 1000000;
    const std::string value = std::string(depth, '[') + std::string(depth, ']');
    EXPECT_EQ(Read("{\"a\":" + value + "}"), std::vector<std::string>{"a=" + value});
    EXPECT_EQ(Read("{\"a\":" + value), std::vector<std::string>{std::to_string(5 + 2 * depth + 1)});
}

} // namespace

} // namespace vxhost
