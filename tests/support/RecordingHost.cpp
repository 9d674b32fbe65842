#include "tests/support/RecordingHost.h"

#include "host/fonts/FixedFontList.h"
#include "host/resources/StringLists.h"
#include "plugin/entry/VXParser.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

namespace vxtest
{

namespace
{

struct alignas(std::max_align_t) BlockHeader {
    int32_t size;
};

void AddLine(void *lines, std::string_view text)
{
    static_cast<std::vector<std::string> *>(lines)->emplace_back(text);
}

} // namespace

RecordingHost::RecordingHost()
    : writer_({AddLine, &lines}), table_(&writer_),
      tableBefore_(*table_.Procs()), stream_{{Read}, this}, memory_{Allocate, Release, this}
{
    record.reader = &stream_.reader;
    record.drawing = table_.Drawing();
    record.procs = table_.Procs();
    record.memory = &memory_;
    record.report = vxhost::ReportToHost;
    toolbox.onReport = [this](const std::string &title, const std::string &) { return Report(title); };
}

std::string RecordingHost::Joined() const
{
    std::string all;
    for (const std::string &line : lines) {
        if (!all.empty())
            all += "; ";
        all += line;
    }
    return all;
}

bool RecordingHost::TableIsAsItWas()
{
    const ZRKProcs &now = *table_.Procs();
    return now.version == tableBefore_.version && now.count == tableBefore_.count &&
           std::ranges::equal(now.entry, tableBefore_.entry);
}

void RecordingHost::SetDocument(std::string bytes)
{
    document_ = std::move(bytes);
    position_ = 0;
    record.streamLength = static_cast<int32_t>(document_.size());
}

int16_t RecordingHost::Call(int32_t selector)
{
    vxhost::FixedFontList fonts(fontNames);
    fonts.widthOf = widthOf;
    toolbox.fonts = &fonts;
    toolbox.widths = &fonts;
    toolbox.systemScript = systemScript;
    tableBefore_ = *table_.Procs();

    constexpr int16_t kNotWritten = 0x5A5A;
    int16_t result = kNotWritten;
    {
        const vxhost::HostScope scope(&toolbox);
        VXParserMain(selector, &record, nullptr, &result);
    }
    toolbox.fonts = nullptr;
    toolbox.widths = nullptr;
    if (toolbox.failure != nullptr)
        std::rethrow_exception(std::exchange(toolbox.failure, nullptr));
    return result;
}

int16_t RecordingHost::Parse(std::string document)
{
    SetDocument(std::move(document));
    return Call(kVXParse);
}

int32_t RecordingHost::Read(StreamReader *reader, int32_t op, void *arg, int32_t *inout)
{
    RecordingHost *self = reinterpret_cast<Stream *>(reader)->host;
    if (op == kVXSetPosition)
        self->position_ = std::min(static_cast<size_t>(std::max(*inout, 0)), self->document_.size());
    else if (op == kVXReadBytes)
        *inout = self->Deliver(arg, *inout);
    return 0;
}

int32_t RecordingHost::Deliver(void *to, int32_t wanted)
{
    const std::string_view left = std::string_view(document_).substr(position_);
    const auto there = static_cast<int32_t>(std::min(left.size(), static_cast<size_t>(std::max(wanted, 0))));
    const int32_t told = readCount ? readCount(left, wanted) : there;
    const int32_t count = std::clamp(told, 0, there);
    std::memcpy(to, left.data(), static_cast<size_t>(count));
    deliveries.push_back({position_, count, count < there});
    position_ += static_cast<size_t>(count);
    return told;
}

bool RecordingHost::DoesNextAllocationFail()
{
    ++allocations;
    const bool isTheOne = failAllocation > 0 && --failAllocation == 0;
    if (failFromAllocation > 1)
        --failFromAllocation;
    else if (failFromAllocation == 1)
        return true;
    return isTheOne;
}

void *RecordingHost::Allocate(int32_t size, void *refcon)
{
    auto *self = static_cast<RecordingHost *>(refcon);
    if (self->DoesNextAllocationFail() || size < 0)
        return nullptr;
    void *memory = std::malloc(sizeof(BlockHeader) + static_cast<size_t>(size));
    if (memory == nullptr)
        return nullptr;
    ++self->liveBlocks;
    self->liveBytes += size;
    self->peakBytes = std::max(self->peakBytes, self->liveBytes);
    auto *block = new (memory) BlockHeader{size} + 1;
    // A parse that counts on zeros finds something else.
    std::memset(static_cast<void *>(block), 0xA5, static_cast<size_t>(size));
    return block;
}

void RecordingHost::Release(void *block, void *refcon)
{
    if (block == nullptr)
        return;
    auto *self = static_cast<RecordingHost *>(refcon);
    auto *header = static_cast<BlockHeader *>(block) - 1;
    --self->liveBlocks;
    self->liveBytes -= header->size;
    std::free(header);
}

bool RecordingHost::Report(const std::string &title)
{
    const int number = vxhost::FindProblem(title);
    table_.Report(number);
    return stopAtReport || (refuseFonts && number == kVXProblemFont) ||
           std::ranges::find(stopOnReport, number) != stopOnReport.end();
}

} // namespace vxtest
