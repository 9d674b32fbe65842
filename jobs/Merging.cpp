#include "jobs/Merging.h"

#include "devices/pdf/JoinedPdf.h"
#include "jobs/ConfinedWork.h"

#include <array>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

// Reads until there are so many bytes, or no more. What cannot be read is missing, which a caller sees.
std::string ReadAt(int descriptor, uint64_t from, size_t count)
{
    std::string bytes(count, 0);
    size_t done = 0;
    while (done < count) {
        const ssize_t got =
            pread(descriptor, bytes.data() + done, count - done, static_cast<off_t>(from + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

Counts Sum(Counts counts, const Counts &more)
{
    counts.fills += more.fills;
    counts.strokes += more.strokes;
    counts.clips += more.clips;
    counts.segments += more.segments;
    return counts;
}

} // namespace

Merging::Merging(MergeTask task, Engine *engine) : task_(std::move(task)), engine_(engine)
{
    task_.settings.pdf.isToBeJoined = true;
    result_.output = task_.output;
    output_ = OutputFile::Create(task_.output, task_.rules, &result_.fault);
    if (output_ != nullptr)
        kept_ = OutputFile::CreateUnnamed(task_.rules, &result_.fault);
}

Result Merging::AddPage(const std::string &input, const std::string &name)
{
    Fault fault;
    RenderTask task = {input, {}, task_.settings};
    const uint64_t from = keptBytes_;
    task.outputs.push_back({FindFormat("pdf"), "", [&](int descriptor) { fault = Append(descriptor); }});
    Rendering rendering(std::move(task), engine_);
    rendering.Wait();
    Result result = rendering.Finish();
    result.written.clear(); // it is not in a place of its own
    if (fault) {
        result.fault = fault;
        result.output = task_.output;
    }
    if (result.fault) {
        keptBytes_ = from;
        return result;
    }
    if (pages_.empty())
        result_.outcome.date = result.outcome.date; // the file has that of its first page
    result_.outcome.counts = Sum(result_.outcome.counts, result.outcome.counts);
    pages_.push_back({from, keptBytes_ - from, result.header.title.empty() ? name : result.header.title});
    return result;
}

Fault Merging::Append(int descriptor)
{
    constexpr size_t kPiece = size_t{1} << 16;
    if (lseek(kept_->Descriptor(), static_cast<off_t>(keptBytes_), SEEK_SET) < 0)
        return {FaultKind::CannotWrite, "", errno};
    for (uint64_t at = 0;;) {
        const std::string piece = ReadAt(descriptor, at, kPiece);
        if (!WriteAll(kept_->Descriptor(), piece))
            return {FaultKind::CannotWrite, "", errno};
        at += piece.size();
        keptBytes_ += piece.size();
        if (piece.size() < kPiece)
            return {};
    }
}

// Runs in the worker.
Failure Merging::Join() const
{
    JoinedPdf joined(
        SinkFor(output_->Descriptor()),
        [this](uint64_t from, size_t count) { return ReadAt(kept_->Descriptor(), from, count); },
        task_.settings.pdf.compression);
    for (const Page &page : pages_) {
        if (!joined.Add(page.from, page.size, page.title))
            return {FailureKind::BadInput, "the page of \"" + page.title +
                                               "\" is not what its worker should have written: leave it out"};
    }
    return joined.Finish();
}

Result Merging::Finish()
{
    ConfinedTask task;
    // A page may take what one document may.
    task.limits = engine_->Options().limits.For(keptBytes_);
    if (task.limits.output.value_or(0) > 0)
        *task.limits.output *= static_cast<int64_t>(pages_.size());
    task.descriptors = {output_->Descriptor(), kept_->Descriptor()};
    task.run = [this](Answer *answer) { answer->outcome.failure = Join(); };
    const ConfinedEnd end = RunConfined(task, engine_);
    result_.fault = end.fault ? end.fault : FaultOf(end.answer.outcome.failure, task.limits);
    if (!result_.fault)
        result_.fault = output_->Commit();
    if (!result_.fault)
        result_.written.push_back(task_.output);
    return std::move(result_);
}

} // namespace vxhost
