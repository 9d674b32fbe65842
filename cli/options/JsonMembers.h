// The members of an object in JSON, each value as it was written: numbers keep digits that no type of ours holds.
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
    std::string_view value; // in the text that it was read from; one valid JSON value
};

// None when the text is no object, or more than one; badByte, from 1, is where that shows. Space is blanks and tabs, as
// the text is one line.
std::optional<std::vector<JsonMember>> ReadJsonMembers(std::string_view text, size_t *badByte);

} // namespace vxhost
