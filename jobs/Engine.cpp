#include "jobs/Engine.h"

#include "host/fonts/ListedFonts.h"

#include <algorithm>
#include <utility>

namespace vxhost
{

Engine::Engine(EngineOptions options)
    : options_(std::move(options)), fonts_(options_.fonts, options_.limits, options_.mustBeConfined)
{
    installation_.plugin = std::move(options_.plugin);
    installation_.fonts = MakeBoxFonts();
}

const FontList *Engine::WaitForFonts()
{
    if (Worker *listing = fonts_.Listing()) {
        (void)Worker::WaitForAny({&listing, 1});
        fonts_.TakeList();
    }
    return fonts_.List().get();
}

const Installation &Engine::Installed()
{
    if (HasFonts())
        installation_.fonts = fonts_.List();
    return installation_;
}

FileRules &Engine::RulesWith(const std::vector<std::string> &files)
{
    const auto add = [this](const std::string &file) {
        if (!file.empty() && ruled_.insert(file).second)
            rules_.Read(file);
    };
    std::ranges::for_each(files, add);
    if (HasFonts() && !rulesHaveFonts_) {
        for (int32_t i = 0; i < fonts_.List()->Count(); ++i)
            add(fonts_.List()->At(i).file);
        rulesHaveFonts_ = true;
    }
    return rules_;
}

} // namespace vxhost
