// One run of a command: the plug-in, the fonts, and the road of each document through a worker process to a
// verdict that a person can read.
#pragma once

#include "cli/CommonOptions.h"
#include "cli/Messages.h"
#include "cli/Status.h"
#include "host/Document.h"
#include "host/Outcome.h"
#include "host/reading/Reading.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost
{

// What a worker finds out about a document.
struct Finding {
    Outcome outcome;
    HeaderFacts header;
    std::string lastOutput; // on which it worked last; empty: standard output
    std::string unconfined; // what the worker could not be kept from; empty: nothing
};

struct Verdict {
    Status status = Status::Done;
    std::string error; // one line; empty: nothing to tell
    std::string
        errorSubject; // what the line is about, if it is not the input: an output, as messages name it
    std::vector<std::string> warnings;
    std::vector<std::string> written; // names of outputs that are in their place
    bool isLookedAt = false;          // the worker came to an end, and found out:
    Finding finding;

    bool MayBeWritten() const { return status == Status::Done || status == Status::Warned; }
};

// Runs in the worker: reads the document in one of Reading's ways.
using Work = std::function<void(Reading &, Finding *)>;

// The work of commands that look at a document and draw nothing.
inline void Look(Reading &reading, Finding *finding)
{
    finding->outcome = reading.Look();
}

// Runs in the worker before it looks at the document: opens what there is to be opened, and says what is to be done,
// one piece after the other. The finding outlives the works.
using Preparation = std::function<std::vector<Work>(Finding *)>;

// What of a message depends on the command.
struct Purpose {
    std::string_view lost; // what an error costs: ", nothing written"
    bool isTrace = false;  // then nobody is sent to vx trace
    bool isFonts = false;  // nor to vx fonts
    bool isBatch = false;  // whose results go further than its user: a file that is no drawing is not quoted
};

// A document that a worker interprets.
struct Interpretation {
    std::string input;
    Purpose purpose;
    std::unique_ptr<Document> document;
    WorkerLimits limits;
    std::unique_ptr<Worker> worker;
};

class Session
{
  public:
    // Throws UsageError when there is no plug-in that works.
    Session(const CommonOptions &options, Messages *messages);

    // Opens the document, runs work on it in a worker, and tells what there is to tell.
    Verdict Interpret(const std::string &input, const Purpose &purpose, const Work &work);

    // The same in its parts, for several documents at once. Each returns null when the verdict is final.
    std::unique_ptr<Document> Open(const std::string &input, FileKinds kinds, Verdict *verdict) const;
    // Works up to the first that fails. The worker may write to the descriptors.
    std::unique_ptr<Interpretation> Begin(const std::string &input, const Purpose &purpose,
                                          std::unique_ptr<Document> document, const Preparation &prepare,
                                          const std::vector<int> &descriptors, Verdict *verdict);
    Verdict End(Interpretation *interpretation) const; // of one whose worker has ended
    void Tell(const std::string &input, const Verdict &verdict);

    const FontList &Fonts() const { return *installation_.fonts; } // of this machine

  private:
    ReadingOptions ReadingOptionsOf() const;
    Verdict JudgeWriteError(const Finding &finding, const Interpretation &interpretation) const;
    Verdict JudgeFailure(const Failure &failure, const Purpose &purpose) const;
    Verdict Judge(const Interpretation &interpretation, Finding finding) const;
    WorkerTask TaskFor(const Document &document, const Preparation &prepare) const;

    const CommonOptions &options_;
    Messages *messages_;
    Installation installation_;
    std::vector<std::string> fontFolders_;
};

Verdict Failed(Status status, std::string error);

// How a message names them.
std::string InputName(const std::string &input);
std::string OutputName(const std::string &output);

} // namespace vxhost
