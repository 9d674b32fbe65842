// A document on its way to its outputs.
#include "jobs/Rendering.h"

#include "tests/unit/jobs/JobsFolder.h"

#include <sys/stat.h>

namespace vxhost
{
namespace
{

using Paths = std::vector<std::string>;

class RenderingTest : public JobsFolder
{
  protected:
    RenderTask Task(std::string_view body, const Paths &formats = {"png"}) const
    {
        RenderTask task;
        task.input = Write("a.vx", DocumentOf(body));
        for (const std::string &format : formats)
            task.outputs.push_back({FindFormat(format), Path("a." + format)});
        return task;
    }

    static Result Run(RenderTask task, Engine *engine)
    {
        Rendering rendering(std::move(task), engine);
        rendering.Wait();
        EXPECT_TRUE(rendering.HasEnded());
        return rendering.Finish();
    }
};

TEST_F(RenderingTest, WritesEachOutput)
{
    Engine engine(OptionsOfEngine());
    const Result result = Run(Task(kSquare, {"png", "pdf", "svg"}), &engine);
    EXPECT_FALSE(result.fault);
    EXPECT_EQ(result.written, (Paths{Path("a.png"), Path("a.pdf"), Path("a.svg")}));
    EXPECT_EQ(Names(), (Paths{"a.pdf", "a.png", "a.svg", "a.vx"}));
    EXPECT_FALSE(engine.HasFonts());
}

// However the fonts came: listed in the middle of the first pass, or of a later one, or there from the start.
TEST_F(RenderingTest, StartsOverWithoutATrace)
{
    Engine engine(OptionsOfEngine());
    const RenderTask task = Task(TextOf("/_Helvetica"), {"png", "svg"});
    EXPECT_FALSE(Run(task, &engine).fault);
    ASSERT_TRUE(engine.HasFonts());
    const std::string png = Read("a.png"), svg = Read("a.svg");
    EXPECT_FALSE(Run(task, &engine).fault);
    EXPECT_EQ(Read("a.png"), png);
    EXPECT_EQ(Read("a.svg"), svg);
    Engine listed(OptionsOfEngine());
    ASSERT_NE(listed.WaitForFonts(), nullptr);
    EXPECT_FALSE(Run(task, &listed).fault);
    EXPECT_EQ(Read("a.png"), png);
    EXPECT_EQ(Read("a.svg"), svg);
    EXPECT_NE(svg.find("font"), std::string::npos);
}

TEST_F(RenderingTest, LeavesNothingWhereOneOutputCannotBe)
{
    Engine engine(OptionsOfEngine());
    RenderTask task = Task(kSquare, {"png", "pdf"});
    task.outputs[1].path = Path("none/a.pdf");
    const Result result = Run(task, &engine);
    EXPECT_EQ(result.fault.kind, FaultKind::NoFolder);
    EXPECT_EQ(result.output, Path("none/a.pdf"));
    EXPECT_EQ(result.written, Paths());
    EXPECT_EQ(Names(), Paths{"a.vx"});
}

TEST_F(RenderingTest, LeavesNothingOfADocumentThatFails)
{
    Engine engine(OptionsOfEngine());
    Write("a.svg", "old");
    const Result result = Run(Task(std::string(kSquare) + "1 k\n", {"png", "svg"}), &engine);
    EXPECT_EQ(result.fault.kind, FaultKind::Malformed);
    EXPECT_EQ(result.written, Paths());
    EXPECT_EQ(Names(), (Paths{"a.svg", "a.vx"}));
    EXPECT_EQ(Read("a.svg"), "old");
}

TEST_F(RenderingTest, NamesTheOutputThatFailed)
{
    EngineOptions options = OptionsOfEngine();
    options.limits.output = 2000;
    Engine engine(std::move(options));
    std::string body = "0 g\n0 0 m\n";
    for (int i = 0; i < 3000; ++i) // points that a picture takes no room for, and an SVG does
        body += std::to_string(i * 7 % 71) + " " + std::to_string(i * 11 % 35) + " L\n";
    RenderTask task = Task(body + "f\n", {"png", "svg"});
    task.settings.png.width = 1;
    const Result result = Run(task, &engine);
    EXPECT_EQ(result.fault.kind, FaultKind::OutputTooLong);
    EXPECT_EQ(result.output, Path("a.svg"));
    EXPECT_EQ(Names(), Paths{"a.vx"});
}

TEST_F(RenderingTest, EndsAtOnceWithoutItsDocument)
{
    Engine engine(OptionsOfEngine());
    RenderTask task = Task(kSquare);
    task.input = Path("none.vx");
    Rendering rendering(task, &engine);
    EXPECT_TRUE(rendering.HasEnded());
    EXPECT_EQ(rendering.AwaitedWorker(), nullptr);
    EXPECT_EQ(rendering.Finish().fault.kind, FaultKind::CannotOpen);
    EXPECT_EQ(Names(), Paths{"a.vx"});
}

TEST_F(RenderingTest, TriesDevicesBeforeTheFirstDocument)
{
    Engine engine(OptionsOfEngine());
    const std::vector<const Format *> formats = {FindFormat("svg"), FindFormat("png")};
    Settings settings;
    Trial trial = TryDevices(formats, settings, &engine);
    EXPECT_FALSE(trial.fault);
    EXPECT_FALSE(trial.failure);
    settings.png.profile = Write("no.icc", "no profile, of some length");
    trial = TryDevices(formats, settings, &engine);
    EXPECT_FALSE(trial.fault);
    EXPECT_TRUE(trial.failure);
    EXPECT_EQ(trial.format, formats[1]);
    settings.png.profile = folder_.string();
    EXPECT_TRUE(TryDevices(formats, settings, &engine).failure);
}

// A profile is read where a crash costs nothing; a pipe holds nothing up.
TEST_F(RenderingTest, TriesAProfileWithinTheLimits)
{
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    EngineOptions options = OptionsOfEngine();
    options.limits.seconds = 2;
    Engine engine(std::move(options));
    const std::vector<const Format *> formats = {FindFormat("png")};
    Settings settings;
    settings.png.profile = Path("pipe");
    const Trial trial = TryDevices(formats, settings, &engine);
    EXPECT_TRUE(trial.fault || trial.failure);
}

} // namespace
} // namespace vxhost
