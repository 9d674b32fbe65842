#include "library/pipe/Answer.h"

#include "host/fonts/ListedFonts.h"
#include "library/pipe/FlatBytes.h"

#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr size_t kMaxName = 1024; // whatever the document or the font says, in UTF-8
constexpr size_t kMaxText = 4096; // a line for a person
constexpr size_t kMaxPath = 4096; // of the system's
constexpr size_t kReportsSize = size_t{64} << 10;
constexpr size_t kNamesSize = size_t{128} << 10; // of each list of names
constexpr size_t kFontsSize = size_t{448} << 10;
constexpr size_t kLayersSize = size_t{48} << 10;
constexpr size_t kSpotsSize = size_t{48} << 10;
constexpr size_t kSalvageSize = Salvage::kMostTold * (DocumentFault::kMostText + 32);
constexpr size_t kFixedSize = 8 * (kMaxName + sizeof(uint32_t)) + 4 * (kMaxText + sizeof(uint32_t)) +
                              DocumentFault::kMostText + kSalvageSize + 512;
static_assert(kFixedSize + kReportsSize + 3 * kNamesSize + kFontsSize + kLayersSize + kSpotsSize <
              kMaxAnswer);

template <typename Flat, typename Name>
void DescribeName(Flat &flat, Name &name)
{
    flat.AddText(name, kMaxName);
}

template <typename Flat>
void Describe(Flat &flat, Confinement &confinement)
{
    flat.Add(confinement.byLandlock);
    flat.Add(confinement.bySeccomp);
    flat.Add(confinement.landlockError);
    flat.Add(confinement.seccompError);
}

template <typename Flat>
void Describe(Flat &flat, HeaderFacts &header, Omitted &omitted)
{
    flat.Add(header.hasPrefix);
    flat.Add(header.recognised);
    flat.Add(header.hasBox);
    flat.Add(header.version);
    flat.Add(header.epsWrapper);
    for (std::string *text : {&header.lineEnds, &header.wrapping, &header.refusal, &header.firstLine,
                              &header.title, &header.creator, &header.creationDate})
        flat.AddText(*text, kMaxName);
    bool hasDate = header.created.has_value();
    flat.Add(hasDate);
    if (hasDate) {
        CalendarDate date = header.created.value_or(CalendarDate());
        for (int *part : {&date.year, &date.month, &date.day, &date.hour, &date.minute, &date.second})
            flat.Add(*part);
        header.created = date;
    }
    flat.Add(header.isDateOrderOpen);
    const auto addNames = [&flat](std::vector<std::string> &names, uint32_t *left) {
        flat.AddList(names, {kNamesSize}, left, [](auto &to, std::string &name) { DescribeName(to, name); });
    };
    addNames(header.processColours, &omitted.processColours);
    addNames(header.customColours, &omitted.customColours);
    addNames(header.fonts, &omitted.declaredFonts);
}

template <typename Flat>
void Describe(Flat &flat, Counts &counts)
{
    for (uint64_t *count : {&counts.fills, &counts.strokes, &counts.clips, &counts.segments, &counts.shows})
        flat.Add(*count);
    for (bool *does : {&counts.gray, &counts.cmyk, &counts.overprint})
        flat.Add(*does);
}

template <typename Flat>
void Describe(Flat &flat, FontUse &font)
{
    flat.AddText(font.asked, kMaxName);
    flat.AddText(font.served, kMaxName);
    flat.AddText(font.file, kMaxPath);
    flat.AddEnum(font.match, FontMatch::Missing);
    flat.Add(font.strings);
    flat.Add(font.characters);
    flat.Add(font.missingGlyphs);
}

template <typename Flat>
void Describe(Flat &flat, Layer &layer)
{
    flat.AddText(layer.name, kMaxName);
    flat.Add(layer.parent);
    for (bool *flag : {&layer.isVisible, &layer.isPreviewed, &layer.isEnabled, &layer.isPrinting,
                       &layer.isDimmed, &layer.isPainted})
        flat.Add(*flag);
    flat.Add(layer.colour);
    for (uint8_t &part : layer.rgb)
        flat.Add(part);
}

template <typename Flat>
void Describe(Flat &flat, SpotUse &spot)
{
    flat.AddText(spot.name, kMaxName);
    for (double &part : spot.alternate)
        flat.Add(part);
    flat.Add(spot.leastTint);
    flat.Add(spot.mostTint);
}

template <typename Flat>
void Describe(Flat &flat, DocumentFault &fault)
{
    flat.Add(fault.line);
    flat.Add(fault.column);
    flat.AddText(fault.text, DocumentFault::kMostText);
}

template <typename Flat>
void Describe(Flat &flat, Salvage &salvage)
{
    flat.Add(salvage.faults);
    // Always as many as there may be; those that are not there are empty.
    salvage.first.resize(Salvage::kMostTold);
    for (DocumentFault &fault : salvage.first)
        Describe(flat, fault);
    while (!salvage.first.empty() && salvage.first.back() == DocumentFault())
        salvage.first.pop_back();
    flat.Add(salvage.isCut);
}

