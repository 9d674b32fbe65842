#include "cli/difference/MeasuredPicture.h"

#include "devices/raster/RasterOptions.h"
#include "jobs/ConfinedWork.h"
#include "jobs/LateLibraries.h"
#include "jobs/OutputFile.h"
#include "library/pipe/FlatBytes.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

constexpr uint8_t kOpaque = 255;
constexpr size_t kMostText = 1000; // bytes
constexpr ListBounds kRemarks = {10 * kMostText, 10};

template <typename Flat>
void Describe(Flat &flat, PictureFacts &facts)
{
    flat.Add(facts.width);
    flat.Add(facts.height);
    flat.AddEnum(facts.kind, PictureKind::Inks);
    flat.Add(facts.hasAlpha);
    flat.AddText(facts.plate, kMostText);
    uint32_t omitted = 0;
    flat.AddList(facts.remarks, kRemarks, &omitted,
                 [](auto &one, std::string &remark) { one.AddText(remark, kMostText); });
}

// Runs in the worker.
Failure ReadAll(const Document &file, PictureFacts *facts)
{
    Failure failure;
    const std::unique_ptr<PictureFile> picture = OpenPicture(file.Bytes(), &failure);
    if (picture == nullptr)
        return failure;
    *facts = picture->Facts();
    std::vector<uint8_t> row(facts->RowBytes());
    bool isTransparent = false;
    for (int y = 0; y < facts->height && !failure; ++y) {
        failure = picture->ReadRow(row.data());
        for (size_t i = 3; facts->hasAlpha && i < row.size(); i += 4)
            isTransparent |= row[i] != kOpaque;
    }
    facts->hasAlpha = isTransparent;
    return failure;
}

bool IsSide(int pixels)
{
    return pixels > 0 && pixels <= static_cast<int>(kMaxSide);
}

} // namespace

Result MeasurePicture(const Document &file, Engine *engine, PictureFacts *facts)
{
    Result result;
    result.size = file.Bytes().size();
    const std::unique_ptr<OutputFile> told = OutputFile::CreateUnnamed({}, &result.fault);
    if (told == nullptr)
        return result;
    if (IsTiff(file.Bytes()))
        LoadLate(LateLibraries::OfTiff);
    ConfinedTask task;
    task.limits = engine->Options().limits.For(result.size);
    task.descriptors = {told->Descriptor()};
    task.run = [&](Answer *answer) {
        PictureFacts found;
        answer->outcome.failure = ReadAll(file, &found);
        FlatWriter flat;
        Describe(flat, found);
        if (!answer->outcome.failure && !WriteAll(told->Descriptor(), flat.Take()))
            answer->outcome.failure = {FailureKind::CannotWrite, "", errno};
    };
    const ConfinedEnd end = RunConfined(task, engine);
    result.confinement = end.answer.confinement;
    result.isRead = !end.fault;
    result.fault = end.fault ? end.fault : FaultOf(end.answer.outcome.failure, task.limits);
    if (file.HasChanged())
        result.fault = {FaultKind::Changed};
    if (result.fault)
        return result;
    std::string bytes(kMostText + kRemarks.bytes + 100, 0);
    bytes.resize(
        static_cast<size_t>(std::max<ssize_t>(pread(told->Descriptor(), bytes.data(), bytes.size(), 0), 0)));
    FlatReader flat(bytes);
    Describe(flat, *facts);
    if (!flat.IsWhole() || !IsSide(facts->width) || !IsSide(facts->height))
        result.fault = {FaultKind::BadAnswer};
    return result;
}

} // namespace vxhost
