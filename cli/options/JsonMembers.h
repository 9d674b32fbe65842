// Reads the members of a JSON object and leaves each value as it was written: numbers keep digits that no type of ours holds.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

struct JsonMember {
    std::string key;
    std::string_view value; // one valid JSON value, in the text that it was read from
};

// Returns none when the text is not one object; badByte, from 1, is then where that shows. The text is one line, so that space
// is blanks and tabs.
std::optional<std::vector<JsonMember>> ReadJsonMembers(std::string_view text, size_t *badByte);

} // namespace vxhost
