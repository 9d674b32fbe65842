// The device only brings the parts together: a path is flattened and, for a stroke, outlined into the
// scanner; the surface paints the scanner's shape where the clip allows; at the end rows
// are mixed and handed out.
#include "devices/raster/RasterDevice.h"

#include "devices/colour/InkShares.h"
#include "devices/colour/ScreenColours.h"
#include "devices/raster/Clip.h"
#include "devices/raster/Dasher.h"
#include "devices/raster/Flatten.h"
#include "devices/raster/GlyphPainter.h"
#include "devices/raster/InkChannels.h"
#include "devices/raster/PlateMixer.h"
#include "devices/raster/PlateView.h"
#include "devices/raster/Plates.h"
#include "devices/raster/PngWriter.h"
#include "devices/raster/PointProbe.h"
#include "devices/raster/RowMixer.h"
#include "devices/raster/Shader.h"
#include "devices/raster/Stroker.h"
#include "devices/raster/Surface.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <utility>

namespace vxhost
{

using namespace raster;

namespace
{

// Of the memory that a picture may hold, the part that the edges of one shape may take.
constexpr uint64_t kEdgeShare = 4;

// Of what is left of it, the part that glyphs may take from a crew.
constexpr uint64_t kPartOfGlyphs = 8;

constexpr double kPointsPerInch = 72;

// A stroke is painted in parts of about this many edges: its parts may overlap, since they have one ink.
constexpr size_t kStrokeEdges = 1u << 16;

// Collects a subpath, then strokes it. A lone Move paints nothing.
template <class Finish>
struct StrokeLines {
    std::vector<StrokePoint> *points;
    Finish finish; // gets the points, and whether they are closed
    bool drawn = false;

    void Move(Point p)
    {
        End();
        points->push_back({p, false});
    }
    void Line(Point p) { Add(p, false); }
    void Smooth(Point p) { Add(p, true); }
    void Leave(Point direction)
    {
        if (!points->empty())
            points->back().leaving = direction;
    }
    void Arrive(Point direction) { points->back().arriving = direction; }
    void Add(Point p, bool smooth)
    {
        points->push_back({p, smooth});
        drawn = true;
    }
    void Close()
    {
        if (points->empty())
            return;
        const Point start = points->front().at;
        finish(true);
        points->clear();
        points->push_back({start, false});
        drawn = false;
    }
    void End()
    {
        if (drawn)
            finish(false);
        points->clear();
        drawn = false;
    }
};

class RasterDevice : public Device
{
  public:
    RasterDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours)
        : RasterDevice(options, std::move(colours), InkChannels(options.overprint))
    {
    }
    RasterDevice(const RasterOptions &options, InkChannels channels)
        : RasterDevice(options, nullptr, std::move(channels))
    {
    }

    void BeginPage(const Page &page) override
    {
        page_ = page;
        size_ = FindPictureSize(page.box, options_);
        failure_ = size_.failure;
        lastClip_.Clear();
        clipState_ = ClipState::Made;
        clips_.Reset({}); // masks give back to the budget, so they go before it
        glyphs_.Reset(options_.samples, 0, &budget_);
        surface_.reset();
        if (earlier_.empty())
            budget_.Reset(options_.memoryLimit);
        if (failure_)
            return;
        const int n = options_.samples;
        const double scaleX = size_.width * n / page.box.Width();
        const double scaleY = size_.height * n / page.box.Height();
        toSamples_ = {scaleX, 0, 0, -scaleY, -page.box.left * scaleX, page.box.top * scaleY};
        clips_.Reset({0, 0, size_.width * n, size_.height * n});
        surface_ = std::make_unique<Surface>(
            size_.width, size_.height, n, RowMixer::NeedsPainted(options_.background), &budget_, FindCrew());
        ResetGlyphs();
    }

