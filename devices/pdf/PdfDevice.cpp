// The device only brings the parts together: operators go to the page's program as they come, and its pieces to the file; fonts and
// what else the page refers to are gathered, and follow at the end.
#include "devices/pdf/PdfDevice.h"

#include "devices/pdf/ContentStream.h"
#include "devices/pdf/EmbeddedFont.h"
#include "devices/pdf/GraphicsState.h"
#include "devices/pdf/InkSpaces.h"
#include "devices/pdf/Levels.h"
#include "devices/pdf/Metadata.h"
#include "devices/pdf/MissingGlyphs.h"
#include "devices/pdf/OptionalContent.h"
#include "devices/pdf/OutputIntent.h"
#include "devices/pdf/PdfFile.h"
#include "devices/pdf/Shadings.h"
#include "devices/pdf/TextWriter.h"
#include "devices/vector/Frame.h"
#include "devices/vector/Numbers.h"
#include "host/reading/Utf8.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

using namespace pdf;

namespace
{

// What a shading covers in its own space: the unit square, or the unit circle.
Path AreaOf(ShadingKind kind)
{
    Shading unit;
    unit.kind = kind;
    unit.first.radius = 1;
    return OutlineOf(unit, 0, 1);
}

// A box with the path within, and as much room around it.
Box Around(const Path &path, double room)
{
    Box box = {INFINITY, INFINITY, -INFINITY, -INFINITY};
    for (const Point &point : path.points)
        box = {std::min(box.left, point.x - room), std::min(box.bottom, point.y - room),
               std::max(box.right, point.x + room), std::max(box.top, point.y + room)};
    return box;
}

// The clips in force.
struct Clips {
    size_t count = 0;
    Box box; // of the last one
};

bool HasSegments(const Path &path)
{
    return std::ranges::any_of(path.verbs,
                               [](Verb verb) { return verb == Verb::Line || verb == Verb::Curve; });
}

// The mode of an operator that shows text: 0 fills, 1 strokes, 2 does both; 4 more clips as well, and 7 clips alone.
int TextMode(bool fills, bool strokes, bool clips)
{
    if (!fills && !strokes)
        return 7;
    return (strokes ? (fills ? 2 : 1) : 0) + (clips ? 4 : 0);
}

// The PDF that has layers, and that which has profiles of version 4.
constexpr int kVersionOfLayers = 5, kVersionOfProfiles = 7;
constexpr size_t kShownName = 40; // bytes of one that is too long

// What grows while a page is drawn.
struct PageProgram {
    PageProgram(const ByteSink &sink, int level, const Demands &demands)
        : file(sink, level, demands.version), content(&file), inks(&file, demands.IsAny()),
          state(&content, &inks), text(&content, &state)
    {
    }

    PdfFile file;
    ContentStream content;
    InkSpaces inks;
    GraphicsState state;
    TextWriter text;
    Shadings shadings;
    OptionalContent layers;
    std::map<const TextFont *, std::unique_ptr<EmbeddedFont>> fonts; // null: one that cannot be embedded
    std::vector<EmbeddedFont *> fontsInOrder;                        // of first use
};

class PdfDevice final : public Device
{
  public:
    PdfDevice(const PdfOptions &options, std::optional<PressProfile> press, ByteSink sink)
        : options_(options), demands_(DemandsOf(options)), press_(std::move(press)), sink_(std::move(sink))
    {
    }

    void BeginPage(const Page &page) override
    {
        page_ = page;
        program_.emplace(sink_, LevelOf(options_.compression), demands_);
        clips_ = {};
        saved_.clear();
        if (!options_.background)
            return;
        const Rgb &colour = *options_.background;
        ContentStream &content = program_->content;
        program_->state.BeginBlock();
        content.Number(colour.r / 255.0).Number(colour.g / 255.0).Number(colour.b / 255.0).Operator("rg");
        AddRectangle(page.box);
        content.Operator("f");
        program_->state.EndBlock();
    }

    void Save() override
    {
        program_->text.End();
        program_->state.Save();
        saved_.push_back(clips_);
    }
    void Restore() override
    {
        program_->text.End();
        program_->state.Restore();
        clips_ = saved_.back();
        saved_.pop_back();
    }

