// Elements go to the file as they come. Only the last one may still be open: a stroke of the path that has just been
// filled joins it, so that what was one object to the person who drew it is one again.
//
// The origin of the picture is the page's upper left corner, its y axis points down, and a unit is a point. Numbers are
// moved there rather than the picture turned over, so that text and editors need no turning back.
#include "devices/svg/SvgDevice.h"

#include "devices/svg/Gradients.h"
#include "devices/svg/Nesting.h"
#include "devices/svg/PaintAttributes.h"
#include "devices/svg/PathData.h"
#include "devices/svg/StrokeAttributes.h"
#include "devices/svg/TextWriter.h"
#include "devices/svg/XmlWriter.h"

#include <utility>

namespace vxhost
{

using namespace svg;

namespace
{

// A path of no more points may wait for its stroke; a longer one is written as two elements.
constexpr size_t kMaxKeptPoints = size_t{1} << 16;

// Lines of text keep to the widths of their fonts: the drawing has its own kerning, or none, and no ligatures.
constexpr const char *kPlainSetting =
    " style=\"font-kerning:none;font-feature-settings:'kern' 0,'liga' 0,'clig' 0,'calt' 0\"";

// The writers that know where the page lies.
struct PageWriters {
    PageWriters(const Matrix &matrix, TextOutput output, PaintAttributes *paints, XmlWriter *xml,
                Device *device)
        : toPicture(matrix), nesting(matrix, xml), gradients(matrix, paints, xml),
          text(matrix, output, paints, xml, device)
    {
    }
    Matrix toPicture;
    Nesting nesting;
    Gradients gradients;
    TextWriter text;
};

class SvgDevice final : public Device
{
  public:
    SvgDevice(const SvgOptions &options, std::unique_ptr<ScreenColours> colours, ByteSink sink)
        : options_(options), paints_(std::move(colours), options.overprint), xml_(std::move(sink)),
          page_(std::make_unique<PageWriters>(Matrix{}, options_.text, &paints_, &xml_, this))
    {
    }

    void BeginPage(const Page &page) override;
    void Save() override
    {
        EndElement();
        page_->nesting.Save();
    }
    void Restore() override
    {
        EndElement();
        page_->nesting.Restore();
    }
    void ClipPath(const Path &path) override
    {
        EndElement();
        page_->nesting.Intersect(path);
    }
    void FillPath(const Path &path, const Paint &paint) override;
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override;
    void Shade(const Shading &shading) override;
    bool CanShow(const TextFont &font) override
    {
        return options_.text != TextOutput::Outlines && page_->text.CanShow(font);
    }
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    void BeginLayer(const Layer &layer) override
    {
        EndElement();
        page_->nesting.BeginLayer(layer);
    }
    void EndLayer() override
    {
        EndElement();
        page_->nesting.EndLayer();
    }
    void BeginGroup() override
    {
        EndElement();
        page_->nesting.BeginGroup();
    }
    void EndGroup() override
    {
        EndElement();
        page_->nesting.EndGroup();
    }
    Failure EndPage() override;
    uint64_t PlacedTexts() const override { return page_->text.PlacedTexts(); }

  private:
    void EndElement()
    {
        if (std::exchange(isOpen_, false))
            xml_.Markup("/>\n");
        page_->text.EndLine();
    }
    void WritePath(const Path &path, const Matrix &toElement)
    {
        xml_.Markup("<path d=\"");
        WritePathData(path, toElement, &xml_);
        xml_.Markup("\"");
    }
    bool CanJoin(const Path &path, const Frame &frame, const Paint &paint) const
    {
        return isOpen_ && frame.isPlain && !paints_.Multiplies(paint) && path.verbs == filled_.verbs &&
               path.points == filled_.points;
    }

