#include "RunnerFixture.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = boost::filesystem;

namespace
{
const char* const FallingCircle = "FileInfo.version = 2;\n"
                                  "Sim.airSwitch = false;\n"
                                  "Scene.addCircle {\n"
                                  "    entityID = 41; geomID = 51; pos = [1.0, 5.0]; radius = 0.5\n"
                                  "};\n"
                                  "Scene.addPlane { entityID = 42; geomID = 52 }";

TEST_F(RunnerTest, PrintsHelpAndVersion)
{
    const Result help = Run({"--help"});
    EXPECT_EQ(0, help.exitCode);
    for (const char* option :
         {"--workdir DIR", "CODE", "FILE", "--steps N", "--seconds S", "--save FILE",
          "--save-config FILE", "--csv FILE", "--every K", "--contacts-csv FILE",
          "--water-csv FILE", "--times FILE", "--stats", "-q", "--help", "--version"})
        EXPECT_NE(std::string::npos, help.out.find(option)) << option;
    const Result version = Run({"--version"});
    EXPECT_EQ(0, version.exitCode);
    EXPECT_EQ("Quib beta 4.0\n", version.out);
    EXPECT_TRUE(IsTidy());
}

TEST_F(RunnerTest, RefusesABadCommandLine)
{
    const std::vector<std::vector<std::string>> lines = {
        {"--nonsense"},
        {"--st", "3"},
        {"--steps"},
        {"--steps", "many"},
        {"--steps", "1.5"},
        {"--steps", "-1"},
        {"--seconds", "nan"},
        {"--seconds", "-1"},
        {"--steps", "1", "--seconds", "1"},
        {"--every", "0"},
        {"-e"},
        {"--workdir", ""},
        {"--save", ""},
        {"--save="},
        {"--save-config", ""},
        {"--csv", ""},
        {"--contacts-csv", ""},
        {"--water-csv", ""},
        {"--times", ""},
        {"-f", ""},
        {""},
        {"a.qib", "b.qib"},
        {"scene.txt"},
    };
    for (const auto& line : lines)
    {
        SCOPED_TRACE(testing::PrintToString(line));
        const Result result = Run(line);
        EXPECT_EQ(2, result.exitCode);
        EXPECT_EQ(0u, result.err.find("quib-run: ")) << result.err;
        EXPECT_EQ("", result.out);
    }
    EXPECT_TRUE(IsTidy());
}

TEST_F(RunnerTest, SaysWhichFileCannotBeReadOrWritten)
{
    Write("ok.qib", "Scene.addCircle { }");
    fs::create_directories(Path("folder.qib"));
    const std::vector<std::vector<std::string>> lines = {
        {"missing.qib"},
        {"folder.qib"},
        {"-f", "missing.txt"},
        {"-f", "folder.qib"},
        {"--workdir", "missing"},
        {"--workdir", "ok.qib"},
        {"--csv", "nowhere/a.csv"},
        {"--contacts-csv", "nowhere/a.csv"},
        {"--water-csv", "nowhere/a.csv"},
        {"--times", "nowhere/a.txt"},
        {"--save", "nowhere/a.qib"},
        {"--save-config", "nowhere/a.cfg"},
        {"ok.qib", "--steps", "20000", "--csv", "/dev/full"},
    };
    for (const auto& line : lines)
    {
        SCOPED_TRACE(testing::PrintToString(line));
        const Result result = Run(line);
        EXPECT_EQ(1, result.exitCode);
        EXPECT_NE(std::string::npos, result.err.find("quib-run: can't "));
        EXPECT_NE(std::string::npos, result.err.find(line.back())) << result.err;
    }
    EXPECT_TRUE(IsTidy());
}

TEST_F(RunnerTest, ReadsAFileThatItMayNot)
{
    Write("locked.qib", "Scene.addCircle { }");
    fs::permissions(Path("locked.qib"), fs::no_perms);
    if (access(Path("locked.qib").c_str(), R_OK) == 0)
        GTEST_SKIP() << "everything can be read here";
    const Result result = Run({"locked.qib"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.err.find("quib-run: can't read locked.qib"));
}

TEST_F(RunnerTest, GoesOnAfterASceneThatIsNone)
{
    for (const char* text : {"Scene.addBox { pos = [1.0", "\x7f(((\x02\x01\xff\xfe", "}}}"})
    {
        Write("bad.qib", text);
        const Result result = Run({"bad.qib", "-e", "1"});
        EXPECT_EQ(0, result.exitCode);
        EXPECT_NE(std::string::npos,
                  result.err.find("Exception caught while loading scene: The text is not a valid "
                                  "scene or Quiblet"))
            << result.err;
        EXPECT_NE(std::string::npos, result.err.find("bad.qib"));
        EXPECT_EQ("1\n", result.out);
    }
    Write("empty.qib", "");
    EXPECT_EQ("Loaded scene ./empty.qib\n", Run({"empty.qib"}).out);
}

TEST_F(RunnerTest, PrintsTheValueOfCode)
{
    EXPECT_EQ("3\n", Eval("1 + 2"));
    EXPECT_EQ("true\n", Eval("Sim.running"));
    EXPECT_EQ("void\n", Eval(""));
    EXPECT_EQ("a\nb\n", Eval("\"a\\nb\""));
    const Result bad = Run({"-q", "-e", "nothing"});
    EXPECT_EQ(0, bad.exitCode);
    EXPECT_EQ("error\n", bad.out);
    EXPECT_NE(std::string::npos, bad.err.find("nothing not found in scope")) << bad.err;
}

TEST_F(RunnerTest, RunsCodeAndFilesInTheOrderGiven)
{
    Write("add.txt", "x = [x, 2];\nx");
    EXPECT_EQ("1\n[1, 2]\n[[1, 2], 3]\n",
              Run({"-q", "-e", "x = 1", "-f", "add.txt", "-e", "x = [x, 3]; x"}).out);
    EXPECT_EQ("1\n[1, 3]\n[[1, 3], 2]\n",
              Run({"-q", "-e", "x = 1", "-e", "x = [x, 3]; x", "-f", "add.txt"}).out);
}

TEST_F(RunnerTest, LoadsTheSceneBeforeAnythingRuns)
{
    Write("a.qib", "FileInfo.title = \"Here\"");
    EXPECT_EQ("Here\n", Run({"-q", "-e", "Scene.title", "a.qib"}).out);
}

TEST_F(RunnerTest, KeepsProgressLinesToItselfWhenQuiet)
{
    Write("a.qib", "");
    EXPECT_EQ("Loaded scene ./a.qib\n", Run({"a.qib"}).out);
    EXPECT_EQ("", Run({"-q", "a.qib"}).out);
    Write("b.qib", "nothing");
    EXPECT_NE("", Run({"-q", "b.qib"}).err);
}

TEST_F(RunnerTest, MakesExactlyTheStepsAskedFor)
{
    Write("a.qib", FallingCircle);
    ASSERT_EQ(0, Run({"-q", "a.qib", "--steps", "7", "--csv", "a.csv"}).exitCode);
    const std::vector<std::string> rows = Lines(Slurp(Path("a.csv")));
    ASSERT_EQ(1u + 2 * 8, rows.size());
    EXPECT_EQ("step,time,entityID,x,y,angle,vx,vy,omega", rows[0]);
    EXPECT_EQ("0,0,41,1,5,0,0,0,0", rows[1]);
    EXPECT_EQ("0,0,42,0,0,1.57079637,0,0,0", rows[2]);
    const std::vector<std::string> last = Fields(rows[15]);
    EXPECT_EQ("7", last[0]);
    EXPECT_NEAR(0.07, std::stod(last[1]), 1e-8);
    EXPECT_EQ("41", last[2]);
    // Seven steps of 0.01 s at 9.8 units/s^2.
    EXPECT_NEAR(-7 * 0.01 * 9.8, std::stod(last[7]), 1e-5);
}

TEST_F(RunnerTest, MakesTheStepsOfASimulatedTime)
{
    Write("a.qib", FallingCircle);
    const auto countSteps = [this](const std::vector<std::string>& more)
    {
        std::vector<std::string> line{"-q", "a.qib", "--times", "t.txt"};
        line.insert(line.end(), more.begin(), more.end());
        EXPECT_EQ(0, Run(line).exitCode);
        return Lines(Slurp(Path("t.txt"))).size();
    };
    EXPECT_EQ(50u, countSteps({"--seconds", "0.5"}));
    EXPECT_EQ(29u, countSteps({"--seconds", "0.29"}));
    EXPECT_EQ(20u, countSteps({"--seconds", "0.5", "-e", "Sim.timeDelta = 0.025"}));
    EXPECT_EQ(0u, countSteps({"--seconds", "0"}));
    EXPECT_EQ(0u, countSteps({}));
    EXPECT_EQ(2, Run({"-q", "--seconds", "1", "-e", "Sim.timeDelta = 0.0"}).exitCode);
}

TEST_F(RunnerTest, MakesTheSameStepsWhateverTheTimeFactor)
{
    Write("a.qib", FallingCircle);
    const auto run = [this](const std::string& code)
    {
        EXPECT_EQ(0, Run({"-q", "a.qib", "-e", code, "--steps", "20", "--csv", "a.csv"}).exitCode);
        return Slurp(Path("a.csv"));
    };
    const std::string plain = run("1");
    EXPECT_EQ(1u + 2 * 21, Lines(plain).size());
    for (const char* code :
         {"Sim.timeFactor = 0.001", "Sim.timeFactor = 1000.0", "Sim.timeFactor = 1.0e-7",
          "Sim.timeFactor = 0.0", "Sim.timeFactor = -3.0", "Sim.running = false",
          "Sim.running = { false }", "System.minFPS = 1000000.0"})
        EXPECT_EQ(plain, run(code)) << code;
    // Nor what no clock can follow.
    for (const char* code :
         {"Sim.timeFactor = +inf", "Sim.timeFactor = -inf", "Sim.timeFactor = { +inf }",
          "Sim.timeFactor = math.divide(0.0, 0.0)", "Sim.timeFactor = 3.0e38",
          "Sim.timeFactor = 1.0e-40", "Sim.timeFactor = -0.0",
          "Sim.solveIter = { Sim.running = false; 30 }"})
        EXPECT_EQ(plain, run(code)) << code;
    // A frozen world stays one in what is saved.
    Run({"-q", "a.qib", "-e", "Sim.timeFactor = 0.0", "--steps", "3", "--save", "b.qib"});
    EXPECT_NE(std::string::npos, Slurp(Path("b.qib")).find("Sim.timeFactor = 0.0;"));
}

TEST_F(RunnerTest, MakesAsManyStepsWhateverTheTimeStep)
{
    for (const char* timeFactor : {"1.0", "+inf", "0.0", "1.0e30"})
        for (const char* timeDelta :
             {"-1.0", "+inf", "-inf", "math.divide(0.0, 0.0)", "1.0e30", "0.0", "1.0e-30"})
        {
            SCOPED_TRACE(testing::Message() << timeFactor << ", " << timeDelta);
            const std::string code = "Sim.timeFactor = " + std::string(timeFactor) +
                                     "; Sim.timeDelta = " + timeDelta +
                                     "; Scene.addCircle { }; Scene.addPlane { entityID = 1000 }";
            const Result result = Run({"-q", "-e", code, "--steps", "5", "--csv", "a.csv"});
            EXPECT_EQ(0, result.exitCode) << result.err;
            std::string steps;
            int circleRows = 0;
            for (const std::string& row : Lines(Slurp(Path("a.csv"))))
                if (Fields(row)[2] == "1000")
                    steps += Fields(row)[0];
                else
                    ++circleRows;
            EXPECT_EQ("012345", steps);
            // Its first step throws the circle out of the world, or moves it next to nowhere.
            const bool staysThere = timeDelta == std::string("-1.0") ||
                                    timeDelta == std::string("0.0") ||
                                    timeDelta == std::string("1.0e-30");
            EXPECT_EQ(1 + (staysThere ? 6 : 1), circleRows); // and the header
        }
    // What a step was made of shows in the time it took, where that is a number.
    Run({"-q", "-e", "Sim.timeDelta = -1.0; Scene.addPlane { }", "--steps", "5", "--csv", "a.csv"});
    EXPECT_EQ("-5", Fields(Lines(Slurp(Path("a.csv"))).back())[1]);
}

TEST_F(RunnerTest, LeavesTheOldFilesWholeUntilTheEnd)
{
    const std::vector<std::string> names{"a.csv", "c.csv", "w.csv", "t.txt", "s.qib", "c.cfg"};
    for (const std::string& name : names)
        Write(name, "old");
    const auto run = [this](const std::string& scene, const char* steps)
    {
        return Start({"-q", scene, "--steps", steps, "--csv", "a.csv", "--contacts-csv", "c.csv",
                      "--water-csv", "w.csv", "--times", "t.txt", "--save", "s.qib",
                      "--save-config", "c.cfg"});
    };
    const pid_t pid = run(Scene("pyramid"), "1000000");
    for (int i = 0; i < 500 && Slurp(Path("a.csv.tmp")).size() < 100000; ++i)
        usleep(10000);
    kill(pid, SIGKILL);
    EXPECT_EQ(-1, Wait(pid).exitCode);
    EXPECT_LT(100000u, Slurp(Path("a.csv.tmp")).size());
    for (const std::string& name : names)
        EXPECT_EQ("old", Slurp(Path(name))) << name;
    // The next run is not bothered by what that one left.
    EXPECT_EQ(0, Wait(run(Write("a.qib", FallingCircle), "3")).exitCode);
    for (const std::string& name : names)
    {
        EXPECT_NE("old", Slurp(Path(name))) << name;
        EXPECT_FALSE(fs::exists(Path(name + ".tmp"))) << name;
    }
    fs::remove_all(Path("tmp")); // a killed run could not
    fs::create_directories(Path("tmp"));
}

TEST_F(RunnerTest, WritesAllTheOtherFilesWhenOneFails)
{
    Write("a.qib", FallingCircle);
    Write("no.cfg", "old");
    fs::create_directories(Path("no.cfg.tmp/x")); // where it would be written first
    const Result result =
        Run({"-q", "a.qib", "--steps", "2000", "--csv", "/dev/full", "--contacts-csv", "/dev/full",
             "--times", "t.txt", "--save", "nowhere/a.qib", "--save-config", "no.cfg", "--stats"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(
        std::string::npos,
        result.err.find("quib-run: can't write /dev/full, /dev/full, nowhere/a.qib, no.cfg\n"))
        << result.err;
    EXPECT_EQ(2000u, Lines(Slurp(Path("t.txt"))).size());
    EXPECT_EQ("old", Slurp(Path("no.cfg")));
    EXPECT_EQ(3u, Lines(result.out).size()) << result.out;

    EXPECT_EQ(1, Run({"-q", "a.qib", "--csv", "/dev/full", "--save", "b.qib", "--save-config",
                      "c.cfg", "--steps", "2000"})
                     .exitCode);
    EXPECT_NE(std::string::npos, Slurp(Path("b.qib")).find("Scene.addCircle"));
    EXPECT_NE("", Slurp(Path("c.cfg")));
}

TEST_F(RunnerTest, WritesATableToStandardOutput)
{
    Write("a.qib", FallingCircle);
    const Result result = Run({"-q", "a.qib", "--csv", "/dev/stdout"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(3u, Lines(result.out).size()) << result.out;
}

TEST_F(RunnerTest, WritesRowsEveryFewSteps)
{
    Write("a.qib", FallingCircle);
    ASSERT_EQ(0, Run({"-q", "a.qib", "--steps", "25", "--every", "10", "--csv", "a.csv",
                      "--contacts-csv", "c.csv"})
                     .exitCode);
    std::string steps;
    for (const std::string& row : Lines(Slurp(Path("a.csv"))))
        if (Fields(row)[2] == "41")
            steps += Fields(row)[0] + " ";
    EXPECT_EQ("0 10 20 ", steps);
    EXPECT_EQ("step,geomA,geomB,index,px,py,nx,ny,depth,impulseN,impulseT\n", Slurp(Path("c.csv")));
}

TEST_F(RunnerTest, WritesContactsWithTheIdsOfTheFile)
{
    Write("a.qib", "FileInfo.version = 2; Sim.airSwitch = false;"
                   "Scene.addPlane { entityID = 42; geomID = 990 };"
                   "Scene.addBox { entityID = 41; geomID = 7; pos = [0.0, 0.5] }");
    ASSERT_EQ(
        0,
        Run({"-q", "a.qib", "--steps", "60", "--every", "60", "--contacts-csv", "c.csv"}).exitCode);
    const std::vector<std::string> rows = Lines(Slurp(Path("c.csv")));
    ASSERT_EQ(3u, rows.size());
    double impulse = 0;
    for (int i : {1, 2})
    {
        const std::vector<std::string> fields = Fields(rows[i]);
        ASSERT_EQ(11u, fields.size());
        EXPECT_EQ("60", fields[0]);
        const bool isPlaneFirst = fields[1] == "990";
        EXPECT_EQ("990", fields[isPlaneFirst ? 1 : 2]);
        EXPECT_EQ("7", fields[isPlaneFirst ? 2 : 1]);
        // From the first geometry to the second.
        EXPECT_NEAR(isPlaneFirst ? 1 : -1, std::stod(fields[7]), 1e-5);
        impulse += std::stod(fields[9]);
    }
    EXPECT_NE(rows[1].substr(0, 10), rows[2].substr(0, 10)) << "told apart by their index";
    // What holds two units of mass for a hundredth of a second.
    EXPECT_NEAR(2 * 9.8 * 0.01, impulse, 0.01);
}

TEST_F(RunnerTest, WritesTheIdsOfTheFileWhenItRepeatsThem)
{
    Write("a.qib", "FileInfo.version = 2; Sim.airSwitch = false;"
                   "Scene.addPlane { entityID = 300; geomID = 900 };"
                   "Scene.addBox { entityID = 400; geomID = 700; pos = [0.0, 0.5] };"
                   "Scene.addBox { entityID = 400; geomID = 700; pos = [5.0, 0.5] }");
    ASSERT_EQ(0, Run({"-q", "a.qib", "--steps", "60", "--every", "60", "--csv", "a.csv",
                      "--contacts-csv", "c.csv"})
                     .exitCode);
    std::map<std::string, int> entities, geoms;
    for (const std::string& row : Lines(Slurp(Path("a.csv"))))
        ++entities[Fields(row)[2]];
    EXPECT_EQ((std::map<std::string, int>{{"entityID", 1}, {"300", 2}, {"400", 4}}), entities);
    for (const std::string& row : Lines(Slurp(Path("c.csv"))))
        for (int i : {1, 2})
            ++geoms[Fields(row)[i]];
    EXPECT_EQ((std::map<std::string, int>{{"geomA", 1}, {"geomB", 1}, {"700", 4}, {"900", 4}}),
              geoms);
}

TEST_F(RunnerTest, WritesWater)
{
    ASSERT_EQ(0, Run({"-q", "--steps", "3", "--water-csv", "w.csv"}).exitCode);
    EXPECT_EQ("step,index,x,y,vx,vy,density\n", Slurp(Path("w.csv")));

    ASSERT_EQ(0, Run({"-q", "-e", "Scene.addWater { vecs = [[1.0, 2.0], [3.0, 4.5]] }", "--steps",
                      "10", "--every", "10", "--water-csv", "w.csv"})
                     .exitCode);
    const std::vector<std::string> lines = Lines(Slurp(Path("w.csv")));
    ASSERT_EQ(5u, lines.size());
    EXPECT_EQ("0,0,1,2,0,0,0", lines[1]);
    EXPECT_EQ("0,1,3,4.5,0,0,0", lines[2]);
    const std::vector<std::string> fallen = Fields(lines[4]);
    EXPECT_EQ("10", fallen[0]);
    EXPECT_EQ("1", fallen[1]);
    EXPECT_EQ("3", fallen[2]);
    // Nearly a unit per second after a tenth of one, and alone.
    EXPECT_NEAR(4.5 - 0.054, std::stod(fallen[3]), 0.002);
    EXPECT_NEAR(-0.98, std::stod(fallen[5]), 0.02);
    EXPECT_NEAR(12.3, std::stod(fallen[6]), 0.1);
}

TEST_F(RunnerTest, GivesAnEntityWithoutAFileIdThatOfTheRun)
{
    ASSERT_EQ(0, Run({"-q", "-e", "Scene.addCircle { }", "--csv", "a.csv"}).exitCode);
    EXPECT_EQ("step,time,entityID,x,y,angle,vx,vy,omega\n0,0,1,0,0,0,0,0,0\n",
              Slurp(Path("a.csv")));
}

TEST_F(RunnerTest, TimesEachStep)
{
    Write("a.qib", FallingCircle);
    const Result result = Run({"-q", "a.qib", "--steps", "9", "--times", "t.txt", "--stats"});
    const std::vector<std::string> times = Lines(Slurp(Path("t.txt")));
    ASSERT_EQ(9u, times.size());
    for (const std::string& time : times)
    {
        EXPECT_GT(std::stod(time), 0);
        EXPECT_LT(std::stod(time), 1000);
    }
    // Of an even number of steps the median lies between the two in the middle.
    const Result even = Run({"-q", "a.qib", "--steps", "2", "--times", "t.txt", "--stats"});
    double min = 0, median = 0, max = 0;
    ASSERT_EQ(3, std::sscanf(Lines(even.out).back().c_str(),
                             "ms per step: min %lf, median %lf, max %lf", &min, &median, &max));
    EXPECT_NEAR((min + max) / 2, median, 1e-8 * max);
    std::vector<double> both;
    for (const std::string& time : Lines(Slurp(Path("t.txt"))))
        both.push_back(std::stod(time));
    ASSERT_EQ(2u, both.size());
    // The same 9 digits as everywhere.
    EXPECT_EQ(std::min(both[0], both[1]), min);
    EXPECT_EQ(std::max(both[0], both[1]), max);

    const std::vector<std::string> stats = Lines(result.out);
    ASSERT_EQ(3u, stats.size()) << result.out;
    EXPECT_EQ("bodies 2", stats[0]);
    EXPECT_EQ("contacts 0", stats[1]);
    EXPECT_EQ(0u, stats[2].find("ms per step: min "));
}

TEST_F(RunnerTest, SavesTheSceneAndTheConfiguration)
{
    Write("a.qib", FallingCircle);
    ASSERT_EQ(0, Run({"-q", "a.qib", "-e", "System.maxFPS = 30.0; mine = 5", "--save", "b.qib",
                      "--save-config", "c.cfg"})
                     .exitCode);
    EXPECT_NE(std::string::npos, Slurp(Path("b.qib")).find("Scene.addCircle({"));
    const std::string config = Slurp(Path("c.cfg"));
    EXPECT_NE(std::string::npos, config.find("System.maxFPS = 30.0;\n"));
    EXPECT_NE(std::string::npos, config.find("mine = 5"));
    EXPECT_EQ("5\n", Run({"-q", "-f", "c.cfg", "-e", "mine"}).out.substr(2)) << config;
}

TEST_F(RunnerTest, SavesTheSameBytesAgainAndAgain)
{
    for (const char* name : {"welcome", "rubble", "pyramid"})
    {
        ASSERT_EQ(0, Run({"-q", Scene(name), "--save", "0.qib"}).exitCode);
        EXPECT_EQ(Slurp(Scene(name)), Slurp(Path("0.qib"))) << name;
        // Of a world in motion too.
        for (const char* steps : {"150", "400"})
        {
            SCOPED_TRACE(testing::Message() << name << " after " << steps << " steps");
            ASSERT_EQ(0, Run({"-q", Scene(name), "--steps", steps, "--save", "1.qib"}).exitCode);
            ASSERT_EQ(0, Run({"-q", "1.qib", "--save", "2.qib"}).exitCode);
            ASSERT_EQ(0, Run({"-q", "2.qib", "--save", "3.qib"}).exitCode);
            EXPECT_TRUE(Slurp(Path("1.qib")) == Slurp(Path("2.qib")));
            EXPECT_TRUE(Slurp(Path("1.qib")) == Slurp(Path("3.qib")));
        }
    }
}

TEST_F(RunnerTest, SavesThroughALink)
{
    Write("target.qib", "old");
    fs::create_symlink("target.qib", Path("link.qib"));
    ASSERT_EQ(0,
              Run({"-q", "-e", "Scene.addCircle { }", "--save", "link.qib", "--csv", "/dev/null"})
                  .exitCode);
    EXPECT_TRUE(fs::is_symlink(Path("link.qib")));
    EXPECT_NE(std::string::npos, Slurp(Path("target.qib")).find("Scene.addCircle"));
}

TEST_F(RunnerTest, KeepsAFormulaOfTheView)
{
    ASSERT_EQ(0,
              Run({"-q", "-e", "Scene.Camera.zoom = { math.add(System.time * 1000.0, 10.0) }", "-e",
                   "Scene.Camera.pan = { [System.time, 0.0] }", "--steps", "3", "--save", "a.qib"})
                  .exitCode);
    const std::string text = Slurp(Path("a.qib"));
    EXPECT_NE(std::string::npos, text.find("Scene.Camera.zoom = {math.add(")) << text;
    EXPECT_NE(std::string::npos, text.find("Scene.Camera.pan = {[System.time, 0.0]}")) << text;
}

TEST_F(RunnerTest, StartsWithVersion0)
{
    EXPECT_EQ("0\n", Eval("FileInfo.version"));
}

TEST_F(RunnerTest, GivesTheSameBytesOnEveryRun)
{
    for (const char* name : {"welcome", "rubble", "pyramid"})
    {
        for (const char* file : {"1.csv", "2.csv"})
            ASSERT_EQ(0, Run({"-q", Scene(name), "--steps", "200", "--every", "20", "--csv", file,
                              "--contacts-csv", std::string("c") + file})
                             .exitCode);
        EXPECT_EQ(Slurp(Path("1.csv")), Slurp(Path("2.csv"))) << name;
        EXPECT_EQ(Slurp(Path("c1.csv")), Slurp(Path("c2.csv"))) << name;
        EXPECT_LT(1000u, Slurp(Path("c1.csv")).size()) << name;
    }
}

TEST_F(RunnerTest, WorksInADirectoryOfTheUsers)
{
    fs::create_directories(Path("work/scenes"));
    Write("work/scenes/mine.qib", "FileInfo.title = \"Mine\"");
    EXPECT_EQ("Mine\n", Run({"-q", "--workdir", "work", "mine.qib", "-e", "Scene.title"}).out);
    EXPECT_TRUE(fs::exists(Path("work/Logfile.txt")));
    // No autosave: a later start of the program would take it for a crash.
    EXPECT_FALSE(fs::exists(Path("work/config.autosave.cfg")));
    EXPECT_FALSE(fs::exists(Path("work/scenes/_AUTOSAVE.qib")));
}

TEST_F(RunnerTest, WritesItsFilesEvenWhenNobodyReadsItsOutput)
{
    const Result result = Wait(Start({"-e", "1", "-e", "2", Scene("welcome"), "--steps", "3",
                                      "--csv", "a.csv", "--save", "b.qib"},
                                     true));
    EXPECT_EQ(0, result.exitCode) << result.err;
    EXPECT_FALSE(Slurp(Path("a.csv")).empty());
    EXPECT_NE(std::string::npos, Slurp(Path("b.qib")).find("addBox"));
    EXPECT_TRUE(IsTidy());
}

TEST_F(RunnerTest, LeavesNoTemporaryDirectoryBehind)
{
    Run({"-q", "--steps", "3"});
    EXPECT_TRUE(IsTidy());
    Run({"missing.qib"});
    EXPECT_TRUE(IsTidy());
    for (int signal : {SIGTERM, SIGINT, SIGHUP})
    {
        const pid_t pid = Start({"-q", Scene("pyramid"), "--steps", "1000000"});
        for (int i = 0; i < 500 && IsTidy(); ++i)
            usleep(10000);
        usleep(300000);
        EXPECT_FALSE(IsTidy());
        kill(pid, signal);
        EXPECT_EQ(-1, Wait(pid).exitCode);
        EXPECT_TRUE(IsTidy()) << signal;
    }
}

TEST_F(RunnerTest, LivesThroughAHostileScene)
{
    std::string text = "FileInfo.version = 2;\n";
    for (int i = 0; i < 2000; ++i)
        text += "Scene.addCircle { pos = [" + std::to_string(i) + ".0e30, 0.0]; entityID = 1 };\n";
    text += "Scene.addGroup { name = \"g\"; entityIDs = [1, 1, 1] };\n"
            "Scene.Camera.zoom = math.divide(0.0, 0.0); Scene.Camera.pan = [+inf, -inf];\n"
            "Sim.gravity = [math.divide(0.0, 0.0), +inf]; Sim.timeDelta = -1.0;\n"
            "GUI.scale = -5.0; App.borderWidth = +inf; App.DPI = math.divide(0.0, 0.0)";
    Write("bad.qib", text);
    const Result result = Run({"-q", "bad.qib", "--steps", "20", "--save", "out.qib"});
    EXPECT_EQ(0, result.exitCode) << result.err.substr(0, 1000);
    EXPECT_TRUE(fs::exists(Path("out.qib")));
}

TEST_F(RunnerTest, LivesThroughHingesOnLongLevers)
{
    // Thousands of times as long as the body is large: its mass is lost beside the lever in single precision.
    for (const std::string lever : {"1000.0", "123456.7", "1.0e12", "3.0e38"})
        for (const std::string setting : {"adHocSolver = false", "adHocSolver = true",
                                          "prioritizedSolver = true", "solveConstant = 0.0"})
        {
            SCOPED_TRACE(lever + ", " + setting);
            Write("lever.qib",
                  "FileInfo.version = 2; Sim." + setting +
                      ";\n"
                      "Scene.addBox { size = [0.1, 0.1]; geomID = 7; entityID = 41 };\n"
                      "Scene.addHinge { geom0 = 7; geom0pos = [" +
                      lever + ", " + lever + "]; geom1 = 0; world1pos = [" + lever + ", " + lever +
                      "] };\n");
            const Result result = Run({"-q", "lever.qib", "--steps", "40", "--csv", "a.csv"});
            EXPECT_EQ(0, result.exitCode);
            EXPECT_EQ("", result.err);
            const std::string csv = Slurp(Path("a.csv"));
            EXPECT_NE(std::string::npos, csv.find(",41,")) << csv;
            for (const char* bad : {"nan", "inf"})
                EXPECT_EQ(std::string::npos, csv.find(bad)) << csv;
        }
}
}
