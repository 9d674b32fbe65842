#include "cli/options/FolderWalk.h"

#include "cli/options/IsDrawing.h"
#include "host/SystemText.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

// A file that may not be read is told of when it is to be drawn: nobody knows what it is.
bool MayBeDrawing(const std::string &path)
{
    return access(path.c_str(), R_OK) != 0 || IsDrawing(path);
}

std::string Below(const std::string &folder, const std::string &name)
{
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

} // namespace

FolderWalk::FolderWalk(const std::string &folder, bool takesAll) : takesAll_(takesAll)
{
    first_ = Enter(folder, ".");
}

std::optional<FoundFile> FolderWalk::Next()
{
    if (first_)
        return std::exchange(first_, std::nullopt);
    while (!levels_.empty()) {
        Level &level = levels_.back();
        if (level.names.empty()) {
            levels_.pop_back();
            continue;
        }
        const std::string name = std::move(level.names.back());
        level.names.pop_back();
        const std::string path = Below(level.folder, name);
        std::error_code failure;
        const fs::file_type type = fs::symlink_status(path, failure).type();
        if (type == fs::file_type::symlink)
            return FoundFile{FoundFile::Kind::Link, path, level.relative, ""};
        if (type == fs::file_type::directory) {
            const std::string relative = level.relative == "." ? name : level.relative + '/' + name;
            if (std::optional<FoundFile> unreadable = Enter(path, relative))
                return unreadable;
        } else if (type == fs::file_type::regular && (takesAll_ || MayBeDrawing(path))) {
            return FoundFile{FoundFile::Kind::Document, path, level.relative, ""};
        } else if (type != fs::file_type::not_found) {
            ++passedOver_;
        }
    }
    return std::nullopt;
}

// Returns what is told when the folder cannot be looked through.
std::optional<FoundFile> FolderWalk::Enter(const std::string &folder, const std::string &relative)
{
    Level level = {folder, relative, {}};
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end; at.increment(failure))
        level.names.push_back(at->path().filename().string());
    if (failure)
        return FoundFile{FoundFile::Kind::Unreadable, folder, relative,
                         fmt::format("the folder cannot be looked through, {}: check who may read it",
                                     SystemText(failure.value()))};
    std::ranges::sort(level.names, std::greater<>());
    levels_.push_back(std::move(level));
    return std::nullopt;
}

} // namespace vxhost
