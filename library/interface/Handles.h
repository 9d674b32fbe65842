// What the handles of vx.h stand for.
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
    // What a font that was used is told as.
    struct UsedFont {
        std::string asked, served;
        vx_font_use use;
    };

    const vxhost::Installation *installation;
    std::string temporaryFolder;
    std::vector<std::byte> copy; // of the bytes, where the caller wants one
    std::unique_ptr<vxhost::Document> bytes;

    // Of its header.
    vxhost::HeaderFacts header;
    vxhost::Box box;
    bool isMonochrome = false;

    vxhost::OptionTexts options;
    vxhost::Settings settings; // what they say
    vx_progress progress = nullptr;
    void *progressContext = nullptr;

    // What the caller was given last.
    std::string json;
    std::vector<std::string> warnings;
    std::vector<UsedFont> fonts;

    std::atomic_flag isBusy;
};