    void Save() override
    {
        MakeClip();
        clips_.Save();
    }
    void Restore() override
    {
        if (!clips_.Restore())
            return;
        clipState_ = ClipState::Made; // a clip that was due since Save is due no more
        lastClip_.Clear();
    }

    void ClipPath(const Path &path) override
    {
        MakeClip();
        if (surface_ == nullptr || clips_.Top().Limits().IsEmpty())
            return;
        lastClip_ = path;
        clipState_ = ClipState::Due;
    }

    void FillPath(const Path &path, const Paint &paint) override
    {
        MakeClip();
        const Ink ink = channels_.Find(paint);
        if (!IsSeen(path, 0) || ink.keep == ~InkWord{0})
            return;
        // Documents like to fill what they just clipped to: that shape is the clip, and known already.
        if (path == lastClip_)
            surface_->Paint(WholeClip(), clips_.Top(), {ink});
        else
            PaintFill(path, {ink});
    }

    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override
    {
        MakeClip();
        Ink ink = channels_.Find(paint);
        const Bounds &limits = clips_.Top().Limits();
        const Matrix userToSamples = UserToSamples(style.matrix);
        stroker_.Begin(style, userToSamples, options_.samples, &scanner_);
        ink.strength = static_cast<int>(std::lround(stroker_.Strength() * Ink::kFullStrength));
        const double reach = stroker_.Reach();
        if (!IsSeen(path, reach) || ink.keep == ~InkWord{0})
            return;
        const bool dashed = dasher_.Begin(style, userToSamples, limits, &stroker_);
        BeginScan();
        const auto finish = [&](bool closed) {
            if (dashed)
                closed ? dasher_.DashClosed(points_) : dasher_.DashOpen(points_);
            else
                closed ? stroker_.StrokeClosed(points_) : stroker_.StrokeOpen(points_);
            if (scanner_.Edges().size() > kStrokeEdges) {
                PaintScanned({ink});
                BeginScan();
            }
        };
        points_.clear();
        StrokeLines<decltype(finish)> lines{&points_, finish};
        Flatten(path, toSamples_, limits, reach, lines);
        lines.End();
        PaintScanned({ink});
    }

    bool PaintsGlyphs(const Matrix &emsToPage) const override
    {
        return surface_ != nullptr && glyphs_.CanPaint(Product(emsToPage, toSamples_));
    }
    void BeginGlyphs(const Matrix &emsToPage, const Paint &paint) override
    {
        MakeClip();
        emsToPage_ = emsToPage;
        glyphPaint_ = paint;
        glyphs_.Begin(Product(emsToPage, toSamples_), channels_.Find(paint));
    }
    void FillGlyph(const Path &outline, uint64_t number, Point origin) override
    {
        const Clip &clip = clips_.Top();
        if (budget_.IsExhausted() || clip.Limits().IsEmpty() ||
            glyphs_.Paint(outline, number, toSamples_.Map(origin), clip, surface_.get()))
            return;
        Path placed;
        AppendOutline(outline, {emsToPage_.a, emsToPage_.b, emsToPage_.c, emsToPage_.d, origin.x, origin.y},
                      &placed);
        FillPath(placed, glyphPaint_);
    }

    // Each part of a shading has an outline of its own, so that samples on the edge between two belong to one of them.
    void Shade(const Shading &shading) override
    {
        if (surface_ == nullptr || budget_.IsExhausted())
            return;
        if (!shader_.Begin(shading, toSamples_, options_.samples, channels_)) {
            PaintAsShapes(shading, this);
            return;
        }
        const Coat coat = {{}, &shader_.Part()};
        while (shader_.NextPart()) {
            if (clipState_ == ClipState::Due && shader_.IsOnlyPart() && CoversDueClip()) {
                clipState_ = ClipState::DueAgain;
                shader_.MixInks();
                PaintFill(lastClip_, coat);
                return;
            }
            MakeClip();
            if (!IsSeen(shader_.Outline(), 0))
                continue;
            shader_.MixInks();
            if (shader_.Outline() == lastClip_ || shader_.Covers(clips_.Top().Limits()))
                surface_->Paint(WholeClip(), clips_.Top(), coat);
            else
                PaintFill(shader_.Outline(), coat);
        }
    }

