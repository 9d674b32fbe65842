// Hands the rows of plates on to several that want them.
#pragma once

#include "devices/raster/Plates.h"

#include <utility>
#include <vector>

namespace vxhost
{

class PlateTee final : public PlateSink
{
  public:
    // They must outlive this object.
    explicit PlateTee(std::vector<PlateSink *> sinks) : sinks_(std::move(sinks)) {}

    Failure Begin(const PlateSheet &sheet, std::span<const std::string> inks) override
    {
        return Each([&](PlateSink *sink) { return sink->Begin(sheet, inks); });
    }
    Failure TakeRow(std::span<const uint8_t *const> plates) override
    {
        return Each([&](PlateSink *sink) { return sink->TakeRow(plates); });
    }
    Failure End() override
    {
        return Each([](PlateSink *sink) { return sink->End(); });
    }

  private:
    // Goes on up to the first that fails.
    template <typename Call>
    Failure Each(Call &&call)
    {
        for (PlateSink *sink : sinks_) {
            if (Failure failure = call(sink))
                return failure;
        }
        return {};
    }

    std::vector<PlateSink *> sinks_;
};

} // namespace vxhost
