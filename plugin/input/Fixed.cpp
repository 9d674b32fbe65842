#include "plugin/input/Fixed.h"

namespace vx
{

namespace
{

// x·p + y·q
Fixed SumOfProducts(Fixed x, Fixed p, Fixed y, Fixed q)
{
    return AddFixed(FixedMul(x, p), FixedMul(y, q));
}

} // namespace

void ConcatZRKMats(const FixedMatrix *m, const FixedMatrix *n, FixedMatrix *result)
{
    const FixedMatrix product = {
        SumOfProducts(m->a, n->a, m->c, n->b),
        SumOfProducts(m->b, n->a, m->d, n->b),
        SumOfProducts(m->a, n->c, m->c, n->d),
        SumOfProducts(m->b, n->c, m->d, n->d),
        AddFixed(SumOfProducts(m->a, n->tx, m->c, n->ty), m->tx),
        AddFixed(SumOfProducts(m->b, n->tx, m->d, n->ty), m->ty),
    };
    *result = product;
}

void TransformZRKPoint(const FixedMatrix *m, const FixedPoint *point, FixedPoint *result)
{
    DTransformZRKPoint(m, point, result);
    result->x = AddFixed(result->x, m->tx);
    result->y = AddFixed(result->y, m->ty);
}

void DTransformZRKPoint(const FixedMatrix *m, const FixedPoint *vector, FixedPoint *result)
{
    *result = {SumOfProducts(vector->x, m->a, vector->y, m->c),
               SumOfProducts(vector->x, m->b, vector->y, m->d)};
}

void TranslateZRKMatrix(FixedMatrix *m, Fixed dx, Fixed dy)
{
    m->tx = AddFixed(m->tx, SumOfProducts(dx, m->a, dy, m->c));
    m->ty = AddFixed(m->ty, SumOfProducts(dx, m->b, dy, m->d));
}

void ScaleZRKMatrix(FixedMatrix *m, Fixed sx, Fixed sy)
{
    m->a = FixedMul(m->a, sx);
    m->b = FixedMul(m->b, sx);
    m->c = FixedMul(m->c, sy);
    m->d = FixedMul(m->d, sy);
}

} // namespace vx
