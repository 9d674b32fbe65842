#include "devices/pdf/Levels.h"

#include <algorithm>

namespace vxhost::pdf
{

namespace
{

struct Level {
    std::string_view name;
    int version; // the latest of PDF that it takes, behind "1."
    bool takesLayers;
    int lastProfile; // the latest version of ICC profiles
    std::string_view intent;
    std::string_view infoVersion, xmpVersion, conformance;
};

// By PdfX and PdfA. The levels of 2003 build on a PDF that knows no layers and no later profiles.
constexpr Level kForPress[] = {
    {},
    {"PDF/X-1a", 4, false, 2, "GTS_PDFX", "PDF/X-1a:2003", "", ""},
    {"PDF/X-3", 4, false, 2, "GTS_PDFX", "PDF/X-3:2003", "", ""},
    {"PDF/X-4", 6, true, 4, "GTS_PDFX", "", "PDF/X-4", ""},
};
constexpr Level kForArchive[] = {
    {},
    {"PDF/A-2b", 7, true, 4, "GTS_PDFA1", "", "", "B"},
    {"PDF/A-2u", 7, true, 4, "GTS_PDFA1", "", "", "U"},
};

void Narrow(const Level &level, Demands *demands)
{
    const bool isFirst = demands->name.empty();
    demands->name.append(isFirst ? "" : " and ").append(level.name);
    demands->version = isFirst ? level.version : std::min(demands->version, level.version);
    demands->takesLayers = demands->takesLayers && level.takesLayers;
    if (isFirst || level.lastProfile < demands->lastProfile) {
        demands->lastProfile = level.lastProfile;
        demands->profileTaker = level.name;
    }
    if (isFirst)
        demands->intents.clear();
    demands->intents.push_back(level.intent);
    if (!level.infoVersion.empty())
        demands->infoVersion = level.infoVersion;
    if (!level.xmpVersion.empty())
        demands->xmpVersion = level.xmpVersion;
    demands->conformance = level.conformance;
}

} // namespace

Demands DemandsOf(const PdfOptions &options)
{
    Demands demands;
    demands.isForPress = options.standard != PdfX::None;
    demands.isForArchive = options.archive != PdfA::None;
    if (demands.isForPress)
        Narrow(kForPress[static_cast<size_t>(options.standard)], &demands);
    if (demands.isForArchive)
        Narrow(kForArchive[static_cast<size_t>(options.archive)], &demands);
    return demands;
}

} // namespace vxhost::pdf
