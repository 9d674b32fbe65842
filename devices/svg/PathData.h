// Paths as the "d" of an element.
#pragma once

#include "devices/svg/XmlWriter.h"
#include "host/drawing/Path.h"

namespace vxhost::svg
{

// Writes the letters and numbers of the path.
void WritePathData(const Path &path, const Matrix &toElement, XmlWriter *xml);

// The path without subpaths that stay at one point: with square caps those would show as squares, and the direction
// of a square that has none is anybody's guess.
bool HasDots(const Path &path);
Path WithoutDots(const Path &path);

} // namespace vxhost::svg
