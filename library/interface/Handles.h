// The objects behind the handles of vx.h.
#pragma once

#include "host/Document.h"
#include "host/fonts/FontconfigFonts.h"
#include "host/reading/Reading.h"
#include "library/Options.h"

#include <vx.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

// One for any number of threads: after its fonts were listed nothing of it changes.
struct vx_library {
    vxhost::FontSources fontSources;
    std::string temporaryFolder = "/tmp";

    // Lists the fonts, if nobody has.
    const vxhost::Installation &Installed();
    bool IsInstalled();

  private:
    std::mutex mutex_;
    vxhost::Installation installation_;
};

struct vx_document {
    // A font that was used, as the caller is told of it.
    struct UsedFont {
        std::string asked, served;
        vx_font_use use;
    };

    const vxhost::Installation *installation;
    std::string temporaryFolder;
    std::vector<std::byte> copy; // of the bytes, where the caller wants one
    std::unique_ptr<vxhost::Document> bytes;

    // These come from its header.
    vxhost::HeaderFacts header;
    vxhost::Box box;
    bool isMonochrome = false;

    vxhost::OptionTexts options;
    vxhost::Settings settings; // what they say
    vx_progress progress = nullptr;
    void *progressContext = nullptr;

    // The caller was given these last, and they stay until the next call.
    std::string json;
    std::vector<std::string> warnings;
    std::vector<UsedFont> fonts;

    std::atomic_flag isBusy;
};
