// The formats of pictures.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

enum class Format : uint8_t { Pdf, Svg, Png };

struct FormatRow {
    Format format;
    std::string_view name; // as -f takes it, which is also the extension of a file
};

constexpr FormatRow kFormats[] = {{Format::Pdf, "pdf"}, {Format::Svg, "svg"}, {Format::Png, "png"}};

constexpr std::string_view NameOf(Format format)
{
    return kFormats[static_cast<int>(format)].name;
}

constexpr std::optional<Format> FindFormat(std::string_view name)
{
    for (const FormatRow &row : kFormats) {
        if (row.name == name)
            return row.format;
    }
    return std::nullopt;
}

} // namespace vxhost
