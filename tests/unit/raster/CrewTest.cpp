// A picture that is painted in lanes, in whatever order they come to it, is the one that is painted at once, bit for bit.
#include "devices/raster/Crew.h"

#include "devices/raster/Plates.h"
#include "tests/unit/raster/Canvas.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <random>
#include <tuple>

namespace vxhost
{
namespace
{

using Draw = std::function<void(Device *)>;

constexpr double kWidth = 90, kHeight = 300; // several lanes of at least 64 rows

// Does the work of a crew in one thread: the lane that goes on is any that can, and it goes on when it likes.
class OneThread final : public Crew
{
  public:
    explicit OneThread(size_t size) : size_(size) {}

    size_t Size() const override { return size_; }
    void Begin(size_t lanes, size_t batches, Work work) override
    {
        done_.assign(lanes, 0);
        batches_ = batches;
        posted_ = 0;
        work_ = std::move(work);
        ++begun;
    }
    size_t Post() override
    {
        ++posted_;
        while (random_() % 4 != 0 && DoneByAll() < posted_)
            DoOne();
        while (DoneByAll() + batches_ <= posted_)
            DoOne();
        mostPosted = std::max(mostPosted, posted_);
        return posted_ % batches_;
    }
    void Finish() override
    {
        while (DoneByAll() < posted_)
            DoOne();
    }
    void Stop() noexcept override { work_ = nullptr; }

    int begun = 0;
    size_t mostPosted = 0;

  private:
    size_t DoneByAll() const { return *std::ranges::min_element(done_); }
    void DoOne()
    {
        size_t lane = random_() % done_.size();
        while (done_[lane] == posted_)
            lane = (lane + 1) % done_.size();
        work_(lane, done_[lane]++ % batches_);
    }

    const size_t size_;
    std::mt19937 random_;
    std::vector<size_t> done_;
    size_t batches_ = 0, posted_ = 0;
    Work work_;
};

// Says what becomes of the page, and keeps its pixels.
Failure DrawPicture(const Draw &draw, const RasterOptions &options, Picture *picture)
{
    std::string error;
    const auto device = MakePictureDevice(options, picture, &error);
    Failure failure;
    do {
        device->BeginPage({{0, 0, kWidth, kHeight}, {}, {}});
        draw(device.get());
        failure = device->EndPage();
    } while (!failure && device->WantsPageAgain());
    return failure;
}

void ExpectSame(const Draw &draw, RasterOptions options, Crew *crew)
{
    Picture plain, picture;
    ASSERT_FALSE(DrawPicture(draw, options, &plain));
    options.crew = crew;
    ASSERT_FALSE(DrawPicture(draw, options, &picture));
    EXPECT_TRUE(picture.rgba == plain.rgba) << "a crew of " << crew->Size();
}

class RandomPage
{
  public:
    explicit RandomPage(unsigned seed) : random_(seed)
    {
        for (int i = 0; i < 6; ++i)
            outlines_.push_back(MakePath(0.7, 0));
    }

    void DrawOn(Device *device)
    {
        int saves = 0;
        for (int calls = 0; calls < 400; ++calls) {
            const int call = Below(100);
            if (call < 40) {
                device->FillPath(MakePath(Below(10) == 0 ? 300 : 40, 300), MakePaint());
            } else if (call < 60) {
                device->StrokePath(MakePath(80, 300), MakeStyle(), MakePaint());
            } else if (call < 70) {
                ShowGlyphs(device);
            } else if (call < 78) {
                device->Shade(MakeShading());
            } else if (call < 86) {
                device->Save();
                ++saves;
                const Path path = Below(3) == 0 ? MakeRectangle() : MakePath(200, 300);
                device->ClipPath(path);
                if (Below(2) == 0)
                    device->FillPath(path, MakePaint()); // what is filled is the clip
                else if (Below(2) == 0)
                    device->Shade(MakeShading(path));
            } else if (saves > 0) {
                device->Restore();
                --saves;
            }
        }
        for (; saves > 0; --saves)
            device->Restore();
    }