    SvgOptions options_;
    PaintAttributes paints_;
    XmlWriter xml_;
    std::unique_ptr<PageWriters> page_;
    bool isOpen_ = false; // the element of filled_ lacks its end
    Path filled_;         // keeps its storage
};

void SvgDevice::BeginPage(const Page &page)
{
    const Box &box = page.box;
    page_ = std::make_unique<PageWriters>(Matrix{1, 0, 0, -1, -box.left, box.top}, options_.text, &paints_,
                                          &xml_, this);
    xml_.Markup("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" ");
    if (page.hasLayers)
        xml_.Markup("xmlns:inkscape=\"http://www.inkscape.org/namespaces/inkscape\" "
                    "xmlns:sodipodi=\"http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd\" ");
    xml_.Markup("version=\"1.1\" width=\"");
    xml_.Number(box.Width());
    xml_.Markup("pt\" height=\"");
    xml_.Number(box.Height());
    xml_.Markup("pt\" viewBox=\"0 0 ");
    xml_.Coordinates({box.Width(), box.Height()});
    xml_.Markup("\"");
    xml_.Attribute("stroke-miterlimit", kDefaultMiterLimit);
    if (options_.text == TextOutput::Editable)
        xml_.Markup(kPlainSetting);
    xml_.Markup(">\n");
    if (!page.title.empty()) {
        xml_.Markup("<title>");
        xml_.Escaped(page.title);
        xml_.Markup("</title>\n");
    }
    if (!options_.background)
        return;
    xml_.Markup("<rect");
    xml_.Attribute("width", box.Width());
    xml_.Attribute("height", box.Height());
    xml_.Markup(" fill=\"");
    WriteColour(*options_.background, &xml_);
    xml_.Markup("\"/>\n");
}

void SvgDevice::FillPath(const Path &path, const Paint &paint)
{
    EndElement();
    if (path.IsEmpty() || page_->nesting.IsEmpty())
        return;
    page_->nesting.BeginElement();
    WritePath(path, page_->toPicture);
    paints_.Write(paint, PaintUse::Fill, &xml_);
    isOpen_ = true;
    if (!paints_.Multiplies(paint) && path.points.size() <= kMaxKeptPoints) {
        filled_ = path;
        return;
    }
    if (paints_.Multiplies(paint))
        PaintAttributes::WriteMultiply(&xml_);
    EndElement();
}

void SvgDevice::StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint)
{
    if (style.cap == LineCap::Square && HasDots(path))
        return StrokePath(WithoutDots(path), style, paint);
    const Frame frame = FindStrokeFrame(style, page_->toPicture);
    const bool joins = CanJoin(path, frame, paint);
    if (!joins) {
        EndElement();
        if (path.IsEmpty() || page_->nesting.IsEmpty())
            return;
        page_->nesting.BeginElement();
        WritePath(path, Product(page_->toPicture, frame.fromPicture));
        if (!frame.isPlain)
            xml_.Transform(frame.toPicture);
        xml_.Markup(" fill=\"none\"");
    }
    paints_.Write(paint, PaintUse::Stroke, &xml_);
    WriteStroke(style, frame, &xml_);
    if (paints_.Multiplies(paint))
        PaintAttributes::WriteMultiply(&xml_);
    isOpen_ = true;
    EndElement();
}

void SvgDevice::Shade(const Shading &shading)
{
    EndElement();
    if (page_->nesting.IsEmpty())
        return;
    page_->nesting.BeginElement();
    if (!page_->gradients.Paint(shading))
        PaintAsShapes(shading, this);
}

void SvgDevice::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    for (const GlyphRun &run : runs) {
        if (!page_->text.IsOnLine(run, paint)) {
            EndElement();
            if (page_->nesting.IsEmpty())
                continue;
            page_->nesting.BeginElement();
        }
        page_->text.Show(run, paint);
    }
    if (!paint.clips)
        return;
    EndElement();
    page_->nesting.IntersectWith([&] { page_->text.WriteOutlines(runs); });
}

Failure SvgDevice::EndPage()
{
    EndElement();
    page_->nesting.End();
    page_->text.WriteFonts();
    xml_.Markup("</svg>\n");
    return xml_.Finish();
}

} // namespace

std::unique_ptr<Device> MakeSvgDevice(const SvgOptions &options, ByteSink sink, std::string *error)
{
    std::unique_ptr<ScreenColours> colours = ScreenColours::Make(options, error);
    if (colours == nullptr)
        return nullptr;
    return std::make_unique<SvgDevice>(options, std::move(colours), std::move(sink));
}

} // namespace vxhost
