#include "bench/Equivalents.h"

#include "bench/Documents.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vxbench
{

namespace
{

// This tells PostScript our operators; PDF has most of them under the same names.
constexpr const char *kPostScriptHead =
    "%!PS-Adobe-3.0\n"
    "<< /PageSize [1000 800] >> setpagedevice\n"
    "/k {setcmykcolor} bind def /m {moveto} bind def /L {lineto} bind def\n"
    "/c {curveto} bind def /f {fill} bind def /s {closepath 0 setgray stroke} bind def\n"
    "/Tf {exch findfont exch scalefont setfont} bind def\n"
    "/Tm {moveto pop pop pop pop} bind def /Tx {show} bind def\n";

// A line is operands and, last, the operator.
struct Line {
    std::string_view operands; // with the blank behind them
    std::string_view operation;
};

Line Split(std::string_view line)
{
    const size_t blank = line.rfind(' ');
    const size_t from = blank == std::string_view::npos ? 0 : blank + 1;
    return {line.substr(0, from), line.substr(from)};
}

class Translator
{
  public:
    explicit Translator(Language language) : language_(language) {}

    void Add(std::string_view text)
    {
        const Line line = Split(text);
        if (language_ == Language::Svg)
            AddToSvg(line);
        else if (line.operation == "Tf")
            AddFont(line);
        else if (line.operation == "Tx")
            Append({language_ == Language::Pdf ? "BT " : "", font_, place_, "Tm ", line.operands,
                    language_ == Language::Pdf ? "Tj ET\n" : "Tx\n"});
        else if (line.operation == "Tm")
            place_ = line.operands;
        else if (IsPaint(line.operation))
            Append({line.operands, language_ == Language::Pdf && line.operation == "L" ? "l" : line.operation,
                    "\n"});
    }

    std::string Take() { return std::move(body_); }

  private:
    static bool IsPaint(std::string_view operation)
    {
        static constexpr std::array<std::string_view, 6> kPaints = {"L", "c", "f", "k", "m", "s"};
        return std::ranges::find(kPaints, operation) != kPaints.end();
    }

    void Append(std::initializer_list<std::string_view> parts)
    {
        for (const std::string_view part : parts)
            body_ += part;
    }

    // "/_Name 12 Tf" is the font of the strings that follow.
    void AddFont(const Line &line)
    {
        const size_t nameEnd = line.operands.find(' ');
        const std::string_view name = line.operands.substr(2, nameEnd - 2);
        font_ = '/';
        font_ += name;
        font_ += line.operands.substr(nameEnd);
        font_ += "Tf ";
    }

    void AddToSvg(const Line &line)
    {
        if (line.operation == "k") {
            colour_ = ScreenColour(line.operands);
        } else if (line.operation == "m" || line.operation == "L" || line.operation == "c") {
            Append({path_.empty() ? "<path d=\"" : "",
                    line.operation == "m"   ? "M"
                    : line.operation == "L" ? "L"
                                            : "C",
                    line.operands});
            path_ = "open";
        } else if (line.operation == "f" || line.operation == "s") {
            if (line.operation == "f")
                Append({"\" fill=\"", colour_, "\"/>\n"});
            else
                Append({"Z\" fill=\"none\" stroke=\"#000\"/>\n"});
            path_.clear();
        } else if (line.operation == "Tf") {
            const size_t nameEnd = line.operands.find(' ');
            font_ = line.operands.substr(2, nameEnd - 2);
            fontSize_ = line.operands.substr(nameEnd + 1, line.operands.find(' ', nameEnd + 1) - nameEnd - 1);
        } else if (line.operation == "Tm") {
            place_ = line.operands;
        } else if (line.operation == "Tx") {
            const size_t end = line.operands.rfind(')');
            Append({"<text font-size=\"", fontSize_, "\" font-family=\"", font_, "\" fill=\"", colour_,
                    "\" transform=\"matrix(1 0 0 -1 ", place_.substr(place_.find("1 ", 2) + 2), ")\">",
                    line.operands.substr(1, end - 1), "</text>\n"});
        }
    }

    // Plain arithmetic will do, since paths are what is measured.
    static std::string ScreenColour(std::string_view operands)
    {
        std::array<double, 4> inks = {};
        for (double &ink : inks) {
            const size_t end = std::min(operands.find(' '), operands.size());
            std::from_chars(operands.data(), operands.data() + end, ink);
            operands.remove_prefix(std::min(end + 1, operands.size()));
        }
        const auto level = [&](double ink) { return std::lround(255 * std::max(0.0, 1 - ink - inks[3])); };
        std::array<char, 8> text;
        std::snprintf(text.data(), text.size(), "#%02lx%02lx%02lx", level(inks[0]), level(inks[1]),
                      level(inks[2]));
        return text.data();
    }

    Language language_;
    std::string body_;
    std::string font_, fontSize_, place_, colour_ = "#000", path_;
};

std::string PdfAround(const std::string &content)
{
    std::string file = "%PDF-1.4\n";
    std::array<size_t, 5> at = {};
    const auto add = [&](size_t number, const std::string &object) {
        at[number] = file.size();
        file += std::to_string(number) + " 0 obj\n" + object + "\nendobj\n";
    };
    std::string fonts;
    for (const char *name : kPageFonts)
        fonts += std::string("/") + name + " << /Type /Font /Subtype /Type1 /BaseFont /" + name + " >> ";
    add(1, "<< /Type /Catalog /Pages 2 0 R >>");
    add(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    add(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 1000 800] /Contents 4 0 R /Resources << /Font << " +
               fonts + ">> >> >>");
    add(4, "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream");
    const size_t table = file.size();
    file += "xref\n0 5\n0000000000 65535 f \n";
    for (size_t i = 1; i < at.size(); ++i) {
        std::array<char, 32> entry;
        std::snprintf(entry.data(), entry.size(), "%010zu 00000 n \n", at[i]);
        file += entry.data();
    }
    return file + "trailer\n<< /Size 5 /Root 1 0 R >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
}

} // namespace

std::string Translate(std::string_view document, Language language)
{
    Translator translator(language);
    while (!document.empty()) {
        const size_t end = std::min(document.find('\n'), document.size());
        if (!document.starts_with('%'))
            translator.Add(document.substr(0, end));
        document.remove_prefix(std::min(end + 1, document.size()));
    }
    switch (language) {
    case Language::PostScript:
        return kPostScriptHead + translator.Take() + "showpage\n";
    case Language::Pdf:
        return PdfAround(translator.Take());
    default:
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1000\" height=\"800\" viewBox=\"0 0 1000 "
               "800\">\n"
               "<g transform=\"matrix(1 0 0 -1 0 800)\">\n" +
               translator.Take() + "</g>\n</svg>\n";
    }
}

} // namespace vxbench
