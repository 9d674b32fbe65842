#include "library/interface/CallerDevice.h"

#include "host/fonts/FontFile.h"
#include "host/reading/Utf8.h"
#include "library/interface/Calls.h"

#include <cstdint>
#include <string>

using namespace vxhost;

namespace
{

// Holds a path in the caller's form. The verbs have the same numbers in both.
static_assert(static_cast<int>(Verb::Move) == VX_MOVE && static_cast<int>(Verb::Line) == VX_LINE &&
              static_cast<int>(Verb::Curve) == VX_CURVE && static_cast<int>(Verb::Close) == VX_CLOSE);

class SharedPath
{
  public:
    SharedPath() = default;
    explicit SharedPath(const Path &path) { Set(path); }

    void Set(const Path &path)
    {
        verbs_.clear();
        points_.clear();
        for (const Verb verb : path.verbs)
            verbs_.push_back(static_cast<uint8_t>(verb));
        for (const Point point : path.points)
            points_.push_back({point.x, point.y});
    }
    vx_path Get() const { return {verbs_.data(), verbs_.size(), points_.data(), points_.size()}; }

  private:
    std::vector<uint8_t> verbs_;
    std::vector<vx_point> points_;
};

vx_matrix Shared(const Matrix &matrix)
{
    return {matrix.a, matrix.b, matrix.c, matrix.d, matrix.tx, matrix.ty};
}

// The numbers are the same in both forms. The dashes that are returned are those of the style, which has to stay.
static_assert(static_cast<int>(LineCap::Round) == VX_CAP_ROUND &&
              static_cast<int>(LineCap::Square) == VX_CAP_SQUARE &&
              static_cast<int>(LineJoin::Round) == VX_JOIN_ROUND &&
              static_cast<int>(LineJoin::Bevel) == VX_JOIN_BEVEL);
vx_stroke Shared(const StrokeStyle &style)
{
    return {style.width,
            static_cast<int32_t>(style.cap),
            static_cast<int32_t>(style.join),
            style.miterLimit,
            style.dashPhase,
            style.dashes.data(),
            style.dashes.size(),
            Shared(style.matrix)};
}

template <typename... Arguments>
void Run(int (*procedure)(void *, Arguments...), void *context, std::type_identity_t<Arguments>... arguments)
{
    if (procedure != nullptr && procedure(context, arguments...) != 0)
        throw CallError(VX_STOPPED, "stopped by a procedure of its device");
}

} // namespace

struct vx_font_source {
    std::string asked, served;
    SharedFontBytes bytes;
    int faceIndex;
    vx_font font;

    std::unique_ptr<FontFile> opened; // when it is first asked for an outline
    SharedPath outline;               // the last that was asked for
};

CallerDevice::CallerDevice(const vx_device &device) : device_(device) {}

CallerDevice::~CallerDevice() = default;

vx_colour CallerDevice::ColourFor(const Colour &colour)
{
    vx_colour shared = {};
    shared.space = colour.space == ColourSpace::Gray ? VX_GRAY : VX_CMYK;
    std::ranges::copy(colour.ink, shared.ink);
    for (size_t i = 0; i < std::size(colour.spots); ++i) {
        const SpotShare &share = colour.spots[i];
        if (share.ink == nullptr)
            continue;
        const double *alternate = share.ink->alternate;
        const vx_spot spot = {share.ink->name.c_str(),
                              {alternate[0], alternate[1], alternate[2], alternate[3]}};
        shared.spots[i] = {&spots_.emplace(share.ink, spot).first->second, share.amount};
    }
    return shared;
}

vx_paint CallerDevice::PaintFor(const Paint &paint)
{
    return {ColourFor(paint.colour), paint.overprint ? 1 : 0};
}

void CallerDevice::BeginPage(const Page &page)
{
    Run(device_.begin, device_.context, page.box.left, page.box.bottom, page.box.right, page.box.top);
}

void CallerDevice::Save()
{
    Run(device_.save, device_.context);
}

void CallerDevice::Restore()
{
    Run(device_.restore, device_.context);
}

void CallerDevice::ClipPath(const Path &path)
{
    const SharedPath kept(path);
    const vx_path shared = kept.Get();
    Run(device_.clip, device_.context, &shared);
}

void CallerDevice::FillPath(const Path &path, const Paint &paint)
{
    const SharedPath kept(path);
    const vx_path shared = kept.Get();
    const vx_paint sharedPaint = PaintFor(paint);
    Run(device_.fill, device_.context, &shared, &sharedPaint);
}

