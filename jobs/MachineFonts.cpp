#include "jobs/MachineFonts.h"

#include "host/fonts/ListedFonts.h"
#include "jobs/LateLibraries.h"
#include "jobs/Sandbox.h"
#include "library/pipe/Answer.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

// Whether fontconfig can keep there what it finds. A folder that is missing is made, which fontconfig would do itself, and
// can no longer do when it is confined.
bool CanKeep(const std::string &folder)
{
    std::error_code failure;
    fs::create_directories(folder, failure);
    return access(folder.c_str(), W_OK) == 0;
}

// It keeps all in the first folder where it can.
Confinement ConfineToFonts(const std::vector<std::string> &cacheFolders)
{
    FileRules rules;
    rules.ReadAll();
    const auto folder = std::ranges::find_if(cacheFolders, CanKeep);
    if (folder != cacheFolders.end())
        rules.WriteIn(*folder);
    return EnterSandbox(rules, CallRules(SystemCalls::OfListingFonts));
}

struct NotConfined {
};

} // namespace

WorkerLimits LimitsOfListing(WorkerLimits limits)
{
    if (limits.seconds == 0)
        limits.seconds = WorkerLimits().seconds;
    limits.output.reset();
    return limits.For(0);
}

MachineFonts::MachineFonts(FontSources sources, const WorkerLimits &limits, bool mustBeConfined)
    : sources_(std::move(sources)), limits_(LimitsOfListing(limits)), mustBeConfined_(mustBeConfined)
{
}

Worker *MachineFonts::Listing()
{
    if (worker_ == nullptr && list_ == nullptr && !fault_)
        Start();
    return worker_.get();
}

void MachineFonts::Start()
{
    WorkerTask task;
    task.mostAnswer = kMaxFontAnswer;
    task.run = [this](WorkerLink &) { return ListFonts(); };
    int error = 0;
    worker_ = Worker::Start(limits_, task, &error);
    if (worker_ == nullptr)
        fault_ = {FaultKind::NoWorker, "", error, true};
}

// Runs in the worker.
std::string MachineFonts::ListFonts() const
{
    LoadLate(LateLibraries::OfListingFonts);
    if (!sources_.memory.empty())
        LoadLate(LateLibraries::OfFonts);
    Confinement confinement;
    try {
        const auto fonts = MakeFontconfigFonts(sources_, [&](const std::vector<std::string> &cacheFolders) {
            confinement = ConfineToFonts(cacheFolders);
            if (mustBeConfined_ && !confinement.IsWhole())
                throw NotConfined();
        });
        return WriteFonts(*fonts, confinement);
    } catch (const NotConfined &) {
        return WriteFonts(*MakeBoxFonts(), confinement);
    }
}

void MachineFonts::TakeList()
{
    if (worker_ == nullptr || !worker_->HasEnded())
        return;
    WorkerEnd end = worker_->TakeEnd();
    worker_.reset();
    fault_ = std::move(end.fault);
    std::optional<FontAnswer> answer = ReadFonts(end.answer);
    if (!fault_ && !answer)
        fault_.kind = FaultKind::BadAnswer;
    if (answer)
        confinement_ = answer->confinement;
    if (!fault_ && mustBeConfined_ && !confinement_.IsWhole())
        fault_.kind = FaultKind::NotConfined;
    fault_.isOfFontListing = true;
    if (fault_)
        return;
    list_ = std::move(answer->fonts);
    omitted_ = answer->omitted;
}

} // namespace vxhost
