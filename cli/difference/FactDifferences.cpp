#include "cli/difference/FactDifferences.h"

#include "host/reading/Utf8.h"
#include "library/Decimal.h"
#include "library/FactsJson.h"
#include "library/OptionValues.h"
#include "library/Warnings.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr std::string_view kSpace = " \t\r\n\f";

// A row for each fact that there is one of.
struct PlainFact {
    const char *fact, *member;
};
constexpr PlainFact kPlainFacts[] = {
    {"version", "version"},        {"title", "title"}, {"creator", "creator"},       {"date", "date"},
    {"date text", "creationDate"}, {"box", "box"},     {"monochrome", "monochrome"},
};

// A row for each fact that there may be any number of, which are told apart by a member.
struct ListedFact {
    const char *fact, *list, *key;
    std::initializer_list<const char *> members;
};
const ListedFact kListedFacts[] = {
    {"layer", "layers", "name", {"visible", "preview", "enabled", "printing", "dimmed", "parent"}},
    {"ink", "inks", "name", {"cmyk", "tints"}},
    {"font", "fonts", "asked", {"served", "match"}},
};

Json FactsOf(const Result &result)
{
    Json facts;
    AddFacts(result.header, result.outcome, &facts);
    facts["warnings"] = Json::array();
    for (const auto &list : {ListWarnings(result.outcome, "see vx fonts"), ListOmitted(result.omitted)}) {
        for (const std::string &warning : list)
            facts["warnings"].push_back(warning);
    }
    return facts;
}

void Note(FactDifference difference, std::vector<FactDifference> *differences)
{
    if (difference.a != difference.b)
        differences->push_back(std::move(difference));
}

// The second of two with one name is held beside the second of the other drawing.
using Listed = std::vector<std::pair<std::pair<std::string, size_t>, Json>>;

Listed ListOf(const Json &facts, const ListedFact &row)
{
    Listed listed;
    std::map<std::string, size_t> counts;
    for (const Json &item : facts.at(row.list)) {
        const auto &name = item.at(row.key).get_ref<const std::string &>();
        Json kept = Json::object();
        for (const char *member : row.members)
            kept[member] = item.at(member);
        listed.emplace_back(std::pair(name, counts[name]++), std::move(kept));
    }
    return listed;
}

void CompareListed(const ListedFact &row, const Json &a, const Json &b,
                   std::vector<FactDifference> *differences)
{
    const Listed listA = ListOf(a, row), listB = ListOf(b, row);
    std::map<std::pair<std::string, size_t>, const Json *> inB;
    for (const auto &[key, value] : listB)
        inB[key] = &value;
    for (const auto &[key, value] : listA) {
        const auto found = inB.find(key);
        Note({row.fact, key.first, value, found == inB.end() ? Json() : *found->second}, differences);
        if (found != inB.end())
            inB.erase(found);
    }
    for (const auto &[key, value] : listB) {
        if (inB.contains(key))
            Note({row.fact, key.first, Json(), value}, differences);
    }
}

// Returns the text between the two, from a place on; none: it is not there.
std::optional<std::string> TextBetween(std::string_view text, std::string_view from, std::string_view to)
{
    constexpr size_t kMost = 200; // bytes of what is shown
    const size_t begin = text.find(from);
    if (begin == std::string_view::npos)
        return std::nullopt;
    text.remove_prefix(begin + from.size());
    const size_t end = text.substr(0, kMost).find(to);
    if (end == std::string_view::npos)
        return std::nullopt;
    return std::string(text.substr(0, end));
}

// Returns a box of the page: numbers in brackets.
std::optional<std::string> PdfBox(std::string_view pdf, std::string_view name)
{
    for (size_t at = pdf.find(name); at != std::string_view::npos; at = pdf.find(name, at + 1)) {
        std::string_view rest = pdf.substr(at + name.size());
        rest.remove_prefix(std::min(rest.find_first_not_of(kSpace), rest.size()));
        if (rest.starts_with('['))
            return TextBetween(rest, "[", "]");
    }
    return std::nullopt;
}

