// The current path of every save level.
//
// A save copies nothing: the level above goes on in the same storage, and coming back cuts it to the length it
// had. Only a level that drops a path that a lower level still needs (a fill inside of gsave and grestore) moves
// on to storage of its own. So a save costs the same however long the path is, and all levels together hold
// no more than the segments that were built.
#pragma once

#include "host/drawing/MemoryBudget.h"
#include "host/drawing/Path.h"

#include <cstddef>
#include <deque>
#include <vector>

namespace vxhost
{

class PathStack
{
  public:
    // The budget must outlive this object. Whatever needs more than it has throws BudgetSpent.
    explicit PathStack(MemoryBudget *budget);
    PathStack(const PathStack &) = delete;
    PathStack &operator=(const PathStack &) = delete;

    const Path &Current() const { return *current_; }

    // Adds a verb and its points.
    template <typename... Points>
    void Append(Verb verb, Points... points)
    {
        Path &path = *current_;
        if (path.verbs.size() == path.verbs.capacity() ||
            path.points.capacity() - path.points.size() < sizeof...(points))
            MakeRoom();
        path.verbs.push_back(verb);
        (path.points.push_back(points), ...);
    }

    // Drops the path of this level; lower levels keep theirs.
    void Clear();

    // Puts to in place of the last Move, if that is what the path ends in and no lower level needs it.
    bool ReplaceLastMove(Point to);

    void Save();
    void Restore(); // pairs with a Save

  private:
    struct Mark {
        size_t path = 0; // index in paths_
        size_t verbs = 0;
        size_t points = 0;
    };

    void MakeRoom();
    size_t SharedVerbs() const { return floor_.path == index_ ? floor_.verbs : 0; }

    MemoryBudget *budget_;
    std::deque<Path> paths_; // those after index_ are spare, and empty
    size_t index_ = 0;
    Path *current_;
    Mark floor_;              // what the level below had when this one began
    std::vector<Mark> marks_; // the floors of the levels below
};

} // namespace vxhost
