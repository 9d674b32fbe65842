#include "devices/words/WordsDevice.h"

namespace vxhost
{

void WordsDevice::ShowText(std::span<const GlyphRun> runs, const TextPaint &paint)
{
    if (paint.object.number != object_ || gathered_.Bytes() > kMostBytes)
        EndText();
    object_ = paint.object.number;
    for (const GlyphRun &run : runs) {
        if (!run.isRepeated)
            gathered_.Add(run, paint);
    }
}

void WordsDevice::BeginLayer(const Layer &layer)
{
    EndText();
    layers_.push_back(&layer);
}

void WordsDevice::EndLayer()
{
    EndText();
    layers_.pop_back();
}

Failure WordsDevice::EndPage()
{
    EndText();
    return {};
}

void WordsDevice::EndText()
{
    FoundText text = gathered_.Take();
    if (text.lines.empty())
        return;
    text.layer = layers_.empty() ? nullptr : layers_.back();
    unknown_ += text.unknownCharacters;
    sink_(text);
}

} // namespace vxhost
