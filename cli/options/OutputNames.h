// Decides where each result goes: to one name, or to one that a pattern makes for each document.
#pragma once

#include "library/Format.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// A document, as patterns name outputs after it.
struct NamedDocument {
    std::string path;     // "-" is standard input
    std::string relative; // its folder below the one that was named, "." for that itself; empty: none was
    size_t number = 1;    // among those of the run
    std::string digest;   // of its bytes; needed where NamesDigest
    std::optional<std::string> ink = {}; // of the plate that is named; none: no plate is
};

// Makes a name of a pattern, in which these stand for what is known of the document:
//
//   {stem}      its name without folder and last extension, for "a.vx.gz" and "a.vx.xz" without the last two
//   {dir}       its folder, "." if it has none
//   {relative}  its folder below the one that was named, "." if none was
//   {ext}       the format's extension
//   {number}    its number
//   {hash}      the digest of its bytes
//   {namehash}  that of its name
//   {ink}       the ink of a plate
//
// {hash:2} and {namehash:2} are two digits, those behind the ones that the pattern took before. A pattern that names a folder
// gets "{stem}.{ext}", for a document of a folder "{relative}/{stem}.{ext}" if it has no {relative} yet. Throws UsageError when more digits are asked for
// than there are, and for other words in braces.
std::string FillPattern(const std::string &pattern, const NamedDocument &document, const Format &format);

// Throws UsageError when the pattern cannot be filled, whatever the document.
void CheckPattern(const std::string &pattern);

// Returns whether the pattern names outputs after the digest of their document.
bool NamesDigest(const std::string &pattern);

// Returns the digest of a document's bytes. Throws UsageError when there is none.
std::string DigestForName(const std::string &input);

// Returns whether the pattern has a part that is filled in, or gets one.
bool IsPattern(const std::string &pattern);

// Returns the name of a document without folder and extension; of one that is packed, without both.
std::string StemOf(const std::string &input);

// Returns one text for all spellings of a path, which need not exist.
std::string PlaceOf(const std::string &path);

// Returns the folder that a pattern names before its first "{"; "." if it names none.
std::string FolderOf(const std::string &pattern);

// Returns whether what is written to the path comes to lie in the folder, or below. Links are followed as they are now: this is
// no defence against somebody who changes them while a document is drawn.
bool LiesIn(const std::string &folder, const std::string &path);

// Each returns whether both lead to one file: two names, or a descriptor and a name.
bool IsSameFile(const std::string &path, const std::string &other);
bool IsOpenAs(int descriptor, const std::string &path);

// Makes the names of all outputs: input by input, a name for each of the formats. Throws UsageError when two results would share
// an output, or an output is one of the inputs; it names the option that the pattern is of. ink: that of a plate.
std::vector<std::string> OutputNames(const std::string &pattern, const std::vector<std::string> &inputs,
                                     std::span<const Format *const> formats, std::string_view option = "-o",
                                     const std::optional<std::string> &ink = {});

// Throws UsageError when the output would overwrite a drawing.
void CheckKeepsDrawing(const std::string &pattern, const std::string &output, std::string_view option = "-o");

// Throws UsageError when the output would fill a terminal with bytes that are no text.
void CheckKeepsTerminal(const std::string &output, const Format &format);

} // namespace vxhost