template <typename Flat>
void Describe(Flat &flat, Outcome &outcome, Omitted &omitted)
{
    flat.Add(outcome.result);
    for (double *side : {&outcome.box.left, &outcome.box.bottom, &outcome.box.right, &outcome.box.top})
        flat.Add(*side);
    DrawnPage &page = outcome.page;
    for (double *part :
         {&page.box.left, &page.box.bottom, &page.box.right, &page.box.top, &page.tooWide, &page.tooHigh})
        flat.Add(*part);
    flat.Add(outcome.headerAccepted);
    flat.Add(outcome.monochrome);
    flat.Add(outcome.bytesRead);
    flat.Add(outcome.bytesTotal);
    flat.Add(outcome.bytesUnpacked);
    flat.AddText(outcome.damage, kMaxName);
    flat.Add(outcome.peakHeap);
    flat.Add(outcome.memoryLimitHit);
    flat.AddEnum(outcome.failure.kind, FailureKind::BadInput);
    flat.AddText(outcome.failure.text, kMaxText);
    flat.Add(outcome.failure.error);
    flat.AddText(outcome.lackedFont, kMaxName);
    flat.Add(outcome.unknownCharacters);
    flat.Add(outcome.undrawnTexts);
    flat.Add(outcome.placedTexts);
    flat.AddList(outcome.reports, {kReportsSize}, &omitted.reports, [](auto &to, Report &report) {
        to.Add(report.number);
        to.AddText(report.title, kMaxName);
        to.AddText(report.message, kMaxText);
    });
    flat.AddList(outcome.fonts, {kFontsSize}, &omitted.fonts,
                 [](auto &to, FontUse &font) { Describe(to, font); });
    Describe(flat, outcome.counts);
    flat.AddList(outcome.layers, {kLayersSize}, &omitted.layers,
                 [](auto &to, Layer &layer) { Describe(to, layer); });
    flat.AddList(outcome.spots, {kSpotsSize}, &omitted.spots,
                 [](auto &to, SpotUse &spot) { Describe(to, spot); });
    flat.Add(outcome.end.isSaid);
    flat.Add(outcome.end.isInLine);
    OpenThings &open = outcome.end.open;
    for (uint64_t *count :
         {&open.groups, &open.compoundPaths, &open.saves, &open.layers, &open.gradients, &open.texts})
        flat.Add(*count);
    flat.Add(open.isSetup);
    flat.Add(outcome.end.undrawn.line);
    flat.Add(outcome.end.undrawn.bytes);
    Describe(flat, outcome.fault);
    Describe(flat, outcome.salvage);
    Unshown &unshown = outcome.unshown;
    for (uint64_t *count : {&unshown.patterns, &unshown.placedPictures, &unshown.postscript, &unshown.binary,
                            &unshown.betweenLayers})
        flat.Add(*count);
    flat.AddEnum(outcome.date, DateOrigin::Clock);
    flat.Add(outcome.objections);
}

template <typename Flat>
void Describe(Flat &flat, Answer &answer)
{
    Describe(flat, answer.header, answer.omitted);
    Describe(flat, answer.outcome, answer.omitted);
    Describe(flat, answer.confinement);
    flat.Add(answer.passes);
    flat.Add(answer.needsFonts);
}

template <typename Flat>
void Describe(Flat &flat, Result &result)
{
    flat.AddEnum(result.fault.kind, FaultKind::NotConfined);
    flat.AddText(result.fault.text, kMaxText);
    flat.Add(result.fault.error);
    flat.Add(result.fault.isOfFontListing);
    flat.Add(result.size);
    flat.Add(result.isRead);
    Describe(flat, result.header, result.omitted);
    Describe(flat, result.outcome, result.omitted);
    Describe(flat, result.confinement);
}

template <typename Flat>
void Describe(Flat &flat, FontList::Entry &entry)
{
    flat.AddText(entry.postScriptName, kMaxName);
    flat.AddText(entry.familyName, kMaxName);
    flat.AddText(entry.file, kMaxPath);
    flat.Add(entry.faceIndex);
    flat.AddText(entry.servedBy, kMaxName);
    flat.Add(entry.style.weight);
    flat.Add(entry.style.width);
    flat.Add(entry.style.isSlanted);
    flat.Add(entry.scripts);
    flat.Add(entry.isSubstitute);
}

template <typename Flat>
void Describe(Flat &flat, std::vector<FontList::Entry> &entries, uint32_t *omitted, Confinement &confinement)
{
    Describe(flat, confinement);
    flat.AddList(entries, {kMaxFontAnswer - 64, kMaxFonts}, omitted,
                 [](auto &to, FontList::Entry &entry) { Describe(to, entry); });
}

template <typename Record>
std::string Write(Record *record)
{
    FlatWriter flat;
    Describe(flat, *record);
    return flat.Take();
}

template <typename Record>
std::optional<Record> Read(std::string_view bytes)
{
    FlatReader flat(bytes);
    Record record;
    Describe(flat, record);
    return flat.IsWhole() ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace

std::string WriteAnswer(Answer answer)
{
    return Write(&answer);
}

std::optional<Answer> ReadAnswer(std::string_view bytes)
{
    return Read<Answer>(bytes);
}

std::string WriteResult(Result result)
{
    return Write(&result);
}

std::optional<Result> ReadResult(std::string_view bytes)
{
    return Read<Result>(bytes);
}

std::string WriteFonts(const FontList &fonts, Confinement confinement)
{
    std::vector<FontList::Entry> entries;
    entries.reserve(static_cast<size_t>(fonts.Count()));
    for (int32_t i = 0; i < fonts.Count(); ++i)
        entries.push_back(fonts.At(i));
    FlatWriter flat;
    uint32_t omitted = 0;
    Describe(flat, entries, &omitted, confinement);
    return flat.Take();
}

std::optional<FontAnswer> ReadFonts(std::string_view bytes)
{
    FlatReader flat(bytes);
    FontAnswer answer;
    std::vector<FontList::Entry> entries;
    Describe(flat, entries, &answer.omitted, answer.confinement);
    if (!flat.IsWhole() || entries.empty())
        return std::nullopt;
    answer.fonts = std::make_unique<ListedFonts>(std::move(entries));
    return answer;
}

} // namespace vxhost
