#include "bench/Documents.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <iterator>

namespace vxbench
{

namespace
{

constexpr const char *kComments = "%!PS-Tavro-3.0 EPSF-3.0\n"
                                  "%%Creator: VX benchmark\n"
                                  "%%BoundingBox: 0 0 1000 800\n"
                                  "%VX5_FileFormat 3\n"
                                  "%%EndComments\n";
constexpr const char *kEmptySetup = "%%BeginSetup\n%%EndSetup\n";

// Stops of a linear gradient are listed from its far end.
constexpr const char *kGradientSetup = "%%BeginSetup\n"
                                       "%VX5_BeginGradient: (Line)\n"
                                       "(Line) 0 3 Bd\n"
                                       "[\n"
                                       "1 0.6 0 0.1 1 50 100 Bs\n"
                                       "0.2 0 0.7 0 1 40 50 Bs\n"
                                       "0 0.1 0.2 0 1 50 0 Bs\n"
                                       "BD\n"
                                       "%VX5_EndGradient\n"
                                       "%VX5_BeginGradient: (Point)\n"
                                       "(Point) 1 2 Bd\n"
                                       "[\n"
                                       "0 0 0.2 0 1 50 0 Bs\n"
                                       "0 0.9 1 0.2 1 65 100 Bs\n"
                                       "BD\n"
                                       "%VX5_EndGradient\n"
                                       "%%EndSetup\n";

constexpr const char *kTrailer = "%%PageTrailer\n%%EOF\n";

// A linear congruential generator: the same numbers everywhere.
class Numbers
{
  public:
    int Below(int limit)
    {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<int>((state_ >> 33) % static_cast<uint64_t>(limit));
    }

