// newgame run as a game author runs it: wrong arguments and unreadable models write nothing,
// and a game made of two corpus models plays under the real engine: the first model is seen
// whole, a take key changes the picture, nothing fails to load.
#include <gmock/gmock.h>

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

#include "engine_session.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

namespace fs = std::filesystem;
using std::chrono::milliseconds;

const fs::path kCorpus = fs::path(ENGINE_CORPUS_DIR) / "fbx";
// Three takes, the first a still pose; then a textured cube with one take.
const fs::path kSausage = kCorpus / "blender_279_sausage_7400_binary.fbx";
const fs::path kCube = kCorpus / "maya_textured_cube_6100_binary.fbx";

struct Finished {
    int m_Status = -1;
    std::string m_Out;
    std::string m_Err;
};

Finished RunNewgame(const ScratchDir& dir, const std::string& arguments) {
    const int status = std::system(("cd " + dir.Root().string() + " && timeout 60 " +
                                    NEWGAME_EXECUTABLE + " " + arguments + " >out.txt 2>err.txt")
                                       .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadWholeFile(dir.Root() / "out.txt"),
            ReadWholeFile(dir.Root() / "err.txt")};
}

TEST(NewgameTest, ArgumentsAndUnreadableModelsWriteNoGame) {
    ScratchDir dir;
    fs::create_directories(dir.Root() / "full");
    std::ofstream(dir.Root() / "full" / "keep.txt") << "mine";
    std::ofstream(dir.Root() / "broken.fbx") << "Kaydara FBX Binary  \0 not really";
    const std::string cube = kCube.string();
    struct Case {
        std::string m_Arguments;
        int m_Status;
        std::string m_Says;  // in standard error, or standard output when the status is 0
    } cases[] = {
        {"--help", 0, "usage: newgame DIR MODEL.fbx"},
        {"--version", 0, "newgame 0."},
        {"", 2, "usage: newgame"},
        {"game", 2, "usage: newgame"},
        {"--fast game " + cube, 2, "unknown option --fast"},
        {"full " + cube, 1, "full exists and is not an empty folder"},
        {"game missing.fbx", 1, "newgame: missing.fbx: File not found"},
        {"game " + cube + " broken.fbx", 1, "newgame: broken.fbx: "},
    };
    for (const Case& c : cases) {
        const Finished run = RunNewgame(dir, c.m_Arguments);
        EXPECT_EQ(run.m_Status, c.m_Status) << c.m_Arguments;
        EXPECT_THAT(c.m_Status == 0 ? run.m_Out : run.m_Err, HasSubstr(c.m_Says)) << c.m_Arguments;
        EXPECT_FALSE(fs::exists(dir.Root() / "game")) << c.m_Arguments;
    }
    EXPECT_EQ(ReadWholeFile(dir.Root() / "full" / "keep.txt"), "mine");
}

TEST(NewgameTest, TwoModelGamePlaysUnderTheEngine) {
    if (const std::string missing = MissingForWindows(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    ScratchDir dir;
    const Finished made =
        RunNewgame(dir, "NewGameTest " + kSausage.string() + " " + kCube.string());
    ASSERT_EQ(made.m_Status, 0) << made.m_Err;
    const fs::path game = dir.Root() / "NewGameTest";
    EXPECT_THAT(ReadWholeFile(game / "README.txt"), HasSubstr("2  take \""));

    EngineSession session(game / "Assets");
    ASSERT_TRUE(session.WaitForWindow("NewGameTest")) << session.Output() << session.Errors();
    const WindowPicture first = session.StablePicture();
    const int pixels = first.m_Width * first.m_Height;
    ASSERT_GT(pixels, 0);
    // The first model, whole and in the middle: a fair share of the picture, nothing at the
    // picture's edges.
    const LitMeasure lit = MeasureLit(first);
    EXPECT_GT(lit.m_Count, pixels / 20);
    EXPECT_NEAR(lit.m_X, first.m_Width / 2.0, first.m_Width / 8.0);
    EXPECT_NEAR(lit.m_Y, first.m_Height / 2.0, first.m_Height / 8.0);
    EXPECT_GT(lit.m_Top, 0);
    EXPECT_LT(lit.m_Bottom, first.m_Height - 1);

    // A take key shows that take: the model bends away from its still first take.
    session.Hold("3", 0.3);
    const WindowPicture take = session.WaitForPicture(
        [&](const WindowPicture& p) { return DifferingPixels(p, first) > pixels / 200; },
        milliseconds(3000));
    EXPECT_GT(DifferingPixels(take, first), pixels / 200);

    EXPECT_EQ(session.Close(), 0);
    EXPECT_THAT(session.Output(), Not(HasSubstr("Failed")));
    EXPECT_THAT(session.Errors(), Not(HasSubstr("Failed")));
}

}  // namespace
