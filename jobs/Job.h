// Takes one document through a worker process to a Result.
//
// Whoever waits for a job waits for the worker that it names, its own or the one that lists fonts, and then lets it go on.
#pragma once

#include "host/Document.h"
#include "host/reading/Reading.h"
#include "jobs/Engine.h"
#include "jobs/Worker.h"
#include "library/Result.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

// Goes through the document once, in the worker.
using Pass = std::function<Outcome(Reading &)>;

// Reads the document to its end and draws nothing.
inline Outcome LookThrough(Reading &reading)
{
    return reading.Look();
}

struct JobTask {
    std::string input;                  // a path; "-" is standard input
    std::shared_ptr<Document> document; // as an earlier job opened it; null: the input is opened
    FileKinds kinds = FileKinds::All;
    std::vector<std::string> readable; // files that it may open, beside those of fonts
    bool needsFonts = false;           // read it with fonts from the start
    bool touchesMuchMemory = false;    // megabytes, as a picture's pixels
    LayerChoice layers;                // that are painted
    bool keepsSpots = true;            // false: spot inks are painted in process colours
    bool readsTexts = false;           // tell where texts begin and end, whatever the engine's options say

    // Makes the threads of the worker, which can have none later. Null: it is to have none.
    std::function<void()> makeThreads;
    // Runs in the worker, confined, and may refuse. Passes are done one after the other, up to the first that fails.
    std::function<std::vector<Pass>(Failure *)> makePasses;
    // Runs in this process when the document has to be read again, with fonts. Null: nothing has to be undone.
    std::function<void()> startOver;
};

class Job
{
  public:
    // Opens the document: if it cannot, the job has ended. The engine must outlive this object.
    Job(JobTask task, Engine *engine);
    Job(const Job &) = delete;
    Job &operator=(const Job &) = delete;

    // Starts a job that has not ended. The worker may use these descriptors.
    void Start(std::vector<int> descriptors = {});

    bool HasEnded() const { return state_ == State::Ended; }
    // The worker that has to end before the job can go on; null: it can go on, or has ended.
    Worker *AwaitedWorker();
    void GoOn();
    void Wait(); // until it has ended

    // Once it has ended: what became of the document, and how many passes were done.
    const Result &Found() const { return result_; }
    size_t PassesDone() const { return passesDone_; }
    const std::shared_ptr<Document> &Opened() const
    {
        return document_;
    } // null: it could not be, or the job has ended

  private:
    enum class State { Opened, AwaitsFonts, Works, Ended };

    void Open();
    void StartWorker();
    std::string Work(WorkerLink &link) const;
    void TakeAnswer(const std::string &bytes);
    void AwaitFonts();
    void EndWith(Fault fault);
    Fault FaultOf(const Result &result) const;

    JobTask task_;
    std::vector<int> descriptors_;
    Engine *engine_;
    State state_ = State::Opened;
    std::shared_ptr<Document> document_;
    WorkerLimits limits_;
    bool hasFonts_ = false; // the worker at work has the fonts of the machine
    std::unique_ptr<Worker> worker_;
    Result result_;
    size_t passesDone_ = 0;
};

} // namespace vxhost
