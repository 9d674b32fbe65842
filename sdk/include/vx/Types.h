/*
 * Numbers, points and matrices that cross the boundary between a host and the plug-in.
 *
 * The headers of this folder are all that a host needs. They are C99 and C++, include nothing but the C
 * library, and give every scalar an exact width. Records list their fields in a fixed order with natural
 * alignment; byte order is the machine's own. The assertions at the end of each header prove the layout for
 * pointers of 32 and of 64 bits, so that a host in another language may copy the offsets from there.
 *
 * Where to start: HostCall.h has the one entry point, Procs.h the drawing calls that a host receives,
 * Toolbox.h the functions that a host must export.
 */
#ifndef VX_TYPES_H
#define VX_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Signed, 16 integer and 16 fraction bits: 1.0 is 0x10000, the range is -32768 to just under 32768. */
typedef int32_t Fixed;

/* Signed, 2 integer and 30 fraction bits: 1.0 is 0x40000000, the range is -2 to just under 2. */
typedef int32_t Fract;

/* A point or a vector, in points of 1/72 inch (before any matrix), y upward. */
typedef struct FixedPoint {
    Fixed x;
    Fixed y;
} FixedPoint;

/* Maps (x, y) to (a*x + c*y + tx, b*x + d*y + ty). */
typedef struct FixedMatrix {
    Fixed a;
    Fixed b;
    Fixed c;
    Fixed d;
    Fixed tx;
    Fixed ty;
} FixedMatrix;

#ifdef __cplusplus
}
#endif

/*
 * Proofs about the layout, checked while compiling. VX_ASSERT_OFFSET takes the offset with 32-bit pointers
 * and the one with 64-bit pointers, VX_ASSERT_SIZE likewise the two sizes.
 */
#if defined(__cplusplus)
#define VX_STATIC_ASSERT(name, truth) static_assert(truth, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define VX_STATIC_ASSERT(name, truth) _Static_assert(truth, #name)
#else
#define VX_STATIC_ASSERT(name, truth) typedef char VXAssert_##name[(truth) ? 1 : -1]
#endif

#define VX_BY_POINTER(value, with32, with64)                                                                 \
    ((sizeof(void *) == 4 && (value) == (with32)) || (sizeof(void *) == 8 && (value) == (with64)))
#define VX_ASSERT_OFFSET(record, field, with32, with64)                                                      \
    VX_STATIC_ASSERT(record##_##field, VX_BY_POINTER(offsetof(record, field), with32, with64))
#define VX_ASSERT_SIZE(record, with32, with64)                                                               \
    VX_STATIC_ASSERT(record##_size, VX_BY_POINTER(sizeof(record), with32, with64))

VX_STATIC_ASSERT(PointerWidth, sizeof(void *) == 4 || sizeof(void *) == 8);
VX_STATIC_ASSERT(ProcedureWidth, sizeof(void (*)(void)) == sizeof(void *));
VX_ASSERT_SIZE(FixedPoint, 8, 8);
VX_ASSERT_OFFSET(FixedPoint, y, 4, 4);
VX_ASSERT_SIZE(FixedMatrix, 24, 24);
VX_ASSERT_OFFSET(FixedMatrix, ty, 20, 20);

#endif
