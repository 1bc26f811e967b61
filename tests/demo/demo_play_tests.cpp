// The demo game played through the real engine: its start-up report, switching states with
// their keys and the return key, moving, turning and zooming the arena, the robot's jump and
// wave, and a reload that shows an edited state file.
//
// Set DEMO_SCREENSHOT=FILE.png to keep a picture of the robot waving (docs/demo.png is made so).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "demo_session.h"
#include "picture_measures.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

const fs::path kAssets = fs::path(ENGINE_SOURCE_DIR) / "Assets";

// Long enough for a few frames even on a busy machine, short enough that a movement (0.3 units
// or degrees per millisecond held) keeps the scene in view.
constexpr double kMoveHold = 0.06;
constexpr double kKeyHold = 0.12;

std::string ReadText(const fs::path& path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> ElementTexts(const std::string& xml, const std::string& tag) {
    std::vector<std::string> texts;
    const std::regex pattern("<" + tag + ">([^<]*)</" + tag + ">");
    for (std::sregex_iterator it(xml.begin(), xml.end(), pattern), end; it != end; ++it) {
        texts.push_back((*it)[1]);
    }
    return texts;
}

// What fbxinfo reports of one model file: its mesh names, texture names, and the key frames
// the engine makes of each skeleton node (one per key, takes other than "Default" in a row).
struct ModelSummary {
    std::vector<std::string> m_Meshes;
    std::vector<std::string> m_Textures;
    std::map<std::string, int> m_SkeletonKeys;
};

ModelSummary Summarise(const fs::path& model) {
    ModelSummary summary;
    std::istringstream lines(
        RunCommand(std::string(FBXINFO_EXECUTABLE) + " '" + model.string() + "' 2>/dev/null"));
    const std::regex mesh(R"re(^mesh "([^"]*)" polygons)re");
    const std::regex skeleton(R"re(^\s*node "([^"]*)" skeleton)re");
    const std::regex texture(R"re(^\s*texture DiffuseColor "([^"]*)")re");
    // curves "TAKE" "NODE" T x y z R x y z S x y z, each count or "-".
    const std::regex curves(
        R"re(^curves "([^"]*)" "([^"]*)" T (\S+) \S+ \S+ R (\S+) \S+ \S+ S (\S+) \S+ \S+)re");
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, match, mesh)) {
            summary.m_Meshes.push_back(match[1]);
        } else if (std::regex_search(line, match, skeleton)) {
            summary.m_SkeletonKeys.emplace(match[1], 0);
        } else if (std::regex_search(line, match, texture)) {
            summary.m_Textures.push_back(match[1]);
        } else if (std::regex_search(line, match, curves) && match[1] != "Default") {
            int keys = 0;
            for (int group = 3; group <= 5; ++group) {
                if (match[group] != "-") {
                    keys = std::atoi(match[group].str().c_str());  // the last present decides
                }
            }
            summary.m_SkeletonKeys[match[2]] += keys;
        }
    }
    return summary;
}

// Every model that the demo's state table reaches, through the loader and the states.
std::vector<std::string> ModelUrls() {
    const std::string table = ReadText(kAssets / "states.xml");
    std::vector<std::string> files = ElementTexts(table, "loader");
    for (const std::string& resource : ElementTexts(table, "resources")) {
        files.push_back(resource);
    }
    std::vector<std::string> urls;
    for (const std::string& file : files) {
        for (const std::string& url : ElementTexts(ReadText(kAssets / ".." / file), "URL")) {
            urls.push_back(url);
        }
    }
    return urls;
}

class DemoPlayTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* display = std::getenv("DISPLAY");
        if (display == nullptr || *display == '\0') {
            GTEST_SKIP() << "no X display";
        }
        if (RunCommand("command -v xdotool").empty()) {
            GTEST_SKIP() << "xdotool missing";
        }
        m_Session = std::make_unique<DemoSession>(kAssets);
        ASSERT_TRUE(m_Session->WaitForWindow())
            << "no drawn window titled \"FBX Engine Demo : N\"; the engine printed:\n"
            << m_Session->Output();
    }

    // Holds a key and returns the picture once the scene has settled.
    WindowPicture After(const std::string& key, double seconds = kMoveHold) {
        m_Session->Hold(key, seconds);
        return m_Session->StablePicture();
    }

    // Holds a key that switches state and waits for the picture to change.
    WindowPicture Switch(const std::string& key, const WindowPicture& from) {
        m_Session->Hold(key, kKeyHold);
        return m_Session->WaitForPicture(
            [&](const WindowPicture& p) { return DifferingPixels(p, from) > Tenth(from); },
            milliseconds(5000));
    }

    static int Tenth(const WindowPicture& p) { return p.m_Width * p.m_Height / 10; }
    static int Hundredth(const WindowPicture& p) { return p.m_Width * p.m_Height / 100; }

    std::unique_ptr<DemoSession> m_Session;
};

TEST_F(DemoPlayTest, StartUpReportNamesEveryMeshTextureAndBoneOfTheDemoModels) {
    const std::string output = m_Session->Output();
    const std::vector<std::string> urls = ModelUrls();
    ASSERT_GE(urls.size(), 4u) << "the loader, the title and two play states each show a model";
    bool sawSkeleton = false;
    for (const std::string& url : urls) {
        SCOPED_TRACE(url);
        EXPECT_EQ(output.find("Failed to open " + url), std::string::npos);
        const ModelSummary summary = Summarise(m_Session->Directory() / url);
        EXPECT_FALSE(summary.m_Meshes.empty());
        for (const std::string& mesh : summary.m_Meshes) {
            EXPECT_NE(output.find("Loading mesh: " + mesh + "\n"), std::string::npos) << mesh;
        }
        for (const std::string& texture : summary.m_Textures) {
            EXPECT_NE(output.find("Loading texture: " + texture + "\n"), std::string::npos);
        }
        for (const auto& [bone, keys] : summary.m_SkeletonKeys) {
            sawSkeleton = true;
            EXPECT_GT(keys, 0) << bone;
            EXPECT_NE(output.find("Added animation for " + bone + " with " + std::to_string(keys) +
                                  " keys.\n"),
                      std::string::npos)
                << bone;
        }
    }
    EXPECT_TRUE(sawSkeleton) << "one of the demo's models is animated through its skeleton";
    EXPECT_EQ(output.find("Failed to load"), std::string::npos) << "a texture bitmap is missing";
    EXPECT_NE(output.find("Finished loading xml.\n"), std::string::npos);
    EXPECT_EQ(m_Session->Close(), 0);
}

TEST_F(DemoPlayTest, EventKeysSwitchStatesAndTheReturnKeyBringsTheTitleBack) {
    const WindowPicture title = m_Session->StablePicture();
    const WindowPicture arena = Switch("g", title);
    EXPECT_GT(DifferingPixels(arena, title), Tenth(title)) << "g leads from the title on";

    const WindowPicture backAtTitle = Switch("t", arena);
    EXPECT_LT(DifferingPixels(m_Session->StablePicture(), title), Hundredth(title))
        << "t in the arena shows the title again";

    Switch("g", backAtTitle);
    const WindowPicture arenaAgain = m_Session->StablePicture();
    const WindowPicture stage = Switch("n", arenaAgain);
    EXPECT_GT(DifferingPixels(stage, arenaAgain), Tenth(title)) << "n leads to the stage";
    EXPECT_GT(DifferingPixels(stage, title), Tenth(title));

    m_Session->Hold("r", kKeyHold);
    const WindowPicture returned = m_Session->WaitForPicture(
        [&](const WindowPicture& p) { return DifferingPixels(p, title) < Hundredth(title); },
        milliseconds(5000));
    EXPECT_LT(DifferingPixels(returned, title), Hundredth(title))
        << "the return key shows the title as it was at the start";
}

TEST_F(DemoPlayTest, MovementKeysMoveTurnAndZoomTheArena) {
    Switch("g", m_Session->StablePicture());
    const LitMeasure was = MeasureLit(m_Session->StablePicture());
    ASSERT_GT(was.m_Count, 10000);

    const LitMeasure left = MeasureLit(After("j"));
    EXPECT_LT(left.m_X, was.m_X - 20) << "j moves the arena left";
    const LitMeasure right = MeasureLit(After("k"));
    EXPECT_GT(right.m_X, left.m_X + 20) << "k moves it right";
    const LitMeasure up = MeasureLit(After("i"));
    EXPECT_LT(up.m_Y, right.m_Y - 20) << "i moves it up";
    const LitMeasure down = MeasureLit(After("m"));
    EXPECT_GT(down.m_Y, up.m_Y + 20) << "m moves it down";

    const LitMeasure nearer = MeasureLit(After("z"));
    EXPECT_GT(nearer.m_Count, down.m_Count * 5 / 4) << "z zooms in: the arena fills more";
    const LitMeasure farther = MeasureLit(After("x"));
    EXPECT_LT(farther.m_Count * 5 / 4, nearer.m_Count) << "x zooms out";

    // The floor is tilted towards the viewer: turning it up shows more of it, down less.
    const LitMeasure tippedUp = MeasureLit(After("w"));
    EXPECT_GT(tippedUp.m_Bottom - tippedUp.m_Top, farther.m_Bottom - farther.m_Top + 10)
        << "w turns the far edge up";
    const LitMeasure tippedDown = MeasureLit(After("s"));
    EXPECT_LT(tippedDown.m_Bottom - tippedDown.m_Top, tippedUp.m_Bottom - tippedUp.m_Top - 10)
        << "s turns it back down";

    // Turning about the vertical axis swings the far edge (the top half of the picture) one
    // way and the near edge (the bottom half) the other way, unlike a move.
    const auto halves = [](const WindowPicture& p) {
        const LitMeasure all = MeasureLit(p);
        const int middle = (all.m_Top + all.m_Bottom) / 2;
        const double far = MeasureLit(p, {0, 0, p.m_Width, middle}).m_X;
        const double near = MeasureLit(p, {0, middle, p.m_Width, p.m_Height}).m_X;
        return std::make_pair(far, far - near);
    };
    const auto start = halves(m_Session->StablePicture());
    const auto turnedLeft = halves(After("a"));
    EXPECT_GT(turnedLeft.first, start.first + 10) << "a swings the far edge right";
    EXPECT_GT(turnedLeft.second, start.second + 12) << "and the near edge left of it";
    const auto turnedRight = halves(After("d"));
    EXPECT_LT(turnedRight.first, turnedLeft.first - 10) << "d swings the far edge back left";
    EXPECT_LT(turnedRight.second, turnedLeft.second - 12);
}

TEST_F(DemoPlayTest, RobotJumpsAndWavesOnItsKeysAndFallsBackToIdling) {
    Switch("g", m_Session->StablePicture());
    const WindowPicture arena = m_Session->StablePicture();
    Switch("n", arena);
    std::this_thread::sleep_for(milliseconds(300));
    // Idling only breathes: the robot's top stays within a few pixels.
    const WindowPicture idle = m_Session->Capture();
    const LitMeasure rest = MeasureLit(idle);
    ASSERT_GT(rest.m_Count, 5000);

    // Held, c keeps the robot crouched at the jump's first key; let go, it leaps and lands.
    m_Session->Hold("c", kKeyHold);
    int highest = rest.m_Top;
    const auto until = std::chrono::steady_clock::now() + milliseconds(1200);
    while (std::chrono::steady_clock::now() < until) {
        const WindowPicture p = m_Session->Capture();
        highest = std::min(highest, MeasureLit(p).m_Top);
        std::this_thread::sleep_for(milliseconds(30));
    }
    EXPECT_LT(highest, rest.m_Top - 30) << "the robot rises well above where it stood";

    // The jump runs on into the wave and then the idle loop: the robot stands again.
    const WindowPicture settled = m_Session->WaitForPicture(
        [&](const WindowPicture& p) { return std::abs(MeasureLit(p).m_Top - rest.m_Top) <= 6; },
        milliseconds(4000));
    EXPECT_LE(std::abs(MeasureLit(settled).m_Top - rest.m_Top), 6);
    std::this_thread::sleep_for(milliseconds(1500));

    // v raises one arm beside the head and waves it; the body stays where it is. Standing,
    // only the antenna reaches above the head.
    const WindowPicture beforeWave = m_Session->Capture();
    const PictureRegion overHead{0, rest.m_Top, idle.m_Width, rest.m_Top + 20};
    const int antenna = MeasureLit(beforeWave, overHead).m_Count;
    m_Session->Hold("v", kKeyHold);
    WindowPicture widest = beforeWave;
    int raised = antenna;
    const auto waveEnd = std::chrono::steady_clock::now() + milliseconds(900);
    while (std::chrono::steady_clock::now() < waveEnd) {
        WindowPicture p = m_Session->Capture();
        const int count = MeasureLit(p, overHead).m_Count;
        if (count > raised) {
            raised = count;
            widest = std::move(p);
        }
        std::this_thread::sleep_for(milliseconds(30));
    }
    EXPECT_GT(raised, antenna + 150) << "the arm goes up beside the head";
    EXPECT_LE(std::abs(MeasureLit(widest).m_Bottom - MeasureLit(beforeWave).m_Bottom), 4)
        << "the feet stay on the stage while waving";

    if (const char* keep = std::getenv("DEMO_SCREENSHOT"); keep != nullptr && *keep != '\0') {
        const std::string ppm = (m_Session->Directory() / "shot.ppm").string();
        ASSERT_TRUE(SavePpm(widest, ppm));
        RunCommand("convert '" + ppm + "' '" + std::string(keep) + "'");
        EXPECT_TRUE(fs::exists(keep)) << keep;
    }
}

TEST_F(DemoPlayTest, ReloadKeyShowsAnEditedStateFile) {
    const WindowPicture title = m_Session->StablePicture();
    const LitMeasure near = MeasureLit(title);

    // Push the title twice as far away in the running copy, then reload.
    const fs::path file = m_Session->Directory() / "Assets" / "title.xml";
    std::string text = ReadText(file);
    const std::string from = "<Z_Position>-40</Z_Position>";
    const auto at = text.find(from);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, from.size(), "<Z_Position>-80</Z_Position>");
    std::ofstream(file) << text;

    m_Session->Hold("l", kKeyHold);
    const WindowPicture farther = m_Session->WaitForPicture(
        [&](const WindowPicture& p) { return MeasureLit(p).m_Count < near.m_Count / 2; },
        milliseconds(8000));
    EXPECT_LT(MeasureLit(farther).m_Count, near.m_Count / 2) << "the title now stands farther off";
    EXPECT_EQ(m_Session->Close(), 0);
}

}  // namespace
