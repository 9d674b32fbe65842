// A host that misbehaves as some bytes of the input say, and checks what the plug-in does to it: every block comes back,
// the procedure table stays as it was, every pointer that it is handed can be read to its end.
#pragma once

#include "host/fonts/FixedFontList.h"
#include "host/toolbox/HostContext.h"

#include <vx/HostCall.h>
#include <vx/Procs.h>
#include <vx/TextRecord.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace vxfuzz
{

// What the bytes stand for. All 0: a host that does everything right.
struct Behaviour {
    uint8_t selector; // 0: parse
    uint8_t maxRead;  // most bytes that a read delivers; 0: all that were asked for
    uint8_t badReads; // bits: now and then nothing, a negative count, a failure of the call
    uint8_t failures; // 0: none; else about one allocation in so many fails
    uint8_t stops;    // reports whose number has its bit set are answered with "stop"
    uint8_t missing;  // bits: no drawing, no report, no progress, no table, a short table, warnings off
    uint8_t fonts;    // 0: three names; else how many, of odd shapes
    uint8_t seed;     // decides when it happens what happens now and then
};

// Splits an input: the behaviour stands in the last bytes, so that a plain document is a well-behaved input as well.
struct Input {
    Behaviour behaviour = {};
    std::span<const uint8_t> document;

    Input(const uint8_t *data, size_t size);
};

class HostileHost
{
  public:
    explicit HostileHost(const Input &input);
    HostileHost(const HostileHost &) = delete;
    HostileHost &operator=(const HostileHost &) = delete;

    // Makes the call that the behaviour asks for, then checks that nothing is left behind. Ends the program if not.
    int16_t Call();

  private:
    struct Stream {
        StreamReader reader;
        HostileHost *host;
    };

    static int32_t Read(StreamReader *reader, int32_t op, void *arg, int32_t *inout);
    static void *Allocate(int32_t size, void *refcon);
    static void Release(void *block, void *refcon);
    static uint8_t Report(const uint8_t *title, const uint8_t *message, int32_t titleEmpty);
    int32_t Deliver(void *to, int32_t wanted);
    uint32_t Roll(); // rolls the dice
    void MakeFonts();
    void MakeTable();

    const Input &input_;
    uint32_t dice_;
    size_t position_ = 0;
    std::unordered_map<void *, std::unique_ptr<uint8_t[]>> blocks_;
    std::unique_ptr<vxhost::FixedFontList> fonts_;
    vxhost::HostContext toolbox_;
    ZRKProcs procs_ = {};
    MemoryProcs memory_;
    Stream stream_;
    HostCallRecord record_ = {};
};

} // namespace vxfuzz
