#include "library/interface/Calls.h"

#include "host/reading/Utf8.h"
#include "library/Options.h"
#include "library/interface/System.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vxhost
{

namespace
{

constexpr size_t kMostText = sizeof vx_error::text - sizeof "...";

vx_status Fill(vx_error *error, vx_status status, std::string_view text) noexcept
{
    if (error != nullptr) {
        error->status = status;
        const size_t length = std::min(text.size(), sizeof error->text - 1);
        std::memcpy(error->text, text.data(), length);
        error->text[length] = '\0';
    }
    return status;
}

std::string LineOf(const std::exception &thrown)
{
    return Printable(WithoutDashes(thrown.what()), kMostText);
}

vx_status TellOrThrow(const std::exception_ptr &thrown, vx_error *error)
{
    try {
        std::rethrow_exception(thrown);
    } catch (const CallError &ended) {
        return Fill(error, ended.status, LineOf(ended));
    } catch (const OptionError &wrong) {
        return Fill(error, VX_WRONG_OPTION, LineOf(wrong));
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &other) {
        return Fill(error, VX_FAILED, LineOf(other));
    }
}

} // namespace

// An option stands with the two dashes of a command line in the texts that are shared with one.
std::string WithoutDashes(std::string_view text)
{
    constexpr std::string_view kDashes = "--", kLetters = "abcdefghijklmnopqrstuvwxyz-";
    std::string bare;
    for (size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with(kDashes) && (at == 0 || text[at - 1] == ' ')) {
            const std::string_view after = rest.substr(kDashes.size());
            const std::string_view word = after.substr(0, after.find_first_not_of(kLetters));
            at += FindOption(word) != nullptr || FindLibraryOption(word) != nullptr ? kDashes.size() : 0;
        }
        bare += text[at++];
    }
    return bare;
}

vx_status Tell(const std::exception_ptr &thrown, vx_error *error) noexcept
{
    try {
        return TellOrThrow(thrown, error);
    } catch (const std::bad_alloc &) {
        return Fill(error, VX_OUT_OF_MEMORY, "needs more memory than there is: free some, and call again");
    } catch (...) {
        return Fill(error, VX_FAILED, "ended by something unknown: report it");
    }
}

void Clear(vx_error *error) noexcept
{
    (void)Fill(error, VX_OK, "");
}

void CheckThere(const void *argument, std::string_view name)
{
    if (argument == nullptr)
        throw CallError(VX_WRONG_ARGUMENT, std::string(name).append(" is null: give one"));
}

std::string_view CheckText(const char *text, std::string_view name)
{
    CheckThere(text, name);
    if (!IsUtf8(text))
        throw CallError(VX_WRONG_ARGUMENT, std::string(name)
                                               .append(" is \"")
                                               .append(Printable(text, 60))
                                               .append("\", which is not UTF-8: convert it"));
    return text;
}

void CheckSize(size_t given, size_t wanted, std::string_view record)
{
    if (given != wanted)
        throw CallError(VX_WRONG_ARGUMENT, std::string(record) + " has size " + std::to_string(given) +
                                               ", not " + std::to_string(wanted) + ": set it to sizeof(" +
                                               std::string(record) + ")");
}

void CheckIndex(size_t index, size_t count)
{
    if (index >= count)
        throw CallError(VX_WRONG_ARGUMENT, "index " + std::to_string(index) + " of " + std::to_string(count) +
                                               ": stay below the count");
}

} // namespace vxhost