    Failure EndPage() override
    {
        if (surface_ != nullptr)
            surface_->Finish();
        budget_.Give(std::exchange(glyphsTaken_, 0));
        // A crew takes more memory. What does not suffice for it may suffice without.
        isAlone_ = surface_ != nullptr && surface_->HasCrew() && budget_.IsExhausted();
        if (!failure_ && !isAlone_ && budget_.IsExhausted())
            failure_ = {FailureKind::OutOfMemory,
                        "the picture needs more memory than " + std::to_string(options_.memoryLimit >> 20) +
                            " MiB: choose a smaller size, fewer samples or a higher limit"};
        if (!failure_ && !isAlone_)
            failure_ = WriteRows();
        surface_.reset();
        if (failure_)
            earlier_.clear();
        return failure_;
    }
    bool WantsPageAgain() const override { return isAlone_; }

  protected:
    virtual Failure WriteRows() = 0;

    const RasterOptions options_;
    Page page_;
    PictureSize size_;
    MemoryCap budget_;
    std::unique_ptr<ScreenColours> colours_; // null: no colours of a screen are wanted
    InkChannels channels_;
    std::unique_ptr<Surface> surface_;
    std::vector<std::unique_ptr<Surface>> earlier_; // of other inks, for which the page was drawn before

  private:
    RasterDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours, InkChannels channels)
        : options_(options), budget_(options.memoryLimit), colours_(std::move(colours)),
          channels_(std::move(channels))
    {
    }

    // A clip is made when something needs it. The first shading that covers it does not: it is painted through the
    // outline, and few clips of shadings are used again.
    enum class ClipState { Due, DueAgain, Made };

    bool IsSeen(const Path &path, double reach) const
    {
        const Bounds &limits = clips_.Top().Limits();
        return surface_ != nullptr && !budget_.IsExhausted() && !limits.IsEmpty() &&
               !FindExtent(path, toSamples_).Misses(limits, reach);
    }
    bool CoversDueClip() const
    {
        const Bounds bounds = FindExtent(lastClip_, toSamples_).Within(clips_.Top().Limits());
        return !bounds.IsEmpty() && (shader_.Outline() == lastClip_ || shader_.Covers(bounds));
    }
    // From the user's space to samples, without the translation: a stroke needs lengths and angles alone.
    Matrix UserToSamples(const Matrix &m) const
    {
        return {m.a * toSamples_.a, m.b * toSamples_.d, m.c * toSamples_.a, m.d * toSamples_.d, 0, 0};
    }
    Crew *FindCrew() const
    {
        const uint64_t pixels = static_cast<uint64_t>(size_.width) * static_cast<uint64_t>(size_.height);
        const bool pays = pixels >= options_.leastCrewPixels && !options_.plates; // whose pages share one cap
        return pays && !isAlone_ ? options_.crew : nullptr;
    }
    // One thread takes what is lent, so with a crew glyphs are kept in memory that nobody else can have.
    void ResetGlyphs()
    {
        uint64_t most = options_.glyphMemory;
        glyphsTaken_ = 0;
        if (surface_->HasCrew()) {
            if (most > budget_.Left() / kPartOfGlyphs || !budget_.Take(most))
                most = 0;
            glyphBudget_.Reset(most);
            glyphsTaken_ = most;
        }
        glyphs_.Reset(options_.samples, static_cast<size_t>(std::min<uint64_t>(most, SIZE_MAX)),
                      surface_->HasCrew() ? &glyphBudget_ : &budget_);
    }
    uint64_t EdgeBytes() const { return options_.memoryLimit / kEdgeShare; }
    void BeginScan() { scanner_.Begin(clips_.Top().Limits(), EdgeBytes()); }
    void ScanFill(const Path &path)
    {
        BeginScan();
        ClosedOutline<Scanner> outline{&scanner_, {}, {}};
        Flatten(path, toSamples_, clips_.Top().Limits(), 0, outline);
        outline.Close();
    }
    void PaintScanned(const Coat &coat)
    {
        const EdgeShape shape = {scanner_.Edges(), scanner_.Reported()};
        if (scanner_.IsOverfull())
            budget_.Fail();
        else if (!shape.edges.empty())
            surface_->Paint(shape, clips_.Top(), coat);
    }
    void PaintFill(const Path &path, const Coat &coat)
    {
        ScanFill(path);
        PaintScanned(coat);
    }
    void MakeClip()
    {
        if (clipState_ == ClipState::Made)
            return;
        clipState_ = ClipState::Made;
        ScanFill(lastClip_);
        if (scanner_.IsOverfull())
            budget_.Fail();
        clips_.Replace(clips_.Top().Intersect(&scanner_, &budget_));
    }

