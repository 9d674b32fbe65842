#include "cli/options/OutputNames.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/Digest.h"
#include "cli/options/IsDrawing.h"
#include "cli/report/Summary.h"
#include "library/OptionValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

struct Placeholder {
    std::string_view name;
    std::string value;
    bool isDigest = false;
    size_t taken = 0; // digits
};

// Adds to a pattern that names a folder what names a file in it.
std::string WholePattern(const std::string &pattern, std::string_view file)
{
    std::error_code failure;
    if (pattern.ends_with('/'))
        return pattern + std::string(file);
    return pattern != "-" && fs::is_directory(pattern, failure) ? fmt::format("{}/{}", pattern, file)
                                                                : pattern;
}

// Takes the next digits of a digest, as many as the word says.
std::string TakeDigits(std::string_view word, Placeholder *digest)
{
    const std::optional<int32_t> count = ReadInteger(word);
    if (!count || *count < 1 || static_cast<size_t>(*count) > kDigestDigits - digest->taken)
        throw UsageError(
            fmt::format("{{{}:{}}}: not a number of digits, of which there are {} in all: give one as "
                        "{{{}:2}}",
                        digest->name, word, kDigestDigits, digest->name));
    digest->taken += static_cast<size_t>(*count);
    return digest->value.substr(digest->taken - static_cast<size_t>(*count), static_cast<size_t>(*count));
}

// "{stem}, {dir} or {ext}"
std::string NamesOf(std::span<const Placeholder> placeholders)
{
    std::string names;
    for (const Placeholder &placeholder : placeholders)
        names += fmt::format("{}{{{}}}",
                             names.empty()                          ? ""
                             : &placeholder == &placeholders.back() ? " or "
                                                                    : ", ",
                             placeholder.name);
    return names;
}

// Makes a path absolute, with links followed. A link that leads nowhere, or where nobody may look, is replaced when it is written
// to, so its place is in its own folder.
fs::path Resolve(const fs::path &path, std::error_code *failure)
{
    fs::path whole = fs::absolute(path, *failure);
    if (*failure)
        return {};
    // The first call takes "none/.." out of the path, the second follows the links behind it. Mostly there is neither.
    if (fs::path plain = fs::weakly_canonical(whole, *failure); !*failure) {
        if (plain == whole)
            return plain;
        whole = std::move(plain);
    }
    fs::path place = fs::weakly_canonical(whole, *failure);
    return *failure ? fs::weakly_canonical(whole.parent_path(), *failure) / whole.filename() : place;
}

bool NamesDigestOfName(const std::string &pattern)
{
    return pattern.find("{namehash") != std::string::npos;
}

bool IsSame(const struct stat &one, const struct stat &two)
{
    return one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

} // namespace

// The extension of a drawing stands before that of the archive that it is packed in.
std::string StemOf(const std::string &input)
{
    const fs::path path = input == "-" ? fs::path("stdin") : fs::path(input);
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return extension == ".gz" || extension == ".xz" ? path.stem().stem().string() : path.stem().string();
}

std::string FillPattern(const std::string &pattern, const NamedDocument &document, const Format &format)
{
    const bool isMirrored = !document.relative.empty() && pattern.find("{relative}") == std::string::npos;
    const std::string whole = WholePattern(pattern, isMirrored ? "{relative}/{stem}.{ext}" : "{stem}.{ext}");
    const std::string folder = document.path == "-" ? "" : fs::path(document.path).parent_path().string();
    Placeholder placeholders[] = {
        {"stem", StemOf(document.path)},
        {"dir", folder.empty() ? "." : folder},
        {"relative", document.relative.empty() ? "." : document.relative},
        {"ext", std::string(format.name)},
        {"number", std::to_string(document.number)},
        {"hash", document.digest, true},
        {"namehash", NamesDigestOfName(whole) ? DigestOf(document.path) : "", true},
        {"ink", document.ink.value_or("")},
    };
    const std::span known(std::begin(placeholders), std::size(placeholders) - (document.ink ? 0 : 1));
    std::string name;
    for (size_t at = 0; at < whole.size();) {
        const size_t end = whole[at] == '{' ? whole.find('}', at) : std::string::npos;
        const std::string_view inside =
            end == std::string::npos ? "" : std::string_view(whole).substr(at + 1, end - at - 1);
        const size_t colon = inside.find(':');
        const auto found = std::ranges::find(known, inside.substr(0, colon), &Placeholder::name);
        const bool isDigits = colon != std::string_view::npos;
        if (end == std::string::npos) {
            name += whole[at++];
            continue;
        }
        if (found == known.end() || (isDigits && !found->isDigest))
            throw UsageError(
                fmt::format("{}: {{{}}} is not known: give {}", pattern, inside, NamesOf(known)));
        name += isDigits ? TakeDigits(inside.substr(colon + 1), &*found) : found->value;
        at = end + 1;
        if (found->name == "relative" && found->value == "." && whole.compare(at, 1, "/") == 0) {
            name.pop_back(); // "a.pdf" rather than "./a.pdf"
            ++at;
        }
    }
    return name;
}

