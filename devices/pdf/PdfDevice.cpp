// The device only brings the parts together: operators go to the page's program as they come, and its pieces to the file; fonts and
// what else the page refers to are gathered, and follow at the end.
#include "devices/pdf/PdfDevice.h"

#include "devices/pdf/ContentStream.h"
#include "devices/pdf/EmbeddedFont.h"
#include "devices/pdf/GraphicsState.h"
#include "devices/pdf/InkSpaces.h"
#include "devices/pdf/Metadata.h"
#include "devices/pdf/OptionalContent.h"
#include "devices/pdf/OutputIntent.h"
#include "devices/pdf/PdfFile.h"
#include "devices/pdf/Shadings.h"
#include "devices/pdf/TextWriter.h"
#include "devices/vector/Frame.h"

#include <algorithm>
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

// By libdeflate. Beside 6, its own default, 4 takes three fifths of the time for pages 1 to 3 % larger, 1 a fifth for pages 5 to
// 10 % larger, and 10 three to six times as long for pages 7 % smaller.
int LevelOf(Compression compression)
{
    constexpr int kLevels[] = {0, 1, 4, 10};
    return kLevels[static_cast<size_t>(compression)];
}

// What grows while a page is drawn.
struct PageProgram {
    PageProgram(const ByteSink &sink, int level)
        : file(sink, level), content(&file), state(&content, &file), text(&content, &state)
    {
    }

    PdfFile file;
    ContentStream content;
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
        : options_(options), press_(std::move(press)), sink_(std::move(sink))
    {
    }

    void BeginPage(const Page &page) override
    {
        page_ = page;
        program_.emplace(sink_, LevelOf(options_.compression));
        if (!options_.background)
            return;
        const Rgb &colour = *options_.background;
        ContentStream &content = program_->content;
        content.Operator("q");
        content.Number(colour.r / 255.0).Number(colour.g / 255.0).Number(colour.b / 255.0).Operator("rg");
        AddRectangle(page.box);
        content.Operator("f");
        content.Operator("Q");
    }

    void Save() override
    {
        program_->text.End();
        program_->state.Save();
    }
    void Restore() override
    {
        program_->text.End();
        program_->state.Restore();
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
        content.Operator("q");
        content.Factors(frame.toPicture).Operator("cm");
        content.AddPath(path, frame.fromPicture);
        content.Operator("S");
        content.Operator("Q");
    }

    void Shade(const Shading &shading) override
    {
        const std::optional<ShadingUse> use = program_->shadings.Use(shading, &program_->file);
        if (!use)
            return PaintAsShapes(shading, this);
        ContentStream &content = program_->content;
        program_->text.End();
        program_->state.SetOverprint(shading.overprint);
        content.Operator("q");
        content.Factors(use->matrix).Operator("cm");
        if (shading.ground.IsEmpty()) {
            content.AddPath(AreaOf(shading.kind));
            content.Operator("W n");
        }
        content.Name(use->name).Operator("sh");
        content.Operator("Q");
    }

    bool CanShow(const TextFont &font) override
    {
        return options_.text == TextOutput::Text && OpenFont(font) != nullptr;
    }

    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override
    {
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

    // The standards of PDF/X forbid layers; what is on them is painted all the same.
    void BeginLayer(const Layer &layer) override
    {
        if (options_.standard != PdfX::None)
            return;
        program_->text.End();
        program_->content.Name("OC").Name(program_->layers.Begin(layer)).Operator("BDC");
    }
    void EndLayer() override
    {
        if (options_.standard != PdfX::None)
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
        if (!program_->layers.IsEmpty()) {
            Dictionary layers;
            program_->layers.AddTo(file, &catalog, &layers);
            AddResource("Properties", layers, &resources);
        }
        if (press_)
            AddOutputIntent(*press_, file, &catalog);
        const Box &box = page_.box;
        const std::string size = ArrayValue({box.left, box.bottom, box.right, box.top});
        Dictionary page;
        page.Add("MediaBox", size).Add("TrimBox", size).Add("Resources", resources.Value());
        page.Add("Contents", contents);
        return file->Finish(page, catalog, AddMetadata(options_, page_, file));
    }

    Failure AddFonts(Dictionary *resources)
    {
        Dictionary fonts;
        for (const EmbeddedFont *font : program_->fontsInOrder) {
            if (Failure failure = font->AddTo(&program_->file, &fonts))
                return failure;
        }
        AddResource("Font", fonts, resources);
        return {};
    }

    void AddInks(Dictionary *resources)
    {
        PdfFile *file = &program_->file;
        if (!program_->shadings.IsEmpty())
            resources->Add("Shading", program_->shadings.AddResources(file));
        Dictionary spaces;
        if (program_->state.UsesBlackInk())
            spaces.Add(kBlackInk, InkSpace({&kProcessInks[kInkCount - 1]}, file));
        program_->state.Spots().AddTo(&spaces);
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
    std::optional<PressProfile> press_;
    ByteSink sink_;
    Page page_;
    std::optional<PageProgram> program_;
};

} // namespace

std::unique_ptr<Device> MakePdfDevice(const PdfOptions &options, ByteSink sink, std::string *error)
{
    std::optional<PressProfile> press;
    if (options.standard != PdfX::None) {
        if (options.background) {
            *error = "PDF/X has no colours of a screen, and the background is one: leave it to the paper";
            return nullptr;
        }
        press = ReadPressProfile(options, error);
        if (!press)
            return nullptr;
    }
    return std::make_unique<PdfDevice>(options, std::move(press), std::move(sink));
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
    return options.standard == PdfX::None ? DateOrigin::None : outside;
}

} // namespace vxhost
