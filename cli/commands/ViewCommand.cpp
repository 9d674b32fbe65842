#include "cli/commands/ViewCommand.h"

#include "cli/options/CommonOptions.h"
#include "host/SystemText.h"
#include "library/OptionValues.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unistd.h>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr const char *kFolderVariable = "VX_VIEWER";

// Finds what was installed with this program, wherever that was moved to.
fs::path Installed(const char *place)
{
    std::error_code failure;
    const fs::path program = fs::read_symlink("/proc/self/exe", failure);
    if (failure)
        throw UsageError(fmt::format("vx does not find its own place, {}: mount /proc where vx is started",
                                     SystemText(failure.value())));
    return program.parent_path().parent_path() / place;
}

[[noreturn]] void RefuseWithout(const fs::path &place)
{
    throw UsageError(
        fmt::format("no viewer, {} is not there: install the package vx-desktop, or in a clone build it with "
                    "./check --web",
                    place.string()));
}

} // namespace

ViewCommand::ViewCommand(CLI::App *command)
{
    command
        ->add_option(
            "FILE", inputs_,
            "documents to show, and folders of them; - is standard input; none: the page can open them, too")
        ->type_name("");
    command->add_option("--port", port_, "the port to serve at on 127.0.0.1 (any that is free)")
        ->type_name("N");
    command->add_flag("--no-browser", opensNoBrowser_, "open no browser, but print the address alone");
    command->footer("Examples:\n"
                    "  vx view harp.vx\n"
                    "  vx view drawings\n"
                    "  vx view --no-browser --port 8000 harp.vx");
}

Status ViewCommand::Run(Messages *) const
{
    constexpr int32_t kMostPort = 65535;
    const std::optional<int32_t> port = ReadInteger(port_);
    if (!port || *port < 0 || *port > kMostPort)
        throw UsageError(fmt::format("--port {}: not a whole number from 1 to {}: give one, or leave it out",
                                     port_, kMostPort));
    if (std::ranges::count(inputs_, "-") > 1)
        throw UsageError("FILE - is given twice: standard input can be read once");

    const char *named = std::getenv(kFolderVariable);
    const fs::path folder = named == nullptr ? Installed("share/vx/viewer") : fs::path(named);
    if (access((folder / "index.html").c_str(), R_OK) != 0)
        RefuseWithout(folder / "index.html");
    const std::string program = Installed("libexec/vx/vx-viewer");
    std::vector<std::string> words = {program, folder, std::to_string(*port),
                                      opensNoBrowser_ ? "none" : "open"};
    words.insert(words.end(), inputs_.begin(), inputs_.end());
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(program.c_str(), arguments.data());
    if (errno == ENOENT)
        RefuseWithout(program);
    throw UsageError(fmt::format("{}: cannot be started, {}: install it anew", program, SystemText(errno)));
}

} // namespace vxhost
