// Holds the table of formats that documents are turned into. A new one is a row here and a folder in devices/.
#pragma once

#include "host/ByteSink.h"
#include "host/Failure.h"
#include "host/Outcome.h"
#include "host/drawing/Device.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vxhost
{

struct Settings;

struct Format {
    std::string_view name;      // what --format takes; it is the extension of a file too
    std::string_view shortName; // the same for both, in place of it; empty: there is none
    std::string_view mime;

    // Null when the settings cannot be met: error is then one line for a person.
    std::unique_ptr<Device> (*make)(const Settings &settings, ByteSinks sinks, std::string *error);
    bool isWrittenInOrder; // else what stands in front is replaced at the end
    // Says why there can be no such file of that page.
    Failure (*checkPage)(const Settings &settings, const Page &page);
    // Says whose the date is that such a file of that page states.
    DateOrigin (*findDateOrigin)(const Settings &settings, const Page &page);
};

std::span<const Format> Formats();
const Format *FindFormat(std::string_view name); // null: none of that name

// Returns the row's bit in a set of formats.
unsigned BitOf(const Format &format);
// Lists the names of a set: "pdf", "svg and png".
std::string NamesOf(unsigned formats, std::string_view between = " and ");

} // namespace vxhost
