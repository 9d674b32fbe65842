#include "cli/report/DifferenceReport.h"

#include "cli/report/Summary.h"
#include "host/reading/Utf8.h"
#include "library/Decimal.h"
#include "library/FactsJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace vxhost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr size_t kMostShownPlaces = 10;
constexpr int kFull = 255;

std::string Row(std::string_view label, const std::string &value)
{
    return fmt::format("  {:<13}{}\n", label, value);
}

double Rounded(double number)
{
    return std::round(number * 1e6) / 1e6;
}

// Returns the place in points, where it is known what the picture shows.
std::optional<Box> BoxOf(const DifferentPlace &place, const PictureDifference &picture,
                         const DifferenceTask &task)
{
    if (!task.box)
        return std::nullopt;
    const double x = task.box->Width() / picture.width, y = task.box->Height() / picture.height;
    return Box{Rounded(task.box->left + place.left * x), Rounded(task.box->top - place.bottom * y),
               Rounded(task.box->left + place.right * x), Rounded(task.box->top - place.top * y)};
}

std::string PlaceText(const DifferentPlace &place, const PictureDifference &picture,
                      const DifferenceTask &task)
{
    const std::string pixels = place.pixels == 1 ? "1 pixel" : fmt::format("{} pixels", place.pixels);
    if (const std::optional<Box> box = BoxOf(place, picture, task))
        return fmt::format("{} within {} {} {} {}", pixels, Decimal(box->left, 2), Decimal(box->bottom, 2),
                           Decimal(box->right, 2), Decimal(box->top, 2));
    return fmt::format("{} within {} {} {} {}, in pixels from the left and the top", pixels, place.left,
                       place.top, place.right, place.bottom);
}

std::string AmountText(uint64_t different, uint64_t of, int largest, double mean)
{
    return fmt::format("{} of {} differ ({} %), by {} of {} at most and {} on average", different, of,
                       Decimal(100.0 * static_cast<double>(different) / static_cast<double>(of), 4), largest,
                       kFull, Decimal(mean, 4));
}

std::string PictureText(const PictureDifference &picture, const DifferenceTask &task)
{
    if (picture.largest == 0)
        return "";
    const bool isInks = picture.kind == PictureKind::Inks;
    std::string text = Row(isInks ? "inks" : "pixels",
                           AmountText(picture.different, picture.Pixels(), picture.largest, picture.mean));
    if (isInks) {
        for (const PictureDifference::Channel &channel : picture.channels) {
            if (channel.largest > 0)
                text += Row("  plate", fmt::format("{}: {}", Printable(channel.name),
                                                   AmountText(channel.different, picture.Pixels(),
                                                              channel.largest, channel.mean)));
        }
    }
    const size_t shown = std::min(picture.places.size(), kMostShownPlaces);
    for (size_t i = 0; i < shown; ++i)
        text += Row("  place", PlaceText(picture.places[i], picture, task));
    if (picture.placeCount > shown)
        text += Row("", fmt::format("and {} more places", picture.placeCount - shown));
    return text;
}

// Returns a value as a person reads it.
std::string ValueText(const Json &value)
{
    if (value.is_string())
        return fmt::format("\"{}\"", Printable(value.get_ref<const std::string &>()));
    if (value.is_number_float())
        return Decimal(value.get<double>());
    if (value.is_array()) {
        std::string text;
        for (const Json &item : value)
            text.append(text.empty() ? "" : " ").append(ValueText(item));
        return text;
    }
    return value.dump();
}

// Returns the members that differ, as one of the two has them.
std::string MembersText(const Json &value, const Json &other)
{
    std::string text;
    for (const auto &[name, member] : value.items()) {
        if (member != other.at(name))
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, ValueText(member));
    }
    return text;
}

std::string FactText(const FactDifference &difference)
{
    const auto &[fact, name, a, b] = difference;
    const std::string of = name.empty() ? "" : fmt::format("\"{}\" ", Printable(name));
    if (a.is_null() || b.is_null()) {
        const Json &only = a.is_null() ? b : a;
        return Row(fact, fmt::format("{}only in the {}{}", of, a.is_null() ? "second" : "first",
                                     name.empty() ? ": " + ValueText(only) : ""));
    }
    if (a.is_object())
        return Row(fact, fmt::format("{}{} | {}", of, MembersText(a, b), MembersText(b, a)));
    return Row(fact, fmt::format("{} | {}", ValueText(a), ValueText(b)));
}