    Failure failure_;
    bool isAlone_ = false; // memory did not last with a crew
    Matrix toSamples_;
    ClipStack clips_;
    Path lastClip_; // the path of the latest clip, as long as that is in force
    ClipState clipState_ = ClipState::Made;
    Scanner scanner_;
    Stroker stroker_;
    Dasher dasher_;
    Shader shader_;
    MemoryCap glyphBudget_{0}; // of a page that a crew paints
    uint64_t glyphsTaken_ = 0; // for it
    GlyphPainter glyphs_;
    Matrix emsToPage_; // of the glyphs, with their paint
    Paint glyphPaint_;
    std::vector<StrokePoint> points_; // of the subpath being stroked
};

std::vector<std::string> ProcessInks()
{
    std::vector<std::string> names;
    for (const SpotInk &ink : kProcessInks)
        names.push_back(ink.name);
    return names;
}

// Looks at each spot ink that is painted with. A page of more than four inks is drawn several times.
class SpotsDevice : public RasterDevice
{
  public:
    using RasterDevice::RasterDevice;

    void FillPath(const Path &path, const Paint &paint) override
    {
        Look(paint.colour);
        RasterDevice::FillPath(path, paint);
    }
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override
    {
        Look(paint.colour);
        RasterDevice::StrokePath(path, style, paint);
    }
    void BeginGlyphs(const Matrix &emsToPage, const Paint &paint) override
    {
        Look(paint.colour);
        RasterDevice::BeginGlyphs(emsToPage, paint);
    }
    void Shade(const Shading &shading) override
    {
        for (const ColourSpan &span : shading.spans) {
            for (const Colour &colour : span.colours)
                Look(colour);
        }
        RasterDevice::Shade(shading);
    }

  protected:
    virtual void Meet(const SpotInk &ink) = 0;

    // The next four of the inks are drawn with, if there are more.
    void DrawNext(const std::vector<std::string> &inks, size_t done)
    {
        const auto next = inks.begin() + static_cast<ptrdiff_t>(done);
        const auto count = std::min<ptrdiff_t>(InkChannels::kCount, inks.end() - next);
        if (count > 0)
            channels_ = InkChannels(options_.overprint, {next, next + count});
    }

  private:
    void Look(const Colour &colour)
    {
        for (const SpotShare &share : colour.spots) {
            if (share.ink != nullptr)
                Meet(*share.ink);
        }
    }
};

