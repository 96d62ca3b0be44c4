// The scenes that ship, each for as long as somebody may look at it: do their machines do their work?
#include "RunnerFixture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace
{
#ifdef __SANITIZE_ADDRESS__
// Ten to twenty times as slow: long enough to have everything touched.
const bool IsLongRun = false;
const int StepCount = 200;
#else
const bool IsLongRun = true;
const int StepCount = 6000; // a minute; half of one where the world runs twice as fast
#endif
const int SampleEvery = 50;
// A part of the run is enough to see whether it is the same again.
const int RepeatedSteps = std::min(StepCount, 1000);

struct Row
{
    int step;
    double x, y, angle;
};

// One entity, from the first step to the last.
using Track = std::vector<Row>;

/// The angle gone through, where each sample is less than half a turn from the one before.
double CalcTurned(const Track& track, int from, int to)
{
    double turned = 0;
    for (size_t i = 1; i < track.size(); ++i)
        if (track[i].step > from && track[i].step <= to)
            turned += std::remainder(track[i].angle - track[i - 1].angle, 2 * M_PI);
    return turned;
}

const Row& At(const Track& track, int step)
{
    for (const Row& row : track)
        if (row.step == step)
            return row;
    ADD_FAILURE() << "no step " << step;
    return track.front();
}

int Count(const std::string& text, const std::string& part)
{
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

class ScenesTest : public RunnerTest
{
protected:
    /// Makes all steps, and looks for what no scene may do.
    void RunScene(const std::string& name, int steps = StepCount)
    {
        m_text = Slurp(Scene(name));
        ASSERT_FALSE(m_text.empty());
        for (const char* key : {"title", "author", "description"})
            EXPECT_NE(std::string::npos, m_text.find(std::string("FileInfo.") + key));

        const Result result =
            Run({"-q", Scene(name), "--steps", std::to_string(steps), "--every",
                 std::to_string(SampleEvery), "--csv", "a.csv", "--save", "end.qib"});
        ASSERT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.err);
        const std::string csv = Slurp(Path("a.csv"));
        for (const char* bad : {"nan", "inf"})
            EXPECT_EQ(std::string::npos, csv.find(bad)) << bad;
        for (const std::string& line : Lines(csv))
        {
            const std::vector<std::string> fields = Fields(line);
            if (fields[0] != "step")
                m_tracks[std::stoi(fields[2])].push_back(
                    {std::stoi(fields[0]), std::stod(fields[3]), std::stod(fields[4]),
                     std::stod(fields[5])});
        }

        // The same bytes again.
        ASSERT_EQ(0, Run({"-q", Scene(name), "--steps", std::to_string(RepeatedSteps), "--every",
                          std::to_string(SampleEvery), "--csv", "b.csv", "--save", "b.qib"})
                         .exitCode);
        const std::string again = Slurp(Path("b.csv"));
        EXPECT_LT(100u, again.size());
        EXPECT_TRUE(csv.compare(0, again.size(), again) == 0);

        // And on the way through a file.
        m_end = Slurp(Path("end.qib"));
        ASSERT_EQ(0, Run({"-q", "end.qib", "--save", "end2.qib"}).exitCode);
        EXPECT_TRUE(m_end == Slurp(Path("end2.qib")));
    }

    /// The entities of the scene whose statement has that command and holds that text.
    std::vector<Track> Find(const std::string& command, const std::string& part) const
    {
        std::vector<Track> tracks;
        size_t begin = m_text.find("Scene.add");
        while (begin != std::string::npos)
        {
            const size_t end = m_text.find("Scene.add", begin + 1);
            const std::string statement = m_text.substr(begin, end - begin);
            const size_t id = statement.find("entityID = ");
            if (statement.compare(0, 6 + command.size(), "Scene." + command) == 0 &&
                statement.find(part) != std::string::npos && id != std::string::npos)
                tracks.push_back(m_tracks.at(std::atoi(statement.c_str() + id + 11)));
            begin = end;
        }
        return tracks;
    }

    std::string m_text, m_end; // the scene's file, and what is saved at the end
    std::map<int, Track> m_tracks;
};

TEST_F(ScenesTest, TheScenesThatShipAreWhatTheirGeneratorMakes)
{
    // The generator is one of the tools, and needs Python.
    if (std::system("python3 --version > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "no python3";
    const std::string command =
        "python3 " + std::string(QUIB_SOURCE_DIR) + "/tools/make_scenes.py " + Path("made");
    ASSERT_EQ(0, std::system(command.c_str()));
    for (const char* name :
         {"welcome", "rubble", "pyramid", "bridge", "car", "mill", "cradle", "catapult", "dam"})
    {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Slurp(Scene(name)) == Slurp(Path("made/") + name + ".qib"));
        ASSERT_EQ(0, Run({"-q", Scene(name), "--save", "0.qib"}).exitCode);
        EXPECT_TRUE(Slurp(Scene(name)) == Slurp(Path("0.qib"))) << "saving changes it";
    }
}

TEST_F(ScenesTest, WelcomeRuns)
{
    RunScene("welcome");
}

TEST_F(ScenesTest, RubbleComesToRest)
{
    RunScene("rubble");
    for (const auto& track : m_tracks)
        EXPECT_GT(track.second.back().y, -0.1) << track.first;
}

TEST_F(ScenesTest, ThePyramidStands)
{
    RunScene("pyramid");
    EXPECT_EQ(821u, m_tracks.size());
    for (const auto& track : m_tracks)
    {
        const Row& start = track.second.front();
        const Row& later = At(track.second, RepeatedSteps);
        EXPECT_NEAR(start.x, later.x, 0.3) << track.first;
        EXPECT_NEAR(start.y, later.y, 0.3) << track.first;
        // In a minute it creeps to one side, and still no box is off its row.
        EXPECT_NEAR(start.x, track.second.back().x, 1) << track.first;
        EXPECT_NEAR(start.y, track.second.back().y, 0.3) << track.first;
    }
}

TEST_F(ScenesTest, TheBridgeSagsAndHolds)
{
    RunScene("bridge");
    EXPECT_EQ(Count(m_text, "Scene.addHinge"), Count(m_end, "Scene.addHinge"));
    const std::vector<Track> deck = Find("addBox", "chain = 1\n");
    const std::vector<Track> deckToo = Find("addBox", "chain = 1;");
    ASSERT_EQ(18u, deck.size() + deckToo.size());
    double deepest = 0, highest = 0;
    for (const auto* tracks : {&deck, &deckToo})
        for (const Track& plank : *tracks)
            for (const Row& row : plank)
            {
                deepest = std::min(deepest, row.y - plank.front().y);
                highest = std::max(highest, row.y - plank.front().y);
                EXPECT_NEAR(plank.front().x, row.x, 0.2);
            }
    EXPECT_GT(deepest, -0.8);
    EXPECT_LT(highest, 0.3);
    if (!IsLongRun)
        return;
    EXPECT_LT(deepest, -0.1);
    const std::vector<Track> balls = Find("addCircle", "");
    EXPECT_EQ(3u, balls.size());
    for (const Track& ball : balls)
    {
        double rightmost = -100;
        for (const Row& row : ball)
        {
            EXPECT_GT(row.y, -0.6) << "fell off at step " << row.step;
            rightmost = std::max(rightmost, row.x);
        }
        EXPECT_GT(rightmost, 4);
    }
}

TEST_F(ScenesTest, TheCarDrivesOverTheHills)
{
    RunScene("car");
    const Track body = Find("addPolygon", "collideSet = 2").at(0);
    for (const Row& row : body)
        EXPECT_LT(std::fabs(row.angle), 1.2) << "turned over at step " << row.step;
    if (!IsLongRun)
        return;
    for (int step = 200; step <= 2000; step += 200)
        EXPECT_GT(At(body, step).x, At(body, step - 200).x + 1) << step;
    EXPECT_GT(body.back().x, 13);
    // What stood in its way does so no more.
    const std::vector<Track> tower = Find("addBox", "density = 0.2");
    ASSERT_EQ(5u, tower.size());
    EXPECT_GT(tower.front().back().x, tower.front().front().x + 1);
}

TEST_F(ScenesTest, TheMillTurnsOnAndOn)
{
    RunScene("mill");
    const std::vector<Track> wheels = Find("addPolygon", "density = 1.0");
    ASSERT_EQ(1u, wheels.size());
    if (!IsLongRun)
        return;
    for (int step = 1000; step < StepCount; step += 500)
        EXPECT_LT(CalcTurned(wheels[0], step, step + 500), -M_PI) << step;
    EXPECT_GT(wheels[0].back().x, -1.25);
    const int before = Count(m_text.substr(m_text.find("Scene.addWater")), "], [");
    const int after = Count(m_end.substr(m_end.find("Scene.addWater")), "], [");
    EXPECT_GT(before, 3500);
    EXPECT_GT(after, 0.99 * before);
}

TEST_F(ScenesTest, TheCradleSwingsOn)
{
    // Twenty seconds: its world runs eight times as fast as the clock.
    const int steps = IsLongRun ? 16000 : StepCount;
    RunScene("cradle", steps);
    const std::vector<Track> balls = Find("addCircle", "");
    ASSERT_EQ(5u, balls.size());
    if (!IsLongRun)
        return;
    // Where each hangs at rest: one diameter and a gap beside the next.
    const double spacing = 1.005;
    double outermost[5][2] = {};
    for (int i = 0; i < 5; ++i)
        for (const Row& row : balls[i])
            if (row.step > steps - 4000) // more than one swing to and fro
            {
                outermost[i][0] = std::min(outermost[i][0], row.x - (i - 2) * spacing);
                outermost[i][1] = std::max(outermost[i][1], row.x - (i - 2) * spacing);
            }
    EXPECT_LT(outermost[0][0], -2.0);
    EXPECT_GT(outermost[4][1], 2.0);
    for (int i : {1, 2, 3})
    {
        EXPECT_GT(outermost[i][0], -0.2) << i;
        EXPECT_LT(outermost[i][1], 0.2) << i;
    }
}

TEST_F(ScenesTest, TheCatapultThrowsWhenItsPinBreaks)
{
    RunScene("catapult");
    if (!IsLongRun)
        return;
    const int pins = Count(m_text, "Scene.addHinge");
    EXPECT_EQ(1, Count(m_text, "impulseLimit"));
    EXPECT_EQ(pins - 1, Count(m_end, "Scene.addHinge"));
    EXPECT_EQ(0, Count(m_end, "impulseLimit"));
    for (const Track& load : Find("addCircle", "density = 4.0"))
    {
        EXPECT_NEAR(load.front().x, At(load, 300).x, 0.3) << "held";
        EXPECT_GT(load.back().x, 8);
    }
    int thrownDown = 0;
    const std::vector<Track> tower = Find("addBox", "density = 0.3");
    ASSERT_EQ(12u, tower.size());
    for (const Track& box : tower)
        thrownDown += std::fabs(box.back().x - box.front().x) > 0.5;
    EXPECT_GE(thrownDown, 3);
}

TEST_F(ScenesTest, TheWaterOfTheDamComesToRest)
{
    RunScene("dam");
    const auto read = [this](int steps)
    {
        Run({"-q", Scene("dam"), "--steps", std::to_string(steps), "--every", std::to_string(steps),
             "--water-csv", "w.csv"});
        std::vector<std::vector<double>> drops; // x, y, vx, vy
        for (const std::string& line : Lines(Slurp(Path("w.csv"))))
        {
            const std::vector<std::string> fields = Fields(line);
            if (fields[0] == std::to_string(steps))
                drops.push_back({std::stod(fields[2]), std::stod(fields[3]), std::stod(fields[4]),
                                 std::stod(fields[5])});
        }
        return drops;
    };
    const auto drops = read(IsLongRun ? 3000 : 50);
    EXPECT_GE(drops.size(), 4950u);
    for (const auto& drop : drops)
    {
        EXPECT_LT(std::fabs(drop[0]), 9.7);
        EXPECT_GT(drop[1], -0.1);
    }
    if (!IsLongRun)
        return;
    double speed = 0;
    std::map<int, double> surface; // the highest drop in each unit of the deep part
    for (const auto& drop : drops)
    {
        speed += std::hypot(drop[2], drop[3]) / static_cast<double>(drops.size());
        const int column = static_cast<int>(std::floor(drop[0]));
        if (column >= -9 && column < 4)
            surface[column] = std::max(surface[column], drop[1]);
    }
    EXPECT_LT(speed, 0.4);
    ASSERT_EQ(13u, surface.size());
    for (const auto& column : surface)
        EXPECT_NEAR(2.4, column.second, 0.5) << column.first;
    const std::vector<Track> floating = Find("addBox", "density = 0.3");
    ASSERT_EQ(3u, floating.size());
    for (const Track& box : floating)
        EXPECT_GT(box.back().y, 2.0);
}
}
