// Decides what a page shows and where it is cut, from what was chosen and the drawing's own box.
#pragma once

#include "host/reading/Reading.h"

#include <functional>
#include <optional>

namespace vxhost
{

struct PageSize {
    double width = 0, height = 0; // points
};

struct PageOptions {
    std::optional<Box> box;       // what is to be shown; none: the header's box
    bool isPainted = false;       // in its place, what is painted
    std::optional<PageSize> size; // of the page, which has the header's box in its middle
    // These are in points. A page of a size that was chosen keeps the margin free, others have it around what they show.
    double margin = 0;
    double bleed = 0;      // painted beyond where the page is cut
    bool hasMarks = false; // that say where
};

// own: the box of the drawing, which may be empty as the page's is then.
void LayOut(const PageOptions &options, const Box &own, Page *page);

// Makes the page of a document, which is read to its end where the page is what it paints. Only what that reading is told of is in
// the outcome, and a failure where nothing is painted.
Outcome FindPage(const PageOptions &options, Reading &reading, Page *page);

// Draws with the device, unless there can be no such output of the page, as checkPage says.
using CheckPage = std::function<Failure(const Page &page)>;
Outcome DrawPage(const PageOptions &options, const CheckPage &checkPage, Device *device, Reading &reading);

} // namespace vxhost