// Shows a page in the colours of a screen: all inks, or those of chosen plates.
class ScreenDevice : public SpotsDevice
{
  public:
    ScreenDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours)
        : SpotsDevice(options, std::move(colours))
    {
        if (!options.plates)
            return;
        for (const std::string &ink : options.plates->inks) {
            if (std::ranges::find(inks_, ink) == inks_.end())
                inks_.push_back(ink);
        }
        if (inks_.empty())
            inks_.emplace_back(); // no ink has that name
        DrawNext(inks_, 0);
    }

    bool WantsPageAgain() const override { return RasterDevice::WantsPageAgain() || !earlier_.empty(); }

  protected:
    using MixRow = std::function<void(int y, uint8_t *bytes)>;
    virtual Failure WritePicture(const MixRow &mix) = 0;

    int BytesPerPixel() const { return options_.background ? 3 : 4; }
    std::string Describe() const
    {
        return options_.plates && options_.plates->isGray ? "gray, black is a full ink"
                                                          : colours_->Describe();
    }

    Failure WriteRows() final
    {
        if (options_.plates)
            return KeepPlates();
        RowMixer mixer(colours_.get(), options_.background, options_.samples);
        return WritePicture([&](int y, uint8_t *bytes) { mixer.Mix(surface_->BufferOf(y), y, bytes); });
    }

  private:
    void Meet(const SpotInk &ink) override
    {
        if (options_.plates)
            alternates_.try_emplace(ink.name, std::to_array(ink.alternate));
    }

    Failure KeepPlates()
    {
        earlier_.push_back(std::move(surface_));
        const size_t done = earlier_.size() * InkChannels::kCount;
        DrawNext(inks_, std::min(done, inks_.size()));
        if (done < inks_.size())
            return {};
        std::vector<PlateView::Alternate> alternates;
        for (const std::string &ink : inks_) {
            const auto process = std::ranges::find(kProcessInks, ink, &SpotInk::name);
            alternates.push_back(process != std::end(kProcessInks) ? std::to_array(process->alternate)
                                                                   : alternates_[ink]);
        }
        PlateView view(earlier_, std::move(alternates), options_, colours_.get());
        Failure failure = WritePicture([&](int y, uint8_t *bytes) { view.Mix(y, bytes); });
        earlier_.clear();
        DrawNext(inks_, 0);
        return failure;
    }

    std::vector<std::string> inks_;                          // of the chosen plates
    std::map<std::string, PlateView::Alternate> alternates_; // of the spot inks that are painted with
};

class PngDevice final : public ScreenDevice
{
  public:
    PngDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours, ByteSink sink)
        : ScreenDevice(options, std::move(colours)), sink_(std::move(sink))
    {
    }

  protected:
    Failure WritePicture(const MixRow &mix) override
    {
        PngHeader header;
        header.width = size_.width;
        header.height = size_.height;
        header.pixels = options_.background ? PngPixels::Rgb : PngPixels::Rgba;
        header.pixelsPerInchX = size_.width / page_.box.Width() * kPointsPerInch;
        header.pixelsPerInchY = size_.height / page_.box.Height() * kPointsPerInch;
        header.title = page_.title;
        header.profile = Describe();
        PngWriter writer(header, sink_);
        std::vector<uint8_t> row(static_cast<size_t>(size_.width) * static_cast<size_t>(BytesPerPixel()));
        for (int y = 0; y < size_.height; ++y) {
            mix(y, row.data());
            writer.WriteRow(row.data());
        }
        return writer.End();
    }

  private:
    ByteSink sink_;
};

// Hands its pixels out as a program has them: four bytes each, rows as far apart as it says.
class PixelsDevice : public ScreenDevice
{
  public:
    PixelsDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours, const PixelRows &rows)
        : ScreenDevice(options, std::move(colours)), rows_(rows)
    {
    }

  protected:
    Failure WritePicture(const MixRow &mix) override
    {
        const auto width = static_cast<size_t>(size_.width), bytes = static_cast<size_t>(BytesPerPixel());
        std::vector<uint8_t> row(width * bytes);
        for (int y = 0; y < size_.height; ++y) {
            mix(y, row.data());
            uint8_t *to = rows_.top + y * rows_.stride;
            for (size_t x = 0; x < width; ++x, to += 4) {
                to[3] = 255;
                std::copy_n(row.data() + x * bytes, bytes, to);
            }
        }
        return {};
    }

    PixelRows rows_; // must be there until the rows are written
};