void CallerDevice::StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint)
{
    const SharedPath kept(path);
    const vx_path shared = kept.Get();
    const vx_stroke stroke = Shared(style);
    const vx_paint sharedPaint = PaintFor(paint);
    Run(device_.stroke, device_.context, &shared, &stroke, &sharedPaint);
}

void CallerDevice::Shade(const Shading &shading)
{
    if (device_.shade == nullptr) {
        PaintAsShapes(shading, this);
        return;
    }
    std::vector<std::vector<vx_colour>> colours;
    std::vector<vx_span> spans;
    for (const ColourSpan &span : shading.spans) {
        auto &kept = colours.emplace_back();
        for (const Colour &colour : span.colours)
            kept.push_back(ColourFor(colour));
        spans.push_back({span.from, span.to, kept.data(), kept.size()});
    }
    const SharedPath ground(shading.ground);
    const vx_shading shared = {shading.kind == ShadingKind::Axial ? VX_AXIAL : VX_RADIAL,
                               Shared(shading.matrix),
                               {shading.first.centre.x, shading.first.centre.y},
                               {shading.last.centre.x, shading.last.centre.y},
                               shading.first.radius,
                               shading.last.radius,
                               spans.data(),
                               spans.size(),
                               shading.overprint ? 1 : 0,
                               ground.Get()};
    Run(device_.shade, device_.context, &shared);
}

const vx_font *CallerDevice::FontFor(const TextFont &font)
{
    std::unique_ptr<vx_font_source> &source = fonts_[&font];
    if (source == nullptr) {
        auto made = std::make_unique<vx_font_source>();
        made->asked = ToUtf8(font.asked);
        made->served = ToUtf8(font.served);
        made->bytes = font.bytes;
        made->faceIndex = font.faceIndex;
        const std::span<const std::byte> bytes = font.bytes->Get();
        made->font = {made->asked.c_str(),     made->served.c_str(), bytes.data(), bytes.size(),
                      font.faceIndex & 0xFFFF, font.faceIndex >> 16, made.get()};
        source = std::move(made);
    }
    return &source->font;
}

void CallerDevice::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    std::vector<std::vector<vx_glyph>> glyphs;
    std::vector<vx_run> shared;
    for (const GlyphRun &run : runs) {
        auto &kept = glyphs.emplace_back();
        for (const PlacedGlyph &glyph : run.glyphs)
            kept.push_back({glyph.glyph, glyph.character, glyph.advance, {glyph.origin.x, glyph.origin.y}});
        shared.push_back(
            {FontFor(*run.font), Shared(run.matrix), run.isColumn ? 1 : 0, kept.data(), kept.size()});
    }
    const vx_text_paint how = {paint.fills ? 1 : 0, paint.strokes ? 1 : 0, paint.clips ? 1 : 0,
                               PaintFor(paint.paint), Shared(paint.style)};
    Run(device_.text, device_.context, shared.data(), shared.size(), &how);
}

void CallerDevice::BeginLayer(const Layer &layer)
{
    const vx_layer shared = {layer.name.c_str(),
                             layer.isVisible ? 1 : 0,
                             layer.isPreviewed ? 1 : 0,
                             layer.isEnabled ? 1 : 0,
                             layer.isPrinting ? 1 : 0,
                             layer.isDimmed ? 1 : 0,
                             {layer.rgb[0] / 255.0, layer.rgb[1] / 255.0, layer.rgb[2] / 255.0}};
    Run(device_.begin_layer, device_.context, &shared);
}

void CallerDevice::EndLayer()
{
    Run(device_.end_layer, device_.context);
}

void CallerDevice::BeginGroup()
{
    Run(device_.begin_group, device_.context);
}

void CallerDevice::EndGroup()
{
    Run(device_.end_group, device_.context);
}

Failure CallerDevice::EndPage()
{
    Run(device_.end, device_.context);
    return {};
}

extern "C" vx_status vx_font_outline(const vx_font *font, uint32_t glyph, vx_path *outline, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(font, "font");
        CheckThere(font->outlines, "the outlines of the font");
        CheckThere(outline, "outline");
        auto *source = const_cast<vx_font_source *>(
            font->outlines); // it was made by the library, and is constant for the program alone
        if (source->opened == nullptr)
            source->opened = FontFile::Open(source->bytes, source->faceIndex);
        if (source->opened == nullptr)
            throw CallError(VX_CANNOT_READ,
                            "the font \"" + source->served + "\" cannot be read: see its file");
        source->outline.Set(source->opened->Outline(glyph));
        *outline = source->outline.Get();
    });
}
