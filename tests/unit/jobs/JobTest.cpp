// A document from its opening to its result, with fonts that are listed on the way.
#include "jobs/Job.h"

#include "tests/unit/jobs/JobsFolder.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace vxhost
{
namespace
{

class JobTest : public JobsFolder
{
  protected:
    // A job that looks through the document. Its times of starting over are counted.
    JobTask Task(const std::string &input)
    {
        JobTask task;
        task.input = input;
        task.makePasses = [](Failure *) { return std::vector<Pass>{LookThrough}; };
        task.startOver = [this] { ++startedOver_; };
        return task;
    }

    JobTask TaskOf(std::string_view body) { return Task(Write("a.vx", DocumentOf(body))); }

    // The same with passes of the test's own.
    JobTask TaskWith(const std::vector<Pass> &passes)
    {
        JobTask task = TaskOf(kSquare);
        task.makePasses = [passes](Failure *) { return passes; };
        return task;
    }

    Result Run(JobTask task, Engine *engine)
    {
        Job job(std::move(task), engine);
        if (!job.HasEnded())
            job.Start();
        job.Wait();
        passesDone_ = job.PassesDone();
        return job.Found();
    }

    FaultKind KindOf(JobTask task)
    {
        Engine engine(OptionsOfEngine());
        return Run(std::move(task), &engine).fault.kind;
    }

    int startedOver_ = 0;
    size_t passesDone_ = 0;
};

void WaitFor(Worker *worker)
{
    ASSERT_NE(worker, nullptr);
    (void)Worker::WaitForAny({&worker, 1});
}

TEST_F(JobTest, FindsOutAllOfItsDocument)
{
    Engine engine(OptionsOfEngine());
    const std::string document = DocumentOf(kSquare);
    const Result result = Run(TaskOf(kSquare), &engine);
    EXPECT_FALSE(result.fault);
    EXPECT_TRUE(result.isRead);
    EXPECT_EQ(result.size, document.size());
    EXPECT_EQ(result.header.version, 5);
    EXPECT_EQ(result.outcome.counts.fills, 1U);
    EXPECT_EQ(result.outcome.bytesTotal, static_cast<int64_t>(document.size()));
    EXPECT_EQ(passesDone_, 1U);
}

TEST_F(JobTest, EndsAtOnceWhereThereIsNothingToOpen)
{
    Engine engine(OptionsOfEngine());
    Job job(Task(Path("none.vx")), &engine);
    EXPECT_TRUE(job.HasEnded());
    EXPECT_EQ(job.AwaitedWorker(), nullptr);
    EXPECT_EQ(job.Found().fault.kind, FaultKind::CannotOpen);
    EXPECT_EQ(job.Found().fault.text, "no such file: check the name");
    EXPECT_EQ(job.Found().size, 0U);
    EXPECT_FALSE(job.Found().isRead);
}

TEST_F(JobTest, TellsWhatIsWrongWithTheDocument)
{
    EXPECT_EQ(KindOf(Task(Write("b.vx", "GIF89a, and then some"))), FaultKind::NotADrawing);
    EXPECT_EQ(KindOf(TaskOf("1 k\n")), FaultKind::Malformed);
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    JobTask pipe = Task(Path("pipe"));
    pipe.kinds = FileKinds::Regular;
    EXPECT_EQ(KindOf(pipe), FaultKind::CannotOpen);
}

TEST_F(JobTest, ReadsNoMoreOfAPipeThanMemoryMayHold)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string bytes(3000, '%');
    ASSERT_EQ(write(ends[1], bytes.data(), bytes.size()), 3000);
    EngineOptions options = OptionsOfEngine();
    options.limits.memory = 2000;
    Engine engine(std::move(options));
    const Job job(Task("/dev/fd/" + std::to_string(ends[0])), &engine);
    EXPECT_EQ(job.Found().fault.kind, FaultKind::PipeTooLong);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(JobTest, WaitsForAPipeNoLongerThanTheLimit)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EngineOptions options = OptionsOfEngine();
    options.limits.seconds = 0.05;
    Engine engine(std::move(options));
    const Job job(Task("/dev/fd/" + std::to_string(ends[0])), &engine);
    EXPECT_EQ(job.Found().fault.kind, FaultKind::PipeTooSlow);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(JobTest, TellsThatItsDocumentChanged)
{
    Engine engine(OptionsOfEngine());
    Job job(TaskOf(kSquare), &engine);
    usleep(1000); // so that the time of the change is another
    Write("a.vx", DocumentOf("0 g\n"));
    job.Start();
    job.Wait();
    EXPECT_EQ(job.Found().fault.kind, FaultKind::Changed);
}

TEST_F(JobTest, TellsHowItsWorkerEnded)
{
    EXPECT_EQ(KindOf(TaskWith({[](Reading &) -> Outcome { _exit(0); }})), FaultKind::Crashed);
    EXPECT_EQ(KindOf(TaskWith({[](Reading &) -> Outcome {
                  std::signal(SIGFPE, SIG_DFL);
                  (void)std::raise(SIGFPE);
                  return {};
              }})),
              FaultKind::Crashed);
    EXPECT_EQ(KindOf(TaskWith({[](Reading &) -> Outcome { throw std::bad_alloc(); }})),
              FaultKind::OutOfMemory);
    EngineOptions options = OptionsOfEngine();
    options.limits.seconds = 0.05;
    Engine engine(std::move(options));
    const Pass endless = [](Reading &) -> Outcome {
        while (true)
            pause();
    };
    EXPECT_EQ(Run(TaskWith({endless}), &engine).fault.kind, FaultKind::OutOfTime);
}

TEST_F(JobTest, StopsAtThePassThatFails)
{
    const auto failing = [](FailureKind kind, int error = 0) {
        return [kind, error](Reading &) {
            Outcome outcome;
            outcome.failure = {kind, "why", error};
            return outcome;
        };
    };
    const struct {
        FailureKind failure;
        int error;
        FaultKind fault;
    } kCases[] = {{FailureKind::CannotWrite, ENOSPC, FaultKind::CannotWrite},
                  {FailureKind::CannotWrite, EPIPE, FaultKind::ReaderLeft},
                  {FailureKind::CannotWrite, EFBIG, FaultKind::OutputTooLong},
                  {FailureKind::BadInput, 0, FaultKind::Unfit},
                  {FailureKind::TooLarge, 0, FaultKind::TooLarge},
                  {FailureKind::OutOfMemory, 0, FaultKind::TooLarge}};
    for (const auto &[failure, error, fault] : kCases) {
        EXPECT_EQ(KindOf(TaskWith({LookThrough, failing(failure, error), LookThrough})), fault);
        EXPECT_EQ(passesDone_, 2U);
    }
}

TEST_F(JobTest, DoesNoPassWhereItsWorkerRefuses)
{
    JobTask task = TaskOf(kSquare);
    task.makePasses = [](Failure *failure) {
        *failure = {FailureKind::BadInput, "no"};
        return std::vector<Pass>{LookThrough};
    };
    EXPECT_EQ(KindOf(task), FaultKind::Unfit);
    EXPECT_EQ(passesDone_, 0U);
}

TEST_F(JobTest, TellsItsProgress)
{
    EngineOptions options = OptionsOfEngine();
    std::vector<int> percents;
    options.onProgress = [&](const std::string &input, int percent) {
        EXPECT_EQ(input, Path("a.vx"));
        percents.push_back(percent);
    };
    Engine engine(std::move(options));
    std::string body;
    while (body.size() < 1 << 20)
        body += kSquare;
    EXPECT_FALSE(Run(TaskOf(body), &engine).fault);
    ASSERT_FALSE(percents.empty());
    EXPECT_TRUE(std::ranges::is_sorted(percents));
    EXPECT_EQ(percents.back(), 100);
}

TEST_F(JobTest, ListsFontsWhenADocumentFirstNeedsThem)
{
    Engine engine(OptionsOfEngine());
    EXPECT_FALSE(Run(TaskOf(kSquare), &engine).fault);
    EXPECT_FALSE(engine.HasFonts());
    EXPECT_EQ(startedOver_, 0);
    const Result first = Run(TaskOf(TextOf("/_Helvetica")), &engine);
    EXPECT_FALSE(first.fault);
    EXPECT_EQ(startedOver_, 1);
    ASSERT_EQ(first.outcome.fonts.size(), 1U);
    EXPECT_EQ(first.outcome.fonts[0].served, "NimbusSans-Regular");
    const FontList *listed = engine.Fonts().List().get();
    ASSERT_NE(listed, nullptr);
    EXPECT_EQ(Run(TaskOf(TextOf("/_Times-Roman")), &engine).outcome.fonts[0].served, "NimbusRoman-Regular");
    EXPECT_EQ(startedOver_, 1);
    EXPECT_EQ(engine.Fonts().List().get(), listed);
}

TEST_F(JobTest, HasFontsFromTheStartWhereItSaysSo)
{
    Engine engine(OptionsOfEngine());
    JobTask task = TaskOf(TextOf("/_Helvetica"));
    task.needsFonts = true;
    Job job(std::move(task), &engine);
    job.Start();
    ASSERT_NE(job.AwaitedWorker(), nullptr);
    EXPECT_EQ(job.AwaitedWorker(), engine.Fonts().Listing());
    job.Wait();
    EXPECT_EQ(startedOver_, 0);
    EXPECT_EQ(job.Found().outcome.fonts[0].served, "NimbusSans-Regular");
}

// Whatever way text comes, it has its fonts.
TEST_F(JobTest, StartsOverWhereTextComesUnannounced)
{
    const Pass shows = [](Reading &) {
        Outcome outcome;
        outcome.headerAccepted = true;
        outcome.counts.shows = 1;
        return outcome;
    };
    const Pass undrawn = [](Reading &) {
        Outcome outcome;
        outcome.undrawnTexts = 1;
        return outcome;
    };
    const Pass reports = [](Reading &) {
        Outcome outcome;
        outcome.reports = {{kVXProblemFont, "", ""}};
        return outcome;
    };
    int expected = 0;
    for (const Pass &pass : {shows, undrawn, reports}) {
        Engine fresh(OptionsOfEngine());
        EXPECT_FALSE(Run(TaskWith({LookThrough, pass, LookThrough}), &fresh).fault);
        EXPECT_EQ(startedOver_, ++expected);
        EXPECT_EQ(passesDone_, 3U);
        EXPECT_TRUE(fresh.HasFonts());
    }
}

TEST_F(JobTest, SharesTheListingWithOthers)
{
    Engine engine(OptionsOfEngine());
    const std::string text = Write("text.vx", DocumentOf(TextOf("/_Helvetica")));
    Job one(Task(text), &engine), two(Task(text), &engine), plain(TaskOf(kSquare), &engine);
    for (Job *job : {&one, &two, &plain})
        job->Start();
    for (Job *job : {&one, &two}) {
        WaitFor(job->AwaitedWorker());
        job->GoOn();
        EXPECT_EQ(job->AwaitedWorker(), engine.Fonts().Listing());
    }
    for (Job *job : {&two, &plain, &one}) {
        job->Wait();
        EXPECT_FALSE(job->Found().fault);
    }
    EXPECT_EQ(startedOver_, 2);
}

// Else whoever waits for all workers would wait for nothing.
TEST_F(JobTest, GoesOnWhereTheListingHasEndedAndNobodyLookedYet)
{
    Engine engine(OptionsOfEngine());
    Job job(TaskOf(TextOf("/_Helvetica")), &engine);
    job.Start();
    WaitFor(job.AwaitedWorker());
    WaitFor(engine.Fonts().Listing());
    job.GoOn();
    ASSERT_NE(job.AwaitedWorker(), nullptr);
    EXPECT_FALSE(job.AwaitedWorker()->HasEnded());
    job.Wait();
    EXPECT_FALSE(job.Found().fault);
}

// A pipe among the files of fonts, which nobody writes to.
TEST_F(JobTest, EndsWithTheFaultOfTheListingWhereItNeedsFontsAndNowhereElse)
{
    std::filesystem::create_directory(Path("fonts"));
    ASSERT_EQ(mkfifo(Path("fonts/a.otf").c_str(), 0600), 0);
    EngineOptions options = OptionsOfEngine();
    options.fonts = {false, {Path("fonts")}};
    options.limits.seconds = 3;
    Engine engine(std::move(options));
    const std::string text = Write("text.vx", DocumentOf(TextOf("/_Helvetica")));
    Job one(Task(text), &engine), two(Task(text), &engine);
    one.Start();
    two.Start();
    EXPECT_FALSE(Run(TaskOf(kSquare), &engine).fault);
    for (Job *job : {&one, &two}) {
        job->Wait();
        EXPECT_EQ(job->Found().fault.kind, FaultKind::OutOfTime);
        EXPECT_TRUE(job->Found().fault.isOfFontListing);
        EXPECT_FALSE(job->Found().isRead);
    }
    EXPECT_FALSE(Run(TaskOf(kSquare), &engine).fault);
    JobTask late = Task(text);
    late.needsFonts = true;
    EXPECT_EQ(Run(std::move(late), &engine).fault.kind, FaultKind::OutOfTime); // and is not listed again
    EXPECT_EQ(engine.WaitForFonts(), nullptr);
}

TEST_F(JobTest, IsConfinedOrNotDoneWhereItHasToBe)
{
    EngineOptions options = OptionsOfEngine();
    options.mustBeConfined = true;
    Engine engine(std::move(options));
    for (const std::string &body : {std::string(kSquare), TextOf("/_Helvetica")}) {
        const Result result = Run(TaskOf(body), &engine);
        EXPECT_EQ(result.fault.kind, result.confinement.IsWhole() ? FaultKind::None : FaultKind::NotConfined);
        EXPECT_EQ(result.outcome.headerAccepted, result.confinement.IsWhole());
    }
}

TEST_F(JobTest, HasNoDescriptorsButItsOwn)
{
    Engine engine(OptionsOfEngine());
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    JobTask task = TaskWith({[ends](Reading &) {
        Outcome outcome;
        outcome.bytesRead = write(ends[1], "a", 1);
        return outcome;
    }});
    Job with(task, &engine), without(task, &engine);
    with.Start({ends[1]});
    with.Wait();
    without.Start();
    without.Wait();
    EXPECT_EQ(with.Found().outcome.bytesRead, 1);
    EXPECT_EQ(without.Found().outcome.bytesRead, -1);
    close(ends[0]);
    close(ends[1]);
}

// As where the disk keeps this process waiting.
TEST_F(JobTest, IsNotLateWhereNobodyLookedInTime)
{
    EngineOptions options = OptionsOfEngine();
    options.limits.seconds = 2;
    Engine engine(std::move(options));
    Job job(TaskOf(kSquare), &engine);
    job.Start();
    usleep(2100000);
    job.Wait();
    EXPECT_EQ(job.Found().fault.kind, FaultKind::None);
}

TEST(LimitsOfListing, HaveAClockWhateverTheRunHas)
{
    WorkerLimits limits;
    limits.seconds = 0;
    limits.output = 1024;
    EXPECT_EQ(LimitsOfListing(limits).seconds, 60);
    EXPECT_EQ(LimitsOfListing(limits).output, int64_t{256} << 20); // a cache is no output
    limits.seconds = 5;
    limits.memory = 7;
    EXPECT_EQ(LimitsOfListing(limits).seconds, 5);
    EXPECT_EQ(LimitsOfListing(limits).memory, 7);
}

} // namespace
} // namespace vxhost
