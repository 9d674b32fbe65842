#include "cli/options/PreflightLimitsFile.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/OptionFile.h"
#include "host/reading/Utf8.h"
#include "library/Decimal.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

namespace vxhost
{

namespace
{

using Json = nlohmann::json;

constexpr const char *kOption = "--limits";

// Throws UsageError with what is wrong and what to do.
[[noreturn]] void Refuse(const std::string &path, const std::string &text)
{
    throw UsageError(fmt::format("{} {}: {}", kOption, path, text));
}

// Returns the row of that name, or refuses the file.
template <typename Rows>
auto &FindRow(const Rows &rows, const std::string &what, const std::string &name, const std::string &path)
{
    const auto found = std::ranges::find(rows, std::string_view(name),
                                         [](const auto &row) { return std::string_view(row.name); });
    if (found == rows.end()) {
        std::vector<std::string_view> names;
        std::ranges::transform(rows, std::back_inserter(names), [](const auto &row) { return row.name; });
        Refuse(path,
               fmt::format("no {} \"{}\": give one of {}", what, Printable(name), fmt::join(names, ", ")));
    }
    return *found;
}

// Returns the members of an object, or refuses the file.
const Json::object_t &MembersOf(const Json &value, const std::string &name, const std::string &path)
{
    if (!value.is_object())
        Refuse(path, fmt::format("{} is no object: write it as {{\"limits\": {{\"hairline\": 0.2}}, "
                                 "\"severities\": {{\"hairline\": \"error\"}}}}",
                                 name));
    return value.get_ref<const Json::object_t &>();
}

std::string Shown(const Json &value)
{
    return value.is_structured() ? "an object or a list" : Printable(value.dump());
}

void ReadLimit(const std::string &name, const Json &value, const std::string &path, PreflightLimits *limits)
{
    const LimitRow &row = FindRow(LimitRows(), "limit", name, path);
    const double number = value.is_number() ? value.get<double>() : NAN;
    if (!(number >= row.least && number <= row.most))
        Refuse(path, fmt::format("{} is {}, not a number from {} to {}", name, Shown(value),
                                 Decimal(row.least), Decimal(row.most)));
    limits->*row.value = number;
}

void ReadSeverity(const std::string &name, const Json &value, const std::string &path,
                  PreflightLimits *limits)
{
    const FindingRow &row = FindRow(FindingRows(), "finding", name, path);
    for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Note, Severity::Ignore}) {
        if (value == NameOf(severity)) {
            limits->severities[static_cast<size_t>(&row - FindingRows().data())] = severity;
            return;
        }
    }
    Refuse(path,
           fmt::format("{} is {}: give \"error\", \"warning\", \"note\" or \"ignore\"", name, Shown(value)));
}

} // namespace

PreflightLimits ReadPreflightLimits(std::string_view text, const std::string &path)
{
    Json json;
    try {
        json = Json::parse(text);
    } catch (const Json::parse_error &error) {
        Refuse(path, fmt::format("no JSON at byte {}: mend it there", error.byte));
    } catch (const Json::out_of_range &) {
        Refuse(path, "a number is out of range: give a smaller one");
    }
    PreflightLimits limits;
    for (const auto &[member, value] : MembersOf(json, "the file", path)) {
        if (member != "limits" && member != "severities")
            Refuse(path,
                   fmt::format("no member \"{}\": give \"limits\" and \"severities\"", Printable(member)));
        for (const auto &[name, part] : MembersOf(value, member, path)) {
            if (member == "limits")
                ReadLimit(name, part, path, &limits);
            else
                ReadSeverity(name, part, path, &limits);
        }
    }
    return limits;
}

PreflightLimits ReadPreflightLimitsFile(const std::string &path, double seconds)
{
    constexpr size_t kMostBytes = size_t{64} << 10;
    const OptionFile file = {kOption, path, "the most that limits may have: leave out what is as by default"};
    return ReadPreflightLimits(ReadOptionFile(file, kMostBytes, seconds), path);
}

} // namespace vxhost