    void ClipPath(const Path &path) override
    {
        program_->text.End();
        // A clip that hides everything is drawn as a clip to a place beside the page: no reader can round that to a
        // pixel.
        if (HasSegments(path))
            program_->content.AddPath(path);
        else
            AddRectangle(
                {page_.box.left - 2, page_.box.bottom - 2, page_.box.left - 1, page_.box.bottom - 1});
        program_->content.Operator("W n");
        clips_ = {clips_.count + 1, Around(path, 0)};
    }

    void FillPath(const Path &path, const Paint &paint) override
    {
        program_->text.End();
        program_->state.SetFill(paint);
        program_->content.AddPath(path);
        program_->content.Operator("f");
    }

    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override
    {
        const Frame frame = FindFrame(style.matrix);
        ContentStream &content = program_->content;
        program_->text.End();
        program_->state.SetStroke(paint);
        program_->state.SetLine(style, frame);
        if (frame.isPlain) {
            content.AddPath(path);
            content.Operator("S");
            return;
        }
        program_->state.BeginBlock();
        content.Factors(frame.toPicture).Operator("cm");
        content.AddPath(path, frame.fromPicture);
        content.Operator("S");
        program_->state.EndBlock();
    }

    void Shade(const Shading &shading) override
    {
        const bool isByItself = clips_.count == 1 && Covers(shading, clips_.box);
        const std::optional<ShadingUse> use =
            program_->shadings.Use(shading, !isByItself, &program_->file, &program_->inks);
        if (!use)
            return PaintAsShapes(shading, this);
        ContentStream &content = program_->content;
        program_->text.End();
        program_->state.SetOverprint(shading.overprint);
        program_->state.BeginBlock();
        if (isByItself) {
            content.Factors(use->matrix).Operator("cm");
            content.Name(use->name).Operator("sh");
            program_->state.EndBlock();
            return;
        }
        content.Name("Pattern").Operator("cs");
        content.Name(use->name).Operator("scn");
        // A ground reaches as far as the clip, whose edge must not be drawn a second time.
        if (shading.ground.IsEmpty())
            content.AddPath(AreaOf(shading.kind), use->matrix);
        else
            AddRectangle(Around(shading.ground, 1));
        content.Operator("f");
        program_->state.EndBlock();
    }

    bool CanShow(const TextFont &font) override
    {
        return options_.text == TextOutput::Text && OpenFont(font) != nullptr;
    }

    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override
    {
        if (demands_.isForArchive && LacksGlyphs(runs))
            return ShowWithShapes(runs, paint);
        if (paint.clips)
            clips_ = {clips_.count + 1, Around({}, 0)}; // nobody knows how far it reaches
        const Frame frame = paint.strokes ? FindFrame(paint.style.matrix) : Frame{};
        if (paint.fills)
            program_->state.SetFill(paint.paint);
        if (paint.strokes) {
            program_->state.SetStroke(paint.paint);
            program_->state.SetLine(paint.style, frame);
        }
        if (frame.isPlain) {
            ShowRuns(runs, TextMode(paint.fills, paint.strokes, paint.clips), {});
            return;
        }
        // A pen with a space of its own must not change how glyphs are filled or clipped.
        if (paint.fills)
            ShowRuns(runs, TextMode(true, false, false), {});
        program_->text.End();
        program_->state.Save();
        program_->content.Factors(frame.toPicture).Operator("cm");
        ShowRuns(runs, TextMode(false, true, false), frame.fromPicture);
        program_->text.End();
        program_->state.Restore();
        if (paint.clips)
            ShowRuns(runs, TextMode(false, false, true), {});
    }

    // Some levels forbid layers; what is on them is painted all the same.
    void BeginLayer(const Layer &layer) override
    {
        if (!demands_.takesLayers)
            return;
        program_->text.End();
        program_->content.Name("OC").Name(program_->layers.Begin(layer)).Operator("BDC");
    }
    void EndLayer() override
    {
        if (!demands_.takesLayers)
            return;
        program_->text.End();
        program_->content.Operator("EMC");
        program_->layers.End();
    }

