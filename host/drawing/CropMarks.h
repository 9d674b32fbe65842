// Marks at the corners of a page that say where to cut it, and the bleed, at which the drawing ends before them.
#pragma once

#include "host/drawing/Device.h"

namespace vxhost
{

// Every plate of a press prints it, so that marks lie over each other where the plates do. In process inks it is full ink of all.
extern const SpotInk kRegistrationInk;

// Returns how far from the cut the marks end, where the drawing is painted so far beyond it.
double ReachOfMarks(double bleed);

// Both do nothing for a page without marks. What is drawn between them is cut at the bleed.
void BeginMarkedPage(const Page &page, Device *device);
void EndMarkedPage(const Page &page, Device *device);

} // namespace vxhost
