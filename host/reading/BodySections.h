// Knows where the interpreter stands among the sections of a document: which lines it interprets, which it passes over, and
// where it stops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vxhost
{

// Returns where the interpreter begins: behind "%%BeginSetup", or behind "%%EndSetup" in a document of version 2, which has no
// definitions. The text is the drawing, without what is around it; its size: nowhere.
size_t FindBody(std::string_view drawing, int version);

// Returns whether the line is that comment and nothing else, but for white space behind it.
bool IsWholeLine(std::string_view line, std::string_view comment);

// Returns whether lines are passed over from that comment on, if it begins or ends a section; nullopt: it does neither.
std::optional<bool> PassesOverBehind(std::string_view line);

class BodySections
{
  public:
    explicit BodySections(int version) : version_(version) {}

    enum class Fate : uint8_t { Interpret, PassOver, End };
    // Takes the next line.
    Fate Follow(std::string_view line);

    bool IsInSetup() const { return isInSetup_; }     // "%%EndSetup" is still to come
    bool PassesOver() const { return isPassedOver_; } // up to a comment
    bool ShowsHidden() const { return isInSetup_; }   // operators behind "%_" count

  private:
    Fate FateOfOthers() const { return version_ <= 2 || isInterpreted_ ? Fate::Interpret : Fate::PassOver; }
    void FollowSetup(std::string_view line);

    int version_;
    bool isInSetup_ = true;
    bool isInterpreted_ =
        false; // lines are: in encodings, from the first gradient on, and behind the setup section
    bool isPassedOver_ = false;
};

} // namespace vxhost
