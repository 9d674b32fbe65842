// Writes small SVG pages, so that a test is what is drawn and what must stand between the head and the end.
#pragma once

#include "devices/svg/SvgDevice.h"

#include <functional>
#include <string>

namespace vxhost
{

// No profile, so colours can be worked out by hand.
SvgOptions PlainSvg();

// The whole file. The page is 100 by 50 points, its lower left corner at (10, 20).
std::string SvgOf(const std::function<void(Device *)> &draw, const SvgOptions &options = PlainSvg());

// What stands between the head, which ends with the tag <svg>, and the end.
std::string BodyOf(const std::string &svg);

} // namespace vxhost
