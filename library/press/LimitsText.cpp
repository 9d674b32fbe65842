#include "library/press/LimitsText.h"

#include "host/reading/Utf8.h"
#include "library/Decimal.h"
#include "library/Options.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string>

namespace vxhost
{

namespace
{

using Json = nlohmann::json;

// Returns the row of that name. It throws OptionError, as the following do.
template <typename Rows>
auto &FindRow(const Rows &rows, const std::string &what, const std::string &name)
{
    const auto found = std::ranges::find(rows, std::string_view(name),
                                         [](const auto &row) { return std::string_view(row.name); });
    if (found == rows.end()) {
        std::string names;
        for (const auto &row : rows)
            names.append(names.empty() ? "" : ", ").append(row.name);
        throw OptionError("no " + what + " \"" + Printable(name) + "\": give one of " + names);
    }
    return *found;
}

const Json::object_t &MembersOf(const Json &value, const std::string &name)
{
    if (!value.is_object())
        throw OptionError(name +
                          " is no object: write it as {\"limits\": {\"hairline\": 0.2}, \"severities\": "
                          "{\"hairline\": \"error\"}}");
    return value.get_ref<const Json::object_t &>();
}

std::string Shown(const Json &value)
{
    return value.is_structured() ? "an object or a list" : Printable(value.dump());
}

void ReadLimit(const std::string &name, const Json &value, PreflightLimits *limits)
{
    const LimitRow &row = FindRow(LimitRows(), "limit", name);
    const double number = value.is_number() ? value.get<double>() : NAN;
    if (!(number >= row.least && number <= row.most))
        throw OptionError(name + " is " + Shown(value) + ", not a number from " + Decimal(row.least) +
                          " to " + Decimal(row.most));
    limits->*row.value = number;
}

void ReadSeverity(const std::string &name, const Json &value, PreflightLimits *limits)
{
    const FindingRow &row = FindRow(FindingRows(), "finding", name);
    for (const Severity severity : {Severity::Error, Severity::Warning, Severity::Note, Severity::Ignore}) {
        if (value == NameOf(severity)) {
            limits->severities[static_cast<size_t>(&row - FindingRows().data())] = severity;
            return;
        }
    }
    throw OptionError(name + " is " + Shown(value) + ": give \"error\", \"warning\", \"note\" or \"ignore\"");
}

Json Parse(std::string_view text)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error &error) {
        throw OptionError("no JSON at byte " + std::to_string(error.byte) + ": mend it there");
    } catch (const Json::out_of_range &) {
        throw OptionError("a number is out of range: give a smaller one");
    }
}

} // namespace

PreflightLimits ReadPreflightLimits(std::string_view text)
{
    PreflightLimits limits;
    const Json json = Parse(text);
    for (const auto &[member, value] : MembersOf(json, "the file")) {
        if (member != "limits" && member != "severities")
            throw OptionError("no member \"" + Printable(member) + "\": give \"limits\" and \"severities\"");
        for (const auto &[name, part] : MembersOf(value, member)) {
            if (member == "limits")
                ReadLimit(name, part, &limits);
            else
                ReadSeverity(name, part, &limits);
        }
    }
    return limits;
}

} // namespace vxhost
