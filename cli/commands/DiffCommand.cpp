#include "cli/commands/DiffCommand.h"

#include "cli/commands/Session.h"
#include "cli/difference/Difference.h"
#include "cli/difference/MeasuredPicture.h"
#include "cli/options/IsDrawing.h"
#include "cli/options/OutputNames.h"
#include "cli/options/OutputOptions.h"
#include "cli/options/PictureOptions.h"
#include "jobs/ConfinedWork.h"
#include "jobs/LateLibraries.h"
#include "jobs/OutputFile.h"
#include "library/OptionValues.h"
#include "library/Words.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxhost
{

namespace
{

constexpr int kFull = 255;

// Says what of two drawings is compared.
struct Compared {
    bool colours = true, inks = true, facts = true;
};

Compared ReadCompared(const std::string &text)
{
    if (text.empty())
        return {};
    Compared compared = {false, false, false};
    for (size_t at = 0; at <= text.size();) {
        const std::string word = text.substr(at, text.find(',', at) - at);
        if (word == "pixels")
            compared.colours = true;
        else if (word == "inks")
            compared.inks = true;
        else if (word == "facts")
            compared.facts = true;
        else
            throw UsageError(fmt::format(
                "--only {}: not known: give pixels, inks or facts, or several as pixels,inks", text));
        at += word.size() + 1;
    }
    return compared;
}

int ReadTolerance(const std::string &text)
{
    const std::optional<int32_t> tolerance = ReadInteger(text);
    if (!tolerance || *tolerance < 0 || *tolerance >= kFull)
        throw UsageError(
            fmt::format("--tolerance {}: not a whole number from 0 to {}: give one as 3", text, kFull - 1));
    return *tolerance;
}

// Looks at the first bytes alone: who reads the rest is a worker.
SideKind KindOf(const std::string &input)
{
    constexpr size_t kLooked = 4096;
    std::string error;
    const Descriptor file(input == "-" ? -1 : OpenToRead(input, FileKinds::Regular, &error));
    std::string first(kLooked, 0);
    first.resize(static_cast<size_t>(std::max<ssize_t>(pread(file.Get(), first.data(), kLooked, 0), 0)));
    const auto bytes = std::as_bytes(std::span(first));
    if (IsPng(bytes))
        return SideKind::Png;
    if (IsTiff(bytes))
        return SideKind::Tiff;
    if (first.starts_with("%PDF-"))
        return SideKind::Pdf;
    const size_t begin = first.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    if (begin != std::string::npos && first[begin] == '<' && first.find("<svg") != std::string::npos &&
        !IsDrawing(input))
        return SideKind::Svg;
    return SideKind::Drawing;
}

bool IsPicture(SideKind kind)
{
    return kind == SideKind::Png || kind == SideKind::Tiff;
}

const char *NameOf(SideKind kind)
{
    constexpr const char *kNames[] = {"drawing", "PNG", "TIFF", "PDF", "SVG"};
    return kNames[static_cast<size_t>(kind)];
}

std::shared_ptr<Document> MapWhole(int descriptor, Fault *fault)
{
    std::string error;
    if (lseek(descriptor, 0, SEEK_SET) < 0)
        *fault = {FaultKind::CannotWrite, "", errno};
    std::shared_ptr<Document> document = Document::FromDescriptor(descriptor, &error);
    if (document == nullptr && !*fault)
        *fault = {FaultKind::CannotOpen, error};
    return document;
}

Box UnionOf(const Box &a, const Box &b)
{
    const auto [leftA, rightA] = std::minmax(a.left, a.right);
    const auto [leftB, rightB] = std::minmax(b.left, b.right);
    const auto [bottomA, topA] = std::minmax(a.bottom, a.top);
    const auto [bottomB, topB] = std::minmax(b.bottom, b.top);
    return {std::min(leftA, leftB), std::min(bottomA, bottomB), std::max(rightA, rightB),
            std::max(topA, topB)};
}

// Writes the lines of each text, as it comes, and looks for facts behind it.
std::vector<Pass> PassesOfLooking(int words)
{
    return {[words](Reading &reading) {
                Failure failure;
                Outcome outcome = ReadWords(reading, [&](const FoundText &text) {
                    const std::string lines = TextLines(text, "");
                    if (!failure)
                        failure = SinkFor(words)(std::as_bytes(std::span(lines)));
                });
                if (!outcome.failure)
                    outcome.failure = failure;
                return outcome;
            },
            LookThrough};
}

bool IsOfInks(const PictureFacts &facts)
{
    return facts.kind == PictureKind::Inks;
}

// Takes the two to a task of comparing them, step by step. A step returns false when there can be no more, and the status says why.
class Preparation
{
  public:
    Preparation(std::array<std::string, 2> inputs, Session *session) : session_(session)
    {
        for (size_t i = 0; i < inputs.size(); ++i) {
            sides_[i]->input = std::move(inputs[i]);
            sides_[i]->kind = KindOf(sides_[i]->input);
        }
    }
    Preparation(const Preparation &) = delete;
    Preparation &operator=(const Preparation &) = delete;

    DifferenceTask &Task() { return task_; }
    Status Worst() const { return worst_; }
    size_t DrawingCount() const
    {
        return static_cast<size_t>(std::ranges::count(sides_, SideKind::Drawing, &DifferenceSide::kind));
    }

    // Opens the files among the two, and looks at the pictures.
    bool OpenFiles()
    {
        for (size_t i = 0; i < sides_.size(); ++i) {
            DifferenceSide &side = *sides_[i];
            if (side.kind == SideKind::Drawing)
                continue;
            std::string error;
            std::shared_ptr<Document> file = Document::Open(side.input, &error, {FileKinds::Regular, {}});
            if (file == nullptr)
                throw EarlyEnd(Status::InputFailed, fmt::format("{}: {}", side.input, error));
            if (!IsPicture(side.kind)) {
                side.bytes = std::move(file);
                continue;
            }
            const Result result = MeasurePicture(*file, &session_->Jobs(), &pictures_[i]);
            if (!IsWhole(side.input, result))
                return false;
            for (const std::string &remark : pictures_[i].remarks)
                task_.notCompared.push_back(fmt::format("all of {}: {}", side.input, remark));
            (IsOfInks(pictures_[i]) ? side.inks : side.colours) = std::move(file);
        }
        return true;
    }

    // Throws EarlyEnd where the two have nothing to compare.
    void CheckPair() const
    {
        const auto &[a, b] = sides_;
        const bool isPair = a->kind == b->kind || (IsPicture(a->kind) && IsPicture(b->kind));
        if (DrawingCount() == 0 && !isPair)
            throw EarlyEnd(
                Status::InputFailed,
                fmt::format("{} is a {}, and {} a {}: name two files of one format, or a drawing and a file",
                            a->input, NameOf(a->kind), b->input, NameOf(b->kind)));
        if (DrawingCount() == 0 && IsPicture(a->kind) && IsOfInks(pictures_[0]) != IsOfInks(pictures_[1]))
            throw EarlyEnd(Status::InputFailed,
                           fmt::format("{} has {}, and {} {}: name two of one kind", a->input,
                                       NameOfKind(pictures_[0]), b->input, NameOfKind(pictures_[1])));
        for (size_t i = 0; i < sides_.size() && DrawingCount() == 1; ++i) {
            if (!pictures_[i].plate.empty())
                throw EarlyEnd(
                    Status::InputFailed,
                    fmt::format("{}: is the plate of {}: make that of the drawing with vx plates, and "
                                "compare the two",
                                sides_[i]->input, pictures_[i].plate));
        }
    }

    // Returns what the drawing is drawn as, to be held beside the other.
    FormatList Formats(const Compared &compared) const
    {
        FormatList formats;
        const auto add = [&formats](const char *name) { formats.push_back(FindFormat(name)); };
        if (DrawingCount() == 2) {
            if (compared.colours)
                add("png");
            if (compared.inks)
                add("tiff");
            return formats;
        }
        if (DrawingCount() == 0)
            return formats;
        const size_t file = File();
        if (IsPicture(sides_[file]->kind))
            add(IsOfInks(pictures_[file]) ? "tiff" : "png");
        else
            add(sides_[file]->kind == SideKind::Pdf ? "pdf" : "svg");
        return formats;
    }

    // Reads what both drawings say of themselves, and takes one box for both unless one was chosen.
    bool Look(bool hasFacts, bool hasBox, Settings *settings)
    {
        std::array<Result, 2> results;
        for (size_t i = 0; i < sides_.size(); ++i) {
            results[i] = LookAt(i, *settings);
            if (!IsWhole(sides_[i]->input, results[i]))
                return false;
        }
        if (hasFacts)
            task_.facts = CompareFacts(results[0], results[1]);
        else
            sides_[0]->words = sides_[1]->words = nullptr;
        if (!hasBox)
            settings->page.box = UnionOf(results[0].outcome.box, results[1].outcome.box);
        return true;
    }

    // Makes the settings those of the file beside the drawing, where they were not chosen.
    void FitToFile(bool hasSize, bool hasBackground, Settings *settings) const
    {
        const PictureFacts &facts = pictures_[File()];
        if (!IsPicture(sides_[File()]->kind))
            return;
        if (!hasSize) {
            settings->png.width = facts.width;
            settings->png.height = facts.height;
        }
        if (!hasBackground && facts.hasAlpha)
            settings->png.background.reset();
    }

    bool Draw(const FormatList &formats, const Settings &settings)
    {
        for (size_t i = 0; i < sides_.size(); ++i) {
            if (sides_[i]->kind == SideKind::Drawing && !DrawSide(i, formats, settings))
                return false;
        }
        return true;
    }

    // A picture whose sides are to each other as those of no page of the drawing shows something else.
    void CheckShape()
    {
        const size_t file = File();
        if (!IsPicture(sides_[file]->kind) || !task_.box)
            return;
        RasterOptions natural;
        natural.width = pictures_[file].width;
        const PictureSize size = FindPictureSize(*task_.box, natural);
        if (size.failure || std::abs(size.height - pictures_[file].height) <= 1)
            return;
        FactDifference shape = {"size", "", SizeText(size.width, size.height),
                                SizeText(pictures_[file].width, pictures_[file].height)};
        if (file == 0)
            std::swap(shape.a, shape.b);
        task_.facts.push_back(std::move(shape));
        task_.notCompared.emplace_back(
            "the pixels: the picture has another shape than the page: give the options with "
            "which it was made, as --box or --page");
        for (DifferenceSide *side : sides_)
            side->colours = side->inks = nullptr;
    }

    const std::array<DifferenceSide *, 2> &Sides() const { return sides_; }

    bool IsWhole(const std::string &input, const Result &result)
    {
        const Summary summary = session_->Tell(input, result);
        worst_ = vxhost::Worst(worst_, summary.status);
        return summary.IsDone();
    }

  private:
    static const char *NameOfKind(const PictureFacts &facts) { return IsOfInks(facts) ? "inks" : "colours"; }
    static std::string SizeText(int width, int height)
    {
        return fmt::format("{} x {} pixels", width, height);
    }

    // Returns which of the two is the file, where there is one.
    size_t File() const { return sides_[0]->kind == SideKind::Drawing ? 1 : 0; }

    Result LookAt(size_t i, const Settings &settings)
    {
        Result failed;
        const std::unique_ptr<OutputFile> words = OutputFile::CreateUnnamed({}, &failed.fault);
        if (words == nullptr)
            return failed;
        JobTask look;
        look.input = sides_[i]->input;
        look.layers = settings.layers;
        look.keepsSpots = settings.keepsSpots;
        look.readsTexts = true;
        look.makePasses = [&](Failure *) { return PassesOfLooking(words->Descriptor()); };
        look.startOver = [&] { words->Empty(); };
        Job job(std::move(look), &session_->Jobs());
        drawings_[i] = job.Opened();
        if (!job.HasEnded())
            job.Start({words->Descriptor()});
        job.Wait();
        Result result = job.Found();
        if (!result.fault)
            sides_[i]->words = MapWhole(words->Descriptor(), &result.fault);
        return result;
    }

    bool DrawSide(size_t i, const FormatList &formats, const Settings &settings)
    {
        DifferenceSide &side = *sides_[i];
        Fault fault;
        RenderTask task = {side.input, {}, settings};
        task.document = drawings_[i];
        for (const Format *format : formats) {
            std::shared_ptr<Document> &made = format->name == "png"    ? side.colours
                                              : format->name == "tiff" ? side.inks
                                                                       : side.bytes;
            task.outputs.push_back(
                {format, "", [&made, &fault](int descriptor) { made = MapWhole(descriptor, &fault); }});
        }
        Rendering rendering(std::move(task), &session_->Jobs());
        rendering.Wait();
        Result result = rendering.Finish();
        if (!result.fault)
            result.fault = fault;
        task_.box = result.outcome.page.box;
        return IsWhole(side.input, result);
    }

    Session *session_;
    DifferenceTask task_;
    std::array<DifferenceSide *, 2> sides_ = {&task_.a, &task_.b};
    std::array<PictureFacts, 2> pictures_;
    std::array<std::shared_ptr<Document>, 2> drawings_;
    Status worst_ = Status::Done;
};

} // namespace

DiffCommand::DiffCommand(CLI::App *command)
{
    command
        ->add_option(
            "-o,--output", output_,
            "write a png too that shows what differs: red where the first is darker, blue where the second "
            "is; the rest is faint")
        ->type_name("PATH");
    command->add_flag("--side-by-side", sideBySide_, "show both beside what differs in it");
    command->add_option("--tolerance", tolerance_, "how far a pixel may differ, of 255, and be the same (0)")
        ->type_name("N");
    command
        ->add_option("--only", only_,
                     "what of two drawings is compared: pixels, inks or facts, or several (all)")
        ->type_name("WHAT");
    command->add_flag("--json", json_, "one JSON object");
    command->add_flag("--force", force_, "overwrite drawings too, which are lost");
    AddOutputOptions(&texts_, command);
    common_.AddTo(command,
                  "two drawings, or a drawing and a png, tiff, pdf or svg; - is a drawing on standard input");
    command->footer("The exit status is 0 when nothing differs, and 3 when something does.\n\n"
                    "Examples:\n"
                    "  vx diff old.vx new.vx\n"
                    "  vx diff old.vx new.vx -o changes.png --side-by-side --dpi 300\n"
                    "  vx diff harp.vx harp.png --tolerance 2\n"
                    "  vx diff old.vx new.vx --json | jq '.pixels.places[].box'");
}

Status DiffCommand::Run(Messages *messages) const
{
    const CommonOptions options = common_.Read();
    if (options.inputs.size() != 2)
        throw UsageError(fmt::format("{} given: name two, as old.vx new.vx",
                                     options.inputs.size() == 1 ? "one name is" : "more than two names are"));
    const Compared compared = ReadCompared(only_);
    const int tolerance = ReadTolerance(tolerance_);
    if (sideBySide_ && output_.empty())
        throw UsageError("--side-by-side is for a picture: name one with -o");
    if (!output_.empty())
        CheckOutput(options.inputs);
    Settings settings = options.Complete(ReadSettings(texts_));
    Session session(options, CommandKind::Info, messages);
    Preparation preparation({options.inputs[0], options.inputs[1]}, &session);
    const size_t drawings = preparation.DrawingCount();
    if (drawings < 2 && !only_.empty())
        throw UsageError("--only is for two drawings: leave it out");
    if (drawings == 0 && texts_ != OptionTexts())
        throw UsageError("no drawing is drawn: leave out the options that say how");
    if (!preparation.OpenFiles())
        return preparation.Worst();
    preparation.CheckPair();
    DifferenceTask &task = preparation.Task();
    task.picture = {tolerance, sideBySide_};
    task.json = json_;

    const FormatList formats = preparation.Formats(compared);
    const bool hasPicture = drawings == 0 ? IsPicture(task.a.kind) : (SetOf(formats) & (kPng | kTiff)) != 0;
    if (!output_.empty() && !hasPicture)
        throw UsageError("-o is for what differs in pictures, and none are compared: leave it out");
    const auto isSaid = [this](std::initializer_list<const char *> names) {
        return std::ranges::any_of(names, [this](const char *name) { return !texts_.Of(name).empty(); });
    };
    if (!formats.empty()) {
        texts_.CheckMeant(SetOf(formats));
        session.CheckDevices(formats, settings);
    }
    if (drawings == 2 && !preparation.Look(compared.facts, isSaid({"box", "page"}), &settings))
        return preparation.Worst();
    if (drawings == 1)
        preparation.FitToFile(isSaid({"dpi", "zoom", "width", "height", "fit"}), isSaid({"background"}),
                              &settings);
    if (!formats.empty() && !preparation.Draw(formats, settings))
        return preparation.Worst();
    if (drawings == 1)
        preparation.CheckShape();
    return Worst(preparation.Worst(), Compare(task, &session, messages));
}

void DiffCommand::CheckOutput(const std::vector<std::string> &inputs) const
{
    (void)CheckFormatOfName(output_, inputs.front(), kPng);
    if (std::ranges::any_of(inputs, [this](const std::string &input) { return IsSameFile(output_, input); }))
        throw UsageError(fmt::format("-o {}: it is one of the two that are compared: name another", output_));
    if (!force_)
        CheckKeepsDrawing(output_, output_);
}

Status DiffCommand::Compare(const DifferenceTask &task, Session *session, Messages *messages) const
{
    Result result;
    const auto create = [&result](const std::string &path) {
        result.output = path;
        return OutputFile::Create(path, {}, &result.fault);
    };
    const std::string both = fmt::format("{} and {}", InputName(task.a.input), InputName(task.b.input));
    const std::unique_ptr<OutputFile> report = create("-");
    const std::unique_ptr<OutputFile> picture = output_.empty() || result.fault ? nullptr : create(output_);
    if (result.fault)
        return session->Tell(both, result).status;
    ConfinedTask work;
    for (const DifferenceSide *side : {&task.a, &task.b}) {
        for (const auto &document : {side->colours, side->inks, side->words, side->bytes})
            result.size += document == nullptr ? 0 : document->Bytes().size();
        if (side->inks != nullptr)
            LoadLate(LateLibraries::OfTiff);
    }
    work.limits = session->Jobs().Options().limits.For(result.size);
    work.descriptors = {report->Descriptor()};
    if (picture != nullptr)
        work.descriptors.push_back(picture->Descriptor());
    work.run = [&](Answer *answer) {
        bool isAny = false;
        answer->outcome.failure =
            TellDifference(task, SinkFor(report->Descriptor()),
                           picture == nullptr ? ByteSink() : SinkFor(picture->Descriptor()), &isAny);
        answer->outcome.objections = isAny ? 1 : 0;
    };
    const ConfinedEnd end = RunConfined(work, &session->Jobs());
    result.isRead = !end.fault;
    result.confinement = end.answer.confinement;
    result.fault = end.fault ? end.fault : FaultOf(end.answer.outcome.failure, work.limits);
    result.output = output_;
    if (picture != nullptr && !result.fault) {
        if (lseek(picture->Descriptor(), 0, SEEK_END) > 0)
            result.fault = picture->Commit();
        else
            messages->Warning("-o " + output_, "no picture is written, since no pixels are compared");
    }
    if (!result.fault) {
        result.output = "-";
        result.fault = report->Commit();
    }
    const Status status = session->Tell(both, result).status;
    return end.answer.outcome.objections > 0 ? Worst(status, Status::Warned) : status;
}

} // namespace vxhost
