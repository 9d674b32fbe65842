// The operators of a page, as they are written: numbers, names, paths.
//
// Holds one piece of the page in memory; a full piece is a stream of the file. Pieces end between two tokens, as a page that is an
// array of streams asks for.
#pragma once

#include "devices/pdf/PdfFile.h"
#include "devices/vector/Numbers.h"
#include "host/drawing/Path.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace vxhost::pdf
{

class ContentStream
{
  public:
    static constexpr size_t kMaxRaw = 60000;

    explicit ContentStream(PdfFile *file); // which must outlive this object

    ContentStream &Number(double value)
    {
        char *to = WriteNumber(value, Room());
        *to++ = ' ';
        at_ = to;
        return *this;
    }
    ContentStream &Factor(double value);
    ContentStream &At(Point point) { return Number(point.x).Number(point.y); }
    // The operands of a matrix. Its translation is written as points are.
    ContentStream &Factors(const Matrix &matrix);
    ContentStream &Name(std::string_view name); // without its "/"
    ContentStream &Raw(std::string_view text);  // whole tokens, as they stand, of kMaxRaw characters at most
    void Operator(std::string_view text);       // ends the line

    // Builds the path alone: the caller adds the operator that paints it or clips to it.
    void AddPath(const Path &path);
    void AddPath(const Path &path, const Matrix &matrix);

    // Writes what is left. Returns all pieces.
    const std::vector<Reference> &Finish();

  private:
    static constexpr size_t kPieceBytes = size_t{2} << 20;
    static constexpr size_t kSlack = kMaxRaw + 16;

    // The room for the next token.
    char *Room()
    {
        if (at_ > room_.get() + kPieceBytes)
            EndPiece();
        return at_;
    }
    void EndPiece();
    template <typename MapPoint>
    void AddMapped(const Path &path, MapPoint map);

    PdfFile *file_;
    std::vector<Reference> pieces_;
    std::unique_ptr<char[]> room_;
    char *at_;
};

} // namespace vxhost::pdf
