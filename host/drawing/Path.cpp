#include "host/drawing/Path.h"

#include <cstddef>

namespace vxhost
{

namespace
{

size_t PointCount(Verb verb)
{
    return verb == Verb::Curve ? 3 : verb == Verb::Close ? 0 : 1;
}

} // namespace

void AppendOutline(const Path &outline, const Matrix &matrix, Path *to)
{
    if (Determinant(matrix) < 0)
        return AppendReversed(outline, matrix, to);
    to->verbs.insert(to->verbs.end(), outline.verbs.begin(), outline.verbs.end());
    for (const Point &point : outline.points)
        to->points.push_back(matrix.Map(point));
}

void AppendReversed(const Path &from, const Matrix &matrix, Path *to)
{
    size_t firstPoint = 0;
    for (size_t first = 0; first < from.verbs.size();) {
        size_t end = first + 1, pointsEnd = firstPoint + 1;
        for (; end < from.verbs.size() && from.verbs[end] != Verb::Move; ++end)
            pointsEnd += PointCount(from.verbs[end]);

        size_t point = pointsEnd;
        to->verbs.push_back(Verb::Move);
        to->points.push_back(matrix.Map(from.points[--point]));
        for (size_t i = end; i-- > first + 1;) {
            if (from.verbs[i] == Verb::Close)
                continue;
            to->verbs.push_back(from.verbs[i]);
            for (size_t k = PointCount(from.verbs[i]); k > 0; --k)
                to->points.push_back(matrix.Map(from.points[--point]));
        }
        to->verbs.push_back(Verb::Close);
        first = end;
        firstPoint = pointsEnd;
    }
}

} // namespace vxhost
