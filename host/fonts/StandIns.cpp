#include "host/fonts/StandIns.h"

namespace vxhost
{

namespace
{

constexpr StyleNames kNimbusSans = {"NimbusSans-Regular", "NimbusSans-Bold", "NimbusSans-Italic",
                                    "NimbusSans-BoldItalic"};
constexpr StyleNames kNimbusSanL = {"NimbusSanL-Regu", "NimbusSanL-Bold", "NimbusSanL-ReguItal",
                                    "NimbusSanL-BoldItal"};
constexpr StyleNames kHeros = {"TeXGyreHeros-Regular", "TeXGyreHeros-Bold", "TeXGyreHeros-Italic",
                               "TeXGyreHeros-BoldItalic"};
constexpr StyleNames kLiberationSans = {"LiberationSans", "LiberationSans-Bold", "LiberationSans-Italic",
                                        "LiberationSans-BoldItalic"};
constexpr StyleNames kArimo = {"Arimo-Regular", "Arimo-Bold", "Arimo-Italic", "Arimo-BoldItalic"};
constexpr StyleNames kFreeSans = {"FreeSans", "FreeSansBold", "FreeSansOblique", "FreeSansBoldOblique"};
constexpr StyleNames kNimbusRoman = {"NimbusRoman-Regular", "NimbusRoman-Bold", "NimbusRoman-Italic",
                                     "NimbusRoman-BoldItalic"};
constexpr StyleNames kNimbusRomNo9L = {"NimbusRomNo9L-Regu", "NimbusRomNo9L-Medi", "NimbusRomNo9L-ReguItal",
                                       "NimbusRomNo9L-MediItal"};
constexpr StyleNames kTermes = {"TeXGyreTermes-Regular", "TeXGyreTermes-Bold", "TeXGyreTermes-Italic",
                                "TeXGyreTermes-BoldItalic"};
constexpr StyleNames kLiberationSerif = {"LiberationSerif", "LiberationSerif-Bold", "LiberationSerif-Italic",
                                         "LiberationSerif-BoldItalic"};
constexpr StyleNames kTinos = {"Tinos-Regular", "Tinos-Bold", "Tinos-Italic", "Tinos-BoldItalic"};
constexpr StyleNames kFreeSerif = {"FreeSerif", "FreeSerifBold", "FreeSerifItalic", "FreeSerifBoldItalic"};
constexpr StyleNames kNimbusMonoPS = {"NimbusMonoPS-Regular", "NimbusMonoPS-Bold", "NimbusMonoPS-Italic",
                                      "NimbusMonoPS-BoldItalic"};
constexpr StyleNames kNimbusMonL = {"NimbusMonL-Regu", "NimbusMonL-Bold", "NimbusMonL-ReguObli",
                                    "NimbusMonL-BoldObli"};
constexpr StyleNames kCursor = {"TeXGyreCursor-Regular", "TeXGyreCursor-Bold", "TeXGyreCursor-Italic",
                                "TeXGyreCursor-BoldItalic"};
constexpr StyleNames kLiberationMono = {"LiberationMono", "LiberationMono-Bold", "LiberationMono-Italic",
                                        "LiberationMono-BoldItalic"};
constexpr StyleNames kCousine = {"Cousine-Regular", "Cousine-Bold", "Cousine-Italic", "Cousine-BoldItalic"};
constexpr StyleNames kFreeMono = {"FreeMono", "FreeMonoBold", "FreeMonoOblique", "FreeMonoBoldOblique"};
constexpr StyleNames kNimbusSansNarrow = {"NimbusSansNarrow-Regular", "NimbusSansNarrow-Bold",
                                          "NimbusSansNarrow-Oblique", "NimbusSansNarrow-BoldOblique"};
constexpr StyleNames kNimbusSanLCond = {"NimbusSanL-ReguCond", "NimbusSanL-BoldCond",
                                        "NimbusSanL-ReguCondItal", "NimbusSanL-BoldCondItal"};
constexpr StyleNames kLiberationSansNarrow = {"LiberationSansNarrow", "LiberationSansNarrow-Bold",
                                              "LiberationSansNarrow-Italic",
                                              "LiberationSansNarrow-BoldItalic"};
constexpr StyleNames kStandardSymbols = {"StandardSymbolsPS"};
constexpr StyleNames kStandardSymL = {"StandardSymL"};
constexpr StyleNames kD050000L = {"D050000L"};
constexpr StyleNames kDingbats = {"Dingbats"};
constexpr StyleNames kP052 = {"P052-Roman", "P052-Bold", "P052-Italic", "P052-BoldItalic"};
constexpr StyleNames kPalladio = {"URWPalladioL-Roma", "URWPalladioL-Bold", "URWPalladioL-Ital",
                                  "URWPalladioL-BoldItal"};
constexpr StyleNames kPagella = {"TeXGyrePagella-Regular", "TeXGyrePagella-Bold", "TeXGyrePagella-Italic",
                                 "TeXGyrePagella-BoldItalic"};
constexpr StyleNames kC059 = {"C059-Roman", "C059-Bold", "C059-Italic", "C059-BdIta"};
constexpr StyleNames kCenturySchL = {"CenturySchL-Roma", "CenturySchL-Bold", "CenturySchL-Ital",
                                     "CenturySchL-BoldItal"};
constexpr StyleNames kSchola = {"TeXGyreSchola-Regular", "TeXGyreSchola-Bold", "TeXGyreSchola-Italic",
                                "TeXGyreSchola-BoldItalic"};
constexpr StyleNames kURWBookman = {"URWBookman-Light", "URWBookman-Demi", "URWBookman-LightItalic",
                                    "URWBookman-DemiItalic"};
constexpr StyleNames kURWBookmanL = {"URWBookmanL-Ligh", "URWBookmanL-DemiBold", "URWBookmanL-LighItal",
                                     "URWBookmanL-DemiBoldItal"};
constexpr StyleNames kBonum = {"TeXGyreBonum-Regular", "TeXGyreBonum-Bold", "TeXGyreBonum-Italic",
                               "TeXGyreBonum-BoldItalic"};
constexpr StyleNames kURWGothic = {"URWGothic-Book", "URWGothic-Demi", "URWGothic-BookOblique",
                                   "URWGothic-DemiOblique"};
constexpr StyleNames kURWGothicL = {"URWGothicL-Book", "URWGothicL-Demi", "URWGothicL-BookObli",
                                    "URWGothicL-DemiObli"};
constexpr StyleNames kAdventor = {"TeXGyreAdventor-Regular", "TeXGyreAdventor-Bold", "TeXGyreAdventor-Italic",
                                  "TeXGyreAdventor-BoldItalic"};
constexpr StyleNames kZ003 = {"", "", "Z003-MediumItalic"};
constexpr StyleNames kURWChancery = {"", "", "URWChanceryL-MediItal"};
constexpr StyleNames kChorus = {"", "", "TeXGyreChorus-MediumItalic"};

constexpr ClassicFamily kFamilies[] = {
    {"Helvetica",
     {"Helvetica", "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique"},
     {&kNimbusSans, &kNimbusSanL, &kHeros, &kLiberationSans, &kArimo, &kFreeSans}},
    {"Times",
     {"Times-Roman", "Times-Bold", "Times-Italic", "Times-BoldItalic"},
     {&kNimbusRoman, &kNimbusRomNo9L, &kTermes, &kLiberationSerif, &kTinos, &kFreeSerif}},
    {"Courier",
     {"Courier", "Courier-Bold", "Courier-Oblique", "Courier-BoldOblique"},
     {&kNimbusMonoPS, &kNimbusMonL, &kCursor, &kLiberationMono, &kCousine, &kFreeMono}},
    {"Symbol", {"Symbol"}, {&kStandardSymbols, &kStandardSymL}},
    {"Zapf Dingbats", {"ZapfDingbats"}, {&kD050000L, &kDingbats}},
    {"Helvetica Narrow",
     {"Helvetica-Narrow", "Helvetica-Narrow-Bold", "Helvetica-Narrow-Oblique",
      "Helvetica-Narrow-BoldOblique"},
     {&kNimbusSansNarrow, &kNimbusSanLCond, &kLiberationSansNarrow}},
    {"Palatino",
     {"Palatino-Roman", "Palatino-Bold", "Palatino-Italic", "Palatino-BoldItalic"},
     {&kP052, &kPalladio, &kPagella}},
    {"New Century Schoolbook",
     {"NewCenturySchlbk-Roman", "NewCenturySchlbk-Bold", "NewCenturySchlbk-Italic",
      "NewCenturySchlbk-BoldItalic"},
     {&kC059, &kCenturySchL, &kSchola}},
    {"Bookman",
     {"Bookman-Light", "Bookman-Demi", "Bookman-LightItalic", "Bookman-DemiItalic"},
     {&kURWBookman, &kURWBookmanL, &kBonum}},
    {"Avant Garde",
     {"AvantGarde-Book", "AvantGarde-Demi", "AvantGarde-BookOblique", "AvantGarde-DemiOblique"},
     {&kURWGothic, &kURWGothicL, &kAdventor}},
    {"Zapf Chancery", {"", "", "ZapfChancery-MediumItalic"}, {&kZ003, &kURWChancery, &kChorus}},
    {"Arial",
     {"ArialMT", "Arial-BoldMT", "Arial-ItalicMT", "Arial-BoldItalicMT"},
     {&kLiberationSans, &kArimo, &kNimbusSans, &kNimbusSanL, &kHeros, &kFreeSans}},
    {"Times New Roman",
     {"TimesNewRomanPSMT", "TimesNewRomanPS-BoldMT", "TimesNewRomanPS-ItalicMT",
      "TimesNewRomanPS-BoldItalicMT"},
     {&kLiberationSerif, &kTinos, &kNimbusRoman, &kNimbusRomNo9L, &kTermes, &kFreeSerif}},
    {"Courier New",
     {"CourierNewPSMT", "CourierNewPS-BoldMT", "CourierNewPS-ItalicMT", "CourierNewPS-BoldItalicMT"},
     {&kLiberationMono, &kCousine, &kNimbusMonoPS, &kNimbusMonL, &kCursor, &kFreeMono}},
};

} // namespace

std::span<const ClassicFamily> ClassicFamilies()
{
    return kFamilies;
}

} // namespace vxhost
