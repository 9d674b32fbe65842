// The one table of options: what can be chosen about a document and what becomes of it, by the same names on a command line,
// in a manifest, in C and in other languages.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterOptions.h"
#include "devices/svg/SvgDevice.h"
#include "host/drawing/Device.h"
#include "host/fonts/TextEncoding.h"
#include "library/Format.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// Sets of formats.
enum : unsigned { kPdf = 1, kSvg = 2, kPng = 4 };
constexpr size_t kFormatCount = 3;

// Everything that was chosen, as readings and devices understand it.
struct Settings {
    // These are about reading any document.
    std::optional<Script> script;
    bool substitute = true;
    double seconds = 60;               // 0: no limit
    int64_t memory = int64_t{1} << 30; // bytes; 0: no limit
    std::optional<int64_t> output; // bytes of a file; 0: no limit; none: as large as the document lets expect

    // These are about outputs.
    std::optional<Box> box; // as it is to be shown; without it the header's
    PdfOptions pdf;
    SvgOptions svg;
    RasterOptions png;
};

// Whether it is an ICC file that is named, rather than a profile of ours.
bool IsProfileFile(std::string_view profile);

// The bytes that a file made of a document of that size may take, when said is what "max-output" says; 0: any number.
int64_t MostOutput(const std::optional<int64_t> &said, size_t documentSize);

// A wrong value, or options that do not go together: one line. Names of options stand with the two dashes of a command line.
struct OptionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Option {
    const char *name;     // "dpi"
    char letter;          // of a command line; 0: none
    const char *value;    // what stands for the value in help
    unsigned formats;     // for which it means something; 0: it is of reading any document
    const char *standard; // what holds when nobody says it
    const char *help;
    void (*read)(const Option &option, const std::string &text, Settings *settings); // throws OptionError

    const char *choices = "";   // "relative,perceptual"; empty: it is none of a few
    double least = 0, most = 0; // of a number
    bool isSize = false;        // one of those that say how large a picture is, and replace each other
};

// All rows, in the order of help.
std::span<const Option> Options();
const Option *FindOption(std::string_view name); // null: none of that name

// Options as they were said, in words: on a command line, or in a line of a manifest.
class OptionTexts
{
  public:
    OptionTexts();

    // Empty: not said.
    const std::string &Of(std::string_view name) const;
    std::string &operator[](const Option &option);
    bool operator==(const OptionTexts &) const = default;

    // False when there is no option of that name.
    bool Set(std::string_view name, std::string text);

    // These texts where later has none. A size is one thing, however many options it takes.
    OptionTexts OverriddenBy(const OptionTexts &later) const;

    // Throws OptionError for one that means nothing for any of the formats.
    void CheckMeant(unsigned formats) const;

    // Throws OptionError. profiles: those that a program has in memory, by name.
    Settings Read(const std::map<std::string, ProfileBytes> &profiles = {}) const;

  private:
    std::vector<std::string> texts_; // beside Options()
};

} // namespace vxhost
