// The blends that a drawing defines in its setup section, by their names.
#pragma once

#include "host/drawing/SpotBlend.h"
#include "host/reading/SpotInks.h"
#include "host/reading/StructureScan.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vxhost
{

class BlendDefinitions
{
  public:
    static constexpr size_t kMostStops = 50; // of a blend: the interpreter paints no more
    static constexpr size_t kMostAllStops = 100000,
                            kMostDefinitions = 10000; // further ones are process colours

    void Define(const StructureScan &scan, const FoundOperator &found);
    void AddStop(const StructureScan &scan, const FoundOperator &found, SpotInks *inks);

    // Returns the blend that is bound there; null: it is not known, or has no spot inks. What is returned points into this
    // object, which takes no more definitions then.
    const SpotBlend *Find(const StructureScan &scan, const FoundOperator &found);

  private:
    struct Stop {
        SpotColour colour;
        bool isGray = true; // two of these make a ramp of grays
    };
    struct Definition {
        int32_t kind = 0;
        int32_t count = 0; // of stops, as it says
        std::vector<Stop> stops;
        std::optional<SpotBlend> blend; // once it is asked for
    };

    static Stop ReadStop(const StructureScan &scan, const FoundOperator &found, SpotInks *inks);
    static SpotBlend MakeBlend(const Definition &definition);

    std::unordered_map<std::string, Definition> definitions_; // the first of each name
    Definition *last_ = nullptr; // takes the stops; null: one of a name that there is
    size_t stopCount_ = 0;
};

} // namespace vxhost