    Failure EndPage() override
    {
        program_->text.End();
        return Finish();
    }

  private:
    void AddRectangle(const Box &box)
    {
        program_->content.Number(box.left)
            .Number(box.bottom)
            .Number(box.Width())
            .Number(box.Height())
            .Operator("re");
    }

    // Opens the font, the first time. Null: it cannot be embedded.
    EmbeddedFont *OpenFont(const TextFont &font)
    {
        auto found = program_->fonts.find(&font);
        if (found != program_->fonts.end())
            return found->second.get();
        std::unique_ptr<FontProgram> opened = FontProgram::Open(font);
        std::unique_ptr<EmbeddedFont> embedded;
        if (opened != nullptr)
            embedded = std::make_unique<EmbeddedFont>(std::move(opened), font);
        return program_->fonts.emplace(&font, std::move(embedded)).first->second.get();
    }

    // Paints text in which a glyph says "missing". One that clips is one shape.
    void ShowWithShapes(std::span<const GlyphRun> runs, const TextPaint &paint)
    {
        const bool isText = !paint.clips;
        const TextAndShapes parts = isText ? TakeMissingOut(runs) : TextAndShapes{{}, OutlinesOf(runs)};
        if (!parts.runs.empty())
            ShowText(parts.runs, paint);
        if (paint.fills)
            FillPath(parts.shapes, paint.paint);
        if (paint.strokes)
            StrokePath(parts.shapes, paint.style, paint.paint);
        if (paint.clips)
            ClipPath(parts.shapes);
    }

    // A text that clips is an object of its own, at whose end the clip comes into force.
    void ShowRuns(std::span<const GlyphRun> runs, int mode, const Matrix &fromPage)
    {
        const bool clips = mode >= TextMode(true, false, true);
        if (clips)
            program_->text.End();
        program_->text.Begin();
        program_->state.SetTextMode(mode);
        for (const GlyphRun &run : runs) {
            EmbeddedFont *font = OpenFont(*run.font);
            if (font == nullptr)
                continue;
            if (!font->HasNumber()) {
                program_->fontsInOrder.push_back(font);
                font->SetNumber(program_->fontsInOrder.size());
            }
            program_->text.Show(run, fromPage, font);
        }
        if (clips)
            program_->text.End();
    }

    // The page keeps the document's own coordinates: its box need not start at the origin, and the numbers of its
    // program stay those that the document has.
    Failure Finish()
    {
        PdfFile *file = &program_->file;
        const std::string contents = ArrayValue(program_->content.Finish());
        Dictionary catalog, resources;
        if (Failure failure = AddFonts(&resources))
            return failure;
        AddInks(&resources);
        if (Failure failure = CheckCounts())
            return failure;
        int version = PdfFile::kVersion;
        if (!program_->layers.IsEmpty()) {
            Dictionary layers;
            program_->layers.AddTo(file, demands_.IsAny(), &catalog, &layers);
            AddResource("Properties", layers, &resources);
            version = kVersionOfLayers;
        }
        if (press_) {
            AddOutputIntents(*press_, demands_.intents, file, &catalog);
            version = press_->version > 2 ? kVersionOfProfiles : version;
        }
        if (!demands_.IsAny() && version > PdfFile::kVersion)
            catalog.Add("Version", NameValue("1." + std::to_string(version)));
        Dictionary page;
        AddBoxes(&page);
        page.Add("Resources", resources.Value());
        page.Add("Contents", contents);
        std::vector<ServedFont> fonts;
        for (const EmbeddedFont *font : program_->fontsInOrder)
            fonts.push_back({font->AskedName(), font->OwnName()});
        const Reference information = AddMetadata(options_, page_, fonts, file, &catalog);
        return file->Finish(page, catalog, information);
    }

    // Says what the drawing has more of than an archive takes.
    Failure CheckCounts() const
    {
        if (!demands_.isForArchive)
            return {};
        const std::string beyond = ", and " + demands_.name + " takes ";
        if (const size_t most = program_->state.MostNesting(); most > kMostNesting)
            return {FailureKind::BadInput, "clips are nested " + std::to_string(most) + " deep" + beyond +
                                               std::to_string(kMostNesting) + ": leave --pdf-a out"};
        if (const std::string_view name = program_->inks.LongestName(); name.size() > kMostNameBytes)
            return {FailureKind::BadInput, "the spot ink \"" + Printable(name, kShownName) +
                                               "\" has a name of " + std::to_string(name.size()) + " bytes" +
                                               beyond + std::to_string(kMostNameBytes) +
                                               ": rename it, or choose --spots process"};
        return {};
    }

