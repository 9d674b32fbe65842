#include "devices/pdf/ContentStream.h"

#include <algorithm>
#include <span>

namespace vxhost::pdf
{

ContentStream::ContentStream(PdfFile *file)
    : file_(file), room_(new char[kPieceBytes + kSlack]), at_(room_.get())
{
}

ContentStream &ContentStream::Factor(double value)
{
    at_ = WriteFactor(value, Room());
    *at_++ = ' ';
    return *this;
}

ContentStream &ContentStream::Factors(const Matrix &matrix)
{
    return Factor(matrix.a).Factor(matrix.b).Factor(matrix.c).Factor(matrix.d).At({matrix.tx, matrix.ty});
}

ContentStream &ContentStream::Name(std::string_view name)
{
    return Raw("/").Raw(name).Raw(" ");
}

ContentStream &ContentStream::Raw(std::string_view text)
{
    text = text.substr(0, kMaxRaw);
    at_ = std::copy(text.begin(), text.end(), Room());
    return *this;
}

void ContentStream::Operator(std::string_view text)
{
    at_ = std::copy(text.begin(), text.end(), Room());
    *at_++ = '\n';
}

template <typename MapPoint>
void ContentStream::AddMapped(const Path &path, MapPoint map)
{
    const Point *point = path.points.data();
    Point current;
    for (const Verb verb : path.verbs) {
        switch (verb) {
        case Verb::Move:
        case Verb::Line:
            current = *point++;
            At(map(current)).Operator(verb == Verb::Move ? "m" : "l");
            break;
        case Verb::Curve:
            // The shorter forms leave out a control point that is one of the ends.
            if (point[0] == current)
                At(map(point[1])).At(map(point[2])).Operator("v");
            else if (point[1] == point[2])
                At(map(point[0])).At(map(point[2])).Operator("y");
            else
                At(map(point[0])).At(map(point[1])).At(map(point[2])).Operator("c");
            current = point[2];
            point += 3;
            break;
        case Verb::Close:
            Operator("h");
            break;
        }
    }
}

void ContentStream::AddPath(const Path &path)
{
    AddMapped(path, [](Point point) { return point; });
}

void ContentStream::AddPath(const Path &path, const Matrix &matrix)
{
    AddMapped(path, [&](Point point) { return matrix.Map(point); });
}

void ContentStream::EndPiece()
{
    const std::span<const char> piece(room_.get(), static_cast<size_t>(at_ - room_.get()));
    at_ = room_.get();
    if (!piece.empty())
        pieces_.push_back(file_->AddStream({}, piece));
}

const std::vector<Reference> &ContentStream::Finish()
{
    EndPiece();
    return pieces_;
}

} // namespace vxhost::pdf
