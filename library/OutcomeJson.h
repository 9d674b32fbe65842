// JSON of what became of a document: the parts that are told to a person's programs, by the same names everywhere.
#pragma once

#include "host/Outcome.h"

#include <nlohmann/json.hpp>

namespace vxhost
{

NLOHMANN_JSON_SERIALIZE_ENUM(FontMatch, {{FontMatch::Missing, "missing"},
                                         {FontMatch::Exact, "exact"},
                                         {FontMatch::StandIn, "stand-in"},
                                         {FontMatch::Substitute, "substitute"}})

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Report, number, title, message)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FontUse, asked, served, file, match, strings, characters, missingGlyphs)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Counts, fills, strokes, clips, segments, shows, gray, cmyk, overprint)

} // namespace vxhost
