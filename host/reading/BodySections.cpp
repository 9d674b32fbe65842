#include "host/reading/BodySections.h"

#include "host/reading/LineTokens.h"
#include "host/reading/LineWalk.h"

#include <utility>

namespace vxhost
{

namespace
{

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

// Returns whether the line begins with the comment, where blanks and tabs of neither count.
bool BeginsLoosely(std::string_view line, std::string_view comment)
{
    size_t at = 0;
    for (const char wanted : comment) {
        if (IsBlank(wanted))
            continue;
        while (at < line.size() && IsBlank(line[at]))
            ++at;
        if (at == line.size() || line[at++] != wanted)
            return false;
    }
    return true;
}

bool MayBeComment(std::string_view line)
{
    size_t first = 0;
    while (first < line.size() && IsBlank(line[first]))
        ++first;
    return first < line.size() && line[first] == '%';
}

size_t FindNonSpace(std::string_view line)
{
    size_t at = 0;
    while (at < line.size() && IsTokenSpace(line[at]))
        ++at;
    return at;
}

// Returns where the first line that is no comment of the header starts, or what follows "%%EndComments".
size_t SkipHeader(std::string_view drawing)
{
    LineWalk lines(drawing);
    (void)lines.Next(); // what kind of file it is
    while (lines.Next()) {
        const std::string_view line = lines.Line();
        const size_t first = FindNonSpace(line);
        if (first == line.size())
            continue;
        if (first > 0 || line[0] != '%' || IsWholeLine(line, "%%EOF"))
            return lines.Start();
        if (IsWholeLine(line, "%%EndComments"))
            return lines.NextStart();
    }
    return drawing.size();
}

} // namespace

bool IsWholeLine(std::string_view line, std::string_view comment)
{
    if (!line.starts_with(comment))
        return false;
    for (const char character : line.substr(comment.size())) {
        if (!IsTokenSpace(character))
            return false;
    }
    return true;
}

std::optional<bool> PassesOverBehind(std::string_view line)
{
    constexpr std::pair<std::string_view, bool> kComments[] = {
        {"%%BeginBinary:", true},
        {"%%EndBinary", false},
        {"%VX3_BeginCrops", true},
        // The end of a crop block does not end the passing over, on purpose: the interpreter's does not either.
        {"%VX3_EndCrops", true},
        {"%VX5_EndPlace", false},
        {"%VX5_BeginPlace", true}};
    for (const auto &[comment, passesOver] : kComments) {
        if (line.starts_with(comment))
            return passesOver;
    }
    return std::nullopt;
}

size_t FindBody(std::string_view drawing, int version)
{
    LineWalk lines(drawing, SkipHeader(drawing));
    while (lines.Next()) {
        const std::string_view line = lines.Line().substr(FindNonSpace(lines.Line()));
        if (IsWholeLine(line, "%%EOF"))
            break;
        if (IsWholeLine(line, version > 2 ? "%%BeginSetup" : "%%EndSetup"))
            return lines.NextStart();
    }
    return drawing.size();
}

void BodySections::FollowSetup(std::string_view line)
{
    if (version_ > 2 && BeginsLoosely(line, "%VX3_BeginEncoding:"))
        isInterpreted_ = true;
    else if (version_ > 2 && BeginsLoosely(line, "%VX3_EndEncoding"))
        isInterpreted_ = false;
    if (line.starts_with("%VX5_BeginGradient:"))
        isInterpreted_ = true;
    else if (line.starts_with("%%EndSetup")) {
        isInterpreted_ = true;
        isInSetup_ = false;
    }
}

BodySections::Fate BodySections::Follow(std::string_view line)
{
    if (!MayBeComment(line))
        return isPassedOver_ ? Fate::PassOver : FateOfOthers();
    if (IsWholeLine(line, "%%EOF"))
        return Fate::End;
    if (isInSetup_)
        FollowSetup(line);
    if (const std::optional<bool> passesOver = PassesOverBehind(line)) {
        isPassedOver_ = *passesOver;
        return Fate::PassOver;
    }
    if (isPassedOver_)
        return Fate::PassOver;
    return IsWholeLine(line, "%%PageTrailer") ? Fate::End : FateOfOthers();
}

} // namespace vxhost
