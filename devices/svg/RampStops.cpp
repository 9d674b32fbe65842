// A span is sampled finely; then samples are left out as long as the straight way past them stays within the tolerance.
#include "devices/svg/RampStops.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vxhost::svg
{

namespace
{

constexpr size_t kMaxIntervals = 255;
// A change of inks over which every profile is as good as straight.
constexpr double kInkStep = 1.0 / 64;
constexpr double kTolerance = 1; // one level of 255; less would follow the rounding of colours

struct Sample {
    RampStop stop;
    std::array<double, 3> levels; // red, green, blue
};

double InkChange(const Colour &from, const Colour &to)
{
    double change = 0;
    for (int i = 0; i < 4; ++i)
        change = std::max(change, std::abs(to.ink[i] - from.ink[i]));
    return change;
}

Colour Mix(const Colour &from, const Colour &to, double part)
{
    Colour mixed = from;
    for (int i = 0; i < 4; ++i)
        mixed.ink[i] += (to.ink[i] - from.ink[i]) * part;
    for (size_t i = 0; i < std::size(mixed.spots); ++i) {
        if (mixed.spots[i].ink == to.spots[i].ink)
            mixed.spots[i].amount += (to.spots[i].amount - from.spots[i].amount) * part;
    }
    return mixed;
}

size_t CountIntervals(const std::vector<Colour> &colours)
{
    const size_t given = colours.size() - 1;
    if (given == 0)
        return 1;
    if (given >= kMaxIntervals)
        return kMaxIntervals;
    double change = 0;
    for (size_t i = 0; i < given; ++i)
        change = std::max(change, InkChange(colours[i], colours[i + 1]));
    const auto wanted = static_cast<size_t>(std::ceil(change / kInkStep));
    return given * std::clamp<size_t>(wanted, 1, kMaxIntervals / given);
}

// At least two samples, from one end of the span to the other.
void TakeSamples(const ColourSpan &span, const std::function<Rgb(const Colour &)> &convert,
                 std::vector<Sample> *samples)
{
    const std::vector<Colour> &colours = span.colours;
    const size_t intervals = CountIntervals(colours);
    samples->clear();
    for (size_t i = 0; i <= intervals; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(intervals);
        const double place = part * static_cast<double>(colours.size() - 1);
        const auto before = static_cast<size_t>(place);
        const size_t after = std::min(before + 1, colours.size() - 1);
        Sample sample;
        sample.stop.at = i == intervals ? span.to : span.from + (span.to - span.from) * part;
        sample.stop.colour = Mix(colours[before], colours[after], place - static_cast<double>(before));
        const Rgb rgb = convert(sample.stop.colour);
        sample.levels = {static_cast<double>(rgb.r), static_cast<double>(rgb.g), static_cast<double>(rgb.b)};
        samples->push_back(sample);
    }
}

// The directions, level by sample, in which a straight way from a stop passes near enough to all samples so far.
struct Corridor {
    std::array<double, 3> low, high;

    Corridor() { low.fill(-INFINITY), high.fill(INFINITY); }
    // Whether the way that leads to the sample lies inside.
    bool Leads(const Sample &from, const Sample &to, double distance) const
    {
        for (size_t i = 0; i < 3; ++i) {
            const double slope = (to.levels[i] - from.levels[i]) / distance;
            if (slope < low[i] || slope > high[i])
                return false;
        }
        return true;
    }
    void Narrow(const Sample &from, const Sample &to, double distance)
    {
        for (size_t i = 0; i < 3; ++i) {
            const double change = to.levels[i] - from.levels[i];
            low[i] = std::max(low[i], (change - kTolerance) / distance);
            high[i] = std::min(high[i], (change + kTolerance) / distance);
        }
    }
};

void AddNeeded(const std::vector<Sample> &samples, std::vector<RampStop> *stops)
{
    if (stops->empty() || stops->back().at != samples.front().stop.at ||
        stops->back().colour != samples.front().stop.colour)
        stops->push_back(samples.front().stop);
    size_t anchor = 0;
    Corridor corridor;
    for (size_t i = 1; i < samples.size(); ++i) {
        if (!corridor.Leads(samples[anchor], samples[i], static_cast<double>(i - anchor))) {
            anchor = i - 1;
            stops->push_back(samples[anchor].stop);
            corridor = {};
        }
        corridor.Narrow(samples[anchor], samples[i], static_cast<double>(i - anchor));
    }
    stops->push_back(samples.back().stop);
}

} // namespace

std::vector<RampStop> FindRampStops(std::span<const ColourSpan> spans,
                                    const std::function<Rgb(const Colour &)> &convert)
{
    std::vector<RampStop> stops;
    std::vector<Sample> samples;
    for (const ColourSpan &span : spans) {
        if (span.colours.empty())
            continue;
        TakeSamples(span, convert, &samples);
        AddNeeded(samples, &stops);
    }
    return stops;
}

} // namespace vxhost::svg
