// Text objects: sets runs of glyphs so that every glyph stands where its origin says, in few operators.
//
// It knows where the next glyph would stand by itself. Where that is not its place, a number between two strings or a
// new line moves it.
#pragma once

#include "devices/pdf/ContentStream.h"
#include "devices/pdf/EmbeddedFont.h"
#include "devices/pdf/GraphicsState.h"
#include "host/drawing/GlyphRun.h"

#include <cstdint>
#include <string>

namespace vxhost::pdf
{

class TextWriter
{
  public:
    TextWriter(ContentStream *content, GraphicsState *state) : content_(content), state_(state) {}

    // Begin opens a text object unless one is open, End closes it if one is. Nothing but text, colours and line
    // attributes may stand in between.
    void Begin();
    void End();

    // Shows the run in the open text object. fromPage maps the page to the space in force.
    void Show(const GlyphRun &run, const Matrix &fromPage, EmbeddedFont *font);

  private:
    void StartLine(Point at);
    void PlaceNext(Point inEms);
    void AddGlyph(const GlyphCode &code, int codeBytes);
    void AddByte(char byte);
    void OpenString();
    void CloseString();
    void FlushLine();

    ContentStream *content_;
    GraphicsState *state_;
    bool isOpen_ = false;
    bool runsDown_ = false;
    Matrix emsToSpace_; // of the run, without translation
    Matrix spaceToEms_; // the inverse
    Matrix direction_;  // that matrix at a font size of size_
    double size_ = 0;
    bool hasLine_ = false; // a line has begun, which the next members describe
    Point lineStart_;
    double next_ = 0;  // along the line, in 1/1000 em from its start, where the next glyph would stand
    std::string line_; // strings and numbers not written yet
    bool isInString_ = false, hasNumbers_ = false;
};

} // namespace vxhost::pdf
