#include "cli/OutputNames.h"

#include "cli/CommonOptions.h"
#include "cli/Session.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>

namespace vxhost
{

namespace
{

namespace fs = std::filesystem;

struct Placeholder {
    std::string_view text;
    std::string value;
};

std::string NameFor(const std::string &pattern, const std::string &input, std::string_view extension)
{
    const fs::path path = input == "-" ? fs::path("stdin") : fs::path(input);
    const std::string folder = path.parent_path().string();
    const Placeholder placeholders[] = {
        {"{stem}", path.stem().string()},
        {"{dir}", folder.empty() ? "." : folder},
        {"{ext}", std::string(extension)},
    };
    std::string name;
    for (size_t at = 0; at < pattern.size();) {
        const Placeholder *found = nullptr;
        for (const Placeholder &placeholder : placeholders) {
            if (pattern.compare(at, placeholder.text.size(), placeholder.text) == 0)
                found = &placeholder;
        }
        name += found != nullptr ? found->value : std::string(1, pattern[at]);
        at += found != nullptr ? found->text.size() : 1;
    }
    return name;
}

// One text for all spellings of a path that need not exist.
std::string Place(const std::string &path)
{
    std::error_code failure;
    const fs::path place = fs::weakly_canonical(path, failure);
    return failure ? path : place.string();
}

} // namespace

std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::string_view extension)
{
    std::string whole = pattern;
    std::error_code failure;
    if (whole.ends_with('/') || (whole != "-" && fs::is_directory(whole, failure)))
        whole += whole.ends_with('/') ? "{stem}.{ext}" : "/{stem}.{ext}";

    std::map<std::string, std::string> readers; // place → the input that is read there
    for (const std::string &input : inputs) {
        if (input != "-")
            readers.emplace(Place(input), input);
    }
    std::vector<std::string> outputs;
    std::map<std::string, std::string> writers; // place → the input whose result goes there
    for (const std::string &input : inputs) {
        const std::string output = NameFor(whole, input, extension);
        const std::string place = output == "-" ? output : Place(output);
        if (const auto reader = readers.find(place); reader != readers.end())
            throw UsageError(fmt::format("-o {}: would overwrite the input \"{}\": choose another name",
                                         pattern, reader->second));
        const auto [writer, isNew] = writers.try_emplace(place, input);
        if (!isNew)
            throw UsageError(
                fmt::format("-o {}: \"{}\" and \"{}\" would both be written to \"{}\": name each after "
                            "its input, as -o '{{dir}}/{{stem}}.{}'",
                            pattern, InputName(writer->second), InputName(input), output, extension));
        outputs.push_back(output);
    }
    return outputs;
}

} // namespace vxhost
