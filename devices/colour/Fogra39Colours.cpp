// Little CMS takes longer to make its conversion than most documents need for all of theirs, and every document has a process of
// its own. What it does with this profile is written out here, step by step and rounding by rounding, with what it makes of the
// profile beforehand as constants. A profile that a user names goes through Little CMS: a test hands it this one, and
// compares.
#include "devices/colour/Fogra39Colours.h"

#include "devices/colour/Fogra39.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace vxhost
{

namespace
{

// The profile has one table from ink to Lab for all intents: a curve for each ink, a grid, a curve for each component. All numbers
// have 16 bits, the high byte first.
constexpr int kCurveEntries = 1024, kGridPoints = 9;
constexpr size_t kInks = 4, kComponents = 3, kEntryBytes = 2;
constexpr size_t kTable = 684, kTableHead = 52, kCurveBytes = kCurveEntries * kEntryBytes;
constexpr size_t kInkCurves = kTable + kTableHead, kGrid = kInkCurves + kInks * kCurveBytes;
// From one point of the grid to its neighbour: along cyan, magenta, yellow and black.
constexpr size_t kSteps[kInks] = {kGridPoints * kGridPoints * kGridPoints * kComponents * kEntryBytes,
                                  kGridPoints *kGridPoints *kComponents *kEntryBytes,
                                  kGridPoints *kComponents *kEntryBytes, kComponents *kEntryBytes};
constexpr size_t kComponentCurves = kGrid + kSteps[0] * kGridPoints;

constexpr int32_t kMost = 0xFFFF;

// A place in a table: the entry before it, and how far it is from there to the next, of 65536.
struct Place {
    int32_t entry = 0, rest = 0;
    bool isLast = false; // there is none behind it

    Place(int32_t value, int32_t entries)
    {
        const int32_t place = Widen(value * (entries - 1));
        entry = place >> 16;
        rest = place & kMost;
        isLast = value == kMost;
    }

    // Turns parts of 65535 into parts of 65536.
    static int32_t Widen(int32_t value) { return value + (value + 0x7FFF) / kMost; }
};

// Both are words. Their difference times the rest may take 33 bits with its sign: the bit that is lost is cut off anyway.
int32_t Between(int32_t low, int32_t high, int32_t rest)
{
    const uint32_t product = static_cast<uint32_t>(high - low) * static_cast<uint32_t>(rest);
    return static_cast<uint16_t>(static_cast<uint32_t>(low) + ((product + 0x8000) >> 16));
}

// The whites that both sides mean, and what the encoding of XYZ calls 1.
constexpr double kWhite[] = {0.9642, 1.0, 0.8249};
constexpr double kXyzOne = 1.0 + 32767.0 / 32768.0;

// XYZ as it is encoded to the linear red, green and blue of sRGB.
constexpr double kToScreen[3][3] = {
    {0x1.912b73a1f6e05p+2, -0x1.9dffca044a1a2p+1, -0x1.f6768abc7d836p-1},
    {-0x1.f51c91027df0fp+0, 0x1.ea8595fd05978p+1, 0x1.11e1d99ca43a3p-4},
    {0x1.26c27f02ca456p-3, -0x1.d4f8e870fcae5p-2, 0x1.67de12258b234p+1},
};

// The blackest that the press prints, in XYZ, by Intent.
constexpr double kBlack[][3] = {
    {0x1.3d4060316b213p-7, 0x1.4907e07fb803ep-7, 0x1.0f6ae01356d8dp-7},
    {0x1.5c755063963dfp-7, 0x1.6965703528383p-7, 0x1.2a1da2865ef32p-7},
};

// The inverse of what Lab does to XYZ.
double FromLab(double t)
{
    constexpr double kStraight = 24.0 / 116.0;
    return t <= kStraight ? (108.0 / 841.0) * (t - 16.0 / 116.0) : t * t * t;
}

// The curve of sRGB: straight where it begins.
constexpr double kGamma = 2.4, kScale = 1 / 1.055, kOffset = 0.055 / 1.055, kSlope = 1 / 12.92;

class Fogra39Colours final : public ScreenColours
{
  public:
    explicit Fogra39Colours(Intent intent) : name_(intent == Intent::Perceptual ? kPerceptual : kRelative)
    {
        // The blackest that can be printed becomes the black of the screen, and white stays.
        const auto &black = kBlack[intent == Intent::Perceptual ? 1 : 0];
        for (size_t i = 0; i < kComponents; ++i) {
            const double range = black[i] - kWhite[i];
            scale_[i] = -kWhite[i] / range;
            shift_[i] = -kWhite[i] * -black[i] / range / kXyzOne;
        }
    }

    std::string Describe() const override { return name_; }

  protected:
    Rgb Compute(InkWord ink) override
    {
        const std::array<float, kComponents> lab = LabOf(ink);
        const double y = (lab[0] * 100.0 + 16.0) / 116.0;
        const double byLab[] = {y + 0.002 * (lab[1] * 255.0 - 128.0), y,
                                y - 0.005 * (lab[2] * 255.0 - 128.0)};
        float xyz[kComponents];
        for (size_t i = 0; i < kComponents; ++i) {
            const auto printed = static_cast<float>(FromLab(byLab[i]) * kWhite[i] / kXyzOne);
            xyz[i] = static_cast<float>(printed * scale_[i] + shift_[i]);
        }
        const auto level = [&](const double(&row)[3]) {
            return LevelOf(static_cast<float>(xyz[0] * row[0] + xyz[1] * row[1] + xyz[2] * row[2]));
        };
        return {level(kToScreen[0]), level(kToScreen[1]), level(kToScreen[2])};
    }

  private:
    // Linear light to the level of sRGB.
    uint8_t LevelOf(double light) const
    {
        const double level =
            light >= curveBegins_ ? (std::pow(light, 1 / kGamma) - kOffset) / kScale : light / kSlope;
        const double words = double{static_cast<float>(level)} * kMost + 0.5;
        const auto word = words <= 0 ? 0U : words >= kMost ? uint32_t{kMost} : static_cast<uint32_t>(words);
        return static_cast<uint8_t>((word * 0xFF01U + 0x800000U) >> 24);
    }

    int32_t At(size_t offset) const
    {
        return std::to_integer<int32_t>(profile_[offset]) << 8 |
               std::to_integer<int32_t>(profile_[offset + 1]);
    }

    // The value on a curve, which is of as many as 65535.
    int32_t OnCurve(size_t curve, int32_t value) const
    {
        const Place place(value, kCurveEntries);
        const size_t at = curve + static_cast<size_t>(place.entry) * kEntryBytes;
        return place.isLast ? At(at) : Between(At(at), At(at + kEntryBytes), place.rest);
    }

    // Each component from 0 to 1, as Lab is encoded.
    std::array<float, kComponents> LabOf(InkWord ink) const
    {
        Place places[kInks] = {PlaceOf(ink, 0), PlaceOf(ink, 1), PlaceOf(ink, 2), PlaceOf(ink, 3)};
        size_t corner = kGrid, step[kInks];
        for (size_t i = 0; i < kInks; ++i) {
            corner += static_cast<size_t>(places[i].entry) * kSteps[i];
            step[i] = places[i].isLast ? 0 : kSteps[i];
        }
        // A cell has six tetrahedra. The edges of the one that holds the place go from ink to ink, from the one that is
        // farthest along to the one that is least.
        size_t order[] = {1, 2, 3};
        const auto sort = [&](size_t a, size_t b) {
            if (places[order[a]].rest < places[order[b]].rest)
                std::swap(order[a], order[b]);
        };
        sort(0, 1);
        sort(1, 2);
        sort(0, 1);

        constexpr double kVersion4 = 65535.0 / 65280.0; // of Lab, which the tables have as of version 2
        std::array<float, kComponents> lab;
        for (size_t i = 0; i < kComponents; ++i) {
            const auto inCell = [&](size_t at) {
                const int32_t first = At(at);
                int32_t sum = 0, before = first;
                for (const size_t axis : order) {
                    at += step[axis];
                    const int32_t next = At(at);
                    sum += (next - before) * places[axis].rest;
                    before = next;
                }
                return static_cast<int32_t>(
                    static_cast<uint16_t>(first + ((Place::Widen(sum) + 0x8000) >> 16)));
            };
            const size_t at = corner + i * kEntryBytes;
            const int32_t onGrid = Between(inCell(at), inCell(at + step[0]), places[0].rest);
            const auto value =
                static_cast<float>(OnCurve(kComponentCurves + i * kCurveBytes, onGrid) / double{kMost});
            lab[i] = static_cast<float>(value * kVersion4);
        }
        return lab;
    }

    Place PlaceOf(InkWord ink, size_t which) const
    {
        constexpr int32_t kWordsALevel = 257;
        const auto level = static_cast<int32_t>(ink >> (8 * which) & 0xFF);
        return {OnCurve(kInkCurves + which * kCurveBytes, level * kWordsALevel), kGridPoints};
    }

    static constexpr const char *kRelative = "fogra39, relative colorimetric, black point compensation";
    static constexpr const char *kPerceptual = "fogra39, perceptual, black point compensation";

    const char *name_;
    std::span<const std::byte> profile_ = Fogra39Profile();
    double curveBegins_ = std::pow(kScale * 0.04045 + kOffset, kGamma); // in linear light
    double scale_[kComponents], shift_[kComponents];
};

} // namespace

std::unique_ptr<ScreenColours> MakeFogra39Colours(Intent intent)
{
    return std::make_unique<Fogra39Colours>(intent);
}

} // namespace vxhost
