#include "cli/batch/Tally.h"

#include "library/FactsJson.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>

namespace vxhost
{

namespace
{

// 10114 is "10,114".
std::string Grouped(size_t number)
{
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3; at -= 3)
        text.insert(at - 3, ",");
    return text;
}

std::string Counted(size_t number, const char *noun)
{
    return fmt::format("{} {}{}", Grouped(number), noun, number == 1 ? "" : "s");
}

// "3 h 25 min", "3 min 25 s" or "25 s".
std::string DurationText(double seconds)
{
    const auto whole = static_cast<int64_t>(std::ceil(seconds));
    if (whole < 60)
        return fmt::format("{} s", whole);
    if (whole < 3600)
        return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole / 60 % 60);
}

// "42", or "0.75" where that is little.
std::string RateText(double rate)
{
    return rate >= 10 ? Grouped(static_cast<size_t>(rate)) : fmt::format("{:.2g}", rate);
}

} // namespace

void Tally::Begin(std::optional<size_t> documents, Clock::time_point now)
{
    documents_ = documents;
    began_ = now;
}

void Tally::Add(const Summary &summary, bool wasDoneBefore)
{
    (summary.IsDone() ? done_ : failed_) += 1;
    warned_ += summary.IsDone() && !summary.warnings.empty() ? 1 : 0;
    doneBefore_ += wasDoneBefore ? 1 : 0;
}

void Tally::TakeBack()
{
    ++passedOver_;
    if (documents_)
        --*documents_;
}

double Tally::SecondsTo(Clock::time_point now) const
{
    return std::chrono::duration<double>(now - began_).count();
}

// "213 of 10,114"
std::string Tally::CountText() const
{
    return documents_ ? fmt::format("{} of {}", Grouped(Finished()), Grouped(*documents_))
                      : Grouped(Finished());
}

std::string Tally::ProgressText(Clock::time_point now) const
{
    std::string text = CountText() + " done";
    const size_t fresh = Finished() - doneBefore_;
    if (const double rate = static_cast<double>(fresh) / SecondsTo(now); fresh > 0 && std::isfinite(rate)) {
        text += fmt::format(", {} a second", RateText(rate));
        if (documents_ && *documents_ > Finished())
            text +=
                fmt::format(", {} left", DurationText(static_cast<double>(*documents_ - Finished()) / rate));
    }
    if (failed_ > 0)
        text += fmt::format(", {} failed", Grouped(failed_));
    if (warned_ > 0)
        text += fmt::format(", {} with warnings", Grouped(warned_));
    return text;
}

std::string Tally::EndText(BatchEnd end, bool goesOn, Clock::time_point now) const
{
    std::string text;
    if (end == BatchEnd::Whole)
        text = fmt::format("{} in {}: {} done", Counted(Finished(), "document"), DurationText(SecondsTo(now)),
                           Grouped(done_));
    else
        text =
            fmt::format("{}: {} done", end == BatchEnd::Asked ? "asked to end" : "interrupted", CountText());
    if (warned_ > 0)
        text += fmt::format(", {} with warnings", Grouped(warned_));
    if (failed_ > 0)
        text += fmt::format(", {} failed", Grouped(failed_));
    if (doneBefore_ > 0)
        text += fmt::format(", {} before this run", Grouped(doneBefore_));
    if (passedOver_ > 0)
        text += fmt::format(", {} no drawing",
                            passedOver_ == 1 ? "1 file is" : Grouped(passedOver_) + " files are");
    if (end != BatchEnd::Whole)
        text += goesOn ? "; --resume goes on" : "; with --journal, --resume could go on";
    else if (failed_ > 0 && goesOn)
        text += "; --resume --retry failed tries these again";
    return text;
}

std::string Tally::EndJson(BatchEnd end, Status status, Clock::time_point now) const
{
    nlohmann::ordered_json json;
    if (documents_)
        json["documents"] = *documents_;
    else
        json["documents"] = nullptr;
    json["done"] = done_;
    json["warned"] = warned_;
    json["failed"] = failed_;
    json["doneBefore"] = doneBefore_;
    json["passedOver"] = passedOver_;
    json["seconds"] = std::round(SecondsTo(now) * 1000) / 1000;
    json["end"] = end == BatchEnd::Whole ? "whole" : end == BatchEnd::Asked ? "asked" : "interrupted";
    json["exit"] = static_cast<int>(status);
    return JsonLine(json);
}

} // namespace vxhost
