#include "cli/commands/RenderCommand.h"

#include "cli/commands/Session.h"
#include "cli/options/OutputNames.h"
#include "jobs/Rendering.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

// Every failure has been told when this returns.
Status RenderOne(RenderTask task, Session *session)
{
    Rendering rendering(std::move(task), &session->Jobs());
    rendering.Wait();
    return session->Tell(rendering.Task().input, rendering.Finish()).status;
}

} // namespace

RenderCommand::RenderCommand(CLI::App *command)
{
    command
        ->add_option("-o,--output", output_,
                     "where to write; - is standard output; {stem}, {dir}, {number}, {hash}, {namehash} and "
                     "{ext} are those "
                     "of the document and the format")
        ->type_name("PATH");
    command->add_flag("--no-mkdir", noMkdir_, "make no folders for outputs that are named by a pattern");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost, and fill a terminal");
    outputOptions_.AddTo(command);
    common_.AddTo(command);
    command->footer("Examples:\n"
                    "  vx render harp.vx -o harp.pdf\n"
                    "  vx render harp.vx -o small.png --fit 256\n"
                    "  vx render harp.vx -o press.pdf --pdf-x x3\n"
                    "  vx render *.vx -f pdf,png -o 'pictures/{stem}.{ext}' --dpi 300\n"
                    "  cat harp.vx | vx render - -f svg -o - > harp.svg");
}

Status RenderCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    if (output_.empty())
        throw UsageError("no output: add -o and a name, as -o picture.pdf");
    const FormatList formats = ReadFormats(outputOptions_.format, output_);
    const std::vector<std::string> names = OutputNames(output_, options.inputs, formats);
    for (size_t i = 0; i < names.size() && !force_; ++i) {
        CheckKeepsDrawing(output_, names[i]);
        CheckKeepsTerminal(names[i], *formats[i % formats.size()]);
    }
    outputOptions_.texts.CheckMeant(SetOf(formats));
    const Settings settings = options.Complete(ReadSettings(outputOptions_.texts));
    Session session(options, CommandKind::Render, messages);
    session.CheckDevices(formats, settings);
    Status worst = session.TellOfName(output_, formats);
    auto name = names.begin();
    for (const std::string &input : options.inputs) {
        RenderTask task = {input, {}, settings};
        task.rules.makesFolders = IsPattern(output_) && !noMkdir_;
        for (const Format *format : formats)
            task.outputs.push_back({format, *name++});
        worst = Worst(worst, RenderOne(std::move(task), &session));
    }
    return worst;
}

} // namespace vxhost
