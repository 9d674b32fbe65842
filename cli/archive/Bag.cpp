#include "cli/archive/Bag.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/OutputNames.h"
#include "cli/report/Status.h"
#include "cli/report/Times.h"
#include "host/FileReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kManifest = "manifest-sha256.txt";
constexpr std::string_view kDeclaration = "BagIt-Version: 1.0\nTag-File-Character-Encoding: UTF-8\n";
constexpr size_t kDayLength = 10;             // of a time
constexpr size_t kMostHeld = size_t{1} << 16; // bytes of lines

// A line of a manifest ends with the name, in which line ends, and what stands for them, are written in digits.
std::string Encoded(std::string_view name)
{
    std::string text;
    for (const char character : name) {
        if (character == '\n' || character == '\r' || character == '%')
            text += fmt::format("%{:02X}", static_cast<unsigned char>(character));
        else
            text += character;
    }
    return text;
}

std::string LineOf(const FileDigest &digest, std::string_view name)
{
    return fmt::format("{}  {}\n", digest.digest, Encoded(name));
}

uint64_t CountFiles(const std::string &folder)
{
    uint64_t files = 0;
    std::error_code failure;
    for (fs::recursive_directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure)) {
        std::error_code unknown;
        files += at->is_regular_file(unknown) ? 1 : 0;
    }
    return files;
}

} // namespace

Bag::Bag(const std::string &folder) : folder_(folder)
{
    std::error_code failure;
    fs::create_directories(DataFolderOf(folder), failure);
    if (failure)
        Fail("data", failure.value());
    place_ = PlaceOf(folder);
    manifest_ = Create(std::string(kManifest));
}

std::string Bag::DataFolderOf(const std::string &folder)
{
    return (fs::path(folder) / "data").string();
}

void Bag::Add(const std::string &path, const FileDigest &digest)
{
    lines_ += LineOf(digest, fs::path(PlaceOf(path)).lexically_relative(place_).string());
    ++files_;
    bytes_ += digest.bytes;
    if (lines_.size() >= kMostHeld)
        Flush();
}

uint64_t Bag::Close()
{
    Flush();
    const FileDigest manifest = DigestOfDescriptor(manifest_->Descriptor());
    if (const Fault fault = manifest_->Commit())
        Fail(std::string(kManifest), fault.error);
    const std::string info =
        fmt::format("Bag-Software-Agent: vx {}\nBagging-Date: {}\nPayload-Oxum: {}.{}\n", VX_VERSION,
                    TimeText(StatedTime()).substr(0, kDayLength), bytes_, files_);
    std::string tags = LineOf(WriteTagFile("bag-info.txt", info), "bag-info.txt");
    tags += LineOf(WriteTagFile("bagit.txt", std::string(kDeclaration)), "bagit.txt");
    tags += LineOf(manifest, kManifest);
    (void)WriteTagFile("tagmanifest-sha256.txt", tags);
    const uint64_t there = CountFiles(DataFolderOf(folder_));
    return there - std::min(there, files_);
}

std::unique_ptr<OutputFile> Bag::Create(const std::string &name) const
{
    Fault fault;
    std::unique_ptr<OutputFile> file =
        OutputFile::Create((fs::path(folder_) / name).string(), {FileKinds::Regular}, &fault);
    if (file == nullptr)
        Fail(name, fault.error);
    return file;
}

FileDigest Bag::WriteTagFile(const std::string &name, const std::string &text) const
{
    const std::unique_ptr<OutputFile> file = Create(name);
    if (!WriteAll(file->Descriptor(), text))
        Fail(name, errno);
    if (const Fault fault = file->Commit())
        Fail(name, fault.error);
    return {DigestOf(text), text.size(), ""};
}

void Bag::Flush()
{
    if (!WriteAll(manifest_->Descriptor(), lines_))
        Fail(std::string(kManifest), errno);
    lines_.clear();
}

void Bag::Fail(const std::string &name, int error) const
{
    throw EarlyEnd(Status::OutputFailed,
                   fmt::format("--bag {}: \"{}\" cannot be written{}: make room, or choose another folder",
                               folder_, name, error == 0 ? "" : ", " + SystemText(error)));
}

} // namespace vxhost
