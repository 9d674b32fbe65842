// Clips as groups that are clipped: one inside the other where clips intersect.
//
// A group is closed when the clip that it stands for is restored away. Readers of markup give up where elements nest too
// deeply, so beyond a depth that no drawing needs a clip leaves the groups alone: it refers to the clip around it, and
// takes the place of the innermost group.
#pragma once

#include "devices/svg/XmlWriter.h"
#include "host/drawing/Path.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vxhost::svg
{

class Clips
{
  public:
    Clips(const Matrix &toPicture, XmlWriter *xml) : toPicture_(toPicture), xml_(xml) {}

    void Save() { levels_.push_back(current_); }
    void Restore();
    // Nothing is painted under an empty path.
    void Intersect(const Path &path);
    // Intersects with the path whose data writeData writes: it may be too long to be kept.
    void IntersectWith(const std::function<void()> &writeData);
    void End();

    bool IsEmpty() const { return current_.isEmpty; }

  private:
    struct Level {
        uint64_t clip = 0;  // of the innermost group; 0: none
        uint32_t depth = 0; // groups that are open
        bool isEmpty = false;
    };

    void OpenGroup(uint64_t clip);
    void CloseGroup() { xml_->Markup("</g>\n"); }

    Matrix toPicture_;
    XmlWriter *xml_;
    Level current_;
    std::vector<Level> levels_;
    uint64_t lastClip_ = 0;
};

} // namespace vxhost::svg