void CheckPattern(const std::string &pattern)
{
    (void)FillPattern(pattern, {"a.vx", "", 1, std::string(kDigestDigits, '0')}, Formats().front());
}

std::string DigestForName(const std::string &input)
{
    if (input == "-")
        throw UsageError(
            "{hash}: standard input has no digest before it is read: name a file, or leave {hash} out");
    const FileDigest found = DigestOfFile(input);
    if (!found.error.empty())
        throw UsageError(fmt::format("{{hash}}: \"{}\": {}", input, found.error));
    return found.digest;
}

bool NamesDigest(const std::string &pattern)
{
    return pattern.find("{hash}") != std::string::npos || pattern.find("{hash:") != std::string::npos;
}

bool IsPattern(const std::string &pattern)
{
    return WholePattern(pattern, "{stem}").find('{') != std::string::npos;
}

std::string PlaceOf(const std::string &path)
{
    std::error_code failure;
    const fs::path place = Resolve(path, &failure);
    return failure ? path : place.string();
}

std::string FolderOf(const std::string &pattern)
{
    const std::string whole = WholePattern(pattern, "{stem}");
    const fs::path folder = fs::path(whole.substr(0, whole.find('{'))).parent_path();
    return folder.empty() ? "." : folder.string();
}

bool LiesIn(const std::string &folder, const std::string &path)
{
    std::error_code failure, otherFailure;
    const fs::path place = Resolve(path, &failure).lexically_relative(Resolve(folder, &otherFailure));
    // A place that may not be looked at cannot be written to either; the error comes when that is tried.
    if (failure || otherFailure)
        return failure == std::errc::permission_denied;
    return !place.empty() && *place.begin() != "..";
}

bool IsSameFile(const std::string &path, const std::string &other)
{
    struct stat one, two;
    return stat(path.c_str(), &one) == 0 && stat(other.c_str(), &two) == 0 && IsSame(one, two);
}

bool IsOpenAs(int descriptor, const std::string &path)
{
    struct stat one, two;
    return fstat(descriptor, &one) == 0 && stat(path.c_str(), &two) == 0 && IsSame(one, two);
}

std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::span<const Format *const> formats, std::string_view option,
                                     const std::optional<std::string> &ink)
{
    std::map<std::string, std::string> readers; // maps a place to the input that is read there
    for (const std::string &input : inputs) {
        if (input != "-")
            readers.emplace(PlaceOf(input), input);
    }
    std::vector<std::string> outputs;
    std::map<std::string, std::string> writers; // maps a place to the input whose result goes there
    size_t number = 0;
    for (const std::string &input : inputs) {
        NamedDocument document = {input, "", ++number, "", ink};
        if (NamesDigest(pattern))
            document.digest = DigestForName(input);
        for (const Format *format : formats) {
            const std::string output = FillPattern(pattern, document, *format);
            const std::string place = output == "-" ? output : PlaceOf(output);
            if (const auto reader = readers.find(place); reader != readers.end())
                throw UsageError(fmt::format("{} {}: would overwrite the input \"{}\": choose another name",
                                             option, pattern, reader->second));
            const auto [writer, isNew] = writers.try_emplace(place, input);
            if (!isNew && formats.size() > 1 && writer->second == input)
                throw UsageError(
                    fmt::format("{0} {1}: the formats of \"{2}\" would all be written to \"{3}\": name "
                                "each after its format, as {0} '{{stem}}.{{ext}}'",
                                option, pattern, InputName(input), output));
            if (!isNew)
                throw UsageError(
                    fmt::format("{0} {1}: \"{2}\" and \"{3}\" would both be written to \"{4}\": name each "
                                "after its input, as {0} '{{dir}}/{{stem}}.{{ext}}'",
                                option, pattern, InputName(writer->second), InputName(input), output));
            outputs.push_back(output);
        }
    }
    return outputs;
}

// The place is looked at, not the name: "none/../a.vx" leads nowhere, and is written to "a.vx" all the same.
void CheckKeepsDrawing(const std::string &pattern, const std::string &output, std::string_view option)
{
    if (output != "-" && IsDrawing(PlaceOf(output)))
        throw UsageError(fmt::format("{} {}: would overwrite the drawing \"{}\": choose another name, or add "
                                     "--force",
                                     option, pattern, output));
}

void CheckKeepsTerminal(const std::string &output, const Format &format)
{
    const bool isText = format.mime.ends_with("+xml");
    if (output == "-" && !isText && isatty(STDOUT_FILENO) == 1)
        throw UsageError(fmt::format("-o -: standard output is a terminal, and a {} is no text: name a file, "
                                     "or pipe it on, or add --force",
                                     format.name));
}

} // namespace vxhost