class PictureDevice final : public PixelsDevice
{
  public:
    PictureDevice(const RasterOptions &options, std::unique_ptr<ScreenColours> colours, Picture *picture)
        : PixelsDevice(options, std::move(colours), {}), picture_(picture)
    {
    }

  protected:
    Failure WritePicture(const MixRow &mix) override
    {
        const size_t rowBytes = static_cast<size_t>(size_.width) * 4;
        if (!budget_.Take(rowBytes * static_cast<size_t>(size_.height)))
            return {FailureKind::OutOfMemory, "the picture does not fit into the memory that it may use"};
        picture_->width = size_.width;
        picture_->height = size_.height;
        picture_->rgba.resize(rowBytes * static_cast<size_t>(size_.height));
        rows_ = {picture_->rgba.data(), static_cast<ptrdiff_t>(rowBytes)};
        return PixelsDevice::WritePicture(mix);
    }

  private:
    Picture *picture_;
};

// Draws the page once for four inks. Of the inks of a page nothing is known before it is drawn the first time.
class PlatesDevice final : public SpotsDevice
{
  public:
    PlatesDevice(const RasterOptions &options, std::optional<std::vector<std::string>> spotInks,
                 std::shared_ptr<PlateSink> sink)
        : SpotsDevice(options, InkChannels(options.overprint, ProcessInks())), inks_(ProcessInks()),
          sink_(std::move(sink)), isComplete_(spotInks.has_value())
    {
        for (const std::string &ink : spotInks.value_or(std::vector<std::string>()))
            AddInk(ink);
    }

    bool WantsPageAgain() const override { return RasterDevice::WantsPageAgain() || done_ < inks_.size(); }

  protected:
    Failure WriteRows() override
    {
        const std::vector<std::string> inks = channels_.Names();
        PlateSheet sheet = {size_.width,
                            size_.height,
                            size_.width / page_.box.Width() * kPointsPerInch,
                            size_.height / page_.box.Height() * kPointsPerInch,
                            page_.box,
                            page_.title,
                            inks_};
        Failure failure = sink_->Begin(sheet, inks);
        PlateMixer mixer(size_.width, options_.samples);
        std::vector<const uint8_t *> plates(inks.size());
        for (int y = 0; y < size_.height && !failure; ++y) {
            mixer.Mix(surface_->BufferOf(y), y);
            for (size_t i = 0; i < plates.size(); ++i)
                plates[i] = mixer.Row(i).data();
            failure = sink_->TakeRow(plates);
        }
        if (!failure)
            failure = sink_->End();
        GoOn();
        return failure;
    }

  private:
    void GoOn()
    {
        isComplete_ = true;
        done_ += channels_.Names().size();
        DrawNext(inks_, done_);
    }
    void Meet(const SpotInk &ink) override
    {
        if (!isComplete_)
            AddInk(ink.name);
    }
    void AddInk(const std::string &ink)
    {
        if (HasOwnPlate(ink) && std::ranges::find(inks_, ink) == inks_.end())
            inks_.push_back(ink);
    }
    std::vector<std::string> inks_; // in the order of their plates
    std::shared_ptr<PlateSink> sink_;
    bool isComplete_; // no more inks are met
    size_t done_ = 0; // of the inks
};

// A page of one pixel with one sample.
class ProbedPage final : public RasterDevice
{
  public:
    ProbedPage() : RasterDevice(OfOnePixel(), InkChannels(false)) {}

    // Returns whether what paints changes the pixel. It is given the one of black and white that is farther from it.
    template <class Action>
    bool Changes(Action &&paintWith)
    {
        const InkWord before = Pixel();
        Paint paint;
        paint.colour.ink[0] = before > kHalfBlack ? 1 : 0;
        paintWith(paint);
        return Pixel() != before;
    }
    bool IsOutOfMemory() const { return budget_.IsExhausted(); }

