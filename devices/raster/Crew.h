// The threads that paint a picture along with the one that reads the document.
//
// The raster device makes none itself: who may make threads gives it a crew.
#pragma once

#include <cstddef>
#include <functional>

namespace vxhost
{

// Paints in lanes, which take batches of shapes. A lane takes each batch once, in the order in which they are posted, and
// takes one at a time; different lanes do not wait for each other. All calls come from one thread, which works along
// whenever it would have to wait.
class Crew
{
  public:
    using Work = std::function<void(size_t lane, size_t batch)>;

    Crew() = default;
    Crew(const Crew &) = delete;
    Crew &operator=(const Crew &) = delete;
    virtual ~Crew() = default;

    // Returns how many threads there are, the caller's among them.
    virtual size_t Size() const = 0;

    // Begins with no batch posted. Batch 0 is filled first, of so many that are used again and again.
    virtual void Begin(size_t lanes, size_t batches, Work work) = 0;
    // Hands on the batch that was filled. Returns that which is filled next, once all lanes are done with it.
    virtual size_t Post() = 0;
    // Returns when all lanes are done with all that was posted. These two throw what the work has thrown.
    virtual void Finish() = 0;
    // Lets go of the work, of which no more is begun. Returns when none goes on.
    virtual void Stop() noexcept = 0;
};

} // namespace vxhost
