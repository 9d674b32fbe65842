// Tests drawing into a program's own procedures.
#include "tests/library/Support.h"

#include <cstddef>
#include <map>
#include <vector>

namespace vxtest
{
namespace
{

// Counts the calls, and ends the drawing at the call of that name.
struct Calls {
    std::map<std::string, int> counts;
    std::string stopAt;
    std::vector<double> box;
    std::vector<vx_paint> fills;
    std::vector<vx_point> points;
    std::u32string characters;
    double outlineWidth = 0; // of the first glyph with an outline
    int depth = 0;

    int Count(const char *name)
    {
        ++counts[name];
        return stopAt == name ? 7 : 0;
    }
};

Calls &Of(void *context)
{
    return *static_cast<Calls *>(context);
}

void Measure(const vx_run &run, Calls *calls)
{
    for (size_t i = 0; i < run.glyph_count && calls->outlineWidth == 0; ++i) {
        vx_path outline = {};
        vx_error error = kNoError;
        ASSERT_EQ(vx_font_outline(run.font, run.glyphs[i].glyph, &outline, &error), VX_OK) << error.text;
        double least = 0, most = 0;
        for (size_t at = 0; at < outline.point_count; ++at) {
            least = std::min(least, outline.points[at].x);
            most = std::max(most, outline.points[at].x);
        }
        calls->outlineWidth = most - least;
    }
}

vx_device DeviceFor(Calls *calls)
{
    vx_device device = {};
    device.size = sizeof device;
    device.context = calls;
    device.begin = [](void *context, double left, double bottom, double right, double top) {
        Of(context).box = {left, bottom, right, top};
        return Of(context).Count("begin");
    };
    device.save = [](void *context) {
        ++Of(context).depth;
        return Of(context).Count("save");
    };
    device.restore = [](void *context) {
        --Of(context).depth;
        return Of(context).Count("restore");
    };
    device.clip = [](void *context, const vx_path *) { return Of(context).Count("clip"); };
    device.fill = [](void *context, const vx_path *path, const vx_paint *paint) {
        Of(context).fills.push_back(*paint);
        Of(context).points.assign(path->points, path->points + path->point_count);
        return Of(context).Count("fill");
    };
    device.stroke = [](void *context, const vx_path *, const vx_stroke *stroke, const vx_paint *) {
        EXPECT_GE(stroke->width, 0);
        return Of(context).Count("stroke");
    };
    device.shade = [](void *context, const vx_shading *shading) {
        EXPECT_GT(shading->span_count, 0U);
        EXPECT_EQ(shading->spans[0].from, 0);
        EXPECT_EQ(shading->spans[shading->span_count - 1].to, 1);
        return Of(context).Count("shade");
    };
    device.text = [](void *context, const vx_run *runs, size_t count, const vx_text_paint *) {
        for (size_t i = 0; i < count; ++i) {
            EXPECT_GT(runs[i].font->size, 1000U);
            EXPECT_EQ(std::string_view(static_cast<const char *>(runs[i].font->bytes), 4), "OTTO");
            Measure(runs[i], &Of(context));
            for (size_t at = 0; at < runs[i].glyph_count; ++at)
                Of(context).characters += static_cast<char32_t>(runs[i].glyphs[at].character);
        }
        return Of(context).Count("text");
    };
    device.end = [](void *context) { return Of(context).Count("end"); };
    return device;
}

Calls Drawn(vx_document *document, const vx_device &device, Calls *calls)
{
    vx_error error = kNoError;
    EXPECT_EQ(vx_document_draw(document, &device, &error), VX_OK) << error.text;
    return *calls;
}

TEST(OwnDevice, GetsShapesAsTheDocumentSaysThem)
{
    const OwnedDocument document = OpenBytes(DrawingOf("1 0 0.5 0 k\n1 2 m\n3 2 l\n3 4.5 l\nf\n"));
    Calls calls;
    (void)Drawn(document.get(), DeviceFor(&calls), &calls);
    EXPECT_EQ(calls.box, (std::vector<double>{0, 0, 72, 36}));
    EXPECT_EQ(calls.counts, (std::map<std::string, int>{{"begin", 1}, {"fill", 1}, {"end", 1}}));
    ASSERT_EQ(calls.fills.size(), 1U);
    const vx_colour &colour = calls.fills[0].colour;
    EXPECT_EQ(colour.space, VX_CMYK);
    EXPECT_EQ(std::vector<double>(colour.ink, colour.ink + 4), (std::vector<double>{1, 0, 0.5, 0}));
    ASSERT_GE(calls.points.size(), 3U);
    EXPECT_EQ(calls.points[2].x, 3);
    EXPECT_EQ(calls.points[2].y, 4.5);
}

TEST(OwnDevice, GetsTextWithItsCharactersAndOutlines)
{
    const OwnedDocument document = OpenSample("text-point");
    Calls calls;
    (void)Drawn(document.get(), DeviceFor(&calls), &calls);
    EXPECT_GT(calls.counts["text"], 0);
    EXPECT_GT(calls.characters.size(), 10U);
    EXPECT_GT(calls.outlineWidth, 0.05); // ems
    EXPECT_LT(calls.outlineWidth, 2);
    EXPECT_EQ(calls.depth, 0);
}

TEST(OwnDevice, WithoutTextGetsPaths)
{
    const OwnedDocument document = OpenSample("text-point");
    Calls with, without;
    (void)Drawn(document.get(), DeviceFor(&with), &with);
    vx_device device = DeviceFor(&without);
    device.text = nullptr;
    (void)Drawn(document.get(), device, &without);
    EXPECT_EQ(without.counts["text"], 0);
    EXPECT_GT(without.counts["fill"], with.counts["fill"]);
    // A record that ends before the procedure is one that has none.
    Calls shorter;
    device = DeviceFor(&shorter);
    device.size = offsetof(vx_device, text);
    (void)Drawn(document.get(), device, &shorter);
    EXPECT_EQ(shorter.counts["text"], 0);
    EXPECT_EQ(shorter.counts["end"], 0);
    EXPECT_EQ(shorter.counts["fill"], without.counts["fill"]);
}

TEST(OwnDevice, WithoutShadeGetsFlatShapes)
{
    const OwnedDocument document = OpenSample("gradients");
    Calls with, without;
    (void)Drawn(document.get(), DeviceFor(&with), &with);
    EXPECT_GT(with.counts["shade"], 0);
    vx_device device = DeviceFor(&without);
    device.shade = nullptr;
    (void)Drawn(document.get(), device, &without);
    EXPECT_GT(without.counts["fill"], with.counts["fill"]);
}

TEST(OwnDevice, MayHaveNoProcedureAtAll)
{
    vx_device device = {};
    device.size = sizeof device;
    for (const char *sample : {"text-point", "gradients", "overprint"}) {
        const OwnedDocument document = OpenSample(sample);
        Calls none;
        (void)Drawn(document.get(), device, &none);
    }
}

TEST(OwnDevice, EndsTheDrawingFromEveryProcedure)
{
    for (const char *name : {"begin", "save", "restore", "clip", "fill", "stroke", "shade", "text", "end"}) {
        int stopped = 0;
        for (const char *sample : {"text-point", "gradients", "bulldozer", "text-clip"}) {
            const OwnedDocument document = OpenSample(sample);
            Calls calls;
            calls.stopAt = name;
            const vx_device device = DeviceFor(&calls);
            vx_error error = kNoError;
            const vx_status status = vx_document_draw(document.get(), &device, &error);
            EXPECT_EQ(status, calls.counts[name] == 1 ? VX_STOPPED : VX_OK) << name << " " << sample;
            stopped += status == VX_STOPPED ? 1 : 0;
            EXPECT_LE(calls.counts[name], 1);
        }
        EXPECT_GT(stopped, 0) << name;
    }
}

} // namespace
} // namespace vxtest
