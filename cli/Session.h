// One run of a command: the plug-in, the fonts, and the road of each document through a worker process to a
// verdict that a person can read.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/HeaderScan.h"
#include "cli/Messages.h"
#include "cli/Status.h"
#include "host/Document.h"
#include "host/Outcome.h"
#include "host/Plugin.h"
#include "host/fonts/DocumentFonts.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// What a worker finds out about a document.
struct Finding {
    Outcome outcome;
    HeaderFacts header;
    // Found by the work itself; empty or 0: nothing.
    std::string inputError;
    std::string limitError;
    std::string lackedFont; // the document was given up for want of it
    int writeError = 0;     // errno of a failed write
};

struct Verdict {
    Status status = Status::Done;
    std::string error; // as it was told; empty: nothing to tell
    Finding finding;   // as far as the worker came
};

// Runs in the worker: a parse of the document in one of Plugin's ways.
using Work = std::function<void(const Plugin &, const Document &, const ParseOptions &, Finding *)>;

// What of a message depends on the command.
struct Purpose {
    std::string_view lost;                  // what an error costs: ", nothing written"
    std::string output = "standard output"; // as a message names it
    bool isTrace = false;                   // then nobody is sent to vx trace
    bool isFonts = false;                   // nor to vx fonts
};

class Session
{
  public:
    // Throws UsageError when there is no plug-in that works.
    Session(const CommonOptions &options, Messages *messages);

    // Opens the document and runs work on it in a worker; tells what went wrong, and every warning. prepare, when
    // it is set, runs between the two and gives up the document by returning a status other than Done.
    Verdict Interpret(const std::string &input, const Purpose &purpose, const Work &work,
                      const std::function<Status()> &prepare = nullptr);

    const FontList &Fonts() const { return *fonts_; } // of this machine

  private:
    DocumentFontOptions FontOptionsFor(const Document &document, const HeaderFacts &header) const;
    Verdict Fail(Status status, const std::string &input, std::string error);
    Verdict Judge(const std::string &input, const Purpose &purpose, size_t size, Finding finding);
    WorkerTask TaskFor(const Document &document, const Work &work) const;

    const CommonOptions &options_;
    Messages *messages_;
    std::unique_ptr<Plugin> plugin_;
    std::unique_ptr<FontList> fonts_;
};

// How a message names an input.
std::string InputName(const std::string &input);

} // namespace vxhost
