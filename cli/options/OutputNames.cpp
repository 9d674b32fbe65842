#include "cli/options/OutputNames.h"

#include "cli/options/CommonOptions.h"
#include "cli/options/IsDrawing.h"
#include "cli/report/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

struct Placeholder {
    std::string_view text;
    std::string value;
};

// Adds to a pattern that names a folder what names a file in it.
std::string WholePattern(const std::string &pattern)
{
    std::error_code failure;
    if (pattern.ends_with('/'))
        return pattern + "{stem}.{ext}";
    return pattern != "-" && fs::is_directory(pattern, failure) ? pattern + "/{stem}.{ext}" : pattern;
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

// Returns the name without folder and extension: that of a drawing stands before that of the archive that it is packed in.
std::string StemOf(const fs::path &path)
{
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return extension == ".gz" || extension == ".xz" ? path.stem().stem().string() : path.stem().string();
}

bool IsSame(const struct stat &one, const struct stat &two)
{
    return one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

} // namespace

std::string FillPattern(const std::string &pattern, const std::string &input, const Format &format)
{
    const std::string whole = WholePattern(pattern);
    const fs::path path = input == "-" ? fs::path("stdin") : fs::path(input);
    const std::string folder = path.parent_path().string();
    const Placeholder placeholders[] = {
        {"{stem}", StemOf(path)},
        {"{dir}", folder.empty() ? "." : folder},
        {"{ext}", std::string(format.name)},
    };
    std::string name;
    for (size_t at = 0; at < whole.size();) {
        const Placeholder *found = nullptr;
        for (const Placeholder &placeholder : placeholders) {
            if (whole.compare(at, placeholder.text.size(), placeholder.text) == 0)
                found = &placeholder;
        }
        name += found != nullptr ? found->value : std::string(1, whole[at]);
        at += found != nullptr ? found->text.size() : 1;
    }
    return name;
}

std::string PlaceOf(const std::string &path)
{
    std::error_code failure;
    const fs::path place = Resolve(path, &failure);
    return failure ? path : place.string();
}

std::string FolderOf(const std::string &pattern)
{
    const std::string whole = WholePattern(pattern);
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
                                     std::span<const Format *const> formats)
{
    std::map<std::string, std::string> readers; // maps a place to the input that is read there
    for (const std::string &input : inputs) {
        if (input != "-")
            readers.emplace(PlaceOf(input), input);
    }
    std::vector<std::string> outputs;
    std::map<std::string, std::string> writers; // maps a place to the input whose result goes there
    for (const std::string &input : inputs) {
        for (const Format *format : formats) {
            const std::string output = FillPattern(pattern, input, *format);
            const std::string place = output == "-" ? output : PlaceOf(output);
            if (const auto reader = readers.find(place); reader != readers.end())
                throw UsageError(fmt::format("-o {}: would overwrite the input \"{}\": choose another name",
                                             pattern, reader->second));
            const auto [writer, isNew] = writers.try_emplace(place, input);
            if (!isNew && formats.size() > 1 && writer->second == input)
                throw UsageError(
                    fmt::format("-o {}: the formats of \"{}\" would all be written to \"{}\": name "
                                "each after its format, as -o '{{stem}}.{{ext}}'",
                                pattern, InputName(input), output));
            if (!isNew)
                throw UsageError(
                    fmt::format("-o {}: \"{}\" and \"{}\" would both be written to \"{}\": name each "
                                "after its input, as -o '{{dir}}/{{stem}}.{{ext}}'",
                                pattern, InputName(writer->second), InputName(input), output));
            outputs.push_back(output);
        }
    }
    return outputs;
}

// The place is looked at, not the name: "none/../a.vx" leads nowhere, and is written to "a.vx" all the same.
void CheckKeepsDrawing(const std::string &pattern, const std::string &output)
{
    if (output != "-" && IsDrawing(PlaceOf(output)))
        throw UsageError(fmt::format("-o {}: would overwrite the drawing \"{}\": choose another name, or add "
                                     "--force",
                                     pattern, output));
}

} // namespace vxhost
