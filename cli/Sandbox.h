// Takes from the process what interpreting a document does not need: every file but the named ones, programs, sockets,
// other processes.
//
// What is open stays open. Linux only: Landlock for files, seccomp for the rest. There is no way back.
#pragma once

#include <span>
#include <string>

namespace vxhost
{

// Files and folders that stay readable, with all below them. Returns an empty string, or what the kernel lacks or
// refuses, as part of a message; the rest is in force nevertheless.
std::string EnterSandbox(std::span<const std::string> readable);

} // namespace vxhost
