// A blend of colours as one thing to paint: along a line, or from circle to circle.
//
// Documents paint blends as strips and discs of flat colour. A person sees one shading.
#pragma once

#include "host/drawing/Paint.h"
#include "host/drawing/Path.h"

#include <cstdint>
#include <vector>

namespace vxhost
{

class Device;

// A part of a shading. Between from and to, which are parameters from 0 to 1, its colours follow each other at equal
// distances, the first at from and the last at to; one colour alone fills it. A shading has one colour space.
struct ColourSpan {
    double from = 0, to = 1;
    std::vector<Colour> colours;
};

enum class ShadingKind : uint8_t { Axial, Radial };

// Axial: the parameter is x, and what is painted is the square from (0, 0) to (1, 1) under the matrix.
//
// Radial: the parameter runs from 0 at the circle `first` to 1 at the circle `last`; the disc of each parameter lies over
// those before it, and the last one is filled with the last colour. The two are one inside the other in most documents,
// the last the smaller; nothing forbids others.
struct Shading {
    struct Circle {
        Point centre;
        double radius = 0;
    };

    ShadingKind kind = ShadingKind::Axial;
    Matrix matrix; // to the page
    Circle first, last;
    std::vector<ColourSpan> spans; // adjoining, from 0 to 1, in ascending order
    bool overprint = false;        // as for a paint, at every point by its own colour
    // Radial, of nested circles: when not empty, the path of a clip in force, all of which is
    // painted, beyond the first circle in the first colour.
    Path ground = {};
};

// Whether inner lies well inside outer. Circles that nearly touch make no cone that reaches all around them, and
// viewers draw such gradients wrongly.
bool AreNested(const Shading::Circle &outer, const Shading::Circle &inner);

// What the shading covers between two parameters: a strip of the square, or the disc of the first, or the ground.
Path OutlineOf(const Shading &shading, double from, double to);

// Paints the shading as flat shapes, one for each colour: for a device, or a combination, that has no shadings.
void PaintAsShapes(const Shading &shading, Device *device);

} // namespace vxhost
