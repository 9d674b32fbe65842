// Why something could not be done: one value, made where the reason is known and passed up unchanged.
#pragma once

#include <cstdint>
#include <string>

namespace vxhost
{

enum class FailureKind : uint8_t {
    None,
    OutOfMemory, // the machine has no more, or the limit is reached; the text is empty where nothing more is known
    TooLarge,    // a picture of more pixels than there may be
    CannotWrite, // the output cannot be written
    BadInput     // the document, its fonts or the options do not allow it
};

struct [[nodiscard]] Failure {
    FailureKind kind = FailureKind::None;
    std::string text = {}; // one line for a person
    int error = 0;         // the errno of a write that failed; 0: it is not known

    explicit operator bool() const { return kind != FailureKind::None; }
    bool IsOfWriting() const { return kind == FailureKind::CannotWrite; }
};

} // namespace vxhost
