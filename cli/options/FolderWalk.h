// Goes through a folder and all below it, and finds the drawings in them: by what is in a file, not by its name.
//
// Names come in the order of their bytes, so that every walk of the same folder is the same. It holds the names of the folders
// that it is in, and no others. Symbolic links are not followed: one may lead out of the folder, or in a circle.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct FoundFile {
    enum class Kind { Document, Link, Unreadable };
    Kind kind = Kind::Document;
    std::string path;     // begins with the folder as it was named
    std::string relative; // where its folder lies below that one; "." for the folder itself
    std::string error;    // Unreadable: why a folder cannot be looked through
};

class FolderWalk
{
  public:
    // takesAll: every file counts as a document.
    FolderWalk(const std::string &folder, bool takesAll);

    // Returns none when there are no more.
    std::optional<FoundFile> Next();
    size_t PassedOver() const { return passedOver_; } // files that are no drawings

  private:
    struct Level {
        std::string folder;
        std::string relative;
        std::vector<std::string> names; // still to come, the last first
    };

    std::optional<FoundFile> Enter(const std::string &folder, const std::string &relative);

    bool takesAll_;
    size_t passedOver_ = 0;
    std::vector<Level> levels_;
    std::optional<FoundFile> first_; // why the folder itself cannot be looked through
};

} // namespace vxhost