  protected:
    Failure WriteRows() override { return {}; }

  private:
    static constexpr InkWord kHalfBlack = 0x7FFFFFFF;

    static RasterOptions OfOnePixel()
    {
        RasterOptions options;
        options.width = options.height = options.samples = 1;
        return options;
    }
    InkWord Pixel() const
    {
        const InkBuffer::Row row = surface_->BufferOf(0).ReadRow(0);
        return row.IsBlank() ? 0 : row.Pixel(0);
    }
};

class RasterProbe final : public PointProbe
{
  public:
    RasterProbe(Point at, double within)
    {
        Page page;
        page.box = {at.x - within / 2, at.y - within / 2, at.x + within / 2, at.y + within / 2};
        page_.BeginPage(page);
    }

    void Save() override { page_.Save(); }
    void Restore() override { page_.Restore(); }
    void ClipPath(const Path &path) override { page_.ClipPath(path); }
    bool IsFilled(const Path &path) override
    {
        return page_.Changes([&](const Paint &paint) { page_.FillPath(path, paint); });
    }
    bool IsStroked(const Path &path, const StrokeStyle &style) override
    {
        return page_.Changes([&](const Paint &paint) { page_.StrokePath(path, style, paint); });
    }
    bool IsOutOfMemory() const override { return page_.IsOutOfMemory(); }

  private:
    ProbedPage page_;
};

bool CheckSamples(const RasterOptions &options, std::string *error)
{
    const int n = options.samples;
    const bool isPossible = n == 1 || n == 2 || n == 4 || n == 8;
    if (!isPossible)
        *error = std::to_string(n) + " samples a side are not possible: use 1, 2, 4 or 8";
    return isPossible;
}

// The colours for these options; null when the options are not possible.
std::unique_ptr<ScreenColours> CheckOptions(const RasterOptions &options, std::string *error)
{
    return CheckSamples(options, error) ? ScreenColours::Make(options, error) : nullptr;
}

} // namespace

ByteSink WriteTo(std::FILE *file)
{
    return [file](std::span<const std::byte> bytes) -> Failure {
        if (std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size())
            return {};
        return {FailureKind::CannotWrite, std::strerror(errno), errno};
    };
}

std::unique_ptr<Device> MakePngDevice(const RasterOptions &options, ByteSink sink, std::string *error)
{
    auto colours = CheckOptions(options, error);
    if (colours == nullptr)
        return nullptr;
    return std::make_unique<PngDevice>(options, std::move(colours), std::move(sink));
}

std::unique_ptr<Device> MakePixelsDevice(const RasterOptions &options, const PixelRows &rows,
                                         std::string *error)
{
    auto colours = CheckOptions(options, error);
    if (colours == nullptr)
        return nullptr;
    return std::make_unique<PixelsDevice>(options, std::move(colours), rows);
}

std::unique_ptr<Device> MakePictureDevice(const RasterOptions &options, Picture *picture, std::string *error)
{
    auto colours = CheckOptions(options, error);
    if (colours == nullptr)
        return nullptr;
    return std::make_unique<PictureDevice>(options, std::move(colours), picture);
}

std::unique_ptr<Device> MakePlatesDevice(const RasterOptions &options,
                                         std::optional<std::vector<std::string>> spotInks,
                                         std::shared_ptr<PlateSink> sink, std::string *error)
{
    if (!CheckSamples(options, error))
        return nullptr;
    return std::make_unique<PlatesDevice>(options, std::move(spotInks), std::move(sink));
}

std::unique_ptr<PointProbe> PointProbe::Make(Point at, double within)
{
    return std::make_unique<RasterProbe>(at, within);
}

bool HasOwnPlate(const std::string &spotInk)
{
    const auto isOfThatName = [&](const SpotInk &ink) { return ink.name == spotInk; };
    return CanHavePlate(spotInk) && std::ranges::none_of(kProcessInks, isOfThatName);
}

} // namespace vxhost
