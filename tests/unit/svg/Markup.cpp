#include "tests/unit/svg/Markup.h"

#include <gtest/gtest.h>

namespace vxhost
{

SvgOptions PlainSvg()
{
    SvgOptions options;
    options.profile = "none";
    return options;
}

std::string SvgOf(const std::function<void(Device *)> &draw, const SvgOptions &options)
{
    std::string text, error;
    const ByteSink sink = [&text](std::span<const std::byte> bytes) {
        text.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Failure{};
    };
    const std::unique_ptr<Device> device = MakeSvgDevice(options, sink, &error);
    if (device == nullptr)
        return error;
    device->BeginPage({{10, 20, 110, 70}, {}, {}});
    draw(device.get());
    EXPECT_FALSE(device->EndPage());
    return text;
}

std::string BodyOf(const std::string &svg)
{
    const size_t root = svg.find("<svg ");
    const size_t begin = root == std::string::npos ? root : svg.find(">\n", root);
    const size_t end = svg.rfind("</svg>\n");
    if (begin == std::string::npos || end == std::string::npos)
        return "no picture: " + svg;
    return svg.substr(begin + 2, end - begin - 2);
}

} // namespace vxhost
