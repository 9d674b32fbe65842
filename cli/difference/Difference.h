// Does the worker's part of a diff: holds two drawings, or a drawing and a file, beside each other, and tells.
#pragma once

#include "cli/difference/FactDifferences.h"
#include "cli/difference/PictureDifference.h"
#include "host/Document.h"
#include "host/drawing/Device.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

enum class SideKind : uint8_t { Drawing, Png, Tiff, Pdf, Svg };

// All that is known of one of the two.
struct DifferenceSide {
    std::string input; // as it was given
    SideKind kind = SideKind::Drawing;
    // Files, or what a worker made of a drawing; null: it is not compared.
    std::shared_ptr<Document> colours, inks, words, bytes;
};

struct DifferenceTask {
    DifferenceSide a, b;
    std::vector<FactDifference> facts;
    std::vector<std::string> notCompared; // what cannot be, and what to do, for a person
    std::optional<Box> box;               // what the pictures show, in points; none: it is not known
    DifferencePictureOptions picture;
    bool json = false;
};

// All that is found.
struct Difference {
    std::vector<PictureDifference> pictures;
    std::vector<FactDifference> facts;
    LineDifferences words;
    std::optional<size_t> firstByte; // that differs
    std::vector<std::string> notCompared;

    bool IsAny() const;
};

// Compares, and writes the report and, where the sink of the picture is not null, the picture. isAny: whether anything differs.
Failure TellDifference(const DifferenceTask &task, const ByteSink &report, const ByteSink &picture,
                       bool *isAny);

} // namespace vxhost
