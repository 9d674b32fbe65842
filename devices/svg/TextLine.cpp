#include "devices/svg/TextLine.h"

#include <algorithm>
#include <limits>

namespace vxhost::svg
{

namespace
{

constexpr char32_t kSpace = U' ';

// Finds the pieces, of the usual spacing where that does, else of none where that does.
std::vector<SpacedPiece> FindPieces(std::span<const LineCharacter> line, double slack, double usual)
{
    std::vector<SpacedPiece> pieces;
    double from = line.front().x; // where a viewer has the piece's first character
    for (size_t begin = 0; begin + 1 < line.size() || pieces.empty();) {
        // Between these every spacing puts what has been looked at within the slack.
        double least = -std::numeric_limits<double>::infinity(), most = -least;
        double width = 0, best = 0;
        size_t next = begin + 1;
        for (; next < line.size(); ++next) {
            const double wider = width + line[next - 1].advance;
            const auto gaps = static_cast<double>(next - begin);
            const double off = line[next].x - from - wider;
            if (line[next].character != kSpace) { // where a space stands nobody sees
                if (std::max(least, (off - slack) / gaps) > std::min(most, (off + slack) / gaps))
                    break;
                least = std::max(least, (off - slack) / gaps);
                most = std::min(most, (off + slack) / gaps);
                best = off / gaps;
            }
            width = wider;
        }
        const auto isWithin = [&](double spacing) { return least <= spacing && spacing <= most; };
        const double spacing = isWithin(usual) ? usual : isWithin(0) ? 0 : std::clamp(best, least, most);
        const bool isLast = next == line.size();
        const size_t end = isLast ? next : next - 1; // the last one has a gap of its own behind it
        pieces.push_back({end, spacing});
        from += width + static_cast<double>(end - begin) * spacing;
        begin = end;
    }
    return pieces;
}

} // namespace

SpacedLine FindSpacing(std::span<const LineCharacter> line, double slack)
{
    SpacedLine spaced;
    size_t begin = 0, longest = 0;
    for (const SpacedPiece &piece : FindPieces(line, slack, 0)) {
        if (piece.end - begin > longest) {
            longest = piece.end - begin;
            spaced.spacing = piece.spacing;
        }
        begin = piece.end;
    }
    spaced.pieces = FindPieces(line, slack, spaced.spacing);
    return spaced;
}

} // namespace vxhost::svg
