// The device that paints nothing and gathers words: each text of the drawing in turn, as somebody reads it.
#pragma once

#include "devices/words/LineGatherer.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace vxhost
{

class WordsDevice final : public Device
{
  public:
    static constexpr size_t kMostBytes = size_t{16} << 20; // of a text; a longer one is told as several

    using TextSink = std::function<void(const FoundText &)>;
    explicit WordsDevice(TextSink sink) : sink_(std::move(sink)) {}

    uint64_t UnknownCharacters() const { return unknown_; }

    void BeginPage(const Page &) override {}
    void Save() override {}
    void Restore() override {}
    void ClipPath(const Path &) override {}
    void FillPath(const Path &, const Paint &) override {}
    void StrokePath(const Path &, const StrokeStyle &, const Paint &) override {}
    void Shade(const Shading &) override {}
    bool CanShow(const TextFont &) override { return true; } // bytes have a meaning without a font too
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override;
    void BeginLayer(const Layer &layer) override;
    void EndLayer() override;
    Failure EndPage() override;

  private:
    void EndText();

    TextSink sink_;
    LineGatherer gathered_;
    uint64_t object_ = 0; // that is gathered
    std::vector<const Layer *> layers_;
    uint64_t unknown_ = 0;
};

} // namespace vxhost
