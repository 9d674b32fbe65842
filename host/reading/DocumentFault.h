// Says what is malformed in a document, and where.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// Places are those of the file, as an editor counts: CR, LF, and CR LF as one, end a line; columns are bytes.
struct DocumentFault {
    static constexpr size_t kMostText = 200;

    int64_t line = 0;   // from 1; 0: nothing is known
    int64_t column = 0; // from 1; 0: it is not known where in the line
    std::string text;   // what is wrong there, in ASCII

    bool operator==(const DocumentFault &) const = default;
};

// Says what was left out of a malformed document, so that the rest could be drawn.
struct Salvage {
    static constexpr size_t kMostTold = 3;

    uint32_t faults = 0;              // that were left out, each with its operands
    std::vector<DocumentFault> first; // of these, at most kMostTold
    bool isCut = false;               // all is left out from a further fault on, which is the outcome's

    bool IsAny() const { return faults > 0 || isCut; }
    bool operator==(const Salvage &) const = default;
};

// Returns "line 214, column 9: "c" wants 6 numbers, has 5"; empty: nothing is known.
inline std::string FaultText(const DocumentFault &fault)
{
    if (fault.line == 0)
        return "";
    std::string text = "line " + std::to_string(fault.line);
    if (fault.column != 0)
        text.append(", column ").append(std::to_string(fault.column));
    return text.append(": ").append(fault.text);
}

} // namespace vxhost
