#include "bench/Documents.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace vxbench
{

namespace
{

constexpr int kPageWidth = 1000;
constexpr int kPageHeight = 800;

constexpr const char *kHeader = "%!PS-Tavro-3.0 EPSF-3.0\n"
                                "%%Creator: VX benchmark\n"
                                "%%BoundingBox: 0 0 1000 800\n"
                                "%VX5_FileFormat 3\n"
                                "%%EndComments\n"
                                "%%BeginSetup\n"
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

} // namespace

std::string MakePathDocument(size_t size)
{
    Numbers numbers;
    std::string text = kHeader;
    text += "0 0 0 1 K\n1 w\n";
    while (text.size() < size)
        AppendShape(&text, &numbers);
    return text + kTrailer;
}

std::string TextFontName(int font)
{
    return "Asked-" + std::to_string(font);
}

std::string MakeTextDocument(int strings)
{
    Numbers numbers;
    std::string text = kHeader;
    text += "0 g\n0 To\n1 0 0 1 20 20 0 Tp\nTP\n0 Tr\n";
    for (int i = 0; i < strings; ++i) {
        const std::string place =
            std::to_string(numbers.Below(kPageWidth)) + " " + std::to_string(numbers.Below(kPageHeight));
        text +=
            "/_" + TextFontName(i % kTextFonts) + " 12 Tf\n1 0 0 1 " + place + " Tm\n(a line of text) Tx\n";
    }
    return text + "TO\n" + kTrailer;
}

} // namespace vxbench