  private:
    uint64_t state_ = 1;
};

void AppendNumber(std::string *text, Numbers *numbers, int whole)
{
    std::array<char, 32> digits;
    static constexpr std::array<int, 5> kPowersOfTen = {1, 10, 100, 1000, 10000};
    const int decimals = 1 + numbers->Below(4);
    const int fraction = numbers->Below(kPowersOfTen[static_cast<size_t>(decimals)]);
    const int length = snprintf(digits.data(), digits.size(), "%d.%0*d ", whole, decimals, fraction);
    text->append(digits.data(), static_cast<size_t>(length));
}

void AppendPoint(std::string *text, Numbers *numbers, int x, int y)
{
    AppendNumber(text, numbers, x + numbers->Below(40));
    AppendNumber(text, numbers, y + numbers->Below(40));
}

void AppendShape(std::string *text, Numbers *numbers)
{
    const int x = numbers->Below(kPageWidth - 40);
    const int y = numbers->Below(kPageHeight - 40);
    for (int ink = 0; ink < 4; ++ink)
        AppendNumber(text, numbers, 0);
    *text += "k\n";
    AppendPoint(text, numbers, x, y);
    *text += "m\n";
    for (int segments = 5 + numbers->Below(30); segments > 0; --segments) {
        const bool curve = numbers->Below(3) != 0;
        for (int points = curve ? 3 : 1; points > 0; --points)
            AppendPoint(text, numbers, x, y);
        *text += curve ? "c\n" : "L\n";
    }
    *text += numbers->Below(3) == 0 ? "s\n" : "f\n";
}

// A closed outline that fills most of a square of that size.
void AppendBlob(std::string *text, Numbers *numbers, int x, int y, int size)
{
    const auto point = [&](int percentX, int percentY) {
        AppendNumber(text, numbers, x + (percentX + numbers->Below(10)) * size / 100);
        AppendNumber(text, numbers, y + (percentY + numbers->Below(10)) * size / 100);
    };
    constexpr int kQuarters[][6] = {
        {75, 0, 90, 20, 90, 45}, {90, 70, 70, 90, 45, 90}, {20, 90, 0, 70, 0, 45}, {0, 20, 20, 0, 45, 0}};
    point(45, 0);
    *text += "m\n";
    for (const auto &quarter : kQuarters) {
        for (int i = 0; i < 6; i += 2)
            point(quarter[i], quarter[i + 1]);
        *text += "c\n";
    }
}

std::string Line(std::initializer_list<int> numbers, const char *rest)
{
    std::string line;
    for (const int number : numbers)
        line += std::to_string(number) + ' ';
    return line + rest + '\n';
}

// Two segments and two caps along one slope.
void AppendLinearInstance(std::string *text, int x, int y, int size)
{
    const int half = size / 2;
    *text += "Bb\n1 (Line) 0 0 0 1 1 0 0 1 0 0 Bg\n";
    *text += Line({-size, -half, -size, 2 * size, x + half, y - half}, "Bc");
    *text += Line({half, half / 2, -size, 2 * size, x + half, y - half}, "Bm");
    *text += Line({half, half / 2, -size, 2 * size, x + 2 * half, y - half + half / 2}, "Bm");
    *text += Line({size, half, -size, 2 * size, x + 3 * half, y - half + 2 * (half / 2)}, "Bc");
    *text += "f\n0 BB\n";
}

void AppendRadialInstance(std::string *text, int x, int y, int size)
{
    *text += "Bb\n1 (Point) 0 0 0 1 1 0 0 1 0 0 Bg\n";
    *text += Line({size / -8, size / 8, 0, 0}, "Bh");
    *text += Line({size / 2, 0, 0, size / 2, x + size / 2, y + size / 2}, "Bm");
    *text += "f\n0 BB\n";
}

// So many instances, or as many as fill so many bytes, whichever is more.
std::string MakeInstances(int count, size_t bytes, bool flat)
{
    constexpr int kSize = 100;
    Numbers numbers;
    std::string text = kComments;
    text += flat ? kEmptySetup : kGradientSetup;
    for (int i = 0; i < count || text.size() < bytes; ++i) {
        const int x = numbers.Below(kPageWidth - kSize), y = numbers.Below(kPageHeight - kSize);
        if (flat)
            text += Line({}, ("0." + std::to_string(i % 89 + 10) + " 0.3 0.4 0 k").c_str());
        AppendBlob(&text, &numbers, x, y, kSize);
        if (flat)
            text += "f\n";
        else if (i % 2 == 0)
            AppendLinearInstance(&text, x, y, kSize);
        else
            AppendRadialInstance(&text, x, y, kSize);
    }
    return text + kTrailer;
}

} // namespace

std::string MakePathDocument(size_t size)
{
    Numbers numbers;
    std::string text = std::string(kComments) + kEmptySetup;
    text += "0 0 0 1 K\n1 w\n";
    while (text.size() < size)
        AppendShape(&text, &numbers);
    return text + kTrailer;
}

std::string WithStructure(std::string_view document, size_t percent)
{
    constexpr std::string_view kOperators[] = {"u", "0.1 0.2 0.3 0 (Warm Red) 0.25 x", "U",
                                               "0 0 0 1 (Black Ink) 0 X", "0 0 0 1 k"};
    std::string text;
    size_t lines = 0, next = 0;
    for (size_t at = document.find("%%EndSetup"); percent > 0 && at < document.size();) {
        const size_t end = std::min(document.find('\n', at), document.size() - 1) + 1;
        if (text.empty())
            text = document.substr(0, at);
        text += document.substr(at, end - at);
        at = end;
        if (++lines % (100 / percent) == 0 && document[at] != '%') {
            text += kOperators[next++ % std::size(kOperators)];
            text += '\n';
        }
    }
    return text.empty() ? std::string(document) : text;
}

std::string TextFontName(int font)
{
    return "Asked-" + std::to_string(font);
}

std::string MakeTextDocument(int strings)
{
    Numbers numbers;
    std::string text = std::string(kComments) + kEmptySetup;
    text += "0 g\n0 To\n1 0 0 1 20 20 0 Tp\nTP\n0 Tr\n";
    for (int i = 0; i < strings; ++i) {
        const std::string place =
            std::to_string(numbers.Below(kPageWidth)) + " " + std::to_string(numbers.Below(kPageHeight));
        text +=
            "/_" + TextFontName(i % kTextFonts) + " 12 Tf\n1 0 0 1 " + place + " Tm\n(a line of text) Tx\n";
    }
    return text + "TO\n" + kTrailer;
}

std::string MakeTextPage(size_t size)
{
    constexpr int kLines = 12;
    Numbers numbers;
    std::string text = std::string(kComments) + kEmptySetup;
    text += "0 0 0 1 k\n0 To\n1 0 0 1 20 20 0 Tp\nTP\n0 Tr\n";
    for (int block = 0; text.size() < size; ++block) {
        text += std::string("/_") + kPageFonts[block % 3] + " 12 Tf\n";
        const int x = numbers.Below(kPageWidth / 2), y = numbers.Below(kPageHeight);
        for (int line = 0; line < kLines; ++line) {
            text += "1 0 0 1 " + std::to_string(x) + ' ' + std::to_string(y - 14 * line) + " Tm\n(";
            for (int letters = 20 + numbers.Below(60); letters > 0; --letters)
                text += numbers.Below(6) == 0 ? ' ' : static_cast<char>('a' + numbers.Below(26));
            text += ") Tx\n";
        }
    }
    return text + "TO\n" + kTrailer;
}

std::string MakeTextLines(size_t size)
{
    constexpr int kSizes[] = {12, 14, 18, 24, 36, 48};
    constexpr int kMargin = 20;
    Numbers numbers;
    std::string text = std::string(kComments) + kEmptySetup;
    for (int line = 0; text.size() < size;) {
        // A sheet of paper covers what is there.
        text += "0 0 0 0 k\n0 0 m\n1000 0 L\n1000 800 L\n0 800 L\nf\n";
        text += numbers.Below(4) == 0 ? "0.9 0.6 0 0.2 k\n" : "0 0 0 1 k\n";
        text += "0 To\n1 0 0 1 20 20 0 Tp\nTP\n0 Tr\n";
        for (int y = kPageHeight - kMargin;; ++line) {
            const int points = kSizes[static_cast<size_t>(line / 3) % std::size(kSizes)];
            y -= points + points / 4;
            if (y < kMargin)
                break;
            text += std::string("/_") + kPageFonts[line % 3] + ' ' + std::to_string(points) + " Tf\n";
            text += "1 0 0 1 " + std::to_string(kMargin) + ' ' + std::to_string(y) + " Tm\n(";
            // The widest of the fonts takes 0.6 of an em for each.
            for (int letters = (kPageWidth - 2 * kMargin) * 5 / (points * 3); letters > 0; --letters)
                text += numbers.Below(6) == 0 ? ' ' : static_cast<char>('a' + numbers.Below(26));
            text += ") Tx\n";
        }
        text += "TO\n";
    }
    return text + kTrailer;
}

std::string MakeGradientPage(size_t size)
{
    return MakeInstances(0, size, false);
}

std::string MakeGradientDocument(int instances)
{
    return MakeInstances(instances, 0, false);
}

std::string MakeFlatDocument(int instances)
{
    return MakeInstances(instances, 0, true);
}

} // namespace vxbench
