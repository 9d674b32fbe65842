#include "host/resources/StringLists.h"

#include "host/fonts/FontNames.h"
#include "host/toolbox/PascalString.h"

#include <vx/Toolbox.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace vxhost
{

namespace
{

constexpr std::string_view kProblems[] = {
    "pattern replaced",
    "patterns are drawn as 50% gray",
    "embedded PostScript skipped",
    "a fragment of embedded PostScript was skipped, what it draws is missing",
    "unknown operator ignored",
    "an unknown operator was ignored, what it does is missing",
    "binary data skipped",
    "a section of binary data was skipped, a picture may be missing",
    "fonts substituted",
    "a font that the document names is not there, another is drawn in its place: go on?",
};

// The plug-in takes the first name that the font list has, so the best come first: the names that documents themselves
// use, the faces that systems ship, the free ones, and last the boxes.
constexpr std::string_view kJapaneseFonts[] = {
    "Ryumin-Light",
    "GothicBBB-Medium",
    "HiraMinProN-W3",
    "HiraMinPro-W3",
    "HiraKakuProN-W3",
    "HiraKakuPro-W3",
    "YuMincho-Regular",
    "YuGothic-Regular",
    "MS-Mincho",
    "MS-Gothic",
    "KozMinPr6N-Regular",
    "KozMinProVI-Regular",
    "KozGoPr6N-Regular",
    "NotoSerifCJKjp-Regular",
    "SourceHanSerif-Regular",
    "SourceHanSerifJP-Regular",
    "NotoSansCJKjp-Regular",
    "SourceHanSans-Regular",
    "SourceHanSansJP-Regular",
    "IPAexMincho",
    "IPAMincho",
    "IPAPMincho",
    "IPAexGothic",
    "IPAGothic",
    "IPAPGothic",
    "TakaoMincho",
    "TakaoGothic",
    "VL-Gothic-Regular",
    "DroidSansFallback",
    kBoxFontName,
};

constexpr std::string_view kRomanFonts[] = {
    "Helvetica",
    "Times-Roman",
    "Courier",
    "NimbusSans-Regular",
    "NimbusRoman-Regular",
    "NimbusMonoPS-Regular",
    "ArialMT",
    "TimesNewRomanPSMT",
    "CourierNewPSMT",
    "LiberationSans",
    "LiberationSerif",
    "LiberationMono",
    "TeXGyreHeros-Regular",
    "TeXGyreTermes-Regular",
    "TeXGyreCursor-Regular",
    "FreeSans",
    "FreeSerif",
    "FreeMono",
    "DejaVuSans",
    "DejaVuSerif",
    "DejaVuSansMono",
    "NotoSans-Regular",
    "NotoSerif-Regular",
    kBoxFontName,
};

struct Renaming {
    std::string_view written, today;
};

// Menu names and short forms, as people and programs wrote them, beside the fonts' own names.
constexpr Renaming kRenamings[] = {
    {"Arial", "ArialMT"},
    {"Arial-Bold", "Arial-BoldMT"},
    {"Arial-Italic", "Arial-ItalicMT"},
    {"Arial-BoldItalic", "Arial-BoldItalicMT"},
    {"AvantGarde", "AvantGarde-Book"},
    {"Avant Garde", "AvantGarde-Book"},
    {"Bookman", "Bookman-Light"},
    {"CourierNew", "CourierNewPSMT"},
    {"Courier New", "CourierNewPSMT"},
    {"Helvetica-Regular", "Helvetica"},
    {"Helvetica-Roman", "Helvetica"},
    {"HelveticaNarrow", "Helvetica-Narrow"},
    {"N Helvetica Narrow", "Helvetica-Narrow"},
    {"NewCenturySchlbk", "NewCenturySchlbk-Roman"},
    {"New Century Schlbk", "NewCenturySchlbk-Roman"},
    {"Palatino", "Palatino-Roman"},
    {"Times", "Times-Roman"},
    {"Times-Regular", "Times-Roman"},
    {"TimesNewRoman", "TimesNewRomanPSMT"},
    {"TimesNewRoman,Bold", "TimesNewRomanPS-BoldMT"},
    {"TimesNewRoman,Italic", "TimesNewRomanPS-ItalicMT"},
    {"Times New Roman", "TimesNewRomanPSMT"},
    {"Zapf Chancery", "ZapfChancery-MediumItalic"},
    {"ZapfChancery", "ZapfChancery-MediumItalic"},
    {"Zapf Dingbats", "ZapfDingbats"},
};

constexpr size_t kRenamingCount = std::size(kRenamings);

template <std::string_view Renaming::*kColumn>
constexpr auto TakeColumn()
{
    std::array<std::string_view, kRenamingCount> column;
    for (size_t i = 0; i < kRenamingCount; ++i)
        column[i] = kRenamings[i].*kColumn;
    return column;
}

constexpr auto kFacesWritten = TakeColumn<&Renaming::written>();
constexpr auto kFacesToday = TakeColumn<&Renaming::today>();

// "-RKSJ" alone comes last: it ends each of the others, and would leave "-83pv" and its like on the name.
constexpr std::string_view kEncodings[] = {"-83pv-RKSJ", "-90ms-RKSJ", "-90pv-RKSJ", "-RKSJ"};
constexpr std::string_view kOrientations[] = {"-H", "-V"};

struct ListRow {
    int16_t number;
    std::span<const std::string_view> strings;
};

constexpr ListRow kLists[] = {
    {kVXProblemStrings, kProblems},
    {kVXJapaneseFonts, kJapaneseFonts},
    {kVXOtherFonts, kRomanFonts},
    {kVXReplacedFaces, kFacesWritten},
    {kVXReplacingFaces, kFacesToday},
    {kVXEncodingSuffixes, kEncodings},
    {kVXOrientationSuffixes, kOrientations},
};

// The plug-in takes an empty string for the failure of a whole list.
constexpr bool HasOnlyProperStrings(const ListRow &list)
{
    return std::ranges::all_of(list.strings, [](std::string_view string) {
        return !string.empty() && string.size() <= kMaxPascalLength;
    });
}
static_assert(std::ranges::all_of(kLists, HasOnlyProperStrings));
static_assert(std::size(kProblems) == 2 * kVXProblemFont);

} // namespace

std::span<const std::string_view> FindStringList(int16_t list)
{
    const auto *row = std::ranges::find(kLists, list, &ListRow::number);
    return row == std::end(kLists) ? std::span<const std::string_view>() : row->strings;
}

std::vector<char> PackStringList(const std::vector<std::string_view> &strings)
{
    const auto count =
        static_cast<int16_t>(std::min<size_t>(strings.size(), std::numeric_limits<int16_t>::max()));
    std::vector<char> bytes(sizeof count);
    std::memcpy(bytes.data(), &count, sizeof count);
    for (int16_t i = 0; i < count; ++i) {
        const std::string_view string = strings[static_cast<size_t>(i)].substr(0, kMaxPascalLength);
        bytes.push_back(static_cast<char>(string.size()));
        bytes.insert(bytes.end(), string.begin(), string.end());
    }
    return bytes;
}

int FindProblem(std::string_view title)
{
    for (size_t i = 0; i < std::size(kProblems); i += 2) {
        if (kProblems[i] == title)
            return static_cast<int>(i / 2) + 1;
    }
    return 0;
}

} // namespace vxhost
