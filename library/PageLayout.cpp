#include "library/PageLayout.h"

#include "host/drawing/CropMarks.h"

#include <algorithm>

namespace vxhost
{

namespace
{

Box Grown(const Box &box, double by)
{
    return {box.left - by, box.bottom - by, box.right + by, box.top + by};
}

// Returns a box of that size around the middle of another.
Box Around(const Box &box, const PageSize &size)
{
    const double left = (box.left + box.right - size.width) / 2;
    const double bottom = (box.bottom + box.top - size.height) / 2;
    return {left, bottom, left + size.width, bottom + size.height};
}

} // namespace

void LayOut(const PageOptions &options, const Box &own, Page *page)
{
    const Box shown = own.Upright();
    Box trim = Grown(shown, options.margin);
    if (const auto &size = options.size) {
        // A drawing larger than the page keeps its size, and is cut.
        page->tooWide = std::max(trim.Width() - size->width, 0.0);
        page->tooHigh = std::max(trim.Height() - size->height, 0.0);
        trim = Around(shown, *size);
    }
    page->box = trim;
    if (options.bleed == 0 && !options.hasMarks)
        return;
    page->sheet = Sheet{trim, Grown(trim, options.bleed), options.hasMarks};
    page->box = options.hasMarks ? Grown(trim, ReachOfMarks(options.bleed)) : page->sheet->bleed;
}

Outcome FindPage(const PageOptions &options, Reading &reading, Page *page)
{
    Outcome outcome = reading.ReadInfo();
    if (outcome.result != kVXOk)
        return outcome;
    std::optional<Box> own = options.box.value_or(outcome.box);
    *page = reading.PageFor(own);
    if (options.isPainted)
        outcome = reading.Measure(&own);
    if (own)
        LayOut(options, *own, page);
    else if (outcome.result == kVXOk && !outcome.failure)
        outcome.failure = {FailureKind::BadInput,
                           "nothing is painted, so the page has no size: choose one, as a4"};
    return outcome;
}

Outcome DrawPage(const PageOptions &options, const CheckPage &checkPage, Device *device, Reading &reading)
{
    Page page;
    Outcome outcome = FindPage(options, reading, &page);
    if (outcome.result != kVXOk || outcome.failure)
        return outcome;
    if (page.box.Width() <= 0 || page.box.Height() <= 0)
        outcome.failure = {FailureKind::BadInput,
                           "its bounding box is empty, nothing written: name one with --box L,B,R,T"};
    else
        outcome.failure = checkPage(page);
    return outcome.failure ? outcome : reading.Draw(page, *device);
}

} // namespace vxhost
