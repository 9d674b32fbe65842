#include "library/interface/Pass.h"

#include "host/reading/Utf8.h"
#include "library/interface/Calls.h"
#include "library/interface/Telling.h"

#include <algorithm>
#include <limits>

namespace vxhost
{

namespace
{

// Gives each shape to another device, unless time is up or the caller's output came to its end.
class WatchedDevice final : public Device
{
  public:
    WatchedDevice(Device *device, const Watch &watch) : device_(device), watch_(watch) {}

    void BeginPage(const Page &page) override { device_->BeginPage(page); }
    void Save() override { device_->Save(); }
    void Restore() override { device_->Restore(); }
    void ClipPath(const Path &path) override { Checked().ClipPath(path); }
    void FillPath(const Path &path, const Paint &paint) override { Checked().FillPath(path, paint); }
    void StrokePath(const Path &path, const StrokeStyle &style, const Paint &paint) override
    {
        Checked().StrokePath(path, style, paint);
    }
    void Shade(const Shading &shading) override { Checked().Shade(shading); }
    bool CanShow(const TextFont &font) override { return device_->CanShow(font); }
    void ShowText(std::span<const GlyphRun> runs, const TextPaint &paint) override
    {
        Checked().ShowText(runs, paint);
    }
    bool PaintsGlyphs(const Matrix &emsToPage) const override { return device_->PaintsGlyphs(emsToPage); }
    void BeginGlyphs(const Matrix &emsToPage, const Paint &paint) override
    {
        Checked().BeginGlyphs(emsToPage, paint);
    }
    void FillGlyph(const Path &outline, uint64_t number, Point origin) override
    {
        device_->FillGlyph(outline, number, origin);
    }
    void BeginLayer(const Layer &layer) override { device_->BeginLayer(layer); }
    void EndLayer() override { device_->EndLayer(); }
    void BeginGroup() override { device_->BeginGroup(); }
    void EndGroup() override { device_->EndGroup(); }
    Failure EndPage() override { return device_->EndPage(); }
    bool WantsPageAgain() const override { return device_->WantsPageAgain(); }
    uint64_t PlacedTexts() const override { return device_->PlacedTexts(); }

  private:
    Device &Checked()
    {
        watch_.CheckTime();
        return *device_;
    }

    Device *device_;
    const Watch &watch_;
};

vx_match MatchOf(FontMatch match)
{
    switch (match) {
    case FontMatch::Exact:
        return VX_FONT_EXACT;
    case FontMatch::StandIn:
        return VX_FONT_STAND_IN;
    case FontMatch::Substitute:
        return VX_FONT_SUBSTITUTE;
    default:
        return VX_FONT_BOXES;
    }
}

void Keep(const Outcome &outcome, vx_document *document)
{
    document->warnings = ListTold(outcome);
    document->fonts.reserve(outcome.fonts.size()); // the texts stay where they are
    for (const FontUse &font : outcome.fonts) {
        auto &kept = document->fonts.emplace_back();
        kept.asked = ToUtf8(font.asked);
        kept.served = ToUtf8(font.served);
        kept.use = {sizeof kept.use, kept.asked.c_str(), kept.served.c_str(), MatchOf(font.match),
                    font.strings,    font.characters,    font.missingGlyphs};
    }
}

} // namespace

void Watch::CheckTime() const
{
    const double most = document_.settings.seconds;
    if (most <= 0 || !pause_.IsOver())
        return;
    const Clock::time_point now = Clock::now();
    if (std::chrono::duration<double>(now - start_).count() > most)
        ThrowOutOfTime(document_.settings);
    pause_.Begin(now - looked_);
    looked_ = now;
}

void Watch::CheckProgress(int64_t done, int64_t total) const
{
    CheckTime();
    if (document_.progress != nullptr && document_.progress(document_.progressContext, done, total) != 0)
        throw CallError(VX_STOPPED, "stopped by its progress procedure");
}

ByteSinks WrittenBytes::Sinks(bool isWrittenInOrder)
{
    return {
        [this, isWrittenInOrder](std::span<const std::byte> bytes) { return Take(bytes, !isWrittenInOrder); },
        [this](uint64_t at, std::span<const std::byte> bytes) {
            std::ranges::copy(bytes, held_.begin() + static_cast<ptrdiff_t>(at));
            return Failure();
        },
        {[this](std::span<const std::byte> bytes) {
             scratch_.insert(scratch_.end(), bytes.begin(), bytes.end());
             return Failure();
         },
         [this](uint64_t at, std::span<std::byte> bytes) {
             std::copy_n(scratch_.begin() + static_cast<ptrdiff_t>(at), bytes.size(), bytes.begin());
             return Failure();
         }}};
}

Failure WrittenBytes::Take(std::span<const std::byte> bytes, bool isHeld)
{
    const auto size = static_cast<int64_t>(bytes.size());
    isOver_ = isOver_ || (most_ > 0 && size > most_ - count_);
    count_ += size;
    if (isHeld && !isOver_)
        held_.insert(held_.end(), bytes.begin(), bytes.end());
    else
        isStopped_ = isStopped_ || (!isOver_ && write_(context_, bytes.data(), bytes.size()) != 0);
    return isOver_ || isStopped_ ? Failure{FailureKind::CannotWrite} : Failure{};
}

void WrittenBytes::HandOver()
{
    isStopped_ = !held_.empty() && write_(context_, held_.data(), held_.size()) != 0;
    Check();
}

void WrittenBytes::Check() const
{
    if (isStopped_)
        throw CallError(VX_STOPPED, "stopped by its write procedure");
    if (isOver_)
        ThrowOutputTooLong(most_);
}

Outcome RunPass(vx_document *document, const WrittenBytes *written,
                const std::function<Outcome(Reading &, const Watch &)> &action, bool readsTexts)
{
    document->warnings.clear();
    document->fonts.clear();
    const Watch watch(*document);
    ReadingOptions options = ReadingOptionsOf(document->settings);
    options.served = document->choices.served;
    options.readsTexts |= readsTexts;
    options.onProgress = [&](int64_t done, int64_t total) {
        watch.CheckProgress(done, total);
        if (written != nullptr)
            written->Check();
    };
    Reading reading(*document->installation, *document->bytes, std::move(options), document->unpacked);
    document->unpacked = reading.WhatWasUnpacked();
    Outcome outcome = action(reading, watch);
    if (document->bytes->HasChanged())
        ThrowChanged();
    Keep(outcome, document);
    if (written != nullptr)
        written->Check();
    CheckOutcome(outcome, document->header, document->bytes->Bytes().size(), document->settings);
    return outcome;
}

Device &CheckMade(const std::unique_ptr<Device> &device, const std::string &error)
{
    if (device == nullptr)
        throw OptionError(error);
    return *device;
}

void DrawPass(vx_document *document, const Page &laidOut, Device *device, const WrittenBytes *written)
{
    (void)RunPass(document, written, [&](Reading &reading, const Watch &watch) {
        WatchedDevice watched(device, watch);
        Page page = reading.PageFor(laidOut.box);
        page.sheet = laidOut.sheet;
        page.tooWide = laidOut.tooWide;
        page.tooHigh = laidOut.tooHigh;
        return reading.Draw(page, watched);
    });
}

Page LayOutPage(vx_document *document)
{
    Page page;
    const PageOptions &options = document->settings.page;
    if (options.isPainted)
        (void)RunPass(document, nullptr,
                      [&](Reading &reading, const Watch &) { return FindPage(options, reading, &page); });
    else
        LayOut(options, options.box.value_or(document->box), &page);
    CheckShown(page.box);
    return page;
}

} // namespace vxhost
