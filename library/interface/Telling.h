// What a caller is told of a drawing that was read, in its own process or in another: warnings, and why there is no picture.
#pragma once

#include "library/Options.h"
#include "library/Result.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

// Returns the warnings, a line each, which a terminal shows as it is.
std::vector<std::string> ListTold(const Outcome &outcome, const Omitted &omitted = {});

// Each throws CallError, for any but a success. size: of the document, bytes.
void CheckFailure(const Failure &failure);
void CheckOutcome(const Outcome &outcome, const HeaderFacts &header, size_t size, const Settings &settings);

// isLimit: it is max-memory that was hit.
[[noreturn]] void ThrowOutOfMemory(const Settings &settings, bool isLimit);
[[noreturn]] void ThrowOutOfTime(const Settings &settings);
[[noreturn]] void ThrowOutputTooLong(int64_t most);
[[noreturn]] void ThrowChanged();

// Throws CallError when a page with that box shows nothing.
void CheckShown(const Box &box);

} // namespace vxhost
