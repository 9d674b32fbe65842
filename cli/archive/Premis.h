// Writes what became of a document as preservation metadata: PREMIS 3, in XML. A record has the output as its object, the event
// that made it of the document, and this program as the agent.
#pragma once

#include "cli/options/Digest.h"
#include "library/Format.h"

#include <ctime>
#include <string>
#include <vector>

namespace vxhost
{

struct PremisRecord {
    std::string source; // the document
    FileDigest sourceDigest;
    std::string output;
    FileDigest outputDigest;
    const Format *format = nullptr;
    std::string options; // all that was said of the output, a line each, the format first
    std::vector<std::string> warnings;
    std::time_t at = 0; // when it was made
};

// Returns the name of the record that stands beside an output.
std::string PremisNameOf(const std::string &output);

std::string PremisXml(const PremisRecord &record);

// Returns why nothing can be told of it, as one line for a person; empty: it can.
std::string WhyNoPremis(const PremisRecord &record);

// Writes it beside the output. Returns why it could not, as one line for a person; empty: it is there.
std::string WritePremis(const PremisRecord &record);

} // namespace vxhost
