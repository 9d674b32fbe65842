// A picture that shapes are painted on, in their order: by whoever paints them, or by a crew.
//
// A crew has the rows of the picture in lanes. Shapes are copied into batches, which are handed on when they are full; a
// shape that is larger than a batch is waited for instead. A shape reaches the lanes as edges, spans or masks, with its
// clip, so all that decides which samples it covers was done once, in one place.
#pragma once

#include "devices/raster/Crew.h"
#include "devices/raster/Lane.h"

#include <memory>
#include <vector>

namespace vxhost::raster
{

class Surface
{
  public:
    // The crew paints if there is one, and memory for its batches. It must outlive this object, like the cap.
    Surface(int width, int height, int samples, bool tracked, MemoryCap *cap, Crew *crew);
    ~Surface();
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;

    bool HasCrew() const { return crew_ != nullptr; }

    // The shape is one of those that a lane paints. It and the coat may change when this returns.
    template <class Shape>
    void Paint(const Shape &shape, const Clip &clip, const Coat &coat)
    {
        if (crew_ == nullptr)
            lanes_.front()->Paint(shape, clip, coat);
        else
            Add(shape, clip, coat);
    }

    // All is painted when this returns, and the memory for batches given back. Nothing can be read before, nor painted
    // afterwards.
    void Finish();
    const InkBuffer &BufferOf(int y) const { return lanes_[static_cast<size_t>(y / rowsPerLane_)]->Buffer(); }
    int Width() const { return lanes_.front()->Buffer().Width(); }

  private:
    class Batch;

    template <class Shape>
    void Add(const Shape &shape, const Clip &clip, const Coat &coat);
    void PostBatch();
    void WaitForAll();

    MemoryCap *const cap_;
    Crew *crew_ = nullptr;
    int rowsPerLane_;
    std::vector<std::unique_ptr<Lane>> lanes_;
    std::vector<std::unique_ptr<Batch>> batches_;
    size_t filled_ = 0; // the batch that is
};

} // namespace vxhost::raster
