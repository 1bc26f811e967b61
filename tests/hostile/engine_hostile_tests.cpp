// The whole engine given the demo with damaged models, textures and state files: it opens its
// window, shows its title with a frame rate, names what it cannot read and keeps playing.
#include <gmock/gmock.h>

#include <regex>
#include <thread>

#include "engine_session.h"
#include "hostile_files.h"

namespace {

using ::testing::HasSubstr;

// The demo, with damaged models and textures (and a folder) added to its title screen and two
// states whose files are missing or are a folder.
void DamageDemo(const ScratchDir& dir) {
    dir.Write("Assets/models/quad.fbx",
              std::regex_replace(ReadWholeFile(DataFile("textured_quad.fbx")),
                                 std::regex("hostile\\.bmp"), "Assets/textures/lying.bmp"));
    dir.Write("Assets/textures/lying.bmp", BitmapBytes({30000, 30000, 24, 0, 0xFFFFFFF0u, 54, 48}));
    dir.Write("Assets/models/deep.fbx", DeepAsciiFbx(50000, false));
    std::string title = ReadWholeFile(dir.Path("Assets/title.xml"));
    std::string urls;
    for (const std::string& url :
         {DataFile("not_a_model.fbx"), DataFile("huge_counts.fbx"), DataFile("connection_loop.fbx"),
          DataFile("connection_loop_6100.fbx"), DataFile("bad_indices.fbx"),
          std::string("./Assets/models/missing.fbx"), std::string("./Assets/models"),
          std::string("./Assets/models/deep.fbx"), std::string("./Assets/models/quad.fbx")}) {
        urls += "    <URL>" + url + "</URL>\n";
    }
    dir.Write("Assets/title.xml", title.insert(title.find("    <Default_Action>"), urls));
    std::string table = ReadWholeFile(dir.Path("Assets/states.xml"));
    dir.Write("Assets/states.xml",
              table.insert(table.find("</game>"),
                           "<state><type>MenuState</type><name>Gone</name>"
                           "<resources>./Assets/gone.xml</resources></state>\n"
                           "<state><type>MenuState</type><name>Folder</name>"
                           "<resources>./Assets/models</resources></state>\n"));
}

TEST(HostileEngine, DamagedModelsTexturesAndStateFilesAreReportedAndTheGameGoesOn) {
    if (const std::string missing = MissingForWindows(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    EngineSession session(std::filesystem::path(ENGINE_SOURCE_DIR) / "Assets");
    DamageDemo(session.Files());
    ASSERT_TRUE(session.WaitForWindow("FBX Engine Demo")) << session.Output();
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_GT(session.TitleFrameRate(), 0);

    const std::string output = session.Output();
    for (const std::string& line :
         {"Error returned: Not an FBX file: " + DataFile("not_a_model.fbx") + "\n",
          std::string("Failed to open ./Assets/models/missing.fbx.\n"),
          std::string("Error returned: Not a regular file: ./Assets/models\n"),
          std::string("Loading mesh: Self\n"), std::string("Loading mesh: Liar\n"),
          std::string("Loading texture: QuadTexture\n"), std::string("Finished loading xml.\n")}) {
        EXPECT_THAT(output, HasSubstr(line));
    }

    // A reset imports every model again, a reload re-reads every file: still playing.
    session.Hold("r", 0.3);
    session.Hold("l", 0.3);
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    EXPECT_GT(session.TitleFrameRate(), 0);
    EXPECT_EQ(session.Close(), 0);
}

}  // namespace
