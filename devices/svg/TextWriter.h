// Text as text: characters, each at its place, in fonts that the picture carries; or lines to be edited, in installed fonts.
//
// Owns the fonts. Which characters they need is known when all text has been written, so they stand at the end of the
// file. They have their own names, so that viewers that do not read them find the installed font.
//
// A line goes on through the texts that follow each other on it, so it is written when it has ended.
//
// What a font has no character for (an upright form, the sign for "missing") is painted as a shape, and its character
// is written unpainted, so that all of the text can be found and copied.
#pragma once

#include "devices/OutputOptions.h"
#include "devices/svg/PaintAttributes.h"
#include "devices/svg/TextLine.h"
#include "devices/svg/WebFont.h"
#include "devices/svg/XmlWriter.h"
#include "host/drawing/Device.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace vxhost::svg
{

class TextWriter
{
  public:
    // Shapes are painted through the device that this belongs to.
    TextWriter(const Matrix &toPicture, TextOutput output, PaintAttributes *paints, XmlWriter *xml,
               Device *shapes)
        : toPicture_(toPicture), isEditable_(output == TextOutput::Editable), paints_(paints), xml_(xml),
          shapes_(shapes)
    {
    }

    bool CanShow(const TextFont &font) { return OpenFont(font) != nullptr; }
    void Show(const GlyphRun &run, const TextPaint &paint);
    // Returns whether the run goes on along the line that has not ended.
    bool IsOnLine(const GlyphRun &run, const TextPaint &paint) const;
    bool HasLine() const { return !line_.characters.empty(); }
    void EndLine();
    // Counts the texts that stand character by character, since they run along a path or down a column, where lines were asked for.
    uint64_t PlacedTexts() const { return placedTexts_; }
    // Writes the outlines of all glyphs as the data of one path.
    void WriteOutlines(std::span<const GlyphRun> runs);
    void WriteFonts();

  private:
    struct Face {
        std::unique_ptr<WebFont> font; // null: text in it is shapes
        std::string family;            // the font's own, or one like it; empty: it is not used yet
    };
    // A Setting says where the text of one element stands.
    struct Setting {
        Matrix transform; // from the element to the picture
        Matrix toText;    // the inverse
        double size = 0;  // of the font
        bool isPlain = true;
        bool isSimilar = true; // the transform turns at most
        bool isReadable = true;
    };
    struct PlacedCharacter {
        Point at; // in the element's space
        char32_t character;
        bool isHidden; // a shape is painted instead
    };
    struct Line {
        const TextFont *font = nullptr;
        const Face *face = nullptr;
        Matrix matrix;
        TextPaint paint;
        Setting setting;
        double y = 0; // in the element's space, as are the characters
        bool strokes = false;
        bool isHidden = false;
        std::vector<LineCharacter> characters; // none: there is no line; keeps its storage
    };

    Face *OpenFont(const TextFont &font); // null: it cannot be embedded
    Face *UseFont(const TextFont &font);  // the same, and gives it its number
    std::string NameFace(const WebFont &font);
    Setting FindSetting(const GlyphRun &run) const;
    void PlaceCharacters(const GlyphRun &run, const Setting &setting, WebFont *font);
    Point InElement(const Setting &setting, Point onPage) const;
    bool IsNext(Point at) const;
    void CountPlaced(const GlyphRun &run, const TextPaint &paint);
    void AddToLines(const GlyphRun &run, const Face &face, const Setting &setting, const TextPaint &paint,
                    bool strokes);
    void WriteElement(const GlyphRun &run, const Face &face, const Setting &setting, const TextPaint &paint,
                      bool strokes);
    void WritePaint(const TextPaint &paint, bool strokes, bool isUnpainted);
    void WriteFontAttributes(const TextFont &font, const Face &face, double size);
    double FirstSpacing(const GlyphRun &run, double size) const;
    size_t FindChunkEnd(const GlyphRun &run, size_t begin, double size, double spacing, WebFont *font) const;
    void WriteChunkPlace(size_t begin, size_t end, double *y);
    void WriteChunk(size_t begin, size_t end);
    void AppendOutlines(const GlyphRun &run, bool hiddenAlone, WebFont *font, Path *path) const;

    Matrix toPicture_;
    bool isEditable_;
    PaintAttributes *paints_;
    XmlWriter *xml_;
    Device *shapes_;
    std::map<const TextFont *, Face *> faceOfFont_;
    std::map<std::pair<const FontBytes *, int>, Face> faces_;         // by bytes and place in them
    std::vector<Face *> order_;                                       // those used, as they came
    std::set<std::tuple<std::string, int, bool, std::string>> names_; // by which viewers tell them apart
    std::vector<PlacedCharacter> placed_;                             // of the run at hand; keeps its storage
    uint64_t placedTexts_ = 0;
    std::optional<uint64_t> lastPlaced_; // the number of the last of those
    Line line_;                          // to be edited, which has not ended
};

} // namespace vxhost::svg
