// The installed font that comes nearest to one that is not there: by script, family, design, weight, width, slant.
#pragma once

#include "host/fonts/FontList.h"
#include "host/fonts/NameTraits.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

class FontMatcher
{
  public:
    // The list must outlive this object.
    explicit FontMatcher(const FontList &fonts);

    // An index into the list; of equally near ones the first. -1: no font of the list has a file.
    int32_t FindNearest(std::string_view asked, Script script) const;

  private:
    struct Candidate {
        int32_t index;
        std::string family;
        FaceClass faceClass;
        std::optional<TextEncoding> symbolSet;
    };

    const FontList &fonts_;
    std::vector<Candidate> candidates_;
};

} // namespace vxhost
