/* The functions that the plug-in finds by name, each the least that works: one font, no screen, no dialogs. */
#include <vx/Toolbox.h>

#include <math.h>
#include <string.h>

static Fixed Saturate(int64_t value)
{
    return value > INT32_MAX ? INT32_MAX : value < INT32_MIN ? INT32_MIN : (Fixed)value;
}

Fixed FixMul(Fixed x, Fixed y)
{
    return Saturate(((int64_t)x * y + 0x8000) >> 16);
}
Fract FracMul(Fract x, Fract y)
{
    return Saturate(((int64_t)x * y + (1 << 29)) >> 30);
}
double Fix2X(Fixed x)
{
    return x / 65536.0;
}

Fixed FixDiv(Fixed x, Fixed y)
{
    int64_t dividend = (int64_t)x * 0x10000;
    int64_t half = y < 0 ? -(int64_t)y / 2 : y / 2;
    if (y == 0)
        return x < 0 ? INT32_MIN : INT32_MAX;
    return Saturate((dividend < 0 ? dividend - half : dividend + half) / y);
}

Fixed X2Fix(double x)
{
    double scaled = round(x * 65536.0);
    if (!(scaled == scaled))
        return 0;
    return scaled >= 2147483647.0 ? INT32_MAX : scaled <= -2147483648.0 ? INT32_MIN : (Fixed)scaled;
}

/* Strings: a length byte, then the characters. */
static void CopyString(uint8_t *to, const char *text)
{
    size_t length = strlen(text);
    to[0] = (uint8_t)length;
    memcpy(to + 1, text, length);
}

char *p2cstr(uint8_t *string)
{
    uint8_t length = string[0];
    memmove(string, string + 1, length);
    string[length] = 0;
    return (char *)string;
}

void GetIndString(uint8_t *to, int16_t list, int16_t index)
{
    static const char *const problems[] = {
        "pattern",     "painted gray", "embedded PostScript", "passed over",  "unknown operator",
        "passed over", "binary data",  "passed over",         "missing font", "substituted",
    };
    static const char *const suffixes[] = {"-H", "-V"};
    to[0] = 0;
    if (list == kVXProblemStrings && index >= 1 && index <= 10)
        CopyString(to, problems[index - 1]);
    else if (list == kVXOrientationSuffixes && index >= 1 && index <= 2)
        CopyString(to, suffixes[index - 1]);
    else if (list == kVXOtherFonts && index == 1)
        CopyString(to, "Helvetica");
}

/* A string list as a resource is its count; the plug-in takes the strings from GetIndString. */
Handle GetResource(uint32_t type, int16_t id)
{
    static int16_t counts[3] = {10, 2, 1};
    static char *lists[3] = {(char *)&counts[0], (char *)&counts[1], (char *)&counts[2]};
    if (type != kVXStringListType)
        return NULL;
    return id == kVXProblemStrings        ? &lists[0]
           : id == kVXOrientationSuffixes ? &lists[1]
           : id == kVXOtherFonts          ? &lists[2]
                                          : NULL;
}

int16_t ResError(void)
{
    return -192;
} /* no such resource */
int16_t MemError(void)
{
    return 0;
}
void HNoPurge(Handle resource)
{
    (void)resource;
}
void HPurge(Handle resource)
{
    (void)resource;
}
void BlockMove(const void *from, void *to, int32_t count)
{
    memmove(to, from, (size_t)count);
}

const Rect *GetMainDevice(void)
{
    static const Rect screen = {0, 0, 768, 1024};
    return &screen;
}

void OffsetRect(Rect *rectangle, int16_t right, int16_t down)
{
    rectangle->left = (int16_t)(rectangle->left + right);
    rectangle->right = (int16_t)(rectangle->right + right);
    rectangle->top = (int16_t)(rectangle->top + down);
    rectangle->bottom = (int16_t)(rectangle->bottom + down);
}

void *GetNewDialog(int16_t id, void *storage, void *behind)
{
    return (void)id, (void)behind, storage;
}
void ModalDialog(void *filter, int16_t *item)
{
    (void)filter, *item = 1;
}
void DisposDialog(void *dialog)
{
    (void)dialog;
}
void DebugStr(const uint8_t *string)
{
    (void)string;
}

int32_t GetEnvirons(int16_t selector)
{
    return (void)selector, 0;
}
int32_t UNIXNumFonts(void)
{
    return 1;
}

int16_t UNIXGetIndexedFontName(int32_t index, uint8_t *name, int16_t *number)
{
    CopyString(name, "Helvetica");
    *number = (int16_t)index;
    return 0;
}

void UNIXGetFamilyParentAndSuffix(const uint8_t *name, uint8_t *family, int32_t zero, uint8_t *suffix)
{
    (void)zero;
    memcpy(family, name, (size_t)name[0] + 1);
    suffix[0] = 0;
}

int32_t UNIXGetCharWidth(int16_t number, int16_t character)
{
    return (void)number, (void)character, 0x8000;
}
