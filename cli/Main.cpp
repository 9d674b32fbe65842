// vx: opens VX drawings. This reads the command line as far as the command, and hands over.

#include "cli/archive/EventDetail.h"
#include "cli/commands/BatchCommand.h"
#include "cli/commands/CheckCommand.h"
#include "cli/commands/CoverageCommand.h"
#include "cli/commands/DiffCommand.h"
#include "cli/commands/FontsCommand.h"
#include "cli/commands/InfoCommand.h"
#include "cli/commands/PlatesCommand.h"
#include "cli/commands/RenderCommand.h"
#include "cli/commands/TextCommand.h"
#include "cli/commands/TraceCommand.h"
#include "cli/commands/VerifyCommand.h"
#include "cli/commands/ViewCommand.h"
#include "cli/report/StandardStreams.h"
#include "cli/report/Versions.h"
#include "jobs/Interrupt.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

// Adds a command's options to the application, and returns what runs it.
using Runner = std::function<Status(Messages *)>;

template <typename Command>
Runner MakeCommand(CLI::App *app)
{
    auto command = std::make_shared<Command>(app);
    return [command](Messages *messages) { return command->Run(messages); };
}

// There is one row a command.
struct CommandRow {
    const char *name;
    const char *usage;
    const char *help;
    Runner (*make)(CLI::App *app);
};

constexpr CommandRow kCommands[] = {
    {"info", "[options] FILE...", "Tells what documents are, declare and use.", MakeCommand<InfoCommand>},
    {"render", "[options] FILE... -o OUT", "Turns documents into pictures.", MakeCommand<RenderCommand>},
    {"plates", "[options] FILE... -o OUT", "Makes a gray picture of each ink.", MakeCommand<PlatesCommand>},
    {"coverage", "[options] FILE...", "Tells how much of each ink documents take.",
     MakeCommand<CoverageCommand>},
    {"check", "[options] FILE...", "Tells what a press would get wrong in documents.",
     MakeCommand<CheckCommand>},
    {"text", "[options] FILE...", "Prints what documents say in words.", MakeCommand<TextCommand>},
    {"trace", "[options] FILE", "Prints every drawing call that a document makes.",
     MakeCommand<TraceCommand>},
    {"fonts", "[options] FILE... | --list", "Tells which fonts documents ask for, and what serves them.",
     MakeCommand<FontsCommand>},
    {"batch", "[options] [FILE|FOLDER...|-]", "Renders many documents, and tells of each in JSON.",
     MakeCommand<BatchCommand>},
    {"verify", "[options] FILE OUT", "Tells whether an output is what is made of a drawing now.",
     MakeCommand<VerifyCommand>},
    {"view", "[options] [FILE|FOLDER...|-]", "Shows documents in the browser.", MakeCommand<ViewCommand>},
    {"diff", "[options] FILE FILE", "Tells what differs between two drawings, or a drawing and an output.",
     MakeCommand<DiffCommand>},
};

constexpr const char *kExamples = "Examples:\n"
                                  "  vx render harp.vx -o harp.pdf\n"
                                  "  vx info *.vx\n"
                                  "  vx trace harp.vx | less\n"
                                  "  vx help render";

class HelpText final : public CLI::Formatter
{
  public:
    // Options that are hidden leave an empty paragraph behind.
    std::string make_help(const CLI::App *app, std::string name, CLI::AppFormatMode mode) const override
    {
        std::string text = CLI::Formatter::make_help(app, std::move(name), mode);
        for (size_t at = text.find("\n\n\n"); at != std::string::npos; at = text.find("\n\n\n"))
            text.erase(at, 1);
        return text;
    }

    std::string make_usage(const CLI::App *app, std::string) const override
    {
        for (const CommandRow &row : kCommands) {
            if (app->get_name() == row.name)
                return fmt::format("\nUsage: vx {} {}\n", row.name, row.usage);
        }
        return "\nUsage: vx COMMAND [options] FILE...\n";
    }
};

// Says in one line what CLI11 found wrong.
std::string ParseProblem(const CLI::ParseError &problem)
{
    std::string text = problem.what();
    text = text.substr(0, text.find('\n'));
    const std::string option = text.substr(0, text.find(':'));
    if (problem.get_exit_code() != static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
        return text;
    }
    if (text.find("flag override") != std::string::npos)
        return "--" + text.substr(0, text.find(' ')) + " takes no value";
    return option +
           (text.find("missing") != std::string::npos ? " needs a value" : " is given more than once");
}

// Returns the first option that the command does not know. No other word is left over: every command takes any number of files.
std::string StrayOption(const CLI::App &app)
{
    const std::vector<std::string> stray = app.remaining(true);
    return stray.empty() ? "" : stray.front();
}

