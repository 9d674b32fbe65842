#include "library/interface/Telling.h"

#include "host/SystemText.h"
#include "host/reading/Utf8.h"
#include "library/OptionValues.h"
#include "library/Warnings.h"
#include "library/interface/Calls.h"

#include <vx/HostCall.h>

#include <new>

namespace vxhost
{

namespace
{

// Writes a number as a person does: 60, 0.5.
std::string SecondsText(double seconds)
{
    std::string text = std::to_string(seconds);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

} // namespace

std::vector<std::string> ListTold(const Outcome &outcome, const Omitted &omitted)
{
    constexpr size_t kMostWarning = 1000;
    std::vector<std::string> told;
    for (const auto &warnings : {ListWarnings(outcome, "install it"), ListOmitted(omitted)}) {
        for (const std::string &warning : warnings)
            told.push_back(Printable(warning, kMostWarning));
    }
    return told;
}

void CheckFailure(const Failure &failure)
{
    switch (failure.kind) {
    case FailureKind::None:
        return;
    case FailureKind::OutOfMemory:
        if (failure.text.empty())
            throw std::bad_alloc();
        throw CallError(VX_LIMIT, failure.text);
    case FailureKind::TooLarge:
        throw CallError(VX_LIMIT, failure.text);
    case FailureKind::CannotWrite:
        throw CallError(VX_CANNOT_WRITE, "cannot be kept in a temporary file, " +
                                             (failure.error != 0 ? SystemText(failure.error) : failure.text) +
                                             ": name another folder in temp-dir");
    case FailureKind::BadInput:
        throw CallError(VX_WRONG_OPTION, failure.text);
    }
}

void CheckOutcome(const Outcome &outcome, const HeaderFacts &header, size_t size, const Settings &settings)
{
    switch (outcome.result) {
    case kVXOk:
        return CheckFailure(outcome.failure);
    case kVXOutOfMemory:
        if (outcome.failure.kind == FailureKind::TooLarge)
            CheckFailure(outcome.failure);
        ThrowOutOfMemory(settings, outcome.memoryLimitHit);
    case kVXStoppedByUser:
        throw CallError(VX_FONT_MISSING, "no font \"" + outcome.lackedFont +
                                             "\": install it, or set missing-fonts to substitute");
    case kVXBadFormat:
        if (!outcome.headerAccepted)
            throw CallError(VX_NOT_A_DRAWING, WhyRefused(header, size));
        throw CallError(VX_MALFORMED, "malformed" + MalformedPlace(outcome) +
                                          (outcome.end.isSaid ? "" : ", the file may be cut short") +
                                          ": get a whole copy" +
                                          (CanSalvage(outcome) ? ", or set salvage to yes" : ""));
    default:
        throw CallError(VX_FAILED, "the interpreter gave result " + std::to_string(outcome.result) +
                                       ": keep the document and report it");
    }
}

void ThrowOutOfMemory(const Settings &settings, bool isLimit)
{
    if (isLimit && settings.memory > 0)
        throw CallError(VX_LIMIT, "needs more than " + SizeText(settings.memory) +
                                      " of memory: allow more with max-memory");
    throw std::bad_alloc();
}

void ThrowOutOfTime(const Settings &settings)
{
    throw CallError(VX_LIMIT,
                    "not done after " + SecondsText(settings.seconds) + " s: allow more with max-time");
}

void ThrowOutputTooLong(int64_t most)
{
    throw CallError(VX_LIMIT, "takes more than " + SizeText(most) + ": allow more with max-output");
}

void ThrowChanged()
{
    throw CallError(VX_CANNOT_READ, "changed while it was read: try again when nothing writes to it");
}

void CheckShown(const Box &box)
{
    if (box.Width() <= 0 || box.Height() <= 0)
        throw CallError(VX_WRONG_OPTION, "its bounding box is empty: set box to L,B,R,T in points");
}

} // namespace vxhost
