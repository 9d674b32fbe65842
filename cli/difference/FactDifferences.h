// Finds what two drawings say of themselves differently, and what two files made of one do.
#pragma once

#include "library/Result.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

struct FactDifference {
    std::string fact;            // "title", "layer"
    std::string name;            // of the layer; empty: there is one such fact
    nlohmann::ordered_json a, b; // null: there is none
};

// The results are those of readings that found no fault.
std::vector<FactDifference> CompareFacts(const Result &a, const Result &b);

// Says what two files of one format state of their pages: PDF or SVG.
struct FileFacts {
    std::vector<FactDifference> differences;
    std::vector<std::string> missing; // facts that one of them does not state where they can be read
};
FileFacts ComparePdfFacts(std::string_view a, std::string_view b);
FileFacts CompareSvgFacts(std::string_view a, std::string_view b);

// Lines that only one of two texts has, in their order. A line that one has more often counts as often as that.
struct LineDifferences {
    std::vector<std::string> onlyInA, onlyInB; // the first kMostLines
    uint64_t countA = 0, countB = 0;           // of all
};
constexpr size_t kMostLines = 1000;
LineDifferences CompareLines(std::string_view a, std::string_view b);

} // namespace vxhost