std::string LinesText(std::string_view sign, const std::vector<std::string> &lines, uint64_t count)
{
    std::string text;
    for (const std::string &line : lines)
        text += Row("words", fmt::format("{} {}", sign, Printable(line)));
    if (count > lines.size())
        text += Row("", fmt::format("{} and {} more lines", sign, count - lines.size()));
    return text;
}

Json PictureJson(const PictureDifference &picture, const DifferenceTask &task)
{
    Json json;
    json["width"] = picture.width;
    json["height"] = picture.height;
    json["different"] = picture.different;
    json["share"] = Rounded(static_cast<double>(picture.different) / static_cast<double>(picture.Pixels()));
    json["largest"] = picture.largest;
    json["mean"] = Rounded(picture.mean);
    json["channels"] = Json::array();
    for (const PictureDifference::Channel &channel : picture.channels)
        json["channels"].push_back({{"name", channel.name},
                                    {"inA", channel.isInA},
                                    {"inB", channel.isInB},
                                    {"different", channel.different},
                                    {"largest", channel.largest},
                                    {"mean", Rounded(channel.mean)}});
    json["placeCount"] = picture.placeCount;
    json["places"] = Json::array();
    for (const DifferentPlace &place : picture.places) {
        Json &one = json["places"].emplace_back();
        if (const std::optional<Box> box = BoxOf(place, picture, task))
            one["box"] = {box->left, box->bottom, box->right, box->top};
        one["pixels"] = {place.left, place.top, place.right, place.bottom};
        one["different"] = place.pixels;
    }
    return json;
}

} // namespace

std::string DifferenceText(const DifferenceTask &task, const Difference &difference)
{
    const auto shown = [](const std::string &input) {
        return Printable(InputName(input), std::numeric_limits<size_t>::max());
    };
    std::string text =
        fmt::format("{} and {} {}{}\n", shown(task.a.input), shown(task.b.input),
                    difference.IsAny() ? "differ" : "are the same",
                    task.picture.tolerance > 0
                        ? fmt::format(", where {} of {} is no difference", task.picture.tolerance, kFull)
                        : "");
    for (const PictureDifference &picture : difference.pictures)
        text += PictureText(picture, task);
    if (difference.firstByte)
        text += Row("bytes",
                    fmt::format("{} | {}, the first that differs is byte {}", task.a.bytes->Bytes().size(),
                                task.b.bytes->Bytes().size(), *difference.firstByte + 1));
    for (const FactDifference &fact : difference.facts)
        text += FactText(fact);
    text += LinesText("-", difference.words.onlyInA, difference.words.countA);
    text += LinesText("+", difference.words.onlyInB, difference.words.countB);
    for (const std::string &what : difference.notCompared)
        text += Row("not compared", what);
    return text;
}

std::string DifferenceJson(const DifferenceTask &task, const Difference &difference)
{
    Json json;
    json["a"] = task.a.input;
    json["b"] = task.b.input;
    json["same"] = !difference.IsAny();
    json["tolerance"] = task.picture.tolerance;
    if (task.box)
        json["box"] = {task.box->left, task.box->bottom, task.box->right, task.box->top};
    for (const PictureDifference &picture : difference.pictures)
        json[picture.kind == PictureKind::Inks ? "inks" : "pixels"] = PictureJson(picture, task);
    if (task.a.bytes != nullptr && task.b.bytes != nullptr) {
        json["bytes"] = {{"a", task.a.bytes->Bytes().size()}, {"b", task.b.bytes->Bytes().size()}};
        if (difference.firstByte)
            json["bytes"]["firstDifferent"] = *difference.firstByte;
    }
    json["facts"] = Json::array();
    for (const FactDifference &fact : difference.facts) {
        Json &one = json["facts"].emplace_back();
        one["fact"] = fact.fact;
        if (!fact.name.empty())
            one["name"] = fact.name;
        one["a"] = fact.a;
        one["b"] = fact.b;
    }
    if (task.a.words != nullptr && task.b.words != nullptr) {
        json["words"] = {{"onlyInA", difference.words.onlyInA}, {"onlyInB", difference.words.onlyInB}};
        if (const uint64_t omitted = difference.words.countA + difference.words.countB -
                                     difference.words.onlyInA.size() - difference.words.onlyInB.size())
            json["words"]["omitted"] = omitted;
    }
    json["notCompared"] = difference.notCompared;
    return JsonLine(json);
}

} // namespace vxhost
