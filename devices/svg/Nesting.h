// Clips, layers and groups as elements around what is painted.
//
// A clip is a group that is clipped, one inside the other where clips intersect. Layers stand around the clips: where one begins
// or ends within a clip, the clip's group is closed, and opened again when something is painted under it. A group of the drawing
// stands where it began among the clips; it ends with the clip that it began in, and one of fewer than two elements is not
// written: until the second comes, the first is held back.
//
// Readers of markup give up where elements nest too deeply, so beyond a depth that no drawing needs a clip leaves the groups
// alone: it refers to the clip around it, and takes the place of the innermost group.
#pragma once

#include "devices/svg/XmlWriter.h"
#include "host/drawing/Layer.h"
#include "host/drawing/Path.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vxhost::svg
{

class Nesting
{
  public:
    Nesting(const Matrix &toPicture, XmlWriter *xml) : toPicture_(toPicture), xml_(xml) {}

    void Save() { levels_.push_back({entries_.size(), isEmpty_}); }
    void Restore();
    // Nothing is painted under an empty path.
    void Intersect(const Path &path);
    // Intersects with the path whose data writeData writes: it may be too long to be kept.
    void IntersectWith(const std::function<void()> &writeData);

    void BeginLayer(const Layer &layer);
    void EndLayer();
    void BeginGroup();
    void EndGroup();

    // Comes before each element that is painted.
    void BeginElement()
    {
        if (hasClosed_ || held_ > 0 || unmarked_ > 0)
            OpenEntries();
    }
    void End();

    bool IsEmpty() const { return isEmpty_; }

  private:
    enum class Kind : uint8_t { Layer, Clip, Group };
    // A document may have millions of clips in one another.
    struct Entry {
        uint64_t value =
            0; // Clip: its number; Group: where it begins if it is written, 0 as long as that is open
        uint32_t elements = 0; // Group: those in it
        Kind kind = Kind::Clip;
        bool isOpen = false;   // its element is
        bool replaces = false; // Clip: its group takes the place of that of the clip around it
    };
    struct Level {
        size_t entries = 0; // how many there are; layers come and go beneath them
        bool isEmpty = false;
    };

    void OpenEntries();
    void Open(size_t index);
    void CloseDownTo(size_t count);
    void RemoveFrom(size_t index);
    void MarkGroups();
    void WriteGroups(uint32_t least);
    void Forget(const Entry &group);
    void ReleaseText();
    void ShiftLevels(size_t index, int by);

    Matrix toPicture_;
    XmlWriter *xml_;
    std::vector<Entry> entries_;        // the outermost first: layers, then clips and groups
    std::vector<const Layer *> layers_; // of the first entries
    std::vector<Level> levels_;
    std::vector<bool> groups_; // those that have not ended: whether a clip's end has ended them
    bool isEmpty_ = false;
    bool hasClosed_ = false; // elements of entries were closed that are to be opened again
    size_t unmarked_ = 0;    // groups in which nothing has been written
    size_t held_ = 0;        // groups that wait for their second element
    uint64_t lastClip_ = 0;
};

} // namespace vxhost::svg
