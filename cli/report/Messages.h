// Tells a person what there is to tell, on standard error: one line each, no warning twice; and shows the progress of the work
// at hand.
//
//   vx: FILE: what is wrong with which value: what to do
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace vxhost
{

enum class Verbosity { Quiet, Normal, Detailed };

class Messages
{
  public:
    void SetVerbosity(Verbosity verbosity) { verbosity_ = verbosity; }
    void ShowProgress(bool show) { showProgress_ = show; }

    // An empty subject is left out. Bytes that cannot be printed are escaped.
    void Error(std::string_view subject, std::string_view text);
    void Warning(std::string_view subject, std::string_view text); // not when quiet
    void Note(std::string_view text);                              // about the run; not when quiet
    void Detail(std::string_view subject, std::string_view text);  // only when detailed

    // Both show a line that stands until the next message, or EraseProgress.
    void Progress(std::string_view subject, int percent);
    void Progress(std::string_view text);
    void EraseProgress();

  private:
    void SayOnce(const std::string &line);
    void Say(std::string_view line);

    Verbosity verbosity_ = Verbosity::Normal;
    bool showProgress_ = false;
    bool progressStands_ = false;
    std::set<std::string, std::less<>> said_; // lately: a run may go through any number of documents
};

} // namespace vxhost
