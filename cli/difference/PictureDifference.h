// Compares two pictures of the same size and the same kind, pixel by pixel, and says where they differ.
#pragma once

#include "cli/difference/PictureFile.h"
#include "host/ByteSink.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// Pixels that differ and lie together. Right and bottom are behind the last.
struct DifferentPlace {
    int left = 0, top = 0, right = 0, bottom = 0;
    uint64_t pixels = 0;
};

struct PictureDifference {
    struct Channel {
        std::string name;
        bool isInA = false, isInB = false; // in a picture without the channel there is nothing of it anywhere
        uint64_t different = 0;            // pixels, by more than the tolerance
        int largest = 0;                   // of 255
        double mean = 0;                   // over all pixels
    };
    int width = 0, height = 0;
    PictureKind kind = PictureKind::Colours;
    uint64_t different = 0; // pixels that differ in some channel by more than the tolerance
    int largest = 0;        // of 255, in any channel
    double mean = 0;        // over all pixels, of the channel that differs most
    std::vector<Channel> channels;
    std::vector<DifferentPlace> places; // those of the most pixels first, no more than kMostPlaces
    uint64_t placeCount = 0;            // of all

    uint64_t Pixels() const { return static_cast<uint64_t>(width) * static_cast<uint64_t>(height); }
};

constexpr size_t kMostPlaces = 100;

// tolerance: how much channels may differ, of 255.
Failure ComparePictures(PictureFile &a, PictureFile &b, int tolerance, PictureDifference *difference);

// Writes a PNG: what is the same is faint, what differs is red where it is darker in a, blue where it is darker in b and violet where
// it is as dark, and a frame stands around each place. The pictures are read from their first row again.
struct DifferencePictureOptions {
    int tolerance = 0;
    bool sideBySide = false; // a, b and then what differs
};
Failure WriteDifference(PictureFile &a, PictureFile &b, const PictureDifference &difference,
                        const DifferencePictureOptions &options, const ByteSink &sink);

} // namespace vxhost
