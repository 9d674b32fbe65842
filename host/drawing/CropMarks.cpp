#include "host/drawing/CropMarks.h"

#include "host/drawing/Vectors.h"

#include <algorithm>

namespace vxhost
{

const SpotInk kRegistrationInk = {"All", {1, 1, 1, 1}};

namespace
{

constexpr double kMillimetre = 72 / 25.4; // points
constexpr double kMarkLength = 5 * kMillimetre;
constexpr double kLeastDistance =
    3 * kMillimetre; // from the cut, so that no mark is left on the page when it is cut badly
constexpr double kMarkWidth = 0.25;

double DistanceOfMarks(double bleed)
{
    return std::max(bleed, kLeastDistance);
}

void AddLine(Point from, Point to, Path *path)
{
    path->verbs.insert(path->verbs.end(), {Verb::Move, Verb::Line});
    path->points.insert(path->points.end(), {from, to});
}

} // namespace

double ReachOfMarks(double bleed)
{
    return DistanceOfMarks(bleed) + kMarkLength;
}

void BeginMarkedPage(const Page &page, Device *device)
{
    if (!page.sheet || !page.sheet->hasMarks)
        return;
    const Box &bleed = page.sheet->bleed;
    device->Save();
    device->ClipPath({{Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
                      {{bleed.left, bleed.bottom},
                       {bleed.right, bleed.bottom},
                       {bleed.right, bleed.top},
                       {bleed.left, bleed.top}}});
}

void EndMarkedPage(const Page &page, Device *device)
{
    if (!page.sheet || !page.sheet->hasMarks)
        return;
    device->Restore();
    const Box &trim = page.sheet->trim;
    const double near = DistanceOfMarks(trim.left - page.sheet->bleed.left), far = near + kMarkLength;
    Path marks;
    for (const Point outwards : {Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}}) {
        const Point corner = {outwards.x < 0 ? trim.left : trim.right,
                              outwards.y < 0 ? trim.bottom : trim.top};
        for (const Point along : {Point{outwards.x, 0}, Point{0, outwards.y}})
            AddLine(corner + along * near, corner + along * far, &marks);
    }
    StrokeStyle style;
    style.width = kMarkWidth;
    Paint paint;
    paint.colour = {ColourSpace::Cmyk, {1, 1, 1, 1}, {{{&kRegistrationInk, 1}, {}}}};
    device->StrokePath(marks, style, paint);
}

} // namespace vxhost
