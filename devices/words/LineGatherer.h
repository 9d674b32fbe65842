// Makes lines of a text's glyphs by the places where they stand, whatever order they are painted in.
#pragma once

#include "devices/words/FoundText.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vxhost
{

class LineGatherer
{
  public:
    // Runs come in the order in which they are painted.
    void Add(const GlyphRun &run, const TextPaint &paint);

    bool IsEmpty() const { return lines_.empty(); }
    size_t Bytes() const { return bytes_; } // that are held, about

    // Returns what was gathered, and begins the next text. Its layer is the caller's to know.
    FoundText Take();

  private:
    // These are directions and lengths of the line on the page, in points.
    struct Course {
        Point along;   // to the next character
        Point across;  // to the next line
        double em = 0; // how far an advance of 1 goes
        bool isColumn = false;
        Point start; // on the line, or on the axis of the column
    };
    struct Line {
        std::vector<TextRun> runs;
        std::vector<TextPlace> places; // of its characters, on a path
        Point end;                     // behind the last
        Course course;
        Course asColumn;   // what its course is if its first character turns out to be the first of a column
        double size = 0;   // of its largest characters
        uint64_t path = 0; // of the text, that it is in
        size_t characters = 0;
        bool isBlank = true;
    };

    static Course CourseOf(const GlyphRun &run, bool isColumn);
    bool IsOnLine(const Course &line, const Course &course, double size) const;
    bool FindCourse(const GlyphRun &run, const TextPaint &paint, double size, Course *course);
    bool FollowsGap(const Course &course, const PlacedGlyph &first) const;
    void AddCharacter(char32_t character, const TextRun &look, const TextPlace &place);
    static TextLine Finish(Line &&line);
    void ExtendBox(const GlyphRun &run, const PlacedGlyph &glyph);
    void SortLines();

    std::vector<Line> lines_;
    TextKind kind_ = TextKind::Point;
    Box box_;
    bool hasBox_ = false;
    uint64_t unknown_ = 0;
    size_t bytes_ = 0;
    Point end_;          // behind the last character
    Point endDirection_; // of it
    double spacing_ = 0; // between the last two of its run
    char32_t last_ = 0;
};

} // namespace vxhost
