// Says what became of one document, in kinds and values. Whoever tells a person of it finds the words.
#pragma once

#include "host/Outcome.h"
#include "host/reading/HeaderScan.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxhost
{

enum class FaultKind : uint8_t {
    None,
    // What is wrong with the document:
    CannotOpen,   // the text says why
    PipeTooSlow,  // a pipe did not deliver it within the limit of time
    PipeTooLong,  // a pipe delivers more than may be held in memory
    Changed,      // somebody wrote to it while it was read
    NotADrawing,  // the header's facts say what it is
    Malformed,    // up to Outcome::bytesRead
    LacksFont,    // Outcome::lackedFont
    PluginFailed, // with Outcome::result
    Unfit,        // there can be no such output of it; the text says why
    // Which limit was hit:
    OutOfTime,
    OutOfMemory,
    OutOfProcessorTime, // the caller allows no more, as by ulimit -t
    OutputTooLong,
    FileTooLong, // the caller allows no more, as by ulimit -f
    TooLarge,    // a picture, or what is unpacked; the text says what to do
    // What is wrong with an output:
    OutputIsFolder,
    OutputIsSpecial, // the text says what: "a pipe"
    NobodyReads,     // it is a pipe
    NoFolder,
    OutputTaken, // another document of the run was written to it
    CannotWrite,
    NoTemporaryFile,
    ReaderLeft, // as head does when it has what it wanted
    // What became of the worker:
    NoWorker,
    Killed,  // as the system does when memory runs out
    Crashed, // the text says how
    BadAnswer,
    NotConfined, // though it had to be
};

struct Fault {
    FaultKind kind = FaultKind::None;
    std::string text = {};
    int error = 0;                // errno, where the kind has one
    bool isOfFontListing = false; // it kept the fonts of the machine from being known

    explicit operator bool() const { return kind != FaultKind::None; }
};

// Says what kept a worker to its document. An error is the errno that came instead.
struct Confinement {
    bool byLandlock = false; // it kept the worker from files
    bool bySeccomp = false;  // it kept the worker from system calls
    int landlockError = 0;
    int seccompError = 0;

    bool IsWhole() const { return byLandlock && bySeccomp; }
};

// Counts what is not listed, because an answer has its bounds.
struct Omitted {
    uint32_t reports = 0;
    uint32_t fonts = 0;
    uint32_t processColours = 0, customColours = 0, declaredFonts = 0;
    uint32_t layers = 0;
    uint32_t spots = 0;
};

struct Result {
    Fault fault;
    std::string output;               // what the fault is about: an output's path; empty: the document
    std::vector<std::string> written; // paths of outputs that are in their place

    size_t size = 0;     // of the document, bytes; 0: it could not be opened
    bool isRead = false; // the worker came to its end, and found out what follows
    HeaderFacts header;
    Outcome outcome;
    Omitted omitted;
    Confinement confinement;
};

} // namespace vxhost
