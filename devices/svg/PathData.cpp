#include "devices/svg/PathData.h"

namespace vxhost::svg
{

namespace
{

size_t PointCount(Verb verb)
{
    return verb == Verb::Curve ? 3 : verb == Verb::Close ? 0 : 1;
}

// Calls use(first verb, past the last, first point, past the last, whether it is a dot) for every subpath.
template <typename Use>
void ForEachSubpath(const Path &path, Use use)
{
    size_t firstPoint = 0;
    for (size_t first = 0; first < path.verbs.size();) {
        size_t last = first, lastPoint = firstPoint;
        bool isDot = true;
        do {
            for (const size_t end = lastPoint + PointCount(path.verbs[last]); lastPoint < end; ++lastPoint)
                isDot = isDot && path.points[lastPoint] == path.points[firstPoint];
            ++last;
        } while (last < path.verbs.size() && path.verbs[last] != Verb::Move);
        use(first, last, firstPoint, lastPoint, isDot);
        first = last;
        firstPoint = lastPoint;
    }
}

} // namespace

void WritePathData(const Path &path, const Matrix &toElement, XmlWriter *xml)
{
    const Point *point = path.points.data();
    const auto write = [&](char before) { xml->Coordinates(toElement.Map(*point++), before); };
    for (const Verb verb : path.verbs) {
        switch (verb) {
        case Verb::Move:
            write('M');
            break;
        case Verb::Line:
            write('L');
            break;
        case Verb::Curve:
            write('C');
            write(' ');
            write(' ');
            break;
        case Verb::Close:
            xml->Markup("Z");
            break;
        }
    }
}

bool HasDots(const Path &path)
{
    bool hasDots = false;
    ForEachSubpath(path, [&](size_t, size_t, size_t, size_t, bool isDot) { hasDots = hasDots || isDot; });
    return hasDots;
}

Path WithoutDots(const Path &path)
{
    Path lines;
    const auto keep = [&](size_t first, size_t last, size_t firstPoint, size_t lastPoint, bool isDot) {
        if (isDot)
            return;
        lines.verbs.insert(lines.verbs.end(), path.verbs.data() + first, path.verbs.data() + last);
        lines.points.insert(lines.points.end(), path.points.data() + firstPoint,
                            path.points.data() + lastPoint);
    };
    ForEachSubpath(path, keep);
    return lines;
}

} // namespace vxhost::svg
