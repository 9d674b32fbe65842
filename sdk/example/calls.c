#include "calls.h"

#include <stdio.h>

#define PROC(name, arguments, ...)                                                                           \
    static void name arguments                                                                               \
    {                                                                                                        \
        fprintf(drawing, __VA_ARGS__);                                                                       \
    }
#define NUMBER(fixed) ((fixed) / 65536.0)
#define POINT(point)  NUMBER((point)->x), NUMBER((point)->y)

PROC(NewPath, (void *drawing), "newpath\n")
PROC(MoveTo, (void *drawing, const FixedPoint *to), "moveto %g %g\n", POINT(to))
PROC(LineTo, (void *drawing, const FixedPoint *to), "lineto %g %g\n", POINT(to))
PROC(CurveTo, (void *drawing, const FixedPoint *c1, const FixedPoint *c2, const FixedPoint *to),
     "curveto %g %g %g %g %g %g\n", POINT(c1), POINT(c2), POINT(to))
PROC(CurveToFromCurrent, (void *drawing, const FixedPoint *c2, const FixedPoint *to),
     "curveto-from-current %g %g %g %g\n", POINT(c2), POINT(to))
PROC(ClosePath, (void *drawing), "closepath\n")
PROC(Clip, (void *drawing), "clip\n")
PROC(GSave, (void *drawing), "gsave\n")
PROC(GRestore, (void *drawing), "grestore\n")
PROC(Translate, (void *drawing, Fixed dx, Fixed dy), "translate %g %g\n", NUMBER(dx), NUMBER(dy))
PROC(SetLineWidth, (void *drawing, Fixed width), "setlinewidth %g\n", NUMBER(width))
PROC(SetLineCap, (void *drawing, int32_t cap), "setlinecap %d\n", (int)cap)
PROC(SetLineJoin, (void *drawing, int32_t join), "setlinejoin %d\n", (int)join)
PROC(SetMiterLimit, (void *drawing, Fixed limit), "setmiterlimit %g\n", NUMBER(limit))
PROC(SetGray, (void *drawing, Fixed gray), "setgray %g\n", NUMBER(gray))
PROC(SetCMYKColor, (void *drawing, Fixed c, Fixed m, Fixed y, Fixed k), "setcmykcolor %g %g %g %g\n",
     NUMBER(c), NUMBER(m), NUMBER(y), NUMBER(k))
PROC(SetOverprint, (void *drawing, int32_t on), "setoverprint %d\n", (int)on)
PROC(Fill, (void *drawing), "fill\n")
PROC(Stroke, (void *drawing), "stroke\n")
PROC(Comment, (void *drawing, uint32_t signature, const char *text, int32_t length), "comment %08lx %.*s\n",
     (unsigned long)signature, (int)length, text)
PROC(Unused, (void *drawing), "an entry that is never called\n")

static void Concat(void *drawing, const FixedMatrix *m, int32_t selector)
{
    fprintf(drawing, "concat %g %g %g %g %g %g", NUMBER(m->a), NUMBER(m->b), NUMBER(m->c), NUMBER(m->d),
            NUMBER(m->tx), NUMBER(m->ty));
    fprintf(drawing, selector != 0 ? " %d\n" : "\n", (int)selector);
}

static void SetDash(void *drawing, Fixed phase, int32_t count, const Fixed *values)
{
    int32_t i;
    fprintf(drawing, "setdash %g [", NUMBER(phase));
    for (i = 0; i < count; ++i)
        fprintf(drawing, i > 0 ? " %g" : "%g", NUMBER(values[i]));
    fputs("]\n", drawing);
}

static void Show(void *drawing, const ZRKTextRecord *record, int32_t mode)
{
    fprintf(drawing, "show %d", (int)mode);
    for (; record != NULL; record = record->next)
        fprintf(drawing, " | %s %d bytes at %g %g", record->fontName, (int)record->length, NUMBER(record->x),
                NUMBER(record->y));
    fputs("\n", drawing);
}

ZRKProcs *PrintingProcs(void)
{
    /* Not constant: the plug-in changes entries while it reads a hidden layer, and puts them back. */
    static ZRKProcs procs = {kZRKProcsVersion,
                             kZRKProcCount,
                             {[kZRKNewPath] = (ZRKProc)NewPath,
                              [kZRKMoveTo] = (ZRKProc)MoveTo,
                              [kZRKLineTo] = (ZRKProc)LineTo,
                              [kZRKCurveTo] = (ZRKProc)CurveTo,
                              [kZRKCurveToFromCurrent] = (ZRKProc)CurveToFromCurrent,
                              [kZRKClosePath] = (ZRKProc)ClosePath,
                              [kZRKClip] = (ZRKProc)Clip,
                              [kZRKGSave] = (ZRKProc)GSave,
                              [kZRKGRestore] = (ZRKProc)GRestore,
                              [kZRKTranslate] = (ZRKProc)Translate,
                              [kZRKConcat] = (ZRKProc)Concat,
                              [kZRKSetLineWidth] = (ZRKProc)SetLineWidth,
                              [kZRKSetDash] = (ZRKProc)SetDash,
                              [kZRKSetLineCap] = (ZRKProc)SetLineCap,
                              [kZRKSetLineJoin] = (ZRKProc)SetLineJoin,
                              [kZRKSetMiterLimit] = (ZRKProc)SetMiterLimit,
                              [kZRKSetGray] = (ZRKProc)SetGray,
                              [kZRKSetCMYKColor] = (ZRKProc)SetCMYKColor,
                              [kZRKSetOverprint] = (ZRKProc)SetOverprint,
                              [kZRKFill] = (ZRKProc)Fill,
                              [kZRKStroke] = (ZRKProc)Stroke,
                              [kZRKShow] = (ZRKProc)Show,
                              [kZRKComment] = (ZRKProc)Comment}};
    int i;
    for (i = 0; i < kZRKProcCount; ++i)
        if (procs.entry[i] == NULL)
            procs.entry[i] = (ZRKProc)Unused;
    return &procs;
}
