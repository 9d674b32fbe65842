// The form in which a worker, and the helper program of libvx, tell what they found out, through a pipe: flat, of fixed
// fields, each with its bound. The process that reads it trusts none of it.
#pragma once

#include "host/fonts/FontList.h"
#include "library/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

// Holds what a worker found out about a document.
struct Answer {
    HeaderFacts header;
    Outcome outcome;
    Omitted omitted;
    Confinement confinement;
    uint32_t passes = 0;     // how many were done
    bool needsFonts = false; // it was begun without the fonts of the machine, and needs them
};

constexpr size_t kMaxAnswer = size_t{1} << 20;

std::string WriteAnswer(Answer answer);                   // at most kMaxAnswer bytes
std::optional<Answer> ReadAnswer(std::string_view bytes); // none: they are no answer

// A Result is what became of a document; the paths of its outputs are not part of this form.
std::string WriteResult(Result result); // at most kMaxAnswer bytes
std::optional<Result> ReadResult(std::string_view bytes);

// Holds what a worker found out about the fonts of the machine.
struct FontAnswer {
    std::unique_ptr<FontList> fonts;
    uint32_t omitted = 0;
    Confinement confinement;
};

constexpr size_t kMaxFonts = size_t{1} << 16; // more than can be numbered
constexpr size_t kMaxFontAnswer = size_t{32} << 20;

std::string WriteFonts(const FontList &fonts, Confinement confinement);
std::optional<FontAnswer> ReadFonts(std::string_view bytes);

} // namespace vxhost