  private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
    double Between(double from, double to)
    {
        return from + (to - from) * static_cast<double>(random_()) / 4294967296.0;
    }
    Path MakePath(double size, double within)
    {
        Path path;
        const Point at = {Between(-0.1, 0.3) * within, Between(-0.1, 1) * within};
        const auto add = [&](Verb verb, int points) {
            path.verbs.push_back(verb);
            for (int i = 0; i < points; ++i)
                path.points.push_back({at.x + Between(0, size), at.y + Between(0, size)});
        };
        for (int parts = 1 + Below(2); parts > 0; --parts) {
            add(Verb::Move, 1);
            for (int sides = 1 + Below(6); sides > 0; --sides)
                Below(2) == 0 ? add(Verb::Line, 1) : add(Verb::Curve, 3);
            if (Below(2) == 0)
                add(Verb::Close, 0);
        }
        return path;
    }
    Path MakeRectangle()
    {
        const double left = Between(0, 40), right = left + Between(5, 60);
        const double bottom = Between(0, 200), top = bottom + Between(5, 150);
        return {{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
                {{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
    }
    Paint MakePaint()
    {
        Paint paint;
        paint.overprint = Below(3) == 0;
        paint.colour.space = Below(3) == 0 ? ColourSpace::Gray : ColourSpace::Cmyk;
        for (double &ink : paint.colour.ink)
            ink = Below(3) == 0 ? 0 : Between(0, 1);
        return paint;
    }
    StrokeStyle MakeStyle()
    {
        StrokeStyle style;
        style.width = Below(4) == 0 ? 0 : Between(0, 6);
        style.cap = static_cast<LineCap>(Below(3));
        style.join = static_cast<LineJoin>(Below(3));
        if (Below(3) == 0)
            style.dashes = {Between(0.5, 9), Between(0.5, 9), Between(0, 4)};
        style.dashPhase = Between(-9, 9);
        if (Below(4) == 0)
            style.matrix = {Between(0.2, 2), Between(-1, 1), 0, Between(0.2, 2), 0, 0};
        return style;
    }
    Shading MakeShading(const Path &ground = {})
    {
        Shading shading;
        const double size = Between(10, 200);
        shading.matrix = {size, Between(-50, 50), Between(-50, 50), size, Between(-20, 60), Between(0, 250)};
        if (Below(2) == 0) {
            shading.kind = ShadingKind::Radial;
            shading.first = {{0.5, 0.5}, 0.5};
            shading.last = {{0.55, 0.5}, Below(4) == 0 ? 0.6 : 0.01}; // a larger one cannot be shaded
            shading.ground = ground;
        }
        shading.overprint = Below(4) == 0;
        const double middle = Between(0.1, 0.9);
        const Colour colours[] = {MakeCmyk(), MakeCmyk(), MakeCmyk(), MakeCmyk()};
        const Colour &next = Below(2) == 0 ? colours[1] : colours[2]; // a jump is an edge between two parts
        shading.spans = {{0, middle, {colours[0], colours[1]}}, {middle, 1, {next, colours[3]}}};
        return shading;
    }
    Colour MakeCmyk()
    {
        Colour colour = MakePaint().colour;
        colour.space = ColourSpace::Cmyk;
        return colour;
    }
    void ShowGlyphs(Device *device)
    {
        const double size = Between(4, 40), angle = Below(3) == 0 ? Between(-1, 1) : 0;
        const Matrix matrix = {size * std::cos(angle),
                               size * std::sin(angle),
                               -size * std::sin(angle),
                               size * std::cos(angle),
                               0,
                               0};
        if (!device->PaintsGlyphs(matrix))
            return;
        device->BeginGlyphs(matrix, MakePaint());
        for (int glyphs = 20; glyphs > 0; --glyphs) {
            const auto which = static_cast<size_t>(Below(6));
            device->FillGlyph(outlines_[which], Below(5) == 0 ? 0 : which + 1,
                              {Between(-10, kWidth), Between(-10, kHeight)});
        }
    }

    std::mt19937 random_;
    std::vector<Path> outlines_;
};

class LanesTest : public testing::TestWithParam<std::tuple<int, int>>
{
};

TEST_P(LanesTest, PaintWhatIsPaintedAtOnce)
{
    const auto [samples, backing] = GetParam();
    RasterOptions options = PlainOptions();
    options.samples = samples;
    if (backing == 1)
        options.background = std::nullopt;
    options.overprint = backing != 2;
    for (unsigned seed = 0; seed < 6; ++seed) {
        for (const size_t size : {2, 5}) {
            OneThread crew(size);
            ExpectSame([&](Device *to) { RandomPage(seed).DrawOn(to); }, options, &crew);
            EXPECT_EQ(crew.begun, 1) << "seed " << seed << ", a crew of " << size;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Crew, LanesTest,
                         testing::Combine(testing::Values(1, 2, 4, 8), testing::Range(0, 3)));

// A star with so many points that its edges fill more than a batch.
Path MakeStar(int points)
{
    Path star = {{Verb::Move}, {{kWidth / 2, 1}}};
    for (int i = 1; i < points; ++i) {
        star.verbs.push_back(Verb::Line);
        star.points.push_back({kWidth * (i * 7 % 101) / 101, kHeight * (i * 29 % 97) / 97});
    }
    return star;
}

TEST(CrewTest, PaintsShapesThatAreLargerThanABatch)
{
    const auto draw = [](Device *to) {
        RandomPage(1).DrawOn(to);
        to->FillPath(MakeStar(20'000), {{ColourSpace::Gray, {0.5}}});
        RandomPage(2).DrawOn(to);
    };
    OneThread crew(3);
    ExpectSame(draw, PlainOptions(), &crew);
}

// There are more shapes than all batches hold, so each of them is used again.
TEST(CrewTest, UsesBatchesAgain)
{
    const auto draw = [](Device *to) {
        for (int i = 0; i < 20'000; ++i) {
            const double x = i * 37 % 83, y = i * 101 % 293;
            to->FillPath({{Verb::Move, Verb::Line, Verb::Line}, {{x, y}, {x + 9, y + 2}, {x + 3, y + 8}}},
                         {{ColourSpace::Gray, {i % 11 / 10.0}}});
        }
    };
    OneThread crew(2);
    ExpectSame(draw, PlainOptions(), &crew);
    EXPECT_GT(crew.mostPosted, 16U);
}

TEST(CrewTest, HasNothingToDoForSmallPictures)
{
    OneThread crew(2);
    RasterOptions options = PlainOptions();
    options.crew = &crew;
    options.leastCrewPixels = static_cast<uint64_t>(kWidth * kHeight) + 1;
    Picture picture;
    ASSERT_FALSE(DrawPicture([](Device *) {}, options, &picture));
    EXPECT_EQ(crew.begun, 0);
    --options.leastCrewPixels;
    ASSERT_FALSE(DrawPicture([](Device *) {}, options, &picture));
    EXPECT_EQ(crew.begun, 1);
}

// A page for which memory does not last with a crew is drawn once more without.
TEST(CrewTest, NeedsNoMoreMemoryThanThereIs)
{
    RasterOptions options = PlainOptions();
    options.dpi = 72 * 22; // 13 million pixels, which take 59 MiB, and then 50 more as a picture
    int pages = 0, failed = 0, redrawn = 0;
    const auto draw = [&](Device *to) {
        ++pages;
        to->FillPath(MakeStar(5), {{ColourSpace::Gray, {0.5}}});
        to->FillPath(
            {{Verb::Move, Verb::Line, Verb::Line, Verb::Line}, {{0, 0}, {90, 0}, {90, 300}, {0, 300}}},
            {{ColourSpace::Gray, {0.2}}});
    };
    for (const uint64_t limit : {56, 61, 112, 130}) {
        options.memoryLimit = limit << 20;
        options.crew = nullptr;
        Picture plain, picture;
        const Failure expected = DrawPicture(draw, options, &plain);
        OneThread crew(2);
        options.crew = &crew;
        pages = 0;
        const Failure failure = DrawPicture(draw, options, &picture);
        EXPECT_EQ(failure.text, expected.text) << limit;
        EXPECT_TRUE(picture.rgba == plain.rgba) << limit;
        EXPECT_EQ(crew.begun, 1) << limit;
        failed += expected ? 1 : 0;
        redrawn += pages - 1;
    }
    EXPECT_EQ(failed, 2);
    EXPECT_EQ(redrawn, 2);
}

// Keeps the rows of plates, one behind the other.
struct KeptRows final : PlateSink {
    std::vector<uint8_t> rows;
    size_t width = 0;

    Failure Begin(const PlateSheet &sheet, std::span<const std::string>) override
    {
        width = static_cast<size_t>(sheet.width);
        return {};
    }
    Failure TakeRow(std::span<const uint8_t *const> plates) override
    {
        for (const uint8_t *plate : plates)
            rows.insert(rows.end(), plate, plate + width);
        return {};
    }
    Failure End() override { return {}; }
};

// Four inks at a time, so the page is drawn again for those that are met.
TEST(CrewTest, PaintsPlates)
{
    static const SpotInk kInks[] = {{"Red", {0, 1, 1, 0}}, {"Blue", {1, 0.5, 0, 0}}};
    const auto drawWith = [](Crew *crew) {
        RasterOptions options = PlainOptions();
        options.crew = crew;
        const auto kept = std::make_shared<KeptRows>();
        std::string error;
        const auto device = MakePlatesDevice(options, std::nullopt, kept, &error);
        do {
            device->BeginPage({{0, 0, kWidth, kHeight}, {}, {}});
            RandomPage(3).DrawOn(device.get());
            for (const SpotInk &ink : kInks) {
                Paint paint = {{ColourSpace::Cmyk, {}, {{{&ink, 0.7}}}}, true};
                device->FillPath(MakeStar(30), paint);
            }
            EXPECT_FALSE(device->EndPage());
        } while (device->WantsPageAgain());
        return kept->rows;
    };
    OneThread crew(4);
    const std::vector<uint8_t> plain = drawWith(nullptr);
    EXPECT_EQ(plain.size(), static_cast<size_t>(kWidth * kHeight) * 6);
    EXPECT_TRUE(drawWith(&crew) == plain);
    EXPECT_EQ(crew.begun, 2);
}

} // namespace
} // namespace vxhost
