// The demo game, drawn in the authored look, played through one run of the real engine, in this
// order: its start-up report, its window and title, moving, turning and zooming the arena, state
// switches and the return key, the character's walk and wave, and last a reload that shows an
// edited state file and the window closing. Set DEMO_SCREENSHOT=FILE.png to keep a picture of
// the character waving (docs/demo.png is made so).
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <thread>
#include <tuple>

#include "engine_session.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

namespace fs = std::filesystem;
using std::chrono::milliseconds;

const fs::path kAssets = fs::path(ENGINE_SOURCE_DIR) / "Assets";

// Long enough for a few frames even on a busy machine, short enough that a movement (0.3 units
// or degrees per millisecond held) keeps the scene in view.
constexpr double kMoveHold = 0.06;
constexpr double kKeyHold = 0.12;

// Every match of the pattern in the text, which must outlive them.
std::vector<std::smatch> Matches(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    return {std::sregex_iterator(text.begin(), text.end(), regex), std::sregex_iterator()};
}

class DemoPlayTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (MissingForWindows().empty()) {
            s_Session = std::make_unique<EngineSession>(kAssets);
            s_Ready = s_Session->WaitForWindow("FBX Engine Demo");
            s_Title = s_Session->StablePicture();
        }
    }
    static void TearDownTestSuite() { s_Session.reset(); }

    void SetUp() override {
        if (const std::string missing = MissingForWindows(); !missing.empty()) {
            GTEST_SKIP() << missing;
        }
        ASSERT_TRUE(s_Ready) << "no drawn window titled \"FBX Engine Demo : N\"; it printed:\n"
                             << s_Session->Output();
    }

    // Holds a key and returns the picture once the scene has settled.
    static WindowPicture After(const std::string& key, double seconds = kMoveHold) {
        s_Session->Hold(key, seconds);
        return s_Session->StablePicture();
    }
    // Holds a key that switches state and waits for the picture to differ from the given one
    // by a tenth, or with back set to come within a hundredth of it.
    static WindowPicture Switch(const std::string& key, const WindowPicture& from,
                                bool back = false) {
        s_Session->Hold(key, kKeyHold);
        return s_Session->WaitForPicture(
            [&](const WindowPicture& p) {
                return back ? DifferingPixels(p, from) < Hundredth(from)
                            : DifferingPixels(p, from) > Tenth(from);
            },
            milliseconds(5000));
    }
    // Back to the title screen as it was at the start, with the title key (or, when return is
    // set, the return key). Each return adds hidden copies of every model that a turn could
    // bring into view, so the suite presses it only once.
    static WindowPicture Title(bool reset = false) {
        return Switch(reset ? "r" : "t", s_Title, true);
    }
    static int Tenth(const WindowPicture& p) { return p.m_Width * p.m_Height / 10; }
    static int Hundredth(const WindowPicture& p) { return Tenth(p) / 10; }

    static inline std::unique_ptr<EngineSession> s_Session;
    static inline bool s_Ready = false;
    static inline WindowPicture s_Title;
};

