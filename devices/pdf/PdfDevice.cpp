// The device only brings the parts together: operators go to the page's program as they come; what they refer to is
// gathered, and added to the file at the end.
#include "devices/pdf/PdfDevice.h"

#include "devices/pdf/ContentStream.h"
#include "devices/pdf/EmbeddedFont.h"
#include "devices/pdf/GraphicsState.h"
#include "devices/pdf/InkSpaces.h"
#include "devices/pdf/Metadata.h"
#include "devices/pdf/OptionalContent.h"
#include "devices/pdf/OutputIntent.h"
#include "devices/pdf/PdfFile.h"
#include "devices/pdf/PieceSpool.h"
#include "devices/pdf/Shadings.h"
#include "devices/pdf/TextWriter.h"
#include "devices/vector/Frame.h"
#include "host/MemoryWatch.h"

#include <algorithm>
#include <exception>
#include <map>
#include <new>
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

// What grows while a page is drawn.
struct PageProgram {
    PageProgram(PieceSpool *spool, Deflater *deflater)
        : content(spool, deflater), state(&content), text(&content, &state)
    {
    }

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
    PdfDevice(const PdfOptions &options, std::optional<PressProfile> press, std::unique_ptr<PieceSpool> spool,
              ByteSink sink)
        : options_(options), press_(std::move(press)), spool_(std::move(spool)), sink_(std::move(sink)),
          deflater_(options.compress ? std::make_unique<Deflater>() : nullptr)
    {
    }

    void BeginPage(const Page &page) override
    {
        page_ = page;
        spool_->Clear();
        program_.emplace(spool_.get(), deflater_.get());
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
        const std::optional<ShadingUse> use = program_->shadings.Use(shading);
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
        if (Failure why = WhyNoPdf(options_, page_))
            return why;
        program_->text.End();
        program_->content.Finish();
        if (spool_->FirstFailure())
            return spool_->FirstFailure();
        const MemoryWatch watch;
        // qpdf throws.
        try {
            const Failure failure = WriteFile();
            return failure ? failure : spool_->FirstFailure();
        } catch (const std::bad_alloc &) {
            return {FailureKind::OutOfMemory};
        } catch (const std::exception &failure) {
            return watch.HasRunOut() ? Failure{FailureKind::OutOfMemory}
                                     : Failure{FailureKind::BadInput, failure.what()};
        }
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
            embedded = std::make_unique<EmbeddedFont>(std::move(opened), font.asked);
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
    Failure WriteFile()
    {
        PdfFile file(deflater_.get());
        QPDFObjectHandle resources = QPDFObjectHandle::newDictionary();
        if (Failure failure = AddFonts(&file, &resources))
            return failure;
        AddInks(&file, &resources);
        if (!program_->layers.IsEmpty()) {
            QPDFObjectHandle layers = QPDFObjectHandle::newDictionary();
            program_->layers.AddTo(&file, &layers);
            AddResource("/Properties", layers, &resources);
        }
        const Box &box = page_.box;
        const QPDFObjectHandle size = QPDFObjectHandle::newArray(
            {MakeNumber(box.left), MakeNumber(box.bottom), MakeNumber(box.right), MakeNumber(box.top)});
        QPDFObjectHandle page = QPDFObjectHandle::newDictionary();
        page.replaceKey("/Type", MakeName("Page"));
        page.replaceKey("/MediaBox", size);
        page.replaceKey("/TrimBox", size);
        page.replaceKey("/Resources", resources);
        page.replaceKey("/Contents", file.AddPieces(spool_.get()));
        file.AddPage(file.Add(page));
        AddMetadata(options_, page_, &file);
        if (press_)
            AddOutputIntent(*press_, &file);
        return file.Write(sink_);
    }

    Failure AddFonts(PdfFile *file, QPDFObjectHandle *resources)
    {
        QPDFObjectHandle fonts = QPDFObjectHandle::newDictionary();
        for (const EmbeddedFont *font : program_->fontsInOrder) {
            if (Failure failure = font->AddTo(file, &fonts))
                return failure;
        }
        AddResource("/Font", fonts, resources);
        return {};
    }

    void AddInks(PdfFile *file, QPDFObjectHandle *resources)
    {
        QPDFObjectHandle shadings = QPDFObjectHandle::newDictionary();
        program_->shadings.AddTo(file, &shadings);
        AddResource("/Shading", shadings, resources);
        QPDFObjectHandle spaces = QPDFObjectHandle::newDictionary();
        if (program_->state.UsesBlackInk())
            spaces.replaceKey(KeyOf(kBlackInk), InkSpace(file, {&kProcessInks[kInkCount - 1]}));
        program_->state.Spots().AddTo(file, &spaces);
        AddResource("/ColorSpace", spaces, resources);
        QPDFObjectHandle states = QPDFObjectHandle::newDictionary();
        if (program_->state.UsesOverprint()) {
            states.replaceKey(KeyOf(kOverprintOn), OverprintState(true));
            states.replaceKey(KeyOf(kOverprintOff), OverprintState(false));
        }
        AddResource("/ExtGState", states, resources);
    }

    static QPDFObjectHandle OverprintState(bool isOn)
    {
        QPDFObjectHandle state = QPDFObjectHandle::newDictionary();
        state.replaceKey("/OP", QPDFObjectHandle::newBool(isOn));
        state.replaceKey("/op", QPDFObjectHandle::newBool(isOn));
        state.replaceKey("/OPM", QPDFObjectHandle::newInteger(isOn ? 1 : 0));
        return state;
    }

    static void AddResource(const char *key, QPDFObjectHandle &of, QPDFObjectHandle *resources)
    {
        if (!of.getKeys().empty())
            resources->replaceKey(key, of);
    }

    const PdfOptions options_;
    std::optional<PressProfile> press_;
    std::unique_ptr<PieceSpool> spool_;
    ByteSink sink_;
    std::unique_ptr<Deflater> deflater_; // null: nothing is compressed
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
    return std::make_unique<PdfDevice>(options, std::move(press), MakePieceSpool(options), std::move(sink));
}

Failure WhyNoPdf(const PdfOptions &options, const Page &page)
{
    if (options.standard == PdfX::None || !DateOf(options, page).empty())
        return {};
    const std::string has =
        page.created.empty()
            ? "none"
            : "\"" + page.created + "\"" +
                  (page.isDateOrderOpen ? ", which can be read in two ways" : ", which is none");
    return {FailureKind::BadInput,
            "PDF/X asks for the date of creation, and the document has " + has +
                (page.isDateOrderOpen ? ": set --date-order, or --date to one, in seconds since 1970"
                                      : ": set --date to one, in seconds since 1970")};
}

} // namespace vxhost
