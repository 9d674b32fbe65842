#include "jobs/MachineFonts.h"

#include "host/fonts/ListedFonts.h"
#include "jobs/Answer.h"
#include "jobs/Sandbox.h"

#include <optional>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

// A cache folder that is not there yet is made as fontconfig would make it, which it can no longer do afterwards.
Confinement ConfineToFonts(const std::vector<std::string> &cacheFolders)
{
    constexpr mode_t kMode = 0755;
    FileRules rules;
    rules.ReadAll();
    for (const std::string &folder : cacheFolders) {
        (void)mkdir(folder.c_str(), kMode); // where it cannot be made, nothing is kept
        rules.WriteIn(folder);
    }
    return EnterSandbox(rules, SystemCalls::OfListingFonts);
}

struct NotConfined {
};

} // namespace

MachineFonts::MachineFonts(FontSources sources, const WorkerLimits &limits, bool mustBeConfined)
    : sources_(std::move(sources)), limits_(limits), mustBeConfined_(mustBeConfined)
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
