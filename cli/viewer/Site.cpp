#include "cli/viewer/Site.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/FolderWalk.h"
#include "cli/report/Summary.h"
#include "host/reading/HeaderScan.h"
#include "host/reading/Unpacking.h"
#include "host/reading/Wrapping.h"
#include "library/FactsJson.h"
#include "library/OptionValues.h"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t kMostViewerBytes = size_t{256} << 20; // a file
constexpr size_t kMostDrawingBytes = size_t{1} << 30;  // all together

constexpr std::string_view kAnyBytes = "application/octet-stream";

std::string_view TypeOf(const std::string &extension)
{
    static const std::map<std::string_view, std::string_view> kTypes = {
        {".css", "text/css; charset=utf-8"},
        {".html", "text/html; charset=utf-8"},
        {".ico", "image/x-icon"},
        {".js", "text/javascript; charset=utf-8"},
        {".json", "application/json"},
        {".md", "text/plain; charset=utf-8"},
        {".mjs", "text/javascript; charset=utf-8"},
        {".otf", "font/otf"},
        {".png", "image/png"},
        {".svg", "image/svg+xml"},
        {".ttf", "font/ttf"},
        {".txt", "text/plain; charset=utf-8"},
        {".wasm", "application/wasm"},
        {".webmanifest", "application/manifest+json"},
        {".woff2", "font/woff2"},
    };
    const auto type = kTypes.find(extension);
    return type == kTypes.end() ? kAnyBytes : type->second;
}

// Returns null with the error, one line for a person.
std::unique_ptr<HeldBytes> ReadWhole(int descriptor, size_t most, std::string *error)
{
    auto bytes = std::make_unique<HeldBytes>();
    switch (bytes->ReadAll(descriptor, {most, 0})) {
    case ReadEnd::Whole:
        return bytes;
    case ReadEnd::Failed:
        *error = fmt::format("cannot be read, {}", SystemText(errno));
        return nullptr;
    default:
        *error = "";
        return nullptr;
    }
}

// Returns whether the plug-in would begin with it, as far as its header shows. Nothing is unpacked here: the viewer does that, and tells what
// comes out.
bool LooksLikeDrawing(std::span<const std::byte> file, HeaderFacts *facts)
{
    if (IsPacked(file))
        return true;
    const Wrapping wrapping = FindDrawing(file);
    *facts = ScanHeader(file.subspan(wrapping.offset, wrapping.size));
    return facts->hasPrefix && facts->recognised && facts->hasBox;
}

} // namespace

void Site::AddViewer(const std::string &folder)
{
    std::error_code failure;
    for (fs::recursive_directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (!entry->is_regular_file())
            continue;
        std::string error;
        const Descriptor file(OpenToRead(entry->path(), FileKinds::Regular, &error));
        auto bytes = file.Get() < 0 ? nullptr : ReadWhole(file.Get(), kMostViewerBytes, &error);
        if (bytes == nullptr)
            throw EarlyEnd(
                Status::InputFailed,
                fmt::format("{}: {}", entry->path().string(),
                            error.empty() ? "too large for a file of the viewer: install it anew" : error));
        Add(entry->path().lexically_relative(folder).string(), TypeOf(entry->path().extension()),
            std::move(bytes));
    }
    if (failure)
        throw EarlyEnd(Status::InputFailed,
                       fmt::format("{}: the viewer cannot be read, {}", folder, SystemText(failure.value())));
}

Status Site::AddDrawings(const std::string &input, Messages *messages)
{
    std::error_code failure;
    if (input != "-" && fs::is_directory(input, failure))
        return AddFolder(input, messages);
    return AddDrawing(input, input == "-" ? InputName(input) : fs::path(input).filename().string(), messages);
}

Status Site::AddFolder(const std::string &folder, Messages *messages)
{
    Status worst = Status::Done;
    bool isEmpty = true;
    FolderWalk walk(folder, false);
    while (const std::optional<FoundFile> file = walk.Next()) {
        switch (file->kind) {
        case FoundFile::Kind::Document: {
            isEmpty = false;
            const fs::path name = fs::path(file->relative) / fs::path(file->path).filename();
            worst = Worst(worst, AddDrawing(file->path, name.lexically_normal().string(), messages));
            if (worst == Status::LimitHit)
                return worst;
            break;
        }
        case FoundFile::Kind::Link:
            messages->Warning(file->path, "a symbolic link, which is not followed: name it to see it");
            break;
        case FoundFile::Kind::Unreadable:
            isEmpty = false;
            messages->Error(file->path, file->error);
            worst = Worst(worst, Status::InputFailed);
            break;
        }
    }
    if (!isEmpty)
        return worst;
    messages->Error(folder, "no drawing is in it or below it: name another folder");
    return Status::InputFailed;
}

Status Site::AddDrawing(const std::string &input, std::string_view name, Messages *messages)
{
    Result result;
    result.fault.kind = FaultKind::CannotOpen;
    std::unique_ptr<HeldBytes> bytes;
    if (input == "-") {
        bytes = ReadWhole(STDIN_FILENO, kMostDrawingBytes - drawingBytes_, &result.fault.text);
    } else {
        const Descriptor file(OpenToRead(input, FileKinds::All, &result.fault.text));
        if (file.Get() >= 0)
            bytes = ReadWhole(file.Get(), kMostDrawingBytes - drawingBytes_, &result.fault.text);
    }
    if (bytes == nullptr && result.fault.text.empty()) {
        messages->Error(InputName(input), fmt::format("with it the drawings have more than {}: name fewer",
                                                      SizeText(kMostDrawingBytes)));
        return Status::LimitHit;
    }
    if (bytes != nullptr) {
        result.fault.kind =
            LooksLikeDrawing(bytes->Get(), &result.header) ? FaultKind::None : FaultKind::NotADrawing;
        result.size = bytes->Get().size();
    }
    const Summary summary = Summarise(input, result, {});
    Tell(input, result, summary, messages);
    if (result.fault)
        return summary.status;
    drawingBytes_ += bytes->Get().size();
    Add(fmt::format("drawings/{}", names_.size()), kAnyBytes, std::move(bytes));
    names_.emplace_back(name);
    return Status::Done;
}

void Site::ListDrawings()
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const std::string &name : names_)
        list.push_back({{"name", name}, {"url", fmt::format("drawings/{}", list.size())}});
    list_ = JsonLine(list);
    pages_.insert_or_assign("drawings.json", Page{TypeOf(".json"), std::as_bytes(std::span(list_))});
}

void Site::Add(std::string name, std::string_view type, std::unique_ptr<HeldBytes> bytes)
{
    pages_.insert_or_assign(std::move(name), Page{type, bytes->Get()});
    held_.push_back(std::move(bytes));
}

const Site::Page *Site::Find(std::string_view name) const
{
    const auto page = pages_.find(name.empty() ? "index.html" : name);
    return page == pages_.end() ? nullptr : &page->second;
}

} // namespace vxhost
