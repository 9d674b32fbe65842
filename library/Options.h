// Holds the one table of options: what can be chosen about a document and what becomes of it, by the same names on a command
// line, in a manifest, in C and in other languages.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "devices/raster/RasterOptions.h"
#include "devices/svg/SvgDevice.h"
#include "host/drawing/Device.h"
#include "host/fonts/TextEncoding.h"
#include "host/reading/Reading.h"
#include "library/Format.h"
#include "library/PageLayout.h"

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
enum : unsigned { kPdf = 1, kSvg = 2, kPng = 4, kTiff = 8 };
constexpr size_t kFormatCount = 4;

// Holds everything that was chosen, as readings and devices understand it.
struct Settings {
    // These are about reading any document.
    std::optional<Script> script;
    DateOrder dateOrder = DateOrder::Unsaid;
    bool substitute = true;
    LayerChoice layers;
    bool keepsSpots = true;
    bool salvage = false;
    double seconds = 60;               // 0: no limit
    int64_t memory = int64_t{1} << 30; // bytes; 0: no limit
    std::optional<int64_t> output;     // bytes of a file; 0: no limit; none: the document's size decides

    // These are about outputs.
    PageOptions page;
    PdfOptions pdf;
    SvgOptions svg;
    RasterOptions png;
    bool arePlatesGray = false; // of a picture
};

// Returns whether the name is that of an ICC file, rather than of a profile that is built in.
bool IsProfileFile(std::string_view profile);

// Returns how many bytes a file may take that is made of a document of that size, where "max-output" says said; 0: any number.
int64_t MostOutput(const std::optional<int64_t> &said, size_t documentSize);

// Says how a document is read. Which font serves which name is not among the options.
ReadingOptions ReadingOptionsOf(const Settings &settings);

// Is thrown for a wrong value, and for options that do not go together. The text is one line, in which the names of options have
// the two dashes of a command line.
struct OptionError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Options of a group say one thing together, and replace what was said of it before.
enum class OptionGroup : uint8_t { None, Size, Shown };

struct Option {
    const char *name;     // "dpi"
    char letter;          // what a command line may say in its place; 0: there is none
    const char *value;    // what stands for the value in help
    unsigned formats;     // those for which it means something; 0: it is about reading any document
    const char *standard; // its value when nobody says one; empty: it depends, see help
    const char *help;
    void (*read)(const Option &option, const std::string &text, Settings *settings); // throws OptionError

    const char *choices =
        ""; // all values that there are, as "relative,perceptual"; empty: they are not a few
    double least = 0, most = 0; // the range of a number; both 0: nothing is said
    OptionGroup group = OptionGroup::None;
};

// Returns all rows, in the order of help.
std::span<const Option> Options();
const Option *FindOption(std::string_view name); // null: none of that name

// Holds options in the words in which they were said, on a command line or in a line of a manifest.
class OptionTexts
{
  public:
    OptionTexts();

    // Returns what was said; empty: nothing was.
    const std::string &Of(std::string_view name) const;
    std::string &operator[](const Option &option);
    bool operator==(const OptionTexts &) const = default;

    // Returns false when there is no option of that name.
    bool Set(std::string_view name, std::string text);

    // Returns what later says, and what this says where later says nothing. A size is one thing, however many options it takes.
    OptionTexts OverriddenBy(const OptionTexts &later) const;

    // Throws OptionError for an option that means nothing for any of the formats.
    void CheckMeant(unsigned formats) const;

    // Throws OptionError. profiles: those that a program has in memory, by name.
    Settings Read(const std::map<std::string, ProfileBytes> &profiles = {}) const;

  private:
    std::vector<std::string> texts_; // one for each row of Options()
};

} // namespace vxhost
