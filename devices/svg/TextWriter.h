// Text as text: characters, each at its place, in fonts that the picture carries.
//
// Owns the fonts. Which characters they need is known when all text has been written, so they stand at the end of the
// file. Viewers that do not read them find the installed font by its own name, which comes second.
//
// What a font has no character for (an upright form, the sign for "missing") is painted as a shape, and its character
// is written unpainted, so that all of the text can be found and copied.
#pragma once

#include "devices/svg/PaintAttributes.h"
#include "devices/svg/WebFont.h"
#include "devices/svg/XmlWriter.h"
#include "host/drawing/Device.h"

#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vxhost::svg
{

class TextWriter
{
  public:
    // Shapes are painted through the device that this belongs to.
    TextWriter(const Matrix &toPicture, PaintAttributes *paints, XmlWriter *xml, Device *shapes)
        : toPicture_(toPicture), paints_(paints), xml_(xml), shapes_(shapes)
    {
    }

    bool CanShow(const TextFont &font) { return OpenFont(font) != nullptr; }
    void Show(const GlyphRun &run, const TextPaint &paint);
    // Writes the outlines of all glyphs as the data of one path.
    void WriteOutlines(std::span<const GlyphRun> runs);
    void WriteFonts();

  private:
    struct Face {
        std::unique_ptr<WebFont> font; // null: not to be embedded
        uint64_t id = 0;
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

    Face *OpenFont(const TextFont &font); // null: it cannot be embedded
    Face *UseFont(const TextFont &font);  // the same, and gives it its number
    Setting FindSetting(const GlyphRun &run) const;
    void PlaceCharacters(const GlyphRun &run, const Setting &setting, WebFont *font);
    void WriteElement(const GlyphRun &run, const Face &face, const Setting &setting, const TextPaint &paint,
                      bool strokes);
    void WriteFontAttributes(const TextFont &font, const Face &face, double size);
    double FindSpacing(const GlyphRun &run, double size) const;
    size_t FindChunkEnd(const GlyphRun &run, size_t begin, double size, double spacing, WebFont *font) const;
    void WriteChunkPlace(size_t begin, size_t end, double *y);
    void WriteChunk(size_t begin, size_t end);
    void AppendOutlines(const GlyphRun &run, bool hiddenAlone, WebFont *font, Path *path) const;

    Matrix toPicture_;
    PaintAttributes *paints_;
    XmlWriter *xml_;
    Device *shapes_;
    std::map<const TextFont *, Face *> faceOfFont_;
    std::map<std::pair<const FontBytes *, int>, Face> faces_; // by bytes and place in them
    std::vector<Face *> order_;                               // by id
    std::vector<PlacedCharacter> placed_;                     // of the run at hand; keeps its storage
};

} // namespace vxhost::svg
