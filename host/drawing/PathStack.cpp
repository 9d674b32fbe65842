#include "host/drawing/PathStack.h"

#include <algorithm>

namespace vxhost
{

namespace
{

constexpr size_t kFirstVerbs = 16;
constexpr size_t kPointsAVerb = 3; // at most
constexpr size_t kSparePaths = 1;  // one serves the usual gsave, fill, grestore

size_t HeldBytes(const Path &path)
{
    return path.verbs.capacity() * sizeof(Verb) + path.points.capacity() * sizeof(Point);
}

// Room for needed elements, growing by half as much again so that appending stays cheap.
template <typename Element>
void Grow(std::vector<Element> *elements, size_t needed, MemoryBudget *budget)
{
    if (needed <= elements->capacity())
        return;
    const size_t capacity = std::max(needed, elements->capacity() + elements->capacity() / 2);
    budget->Take((capacity - elements->capacity()) * sizeof(Element));
    elements->reserve(capacity);
}

} // namespace

PathStack::PathStack(MemoryBudget *budget) : budget_(budget), paths_(1), current_(&paths_.front()) {}

void PathStack::MakeRoom()
{
    Grow(&current_->verbs, std::max(current_->verbs.size() + 1, kFirstVerbs), budget_);
    Grow(&current_->points, std::max(current_->points.size() + kPointsAVerb, kFirstVerbs), budget_);
}

void PathStack::Clear()
{
    if (SharedVerbs() == 0) {
        current_->Clear();
        return;
    }
    if (index_ + 1 == paths_.size()) {
        budget_->Take(sizeof(Path));
        paths_.emplace_back();
    }
    // What this level added to a shared path is cut off when the lower level comes back.
    current_ = &paths_[++index_];
}

bool PathStack::ReplaceLastMove(Point to)
{
    if (current_->verbs.size() <= SharedVerbs() || current_->verbs.back() != Verb::Move)
        return false;
    current_->points.back() = to;
    return true;
}

void PathStack::Save()
{
    budget_->Take(sizeof(Mark));
    marks_.push_back(floor_);
    floor_ = {index_, current_->verbs.size(), current_->points.size()};
}

void PathStack::Restore()
{
    if (index_ != floor_.path) {
        current_->Clear();
        index_ = floor_.path;
        current_ = &paths_[index_];
    }
    current_->verbs.resize(floor_.verbs);
    current_->points.resize(floor_.points);
    floor_ = marks_.back();
    marks_.pop_back();
    budget_->Give(sizeof(Mark));

    while (paths_.size() > index_ + 1 + kSparePaths) {
        budget_->Give(HeldBytes(paths_.back()) + sizeof(Path));
        paths_.pop_back();
    }
}

} // namespace vxhost
