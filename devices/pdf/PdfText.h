// Reads the values of a PDF as PdfFile writes them, without ever reading beyond their end: what is no value is refused.
#pragma once

#include "devices/pdf/Values.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vxhost::pdf
{

// Takes a value off the beginning of the text, with the white space before it. Nothing: there is none that is whole.
std::optional<std::string_view> TakeValue(std::string_view *text);

// Keys, with their "/", and values of a dictionary, in their order. Nothing: it is none.
using Entries = std::vector<std::pair<std::string_view, std::string_view>>;
std::optional<Entries> EntriesOf(std::string_view dictionary);
std::string_view ValueOf(const Entries &entries, std::string_view key); // empty: it is not there

// Returns the number of the object that a value refers to; 0: it refers to none.
uint32_t ReferredTo(std::string_view value);

// Returns the value with other numbers in its references. Nothing: it is no value, or map has none for a number.
using MapNumber = std::function<std::optional<Reference>(uint32_t number)>;
std::optional<std::string> Renumbered(std::string_view value, const MapNumber &map);

} // namespace vxhost::pdf
