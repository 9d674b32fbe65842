#include "cli/Manifest.h"

#include "cli/OutputFile.h"
#include "host/Document.h"
#include "host/reading/Utf8.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

using Json = nlohmann::json;

constexpr size_t kMaxLine = size_t{64} << 10;
constexpr size_t kReadSize = size_t{64} << 10;
constexpr size_t kShown = 60; // of a line, in a message
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool BeginsAsDocument(std::string_view bytes)
{
    return bytes.starts_with("%!") || bytes.starts_with("\xC5\xD0\xD3\xC6");
}

// A word of an option from what stands in JSON for it: 300, "300", [0,0,72,36], ["pdf","png"].
std::optional<std::string> WordOf(const Json &value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number())
        return value.dump();
    if (!value.is_array())
        return std::nullopt;
    std::string words;
    for (const Json &part : value) {
        const std::optional<std::string> word = part.is_array() ? std::nullopt : WordOf(part);
        if (!word)
            return std::nullopt;
        words += (words.empty() ? "" : ",") + *word;
    }
    return words;
}

// One member of a line's object. Returns what is wrong with it, or nothing.
std::string TakeMember(const std::string &key, const Json &value, ManifestEntry *entry)
{
    if (key == "id") {
        if (!value.is_string() && !value.is_number())
            return "\"id\" is neither a string nor a number: give one, it comes back with the result";
        entry->id = value.dump();
        return "";
    }
    if (key == "input" || key == "output") {
        if (!value.is_string() || value.get_ref<const std::string &>().empty())
            return fmt::format("\"{}\" is no name: give a string", key);
        (key == "input" ? entry->input : entry->output) = value.get<std::string>();
        return "";
    }
    const std::optional<std::string> word = WordOf(value);
    if (!word || word->empty())
        return fmt::format("\"{}\" has no value that an option can have: give a string or a number",
                           Printable(key, kShown));
    if (!entry->words.Set(key, *word))
        return fmt::format(
            "no option \"{}\": give input, output, id, or one of vx render's about the picture",
            Printable(key, kShown));
    return "";
}

void TakeObject(const std::string &line, ManifestEntry *entry)
{
    const Json object = Json::parse(line, nullptr, false);
    if (!object.is_object()) {
        entry->error =
            fmt::format("\"{}\" is not JSON: write {{\"input\": \"a.vx\", \"output\": \"a.pdf\"}}, or the "
                        "name alone",
                        Printable(line, kShown));
        return;
    }
    for (const auto &[key, value] : object.items()) {
        std::string error = TakeMember(key, value, entry);
        if (entry->error.empty())
            entry->error = std::move(error);
    }
    if (entry->error.empty() && entry->input.empty())
        entry->error = "no \"input\": name the document";
}

} // namespace

std::optional<ManifestEntry> ManifestReader::Next()
{
    while (found_.empty()) {
        const size_t end = bytes_.find('\n', at_);
        const size_t length = std::min(end, bytes_.size()) - at_;
        const bool isOpen = end == std::string::npos && descriptor_ >= 0; // the line may go on
        if (end == std::string::npos && (isOpen ? length <= kMaxLine : length == 0))
            return std::nullopt;
        std::string line = bytes_.substr(at_, length);
        at_ = std::min(at_ + length + 1, bytes_.size());
        if (!std::exchange(isSkipping_, isOpen))
            TakeLine(std::move(line));
    }
    ManifestEntry entry = std::move(found_.front());
    found_.pop_front();
    return entry;
}

void ManifestReader::Read()
{
    if (descriptor_ < 0) {
        OpenNext();
        return;
    }
    bytes_.erase(0, std::exchange(at_, 0));
    const size_t before = bytes_.size();
    bytes_.resize(before + kReadSize);
    const ssize_t got = read(descriptor_, bytes_.data() + before, kReadSize);
    const int failure = errno;
    bytes_.resize(before + (got > 0 ? static_cast<size_t>(got) : 0));
    if (got < 0 && failure == EINTR)
        return;
    if (got < 0)
        Refuse(fmt::format("cannot be read on, {}", SystemText(failure)));
    if (got <= 0)
        Close();
    else if (std::exchange(isNew_, false))
        LookAtStart();
}

void ManifestReader::LookAtStart()
{
    if (bytes_.starts_with(kByteOrderMark))
        at_ = kByteOrderMark.size();
    if (!BeginsAsDocument(bytes_))
        return;
    if (name_ == "-")
        Refuse("is a drawing, not a manifest: vx render - draws it");
    else
        found_.emplace_back().input = name_;
    Close();
    at_ = bytes_.size();
}

void ManifestReader::OpenNext()
{
    name_ = names_.front();
    names_.pop_front();
    line_ = 0;
    bytes_.clear();
    at_ = 0;
    isNew_ = true;
    isSkipping_ = false;
    if (name_ == "-") {
        descriptor_ = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        return;
    }
    struct stat status;
    descriptor_ = open(name_.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0 || S_ISDIR(status.st_mode)) {
        Close();
        ManifestEntry &entry = found_.emplace_back();
        entry.input = name_;
        (void)Document::Open(name_, &entry.error); // knows the words for it
    }
}

void ManifestReader::Close()
{
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
}

void ManifestReader::TakeLine(std::string line)
{
    ++line_;
    if (line.ends_with('\r'))
        line.pop_back();
    const size_t first = line.find_first_not_of(" \t");
    if (line.size() > kMaxLine) {
        Refuse(fmt::format("longer than {} bytes, the most that a line may have", kMaxLine));
    } else if (line.find('\0') != std::string::npos) {
        Refuse("holds a NUL byte, this is not a manifest: give names or JSON, a line each");
        Close();
        at_ = bytes_.size();
    } else if (first != std::string::npos) {
        ManifestEntry &entry = AddEntry();
        if (line[first] == '{')
            TakeObject(line, &entry);
        else
            entry.input = line;
        if (entry.error.empty() && entry.input == "-")
            entry.error = "standard input is no document of a batch: write it to a file first";
    }
}

ManifestEntry &ManifestReader::AddEntry()
{
    ManifestEntry &entry = found_.emplace_back();
    entry.manifest = name_;
    entry.line = line_;
    return entry;
}

void ManifestReader::Refuse(std::string error)
{
    AddEntry().error = std::move(error);
}

} // namespace vxhost
