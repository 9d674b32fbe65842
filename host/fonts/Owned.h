// A C library's object that is released with one of its functions.
#pragma once

#include <memory>

namespace vxhost
{

template <auto kRelease>
struct Releaser {
    template <typename Object>
    void operator()(Object *object) const
    {
        kRelease(object);
    }
};

template <typename Object, auto kRelease>
using Owned = std::unique_ptr<Object, Releaser<kRelease>>;

} // namespace vxhost
