#include "cli/difference/PictureDifference.h"

#include "devices/raster/PngWriter.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace vxhost
{

namespace
{

constexpr int kFull = 255;

// Pixels that are so far apart, in both directions, may be one place. They are in the same cell, or in cells that touch.
constexpr int kCell = 16;

// Says which channel of each picture is which. Inks have their names, and a picture that lacks one has none of it.
struct ChannelPair {
    std::optional<size_t> inA, inB;
};

std::optional<size_t> FindChannel(const PictureFacts &facts, const std::string &name)
{
    const auto found = std::ranges::find(facts.channels, name);
    if (found == facts.channels.end())
        return std::nullopt;
    return static_cast<size_t>(found - facts.channels.begin());
}

std::vector<ChannelPair> PairChannels(const PictureFacts &a, const PictureFacts &b)
{
    std::vector<ChannelPair> pairs;
    for (size_t i = 0; i < a.channels.size(); ++i)
        pairs.push_back({i, FindChannel(b, a.channels[i])});
    for (size_t i = 0; i < b.channels.size(); ++i) {
        if (!FindChannel(a, b.channels[i]))
            pairs.push_back({std::nullopt, i});
    }
    return pairs;
}

// Reads the rows of both, side by side.
class RowPair
{
  public:
    RowPair(PictureFile &a, PictureFile &b)
        : a_(a), b_(b), pairs_(PairChannels(a.Facts(), b.Facts())), rowA_(a.Facts().RowBytes()),
          rowB_(b.Facts().RowBytes())
    {
    }

    const std::vector<ChannelPair> &Pairs() const { return pairs_; }
    Failure Next()
    {
        Failure failure = ReadRow(&a_, &rowA_);
        return failure ? failure : ReadRow(&b_, &rowB_);
    }
    const uint8_t *PixelA(int x) const { return &rowA_[static_cast<size_t>(x) * a_.Facts().channels.size()]; }
    const uint8_t *PixelB(int x) const { return &rowB_[static_cast<size_t>(x) * b_.Facts().channels.size()]; }

    // Returns how far a channel of a pixel differs.
    int Distance(const ChannelPair &pair, int x) const
    {
        const int a = pair.inA ? PixelA(x)[*pair.inA] : 0, b = pair.inB ? PixelB(x)[*pair.inB] : 0;
        return std::abs(a - b);
    }
    int LargestDistance(int x) const
    {
        int largest = 0;
        for (const ChannelPair &pair : pairs_)
            largest = std::max(largest, Distance(pair, x));
        return largest;
    }

  private:
    // A pixel that nobody sees has no colour, whatever the file says.
    static Failure ReadRow(PictureFile *picture, std::vector<uint8_t> *row)
    {
        Failure failure = picture->ReadRow(row->data());
        if (failure || !picture->Facts().hasAlpha)
            return failure;
        for (size_t i = 0; i < row->size(); i += 4) {
            if ((*row)[i + 3] == 0)
                std::fill_n(row->begin() + static_cast<ptrdiff_t>(i), 3, uint8_t{0});
        }
        return {};
    }

    PictureFile &a_, &b_;
    std::vector<ChannelPair> pairs_;
    std::vector<uint8_t> rowA_, rowB_;
};

// Gathers the pixels that differ in the cells of a grid, and makes places of cells that touch.
class PlaceGrid
{
  public:
    PlaceGrid(int width, int height)
        : columns_(Cells(width)), rows_(Cells(height)),
          cells_(static_cast<size_t>(columns_) * static_cast<size_t>(rows_))
    {
    }

    void Add(int x, int y)
    {
        Cell &cell = cells_[At(x / kCell, y / kCell)];
        const auto inX = static_cast<uint8_t>(x % kCell), inY = static_cast<uint8_t>(y % kCell);
        if (cell.pixels++ == 0) {
            cell.left = cell.right = inX;
            cell.top = cell.bottom = inY;
        }
        cell.left = std::min(cell.left, inX);
        cell.right = std::max(cell.right, inX);
        cell.bottom = inY; // rows come from the top
    }

    // It can be called once.
    std::vector<DifferentPlace> TakePlaces()
    {
        std::vector<DifferentPlace> places;
        for (int row = 0; row < rows_; ++row) {
            for (int column = 0; column < columns_; ++column) {
                if (cells_[At(column, row)].pixels > 0)
                    places.push_back(TakePlace(column, row));
            }
        }
        return places;
    }

  private:
    struct Cell {
        uint16_t pixels = 0;
        uint8_t left = 0, top = 0, right = 0, bottom = 0; // of those, within the cell
    };
    static_assert(kCell * kCell <= UINT16_MAX);

    static int Cells(int pixels) { return (pixels + kCell - 1) / kCell; }
    size_t At(int column, int row) const
    {
        return static_cast<size_t>(row) * static_cast<size_t>(columns_) + static_cast<size_t>(column);
    }

    // Returns what differs in a cell.
    DifferentPlace PlaceOf(int column, int row) const
    {
        const Cell &cell = cells_[At(column, row)];
        const int x = column * kCell, y = row * kCell;
        return {x + cell.left, y + cell.top, x + cell.right + 1, y + cell.bottom + 1, cell.pixels};
    }
    static bool IsNear(const DifferentPlace &one, const DifferentPlace &other)
    {
        return one.left < other.right + kCell && other.left < one.right + kCell &&
               one.top < other.bottom + kCell && other.top < one.bottom + kCell;
    }

    DifferentPlace TakePlace(int column, int row)
    {
        DifferentPlace place = {columns_ * kCell, rows_ * kCell, 0, 0, 0};
        std::vector<std::array<int, 2>> left = {{column, row}};
        while (!left.empty()) {
            const auto [x, y] = left.back();
            left.pop_back();
            Cell &cell = cells_[At(x, y)];
            if (cell.pixels == 0)
                continue;
            const DifferentPlace part = PlaceOf(x, y);
            place.left = std::min(place.left, part.left);
            place.top = std::min(place.top, part.top);
            place.right = std::max(place.right, part.right);
            place.bottom = std::max(place.bottom, part.bottom);
            place.pixels += part.pixels;
            cell.pixels = 0;
            for (int toY = std::max(y - 1, 0); toY <= std::min(y + 1, rows_ - 1); ++toY) {
                for (int toX = std::max(x - 1, 0); toX <= std::min(x + 1, columns_ - 1); ++toX) {
                    if (IsNear(part, PlaceOf(toX, toY)))
                        left.push_back({toX, toY});
                }
            }
        }
        return place;
    }

    int columns_, rows_;
    std::vector<Cell> cells_;
};

// Colours of the picture.
struct Pixel {
    uint8_t red, green, blue;
};
constexpr Pixel kDarkerInA = {213, 49, 11}, kDarkerInB = {11, 95, 213}, kAsDark = {142, 36, 170};
constexpr Pixel kFrame = {60, 60, 60}, kGap = {160, 160, 160};
constexpr int kGapWidth = 8;
constexpr int kFrameGap = 3, kFrameWidth = 2; // pixels around a place
constexpr int kFaintness = 4;                 // of what is the same a part of its darkness is left

uint8_t OverWhite(int value, int alpha)
{
    return static_cast<uint8_t>((value * alpha + kFull * (kFull - alpha) + kFull / 2) / kFull);
}

// Returns about the colour on white paper. Spot inks are as gray as there is of them.
Pixel ColourOf(const uint8_t *pixel, const PictureFacts &facts)
{
    if (facts.kind == PictureKind::Colours)
        return {OverWhite(pixel[0], pixel[3]), OverWhite(pixel[1], pixel[3]), OverWhite(pixel[2], pixel[3])};
    int paper[3] = {kFull, kFull, kFull};
    for (size_t i = 0; i < facts.channels.size(); ++i) {
        for (size_t k = 0; k < 3; ++k) {
            if (i == k || i >= 3)
                paper[k] = paper[k] * (kFull - pixel[i]) / kFull;
        }
    }
    return {static_cast<uint8_t>(paper[0]), static_cast<uint8_t>(paper[1]), static_cast<uint8_t>(paper[2])};
}

int LightnessOf(const Pixel &pixel)
{
    return (299 * pixel.red + 587 * pixel.green + 114 * pixel.blue + 500) / 1000;
}

Pixel MarkOf(int lightA, int lightB)
{
    return lightA < lightB ? kDarkerInA : lightA > lightB ? kDarkerInB : kAsDark;
}

Pixel FaintOf(int light)
{
    const auto gray = static_cast<uint8_t>(kFull - (kFull - light) / kFaintness);
    return {gray, gray, gray};
}

// Draws what of the frame around a place is in the row.
void FrameRow(const DifferentPlace &place, int y, std::span<Pixel> row)
{
    const int outer = kFrameGap + kFrameWidth;
    const int top = place.top - outer, bottom = place.bottom + outer;
    if (y < top || y >= bottom)
        return;
    const int left = place.left - outer, right = place.right + outer;
    const bool isEdge = y < top + kFrameWidth || y >= bottom - kFrameWidth;
    const auto paint = [row](int from, int to) {
        for (int x = std::max(from, 0); x < std::min(to, static_cast<int>(row.size())); ++x)
            row[static_cast<size_t>(x)] = kFrame;
    };
    paint(left, isEdge ? right : left + kFrameWidth);
    paint(right - kFrameWidth, right);
}

} // namespace

Failure ComparePictures(PictureFile &a, PictureFile &b, int tolerance, PictureDifference *difference)
{
    const PictureFacts &facts = a.Facts();
    difference->width = facts.width;
    difference->height = facts.height;
    difference->kind = facts.kind;
    RowPair rows(a, b);
    struct Sums {
        uint64_t different = 0, sum = 0;
        int largest = 0;

        void Add(int distance, int allowed)
        {
            sum += static_cast<uint64_t>(distance);
            largest = std::max(largest, distance);
            different += distance > allowed ? 1 : 0;
        }
    };
    Sums all;
    std::vector<Sums> channels(rows.Pairs().size());
    PlaceGrid grid(facts.width, facts.height);
    for (int y = 0; y < facts.height; ++y) {
        if (Failure failure = rows.Next())
            return failure;
        for (int x = 0; x < facts.width; ++x) {
            int most = 0;
            for (size_t i = 0; i < channels.size(); ++i) {
                const int distance = rows.Distance(rows.Pairs()[i], x);
                channels[i].Add(distance, tolerance);
                most = std::max(most, distance);
            }
            all.Add(most, tolerance);
            if (most > tolerance)
                grid.Add(x, y);
        }
    }
    const auto pixels = static_cast<double>(difference->Pixels());
    difference->different = all.different;
    difference->largest = all.largest;
    difference->mean = static_cast<double>(all.sum) / pixels;
    for (size_t i = 0; i < channels.size(); ++i) {
        const auto &[inA, inB] = rows.Pairs()[i];
        difference->channels.push_back({inA ? a.Facts().channels[*inA] : b.Facts().channels[*inB],
                                        inA.has_value(), inB.has_value(), channels[i].different,
                                        channels[i].largest, static_cast<double>(channels[i].sum) / pixels});
    }
    difference->places = grid.TakePlaces();
    difference->placeCount = difference->places.size();
    std::ranges::stable_sort(difference->places, std::ranges::greater(), &DifferentPlace::pixels);
    difference->places.resize(std::min(difference->places.size(), kMostPlaces));
    return {};
}

Failure WriteDifference(PictureFile &a, PictureFile &b, const PictureDifference &difference,
                        const DifferencePictureOptions &options, const ByteSink &sink)
{
    const auto width = static_cast<size_t>(difference.width);
    const size_t marks = options.sideBySide ? 2 * (width + kGapWidth) : 0; // where they begin in a row
    raster::PngHeader header;
    header.width = static_cast<int>(marks + width);
    header.height = difference.height;
    raster::PngWriter writer(header, sink);
    RowPair rows(a, b);
    std::vector<Pixel> row(marks + width, kGap);
    static_assert(sizeof(Pixel) == 3);
    for (int y = 0; y < difference.height; ++y) {
        if (Failure failure = rows.Next())
            return failure;
        for (size_t x = 0; x < width; ++x) {
            const int at = static_cast<int>(x);
            const Pixel inA = ColourOf(rows.PixelA(at), a.Facts()),
                        inB = ColourOf(rows.PixelB(at), b.Facts());
            if (options.sideBySide) {
                row[x] = inA;
                row[width + kGapWidth + x] = inB;
            }
            const int lightA = LightnessOf(inA), lightB = LightnessOf(inB);
            row[marks + x] =
                rows.LargestDistance(at) > options.tolerance ? MarkOf(lightA, lightB) : FaintOf(lightB);
        }
        for (const DifferentPlace &place : difference.places)
            FrameRow(place, y, std::span(row).subspan(marks));
        writer.WriteRow(reinterpret_cast<const uint8_t *>(row.data()));
    }
    return writer.End();
}

} // namespace vxhost