std::optional<std::string> SvgAttribute(std::string_view svg, std::string_view name)
{
    const size_t begin = svg.find("<svg");
    if (begin == std::string_view::npos)
        return std::nullopt;
    const std::string_view tag = svg.substr(begin, svg.find('>', begin) - begin);
    for (size_t at = tag.find(name); at != std::string_view::npos; at = tag.find(name, at + 1)) {
        const std::string_view rest = tag.substr(at + name.size());
        if (kSpace.find(tag[at - 1]) == std::string_view::npos || !rest.starts_with('='))
            continue;
        for (const char *quote : {"\"", "'"}) {
            if (rest.substr(1).starts_with(quote))
                return TextBetween(rest, quote, quote);
        }
    }
    return std::nullopt;
}

// Returns the words with numbers written in one way, as 72 for 72.00.
std::string WithPlainNumbers(std::string_view text)
{
    std::string plain;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
        if (text.empty())
            return plain;
        const std::string word(text.substr(0, text.find_first_of(kSpace)));
        const std::optional<double> number = ReadNumber(word);
        plain.append(plain.empty() ? "" : " ").append(number ? Decimal(*number) : word);
        text.remove_prefix(word.size());
    }
}

using FindFact = std::optional<std::string> (*)(std::string_view text, std::string_view name);

struct FileFact {
    const char *fact, *name;
    FindFact find;
};

FileFacts CompareFiles(std::span<const FileFact> rows, std::string_view a, std::string_view b)
{
    FileFacts facts;
    for (const FileFact &row : rows) {
        const std::optional<std::string> inA = row.find(a, row.name), inB = row.find(b, row.name);
        if (inA.has_value() != inB.has_value())
            facts.missing.emplace_back(row.fact);
        else if (inA)
            Note({row.fact, "", WithPlainNumbers(*inA), WithPlainNumbers(*inB)}, &facts.differences);
    }
    return facts;
}

// Calls take with each line that is not empty.
template <typename Take>
void EachLine(std::string_view text, const Take &take)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.empty())
            take(line);
    }
}

// Finds lines that the text has more often than the other one.
uint64_t FindSurplus(std::string_view text, std::string_view other, std::vector<std::string> *lines)
{
    std::unordered_map<std::string_view, uint64_t> left;
    EachLine(other, [&](std::string_view line) { ++left[line]; });
    uint64_t count = 0;
    EachLine(text, [&](std::string_view line) {
        const auto found = left.find(line);
        if (found != left.end() && found->second > 0) {
            --found->second;
            return;
        }
        if (++count <= kMostLines)
            lines->emplace_back(line);
    });
    return count;
}

} // namespace

std::vector<FactDifference> CompareFacts(const Result &a, const Result &b)
{
    const Json inA = FactsOf(a), inB = FactsOf(b);
    std::vector<FactDifference> differences;
    for (const auto &[fact, member] : kPlainFacts)
        Note({fact, "", inA.at(member), inB.at(member)}, &differences);
    for (const ListedFact &row : kListedFacts)
        CompareListed(row, inA, inB, &differences);
    const auto linesOf = [](const Json &facts) {
        std::string lines;
        for (const Json &warning : facts.at("warnings"))
            lines += Printable(warning.get<std::string>()) + "\n";
        return lines;
    };
    const LineDifferences warnings = CompareLines(linesOf(inA), linesOf(inB));
    for (const std::string &warning : warnings.onlyInA)
        Note({"warning", "", warning, Json()}, &differences);
    for (const std::string &warning : warnings.onlyInB)
        Note({"warning", "", Json(), warning}, &differences);
    return differences;
}

FileFacts ComparePdfFacts(std::string_view a, std::string_view b)
{
    constexpr FileFact kRows[] = {
        {"PDF version", "%PDF-",
         [](std::string_view text, std::string_view name) {
             return TextBetween(text.substr(0, 16), name, text.find('\r') < text.find('\n') ? "\r" : "\n");
         }},
        {"page box", "/MediaBox", PdfBox},
        {"cut", "/TrimBox", PdfBox},
    };
    return CompareFiles(kRows, a, b);
}

FileFacts CompareSvgFacts(std::string_view a, std::string_view b)
{
    constexpr FileFact kRows[] = {{"width", "width", SvgAttribute},
                                  {"height", "height", SvgAttribute},
                                  {"view box", "viewBox", SvgAttribute}};
    return CompareFiles(kRows, a, b);
}

LineDifferences CompareLines(std::string_view a, std::string_view b)
{
    LineDifferences lines;
    lines.countA = FindSurplus(a, b, &lines.onlyInA);
    lines.countB = FindSurplus(b, a, &lines.onlyInB);
    return lines;
}

} // namespace vxhost
