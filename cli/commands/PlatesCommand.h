// vx plates: makes a gray picture for each ink of a document.
#pragma once

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <map>
#include <string>
#include <vector>

namespace vxhost
{

class Session;

class PlatesCommand
{
  public:
    explicit PlatesCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    // All documents of a call share these.
    struct Plan {
        std::string pattern; // has "{ink}"
        const Format *format = nullptr;
        Settings settings;
    };
    Plan MakePlan(const CommonOptions &options) const;
    Status MakePlates(const NamedDocument &named, const Plan &plan, Session *session) const;

    CommonOptionReader common_;
    std::string output_;
    std::string format_; // empty: the output's name says it
    bool force_ = false;
    bool noMkdir_ = false;
    OptionTexts texts_;
};

// Returns the ink's name as a part of a file's name: what a file system or a pattern might take for something else is "_".
std::string FileNameOf(const std::string &ink);

// Makes the names of a document's plates, one for each ink, each another: a pattern with "{ink}" for the ink's name. Where two inks have one name
// for files, the later ones get a number.
std::vector<std::string> PlateNames(const std::string &pattern, const NamedDocument &document,
                                    const Format &format, const std::vector<std::string> &inks);

} // namespace vxhost
