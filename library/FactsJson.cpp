#include "library/FactsJson.h"

#include "host/JsonText.h"
#include "library/OutcomeJson.h"

namespace vxhost
{

void AddFacts(const HeaderFacts &header, const Outcome &outcome, nlohmann::ordered_json *json)
{
    const Box &box = outcome.box;
    auto &facts = *json;
    facts["vx"] = outcome.headerAccepted;
    if (!outcome.headerAccepted)
        return;
    facts["version"] = header.version;
    facts["title"] = header.title;
    facts["creator"] = header.creator;
    facts["creationDate"] = header.creationDate;
    facts["box"] = {box.left, box.bottom, box.right, box.top};
    facts["points"] = {box.Width(), box.Height()};
    facts["millimetres"] = {Millimetres(box.Width()), Millimetres(box.Height())};
    facts["monochrome"] = outcome.monochrome;
    facts["processColours"] = header.processColours;
    facts["customColours"] = header.customColours;
    facts["declaredFonts"] = header.fonts;
    facts["fonts"] = nlohmann::json(outcome.fonts);
    facts["uses"] = nlohmann::json(outcome.counts);
    facts["problems"] = nlohmann::json(outcome.reports);
    facts["bytes"] = outcome.bytesTotal;
    facts["lineEnds"] = header.lineEnds;
    facts["epsWrapper"] = header.epsWrapper;
    facts["result"] = outcome.result;
}

std::string JsonLine(const nlohmann::ordered_json &json)
{
    return EscapeControls(json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + "\n";
}

} // namespace vxhost