    // A page without a crop box shows all of its media box.
    void AddBoxes(Dictionary *page) const
    {
        const auto value = [](const Box &box) {
            return ArrayValue({box.left, box.bottom, box.right, box.top});
        };
        page->Add("MediaBox", value(page_.box));
        if (page_.sheet)
            page->Add("BleedBox", value(page_.sheet->bleed));
        page->Add("TrimBox", value(page_.sheet ? page_.sheet->trim : page_.box));
    }

    Failure AddFonts(Dictionary *resources)
    {
        Dictionary fonts;
        for (const EmbeddedFont *font : program_->fontsInOrder) {
            if (Failure failure = font->AddTo(&program_->file, options_.isToBeJoined, &fonts))
                return failure;
        }
        AddResource("Font", fonts, resources);
        return {};
    }

    void AddInks(Dictionary *resources)
    {
        PdfFile *file = &program_->file;
        program_->shadings.AddTo(file, resources);
        Dictionary spaces;
        if (program_->state.UsesBlackInk())
            spaces.Add(kBlackInk, program_->inks.MakeBlack());
        program_->inks.AddTo(&spaces);
        AddResource("ColorSpace", spaces, resources);
        Dictionary states;
        if (program_->state.UsesOverprint()) {
            states.Add(kOverprintOn, "<</OP true/op true/OPM 1>>");
            states.Add(kOverprintOff, "<</OP false/op false/OPM 0>>");
        }
        AddResource("ExtGState", states, resources);
    }

    static void AddResource(std::string_view key, const Dictionary &of, Dictionary *resources)
    {
        if (!of.IsEmpty())
            resources->Add(key, of.Value());
    }

    const PdfOptions options_;
    const Demands demands_;
    std::optional<PressProfile> press_;
    ByteSink sink_;
    Page page_;
    std::optional<PageProgram> program_;
    Clips clips_;
    std::vector<Clips> saved_;
};

} // namespace

std::unique_ptr<Device> MakePdfDevice(const PdfOptions &options, ByteSink sink, std::string *error)
{
    std::optional<PressProfile> press;
    const Demands demands = DemandsOf(options);
    if (demands.IsAny() && options.background) {
        *error =
            demands.name + " has no colours of a screen, and the background is one: leave it to the paper";
        return nullptr;
    }
    if (demands.IsAny() || !options.profile.empty()) {
        press = ReadPressProfile(options, error);
        if (!press)
            return nullptr;
    }
    return std::make_unique<PdfDevice>(options, std::move(press), std::move(sink));
}

Failure CheckPdfPage(const PdfOptions &options, const Page &page)
{
    const Demands demands = DemandsOf(options);
    const double width = page.box.Width(), height = page.box.Height();
    if (!demands.isForArchive ||
        (std::min(width, height) >= kLeastSide && std::max(width, height) <= kMostSide))
        return {};
    return {FailureKind::BadInput, "the page is of " + NumberText(width) + " by " + NumberText(height) +
                                       " points, and " + demands.name +
                                       " takes 3 to 14400 each way: choose another with --box"};
}

// A plain PDF has no date that tells of anything but the drawing, so that it has the same bytes tomorrow.
DateOrigin FindDateOrigin(const PdfOptions &options, const Page &page)
{
    const DateOrigin outside = page.fileDate ? DateOrigin::File : DateOrigin::Clock;
    if (options.date)
        return DateOrigin::User;
    if (options.dateFrom == PdfDateFrom::File)
        return outside;
    if (options.dateFrom == PdfDateFrom::Clock)
        return DateOrigin::Clock;
    if (page.date)
        return DateOrigin::Drawing;
    return DemandsOf(options).IsAny() ? outside : DateOrigin::None;
}

} // namespace vxhost
