// Makes every call of vx.h: tells its caller of errors, and lets no exception out.
#pragma once

#include <vx.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace vxhost
{

// Is thrown to end a call. The text is one line; it may name options as a command line does.
struct CallError : std::runtime_error {
    CallError(vx_status callStatus, const std::string &text) : runtime_error(text), status(callStatus) {}
    vx_status status;
};

// Returns the text with the names of options as a program gives them.
std::string WithoutDashes(std::string_view text);

// Fills the caller's record with what was thrown, also when there is no memory left.
vx_status Tell(const std::exception_ptr &thrown, vx_error *error) noexcept;
// Fills the caller's record: there was no error.
void Clear(vx_error *error) noexcept;

template <typename Action>
vx_status Call(vx_error *error, Action &&action) noexcept
{
    if (error != nullptr && error->size != sizeof *error)
        return VX_WRONG_ARGUMENT; // there is nowhere to say why
    try {
        std::forward<Action>(action)();
    } catch (...) {
        return Tell(std::current_exception(), error);
    }
    Clear(error);
    return VX_OK;
}

// Each throws CallError for an argument that is wrong.
void CheckThere(const void *argument, std::string_view name);
std::string_view CheckText(const char *text, std::string_view name); // also for a text that is not UTF-8
void CheckSize(size_t given, size_t wanted, std::string_view record);
void CheckIndex(size_t index, size_t count);

} // namespace vxhost
