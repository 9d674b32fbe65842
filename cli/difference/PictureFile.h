// Reads a picture from the bytes of a file that nobody trusts, PNG or TIFF, row by row from the top.
//
// A row has 8 bits for each channel of a pixel, side by side. Colours of a screen have four channels, red, green, blue and alpha,
// which they are not multiplied by; inks have one each.
#pragma once

#include "host/Failure.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vxhost
{

enum class PictureKind : uint8_t { Colours, Inks };

struct PictureFacts {
    int width = 0, height = 0;
    PictureKind kind = PictureKind::Colours;
    std::vector<std::string> channels; // their names
    bool hasAlpha = false;             // the file has one
    std::string plate;                 // the ink of which it is the plate; empty: it is none
    std::vector<std::string> remarks;  // what the file has and nobody looks at, for a person

    size_t RowBytes() const { return static_cast<size_t>(width) * channels.size(); }
};

class PictureFile
{
  public:
    virtual ~PictureFile() = default;
    PictureFile(const PictureFile &) = delete;
    PictureFile &operator=(const PictureFile &) = delete;

    const PictureFacts &Facts() const { return facts_; }
    // Reads the next row into RowBytes() bytes. There are as many as the picture is high.
    virtual Failure ReadRow(uint8_t *row) = 0;

  protected:
    PictureFile() = default;
    PictureFacts facts_;
};

bool IsPng(std::span<const std::byte> bytes);
bool IsTiff(std::span<const std::byte> bytes);

// Each returns null with the failure when it cannot be read. The bytes must outlive the picture.
std::unique_ptr<PictureFile> OpenPng(std::span<const std::byte> bytes, Failure *failure);
std::unique_ptr<PictureFile> OpenTiff(std::span<const std::byte> bytes, Failure *failure);
std::unique_ptr<PictureFile> OpenPicture(std::span<const std::byte> bytes, Failure *failure);

} // namespace vxhost