[[noreturn]] void RefuseCommand(std::string_view word)
{
    std::string known;
    for (const CommandRow &row : kCommands)
        known.append(known.empty() ? "" : ", ").append(row.name);
    throw UsageError(fmt::format("no command \"{}\": give one of {}", word, known));
}

// Returns the words of the command line, "vx help render" as "vx render --help".
std::vector<char *> ReadHelp(int argc, char **argv)
{
    static char option[] = "--help";
    std::vector<char *> words(argv, argv + argc);
    if (argc < 2 || std::string_view(argv[1]) != "help")
        return words;
    if (argc > 3)
        throw UsageError("help is about one command at a time: see vx --help for which there are");
    if (argc == 3 && argv[2][0] != '-' &&
        std::ranges::find(kCommands, std::string_view(argv[2]), &CommandRow::name) == std::end(kCommands))
        RefuseCommand(argv[2]);
    words.erase(words.begin() + 1);
    words.push_back(option);
    return words;
}

Status RunCommandLine(std::vector<char *> words, Messages *messages)
{
    CLI::App app("Opens VX drawings and makes pictures of them.", "vx");
    app.set_help_flag("-h,--help", "show this");
    app.set_version_flag("-V,--version", VersionText, "show the version, and those of the libraries");
    bool tellsEvent = false;
    app.add_flag("--event-detail", tellsEvent,
                 "tell with what outputs are made, in a line for a preservation system");
    app.footer(kExamples);
    app.formatter(std::make_shared<HelpText>());
    app.require_subcommand(0, 1);
    std::vector<std::pair<CLI::App *, Runner>> runners;
    for (const CommandRow &row : kCommands) {
        CLI::App *command = app.add_subcommand(row.name, row.help);
        command->group("Commands");
        // The options of all commands take longer to set up than a small drawing to read.
        if (std::ranges::find(words, std::string_view(row.name)) == words.end())
            continue;
        command->set_help_flag("-h,--help", "show this");
        command->allow_extras();
        runners.emplace_back(command, row.make(command));
        for (CLI::Option *option : command->get_options())
            option->disable_flag_override(
                option->get_type_name().empty()); // most flags are given or not, and have no value
    }
    app.allow_extras();

    // Every word behind "--" is a FILE, whatever it looks like.
    const auto mark = std::ranges::find(words, std::string_view("--"));
    try {
        app.parse(static_cast<int>(mark - words.begin()), words.data());
    } catch (const CLI::ParseError &end) {
        if (end.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            std::ostringstream asked;
            (void)app.exit(end, asked, asked);
            return PrintResult(asked.str(), messages) ? Status::Done : Status::OutputFailed;
        }
        const std::string command = words[1][0] == '-' ? "" : std::string(words[1]) + " ";
        throw UsageError(fmt::format("{}: see vx {}--help", ParseProblem(end), command));
    }

    for (const auto &[command, run] : runners) {
        if (!command->parsed())
            continue;
        if (const std::string stray = StrayOption(*command); !stray.empty())
            throw UsageError(
                fmt::format("no option \"{}\": vx {} --help lists them", stray, command->get_name()));
        CLI::Option *files = command->get_option("FILE");
        for (auto file = mark; file < words.end() && ++file < words.end();)
            files->add_result(*file);
        if (files->count() > 0)
            files->run_callback();
        return run(messages);
    }
    if (tellsEvent && app.remaining(true).empty())
        return PrintResult(EventDetail() + "\n", messages) ? Status::Done : Status::OutputFailed;
    if (const std::string stray = StrayOption(app); !stray.empty()) {
        if (stray[0] != '-')
            RefuseCommand(stray);
        throw UsageError(fmt::format("no option \"{}\": see vx --help", stray));
    }
    std::fputs(app.help().c_str(), stderr);
    return Status::Usage;
}

} // namespace

} // namespace vxhost

int main(int argc, char **argv)
{
    using namespace vxhost;
    if (!PrepareStreams())
        return static_cast<int>(Status::OutputFailed); // a message might have nowhere to go
    Messages messages;
    CatchInterrupts(static_cast<int>(Status::Interrupted));
    Status status = Status::Usage;
    try {
        status = RunCommandLine(ReadHelp(argc, argv), &messages);
    } catch (const EarlyEnd &error) {
        messages.Error("", error.what());
        status = error.status;
    } catch (const OptionError &error) {
        messages.Error("", error.what());
    } catch (const std::bad_alloc &) {
        messages.Error("", "not enough memory to begin: close other programs");
        status = Status::LimitHit;
    } catch (const std::exception &error) {
        messages.Error("", error.what());
        status = Status::InputFailed;
    }
    return static_cast<int>(status);
}
