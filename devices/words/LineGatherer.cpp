#include "devices/words/LineGatherer.h"

#include "host/drawing/Vectors.h"
#include "host/reading/Utf8.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace vxhost
{

namespace
{

constexpr char32_t kUnknown = 0xFFFD;
// All in ems. A raised figure stands nearer to its line than the next line does, and a gap between words is wider than what
// kerning leaves.
constexpr double kMostRise = 0.6;
constexpr double kLeastGap = 0.25;
constexpr double kMostBack = 1;
constexpr double kSameDirection = 0.99; // the cosine of the angle between two lines

bool IsBlank(char32_t character)
{
    constexpr char32_t kNoBreakSpace = 0xA0, kIdeographicSpace = 0x3000;
    return character == U' ' || character == kNoBreakSpace || character == kIdeographicSpace;
}

Point Unit(Point vector)
{
    const double length = Length(vector);
    return length > 0 ? vector * (1 / length) : Point{};
}

Point CentreOf(const GlyphRun &run, const PlacedGlyph &glyph)
{
    return glyph.origin + MapVector(run.matrix, {glyph.advance / 2, 0});
}

// Returns whether upright glyphs stand one below the other: those of Roman text do in a column, each placed by itself.
bool GoesDown(const GlyphRun &run)
{
    if (run.isColumn || run.glyphs.size() < 2)
        return run.isColumn;
    const Point by = CentreOf(run, run.glyphs[1]) - CentreOf(run, run.glyphs[0]);
    const Point right = {run.matrix.a, run.matrix.b}, up = {run.matrix.c, run.matrix.d};
    constexpr double kLeastStep = 0.3; // ems
    return -Dot(by, up) > kLeastStep * Dot(up, up) &&
           std::abs(Dot(by, right)) < kLeastStep * Dot(right, right);
}

} // namespace

LineGatherer::Course LineGatherer::CourseOf(const GlyphRun &run, bool isColumn)
{
    const Point right = {run.matrix.a, run.matrix.b}, up = {run.matrix.c, run.matrix.d};
    Course course;
    course.isColumn = isColumn;
    const Point along = isColumn ? up * -1 : right;
    course.along = Unit(along);
    course.em = Length(along);
    // The next line is below, and the next column on the left; both whichever way the glyphs lean.
    const Point next = isColumn ? right * -1 : up * -1;
    course.across = {-course.along.y, course.along.x};
    if (Dot(course.across, next) < 0)
        course.across = course.across * -1;
    course.start = isColumn ? CentreOf(run, run.glyphs.front()) : run.glyphs.front().origin;
    return course;
}

// Returns whether text goes on in the last line, if that takes the first course.
bool LineGatherer::IsOnLine(const Course &line, const Course &course, double size) const
{
    const double most = std::max(size, lines_.back().size);
    return Dot(course.along, line.along) > kSameDirection &&
           std::abs(Dot(course.start - line.start, line.across)) < kMostRise * most &&
           Dot(end_ - course.start, line.along) < kMostBack * most;
}

// Returns whether the run goes on with the last line. One character alone does not show whether it stands in a column:
// that depends on what is before it, or behind it.
bool LineGatherer::FindCourse(const GlyphRun &run, const TextPaint &paint, double size, Course *course)
{
    *course = CourseOf(run, GoesDown(run));
    if (lines_.empty())
        return false;
    if (paint.object.kind == TextKind::Path) // it bends
        return true;
    Line &line = lines_.back();
    if (paint.object.path != line.path)
        return false;
    if (IsOnLine(line.course, *course, size))
        return true;
    if (line.characters == 1 && course->isColumn && IsOnLine(line.asColumn, *course, size)) {
        line.course = line.asColumn;
        return true;
    }
    const Course asColumn = CourseOf(run, true);
    if (run.glyphs.size() > 1 || !line.course.isColumn || !IsOnLine(line.course, asColumn, size))
        return false;
    *course = asColumn;
    return true;
}

// Returns whether there is room for a blank before a run. A run itself is as the drawing wrote it.
bool LineGatherer::FollowsGap(const Course &course, const PlacedGlyph &first) const
{
    return !IsBlank(last_) && !IsBlank(first.character) &&
           Dot(first.origin - end_, endDirection_) - spacing_ > kLeastGap * course.em;
}

void LineGatherer::Add(const GlyphRun &run, const TextPaint &paint)
{
    if (run.glyphs.empty())
        return;
    TextRun look;
    look.font = run.font;
    look.size = Length(Point{run.matrix.c, run.matrix.d});
    look.colour = paint.paint.colour;
    kind_ = paint.object.kind;
    Course course;
    const PlacedGlyph &first = run.glyphs.front();
    if (!FindCourse(run, paint, look.size, &course)) {
        Line &line = lines_.emplace_back();
        line.course = course;
        line.asColumn = CourseOf(run, true);
        line.path = paint.object.path;
        bytes_ += sizeof line;
    } else if (FollowsGap(course, first)) {
        AddCharacter(U' ', look, {first.origin, course.along});
    }
    lines_.back().size = std::max(lines_.back().size, look.size);
    spacing_ = 0;
    bool isFirst = true;
    for (const PlacedGlyph &glyph : run.glyphs) {
        if (!std::exchange(isFirst, false))
            spacing_ = Dot(glyph.origin - end_, course.along);
        AddCharacter(glyph.character, look, {glyph.origin, course.along});
        // Upright glyphs of Roman text take an em of a column each.
        const double advance = course.isColumn && !run.isColumn ? 1 : glyph.advance;
        end_ = glyph.origin + course.along * (advance * course.em);
        lines_.back().end = end_;
        if (!IsBlank(glyph.character))
            ExtendBox(run, glyph);
    }
    endDirection_ = course.along;
}

void LineGatherer::AddCharacter(char32_t character, const TextRun &look, const TextPlace &place)
{
    Line &line = lines_.back();
    if (kind_ == TextKind::Path) {
        line.places.push_back(place);
        bytes_ += sizeof place;
    }
    if (line.runs.empty() || line.runs.back().font != look.font || line.runs.back().size != look.size ||
        line.runs.back().colour != look.colour) {
        line.runs.push_back(look);
        bytes_ += sizeof look;
    }
    std::array<char, 4> utf8;
    const size_t count = WriteUtf8(character, utf8.data());
    line.runs.back().text.append(utf8.data(), count);
    line.isBlank = line.isBlank && IsBlank(character);
    bytes_ += count;
    unknown_ += character == kUnknown ? 1 : 0;
    ++line.characters;
    last_ = character;
}

void LineGatherer::ExtendBox(const GlyphRun &run, const PlacedGlyph &glyph)
{
    constexpr double kDescent = 0.2; // of the em that stands around a character
    const double width = run.isColumn ? 1 : glyph.advance;
    for (const double x : {0.0, width}) {
        for (const double y : {-kDescent, 1 - kDescent}) {
            const Point at = glyph.origin + MapVector(run.matrix, {x, y});
            if (!std::exchange(hasBox_, true))
                box_ = {at.x, at.y, at.x, at.y};
            box_ = {std::min(box_.left, at.x), std::min(box_.bottom, at.y), std::max(box_.right, at.x),
                    std::max(box_.top, at.y)};
        }
    }
}

// Each path or area has its own lines. Those that go in several directions have no common order.
void LineGatherer::SortLines()
{
    for (auto first = lines_.begin(); first != lines_.end();) {
        const auto last =
            std::find_if(first, lines_.end(), [&](const Line &line) { return line.path != first->path; });
        const Course &course = first->course;
        const bool isParallel = std::all_of(first, last, [&](const Line &line) {
            return Dot(line.course.along, course.along) > kSameDirection;
        });
        const Point across = course.across;
        if (isParallel)
            std::stable_sort(first, last, [across](const Line &a, const Line &b) {
                return Dot(a.course.start, across) < Dot(b.course.start, across);
            });
        first = last;
    }
}

TextLine LineGatherer::Finish(Line &&line)
{
    constexpr double kAscent = 0.8; // of the em that stands around a character
    const Course &course = line.course;
    TextLine text;
    text.start = {course.start, course.along};
    if (course.isColumn)
        text.start.at = course.start - course.along * (kAscent * course.em);
    text.length = Dot(line.end - course.start, course.along);
    text.height = line.size;
    text.isColumn = course.isColumn;
    if (!line.places.empty()) {
        text.length = Length(line.end - line.places.back().at);
        for (size_t i = 1; i < line.places.size(); ++i)
            text.length += Length(line.places[i].at - line.places[i - 1].at);
    }
    text.runs = std::move(line.runs);
    text.places = std::move(line.places);
    return text;
}

FoundText LineGatherer::Take()
{
    SortLines();
    FoundText text;
    text.kind = kind_;
    text.box = box_;
    text.unknownCharacters = unknown_;
    for (Line &line : lines_) {
        if (!line.isBlank)
            text.lines.push_back(Finish(std::move(line)));
    }
    *this = {};
    return text;
}

} // namespace vxhost
