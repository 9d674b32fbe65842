// A host for tests: a document in memory, a table that writes down every call, memory that counts and can fail, and a
// Toolbox with a few fonts that exist in name only.
//
// One parse at a time. What a test changes in here holds for the calls after it.
#pragma once

#include "host/toolbox/HostContext.h"
#include "host/trace/TraceLines.h"
#include "host/trace/TraceTable.h"

#include <vx/HostCall.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vxtest
{

class RecordingHost
{
  public:
    RecordingHost();
    RecordingHost(const RecordingHost &) = delete;
    RecordingHost &operator=(const RecordingHost &) = delete;

    // What was called, in the form of "vx trace", with "report N" where a problem was reported.
    std::vector<std::string> lines;
    std::string Joined() const; // the lines with "; " between them

    bool stopAtReport = false;     // every report is answered with "stop"
    std::vector<int> stopOnReport; // reports of these numbers are answered with "stop"
    bool refuseFonts = false;      // the question about fonts is answered with "stop"

    // All fields are set to work. A test may change them before it calls.
    HostCallRecord record = {};
    ZRKProcs *procs() { return table_.Procs(); }
    bool TableIsAsItWas(); // since the last call began

    // How many bytes a read says that it delivers, given what is left and what is wanted; it never delivers more than
    // those. Unset: as many as there are.
    std::function<int32_t(std::string_view left, int32_t wanted)> readCount;
    struct Delivery {
        size_t position; // in the document
        int32_t count;
        bool isShort; // more was wanted, and there was more
    };
    std::vector<Delivery> deliveries; // one a read

    int failAllocation = 0;     // n > 0: the n-th from now fails
    int failFromAllocation = 0; // n > 0: the n-th from now and all after it fail
    int allocations = 0;        // asked for, failed ones included
    int liveBlocks = 0;
    int64_t liveBytes = 0;
    int64_t peakBytes = 0;

    std::vector<std::string> fontNames = {"Helvetica", "Times-Roman", "Courier"};
    std::function<int32_t(int16_t number, int16_t character)> widthOf; // unset: half an em each
    int16_t systemScript = 0;
    vxhost::HostContext toolbox; // the rest: dialogs, screen, string lists

    void SetDocument(std::string bytes);
    int16_t Call(int32_t selector);
    int16_t Parse(std::string document); // SetDocument and kVXParse

  private:
    // The first member's address is all that the plug-in hands back.
    struct Stream {
        StreamReader reader;
        RecordingHost *host;
    };

    static int32_t Read(StreamReader *reader, int32_t op, void *arg, int32_t *inout);
    int32_t Deliver(void *to, int32_t wanted);
    static void *Allocate(int32_t size, void *refcon);
    static void Release(void *block, void *refcon);
    bool Report(const std::string &title);
    bool DoesNextAllocationFail();

    vxhost::TraceLines writer_;
    vxhost::TraceTable table_;
    ZRKProcs tableBefore_;
    std::string document_;
    size_t position_ = 0;
    Stream stream_;
    MemoryProcs memory_;
};

} // namespace vxtest
