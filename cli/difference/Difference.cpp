#include "cli/difference/Difference.h"

#include "cli/report/DifferenceReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

namespace vxhost
{

namespace
{

std::string_view TextOf(const Document &document)
{
    const std::span<const std::byte> bytes = document.Bytes();
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

std::string SizeText(const PictureFacts &facts)
{
    return fmt::format("{} x {} pixels", facts.width, facts.height);
}

// Two pictures that are read from their first row.
struct PicturePair {
    std::unique_ptr<PictureFile> a, b;

    Failure Open(const Document &ofA, const Document &ofB)
    {
        Failure failure;
        a = OpenPicture(ofA.Bytes(), &failure);
        if (!failure)
            b = OpenPicture(ofB.Bytes(), &failure);
        return failure;
    }
};

// Compares the pictures, if there are two, and adds what is found.
Failure AddPicture(const DifferenceTask &task, const std::shared_ptr<Document> DifferenceSide::*document,
                   const ByteSink &picture, Difference *difference)
{
    const std::shared_ptr<Document> &ofA = task.a.*document, &ofB = task.b.*document;
    if (ofA == nullptr || ofB == nullptr)
        return {};
    PicturePair pictures;
    if (Failure failure = pictures.Open(*ofA, *ofB))
        return failure;
    const PictureFacts &factsA = pictures.a->Facts(), &factsB = pictures.b->Facts();
    if (factsA.width != factsB.width || factsA.height != factsB.height) {
        difference->facts.push_back({"size", "", SizeText(factsA), SizeText(factsB)});
        difference->notCompared.emplace_back(
            "the pixels: the pictures have other sizes: leave out what says one, or name "
            "one --box for both");
        return {};
    }
    PictureDifference &found = difference->pictures.emplace_back();
    if (Failure failure = ComparePictures(*pictures.a, *pictures.b, task.picture.tolerance, &found))
        return failure;
    if (!picture)
        return {};
    if (Failure failure = pictures.Open(*ofA, *ofB))
        return failure;
    return WriteDifference(*pictures.a, *pictures.b, found, task.picture, picture);
}

void AddBytes(const DifferenceTask &task, Difference *difference)
{
    const std::string_view a = TextOf(*task.a.bytes), b = TextOf(*task.b.bytes);
    if (a == b)
        return;
    difference->firstByte = static_cast<size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    const bool isPdf = task.a.kind == SideKind::Pdf || task.b.kind == SideKind::Pdf;
    FileFacts facts = isPdf ? ComparePdfFacts(a, b) : CompareSvgFacts(a, b);
    std::ranges::move(facts.differences, std::back_inserter(difference->facts));
    for (const std::string &fact : facts.missing)
        difference->notCompared.push_back(fact + ": it is not said where it can be read in both");
    difference->notCompared.emplace_back(
        isPdf ? "what they show: make a PNG of each, as with pdftocairo -png, and compare those"
              : "what they show: make a PNG of each with a program that shows SVG, and compare those");
}

} // namespace

bool Difference::IsAny() const
{
    return !facts.empty() || words.countA + words.countB > 0 || firstByte ||
           std::ranges::any_of(pictures,
                               [](const PictureDifference &picture) { return picture.different > 0; });
}

Failure TellDifference(const DifferenceTask &task, const ByteSink &report, const ByteSink &picture,
                       bool *isAny)
{
    Difference difference;
    difference.facts = task.facts;
    difference.notCompared = task.notCompared;
    const bool hasColours = task.a.colours != nullptr && task.b.colours != nullptr;
    if (Failure failure = AddPicture(task, &DifferenceSide::colours, picture, &difference))
        return failure;
    if (Failure failure =
            AddPicture(task, &DifferenceSide::inks, hasColours ? ByteSink() : picture, &difference))
        return failure;
    if (task.a.words != nullptr && task.b.words != nullptr)
        difference.words = CompareLines(TextOf(*task.a.words), TextOf(*task.b.words));
    if (task.a.bytes != nullptr && task.b.bytes != nullptr)
        AddBytes(task, &difference);
    *isAny = difference.IsAny();
    const std::string text = task.json ? DifferenceJson(task, difference) : DifferenceText(task, difference);
    return report(std::as_bytes(std::span(text)));
}

} // namespace vxhost
