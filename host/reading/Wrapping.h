// Finds a drawing in what other programs put around it on its way: an archive's record, a mail's header, a mark at its start.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

struct Wrapping {
    size_t offset = 0, size = 0; // where the drawing lies in the file
    std::string names;           // what is around it, as "MacBinary, NULs at its end"; empty: nothing
};

// Looks for MacBinary, AppleSingle and AppleDouble with the data inside; a byte-order mark, blank lines or other lines of text,
// up to 64 KiB, before the drawing's first line; and NULs at the end. Where no drawing is found in these, there is nothing
// around the file.
Wrapping FindDrawing(std::span<const std::byte> file);

// Adds what is further inside, unless it is nothing.
void AddWrapping(std::string_view inner, std::string *names);

bool BeginsDrawing(std::string_view bytes);

// Looks in the same way for what begins otherwise; none: it is not there.
using Beginning = bool (*)(std::string_view bytes);
std::optional<Wrapping> FindWrapped(std::span<const std::byte> file, Beginning begins);

constexpr size_t kMaxWrappingBytes = size_t{68} << 10; // before what it is around

} // namespace vxhost
