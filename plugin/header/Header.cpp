#include "plugin/header/Header.h"

namespace vx
{

namespace
{

// Lines that say what wrote the document. The two that are passed through PartialTestPrefix were written with
// varying blanks.
struct Identification {
    const char *keyword;
    bool ignoresBlanks;
    FileVersion atLeast; // 0: the line recognises the document but does not decide its version
};

// In the order in which a line is tested; the first match counts.
constexpr Identification kIdentifications[] = {
    {"%%DocumentProcSets:Tavro_Vellumcraft_ProcSet", false, 0},
    {"%%+ procset Tavro_VellumcraftA_VX3", false, 3},
    {"%%+ procset Tavro_Vellumcraft_VX3", false, 3},
    {"%%Creator: Tavro Vellumcraft(TM) for Windows, version 4", false, 4},
    {"%VX5_FileFormat", true, 5},
    {"%%DocumentProcSets: Tavro_Vellumcraft", true, 0},
};

struct CommentScan {
    Fixed *box;
    uint8_t *monochrome;
    FileVersion *version;
    bool boxKnown, hiResBoxKnown, cropBoxKnown;
    bool colourUsageSeen, recognised, versionDecided;
};

// Four numbers and nothing else.
Result ReadBox(const CommentScan *scan, const BigString *text)
{
    BigString rest;
    if (!ParseFixedRect(text, scan->box, &rest) || !AllWhiteSpace(&rest))
        return kParserBadFormat;
    return kOk;
}

void Identify(CommentScan *scan, const BigString *line)
{
    for (const Identification &row : kIdentifications) {
        BigString rest;
        if (!(row.ignoresBlanks ? PartialTestPrefix(row.keyword, line)
                                : TestPrefix(row.keyword, line, &rest)))
            continue;
        scan->recognised = true;
        if (row.atLeast != 0) {
            scan->versionDecided = true;
            if (*scan->version < row.atLeast)
                *scan->version = row.atLeast;
        }
        return;
    }
}

Result ReadColourUsage(CommentScan *scan, const BigString *text)
{
    BigString word;
    BigString rest;
    scan->colourUsageSeen = true;
    if (!SplitFirstWord(text, &word, &rest))
        return kParserBadFormat;
    if (*word.text == 'B') // as in "Black&White"
        *scan->monochrome = 1;
    return kOk;
}

Result ReadComment(CommentScan *scan, const BigString *line)
{
    BigString rest;
    if (!scan->boxKnown && TestPrefix("%%BoundingBox:", line, &rest)) {
        scan->boxKnown = true;
        return ReadBox(scan, &rest);
    }
    if (!scan->hiResBoxKnown && TestPrefix("%%HiResBoundingBox:", line, &rest)) {
        scan->boxKnown = scan->hiResBoxKnown = true;
        return ReadBox(scan, &rest);
    }
    // On purpose crop marks and colour usage count only once the document is identified.
    if (!scan->recognised || !scan->versionDecided) {
        Identify(scan, line);
        return kOk;
    }
    if (!scan->cropBoxKnown && TestPrefix("%VX3_Cropmarks:", line, &rest)) {
        scan->boxKnown = scan->hiResBoxKnown = scan->cropBoxKnown = true;
        return ReadBox(scan, &rest);
    }
    if (!scan->colourUsageSeen &&
        (TestPrefix("%%ColorUsage:", line, &rest) || TestPrefix("%VX3_ColorUsage:", line, &rest)))
        return ReadColourUsage(scan, &rest);
    return kOk;
}

} // namespace

Result ParseHeader(LineStream *stream, Fixed box[4], uint8_t *monochrome, FileVersion *version)
{
    const Result result = ParseHeaderLine(stream);
    return result != kOk ? result : ParseComments(stream, box, monochrome, version);
}

Result ParseHeaderLine(LineStream *stream)
{
    BigString rest;
    if (IsStringEmpty(&stream->text) && !RefillLineStreamText(stream))
        return kParserBadFormat;
    if (!IsTextAtLineStart(stream) || !TestPrefix("%!PS-Tavro-", &stream->text, &rest))
        return kParserBadFormat;
    TrimToEnd(&stream->text);
    return kOk;
}

Result ParseComments(LineStream *stream, Fixed box[4], uint8_t *monochrome, FileVersion *version)
{
    CommentScan scan = {};
    scan.box = box;
    scan.monochrome = monochrome;
    scan.version = version;
    *monochrome = 0;
    *version = 2;
    for (;;) {
        if (!SkipToNonWhiteSpace(stream))
            return kParserBadFormat;
        BigString *line = &stream->text;
        // A line that is no comment, or the end of the data, is left to the next section.
        if (!IsTextAtLineStart(stream) || *line->text != '%' || IsWholeLine("%%EOF", line))
            break;
        if (IsWholeLine("%%EndComments", line)) {
            TrimToEnd(line);
            break;
        }
        const Result result = ReadComment(&scan, line);
        if (result != kOk)
            return result;
        TrimToEnd(line);
    }
    return scan.recognised && scan.boxKnown ? kOk : kParserBadFormat;
}

bool ParseFixed(const BigString *text, Fixed *value, BigString *rest)
{
    BigString word;
    return SplitFirstWord(text, &word, rest) && BigStringAsFixed(&word, value);
}

bool ParseFixedRect(const BigString *text, Fixed values[4], BigString *rest)
{
    auto *bytes = const_cast<uint8_t *>(text->text);
    for (int32_t i = 0; i < text->length; ++i)
        if (bytes[i] == 0)
            bytes[i] = ' ';
    *rest = *text;
    for (int i = 0; i < 4; ++i)
        if (!ParseFixed(rest, &values[i], rest))
            return false;
    return true;
}

} // namespace vx