TEST_F(DemoPlayTest, StartUpReportNamesTheDemoModelsPartsAndTheCentredWindowShowsTheFrameRate) {
    const std::string output = s_Session->Output();
    // Every model that the demo's state table reaches, through the loader and the states,
    // against what fbxinfo finds in it.
    const std::string table = ReadWholeFile(kAssets / "states.xml");
    std::vector<std::string> urls;
    for (const std::smatch& file : Matches(table, "<(loader|resources)>([^<]*)<")) {
        const std::string state = ReadWholeFile(kAssets / ".." / file[2].str());
        for (const std::smatch& url : Matches(state, "<URL>([^<]*)<")) {
            urls.push_back(url[1]);
        }
    }
    ASSERT_GE(urls.size(), 4u) << "the loader, the title and two play states each show a model";
    // A skeleton node's key count is, take by take ("Default" left out), that of its scaling X
    // curve, else its rotation X curve, else its translation X curve.
    std::map<std::string, int> boneKeys;
    std::map<std::string, std::pair<int, int>> takeFrames;  // of the stage's model
    for (const std::string& url : urls) {
        SCOPED_TRACE(url);
        const std::string info = RunCommand(std::string(FBXINFO_EXECUTABLE) + " '" +
                                            (s_Session->Directory() / url).string() + "'");
        const std::vector<std::smatch> meshes = Matches(info, R"re((?:^|\n)mesh "([^"]*)")re");
        EXPECT_FALSE(meshes.empty());
        for (const std::smatch& mesh : meshes) {
            EXPECT_THAT(output, HasSubstr("Loading mesh: " + mesh[1].str() + "\n"));
        }
        for (const std::smatch& texture : Matches(info, R"re(texture DiffuseColor "([^"]*)")re")) {
            EXPECT_THAT(output, HasSubstr("Loading texture: " + texture[1].str() + "\n"));
        }
        for (const std::smatch& bone : Matches(info, R"re(node "([^"]*)" skeleton)re")) {
            boneKeys[bone[1]] = 0;
        }
        for (const std::smatch& curves :
             Matches(info,
                     R"re(curves "([^"]*)" "([^"]*)" T (\S+) \S+ \S+ R (\S+) \S+ \S+ S (\S+))re")) {
            const std::string counted = curves[5] != "-"   ? curves[5]
                                        : curves[4] != "-" ? curves[4]
                                                           : curves[3];
            boneKeys[curves[2]] +=
                curves[1] == "Default" || counted == "-" ? 0 : std::stoi(counted);
        }
        for (const std::smatch& take :
             Matches(info, R"re(take "([^"]*)"\n  frames (\d+) to (\d+))re")) {
            takeFrames[take[1]] = {std::stoi(take[2]), std::stoi(take[3])};
        }
    }
    EXPECT_FALSE(boneKeys.empty()) << "one of the demo's models has a skeleton";
    for (const auto& [bone, keys] : boneKeys) {
        EXPECT_THAT(output, HasSubstr("Added animation for " + bone + " with " +
                                      std::to_string(keys) + " keys.\n"));
    }
    // The stage's actions named like a take play its frames as fbxinfo numbers them; every
    // other action starts outside every take, where the character stands in its stored pose.
    ASSERT_THAT(takeFrames, SizeIs(2));
    const std::string stage = ReadWholeFile(kAssets / "stage.xml");
    const std::vector<std::smatch> actions =
        Matches(stage, R"re(<Name>(\w+)</Name>(?:\s*<(?:Trigger|Event)>[^<]*</\w+>)*)re"
                       R"re(\s*<Start_Frame>(-?\d+)</Start_Frame>\s*<End_Frame>(-?\d+)<)re");
    EXPECT_EQ(actions.size(), 15u);
    for (const std::smatch& action : actions) {
        const int start = std::stoi(action[2]);
        if (const auto take = takeFrames.find(action[1]); take != takeFrames.end()) {
            EXPECT_EQ(std::make_pair(start, std::stoi(action[3])), take->second) << action[1];
        }
        for (const auto& [name, frames] : takeFrames) {
            EXPECT_TRUE(name == action[1] || start < frames.first || start > frames.second)
                << action[1] << " starts inside " << name;
        }
    }
    EXPECT_THAT(output, Not(HasSubstr("Failed to"))) << "a model or a texture bitmap is missing";
    EXPECT_THAT(output, HasSubstr("Finished loading xml.\n"));

    // The window opens centred at 640 by 480 (xwininfo reports each value after its label).
    const auto value = [](const std::string& info, const std::string& label) {
        std::smatch match;
        return std::regex_search(info, match, std::regex(label + R"(\s*(-?[0-9]+))"))
                   ? std::stoi(match[1])
                   : -1;
    };
    const std::string root = RunCommand("xwininfo -root");
    const std::string info = RunCommand("xwininfo -id " + std::to_string(s_Session->Window()));
    EXPECT_EQ(value(info, "Width:"), 640);
    EXPECT_EQ(value(info, "Height:"), 480);
    EXPECT_EQ(value(info, "Absolute upper-left X:"), (value(root, "Width:") - 640) / 2);
    EXPECT_EQ(value(info, "Absolute upper-left Y:"), (value(root, "Height:") - 480) / 2);
    // The frame rate is counted once a full second has passed.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (s_Session->TitleFrameRate() <= 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(100));
    }
    EXPECT_GT(s_Session->TitleFrameRate(), 0);
}

TEST_F(DemoPlayTest, MovementKeysMoveTurnAndZoomTheArena) {
    Switch("g", Title());
    const LitMeasure was = MeasureLit(s_Session->StablePicture());
    ASSERT_GT(was.m_Count, 10000);

    // j moves the arena left, k right, i up, m down.
    const std::tuple<const char*, int, int> moves[] = {
        {"j", -1, 0}, {"k", 1, 0}, {"i", 0, -1}, {"m", 0, 1}};
    LitMeasure moved = was;
    for (const auto& [key, dx, dy] : moves) {
        const LitMeasure now = MeasureLit(After(key));
        EXPECT_GT((now.m_X - moved.m_X) * dx + (now.m_Y - moved.m_Y) * dy, 20) << key;
        moved = now;
    }

    const LitMeasure nearer = MeasureLit(After("z"));
    EXPECT_GT(nearer.m_Count, moved.m_Count * 5 / 4) << "z zooms in: the arena fills more";
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
    const auto start = halves(s_Session->StablePicture());
    const auto turnedLeft = halves(After("a"));
    EXPECT_GT(turnedLeft.first, start.first + 10) << "a swings the far edge right";
    EXPECT_GT(turnedLeft.second, start.second + 12) << "and the near edge left of it";
    const auto turnedRight = halves(After("d"));
    EXPECT_LT(turnedRight.first, turnedLeft.first - 10) << "d swings the far edge back left";
    EXPECT_LT(turnedRight.second, turnedLeft.second - 12);
}

TEST_F(DemoPlayTest, EventKeysSwitchStatesAndTheReturnKeyBringsTheTitleBack) {
    const WindowPicture& title = s_Title;
    const WindowPicture arena = Switch("g", Title());
    EXPECT_GT(DifferingPixels(arena, title), Tenth(title)) << "g leads from the title on";
    Switch("t", arena);
    EXPECT_LT(DifferingPixels(s_Session->StablePicture(), title), Hundredth(title))
        << "t in the arena shows the title again";

    Switch("g", title);
    const WindowPicture arenaAgain = s_Session->StablePicture();
    const WindowPicture stage = Switch("n", arenaAgain);
    EXPECT_GT(DifferingPixels(stage, arenaAgain), Tenth(title)) << "n leads to the stage";
    EXPECT_GT(DifferingPixels(stage, title), Tenth(title));
    EXPECT_LT(DifferingPixels(Title(true), title), Hundredth(title))
        << "the return key shows the title as it was at the start";
}

TEST_F(DemoPlayTest, CharacterWalksAndWavesOnItsKeysAndFallsBackToStanding) {
    Switch("g", Title());
    Switch("n", s_Session->StablePicture());
    // Standing in its stored pose the character keeps still; it is the topmost lit thing.
    const WindowPicture standing = s_Session->StablePicture();
    const LitMeasure rest = MeasureLit(standing);
    const int headX = static_cast<int>(
        MeasureLit(standing, {0, rest.m_Top, standing.m_Width, rest.m_Top + 40}).m_X);
    ASSERT_GT(rest.m_Count, 5000);
    // The head's top row and its middle.
    const auto head = [&](const WindowPicture& p) {
        const LitMeasure all = MeasureLit(p);
        return std::make_pair(all.m_Top,
                              MeasureLit(p, {0, all.m_Top, p.m_Width, all.m_Top + 40}).m_X);
    };

    // c walks on the spot: arms and legs swing from picture to picture, the head stays put.
    s_Session->Hold("c", kKeyHold);
    std::vector<WindowPicture> walk;
    for (int i = 0; i < 10; ++i) {
        std::this_thread::sleep_for(milliseconds(150));
        walk.push_back(s_Session->Capture());
    }
    int changes = 0, stepped = 0;
    for (std::size_t i = 0; i < walk.size(); ++i) {
        SCOPED_TRACE(i);
        changes += i > 0 && DifferingPixels(walk[i], walk[i - 1]) > 150;
        stepped += DifferingPixels(walk[i], standing) > 400;
        const auto [top, x] = head(walk[i]);
        EXPECT_LE(std::abs(top - rest.m_Top), 10) << "the body stays in place";
        EXPECT_LE(std::abs(x - headX), 10);
    }
    EXPECT_GE(changes, 6) << "the picture moves on while the walk runs";
    EXPECT_GE(stepped, 8) << "the limbs leave the standing pose";

    // The walk runs on into the wave and then the standing frame: the picture comes back.
    const auto stands = [&](const WindowPicture& p) {
        return DifferingPixels(p, standing) < Hundredth(standing) / 10;
    };
    EXPECT_TRUE(stands(s_Session->WaitForPicture(stands, milliseconds(6000))))
        << "the character stands again after the walk and the wave";

    // v raises a hand above the head, beside it, and waves it; then it stands again.
    s_Session->Hold("v", kKeyHold);
    const auto raised = [&](const WindowPicture& p) {
        return MeasureLit(p).m_Top < rest.m_Top - 8;
    };
    const WindowPicture waving = s_Session->WaitForPicture(raised, milliseconds(1500));
    EXPECT_TRUE(raised(waving)) << "the hand goes up above the head";
    const LitMeasure hand = MeasureLit(waving, {0, 0, waving.m_Width, rest.m_Top - 2});
    EXPECT_GT(std::abs(hand.m_X - headX), 15) << "beside the head, not on it";
    // Below the hands (the figure is about 215 pixels tall) only the legs, the stage and the
    // crates show, and they do not move.
    const PictureRegion legs{0, rest.m_Top + 140, waving.m_Width, waving.m_Height};
    const LitMeasure legsNow = MeasureLit(waving, legs), legsBefore = MeasureLit(standing, legs);
    EXPECT_NEAR(legsNow.m_Count, legsBefore.m_Count, legsBefore.m_Count / 100)
        << "the legs stay as they stood while waving";
    EXPECT_NEAR(legsNow.m_X, legsBefore.m_X, 1.0);

    if (const char* keep = std::getenv("DEMO_SCREENSHOT"); keep != nullptr && *keep != '\0') {
        RunCommand("import -window " + std::to_string(s_Session->Window()) + " '" + keep + "'");
        EXPECT_TRUE(fs::exists(keep)) << keep;
    }
    EXPECT_TRUE(stands(s_Session->WaitForPicture(stands, milliseconds(4000))))
        << "and back to standing after the wave";
}

TEST_F(DemoPlayTest, ReloadKeyShowsAnEditedStateFileAndClosingEndsTheGame) {
    const int near = MeasureLit(Title()).m_Count;
    // Push the title twice as far away in the running copy, then reload.
    const fs::path file = s_Session->Directory() / "Assets" / "title.xml";
    std::string text = ReadWholeFile(file);
    const std::string from = "<Z_Position>-40</Z_Position>";
    const auto at = text.find(from);
    ASSERT_NE(at, std::string::npos);
    std::ofstream(file) << text.replace(at, from.size(), "<Z_Position>-80</Z_Position>");

    s_Session->Hold("l", kKeyHold);
    const WindowPicture farther = s_Session->WaitForPicture(
        [&](const WindowPicture& p) { return MeasureLit(p).m_Count < near / 2; },
        milliseconds(8000));
    EXPECT_LT(MeasureLit(farther).m_Count, near / 2) << "the title now stands farther off";
    EXPECT_EQ(s_Session->Close(), 0);
}

}  // namespace
