// The objects behind the handles of vx.h.
#pragma once

#include "devices/raster/InkPixels.h"
#include "host/Document.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "library/FontMap.h"
#include "library/Options.h"

#include <vx.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// Holds what was chosen of a library, which a document takes over when it is opened.
struct Choices {
    std::string temporaryFolder = "/tmp";
    FontMap served;
    std::map<std::string, ProfileBytes> profiles;
};

} // namespace vxhost

// Any number of threads may use one.
struct vx_library {
    // Lists the fonts if nobody has. From then on they stay as they are.
    const vxhost::Installation &Installed();
    // Throws CallError when they are listed already. what is the word for the change that comes too late.
    void ChangeFonts(std::string_view what, const std::function<void(vxhost::FontSources *)> &change);

    vxhost::Choices GetChoices();
    vxhost::FontSources GetFontSources();
    void ChangeChoices(const std::function<void(vxhost::Choices *)> &change);
    // Adds rows to the map. Throws OptionError for a font that is not there.
    void MapFonts(const vxhost::FontMap &rows);

  private:
    std::mutex mutex_;
    vxhost::FontSources fontSources_;
    vxhost::Choices choices_;
    vxhost::Installation installation_;
};

struct vx_document {
    // A font that was used, as the caller is told of it.
    struct UsedFont {
        std::string asked, served;
        vx_font_use use;
    };

    const vxhost::Installation *installation;
    vxhost::Choices choices;
    std::vector<std::byte> copy; // that of the bytes, where the caller wants one
    std::unique_ptr<vxhost::Document> bytes;
    std::shared_ptr<const vxhost::Unpacked> unpacked; // null: nobody has looked yet

    // These come from its header.
    vxhost::HeaderFacts header;
    vxhost::Box box;
    bool isMonochrome = false;

    vxhost::OptionTexts options;
    vxhost::Settings settings; // what the options say
    vx_progress progress = nullptr;
    void *progressContext = nullptr;

    // The caller was given these last, and they stay until the next call.
    std::string json;
    std::string object;
    std::shared_ptr<const vxhost::InkPixels> inks;
    std::vector<const char *> inkNames;
    std::vector<std::string> warnings;
    std::vector<UsedFont> fonts;

    std::atomic_flag isBusy;
};
