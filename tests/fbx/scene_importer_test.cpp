// Importer flows: failures, versions, options, passwords and odd hand-written files.
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "fbx/graph/ObjectGraph.h"
#include "scene_support.h"
#include "support_corpus.h"

using scenetest::Fbx;
using scenetest::Imported;
using scenetest::TempFile;

namespace {

// maya_cube_7500_ascii.fbx with its FBXVersion line replaced.
std::string CubeWithHeader(const std::string& header) {
    const std::vector<std::uint8_t> bytes = fbxtest::LoadFile(Fbx("maya_cube_7500_ascii.fbx"));
    std::string text(bytes.begin(), bytes.end());
    return text.replace(text.find("FBXVersion: 7500"), 16, header);
}

int FileVersion(const Imported& file) {
    int major = 0, minor = 0, revision = 0;
    file.importer->GetFileVersion(major, minor, revision);
    return major * 1000 + minor * 100 + revision;
}

TEST(SceneImporter, FilesThatCannotBeReadAreRefusedWithAReason) {
    int major = 0, minor = 0, revision = 0;
    KFbxSdkManager::GetFileFormatVersion(major, minor, revision);
    EXPECT_EQ(major * 1000 + minor * 100 + revision, 7700);  // the newest file version read
    const std::vector<std::uint8_t> bytes = fbxtest::LoadFile(Fbx("maya_cube_7500_binary.fbx"));
    std::string future(bytes.begin(), bytes.end());
    future[23] = static_cast<char>(0x60);  // version 9056 (0x2360, little-endian)
    future[24] = static_cast<char>(0x23);
    // The file's content (none for a missing file), the error, the version read.
    const std::tuple<const char*, std::string, KFbxImporter::EError, int> cases[] = {
        {"missing", "", KFbxImporter::eFILE_NOT_OPENED, 0},
        {"text", "Plain text, not a model.\n", KFbxImporter::eINVALID_FILE_FORMAT, 0},
        {"newer", CubeWithHeader("FBXVersion: 7800"), KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_YET,
         7800},
        {"older", CubeWithHeader("FBXVersion: 5000"),
         KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_ANYMORE, 5000},
        {"binary", future, KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_YET, 9056}};
    for (const auto& [what, content, error, version] : cases) {
        TempFile file(content);
        const std::string path = *what == 'm' ? "/nonexistent/folder/model.fbx" : file.Path();
        Imported refused(path);
        EXPECT_FALSE(refused.initialized) << what;
        EXPECT_EQ(refused.importer->GetLastErrorID(), error) << what;
        EXPECT_EQ(FileVersion(refused), version) << what;
        EXPECT_EQ(refused.importer->IsFBX(), version > 0) << what;
        EXPECT_NE(std::string(refused.importer->GetLastErrorString()).find(version ? " is " : path),
                  std::string::npos)
            << what;
        // Import without a successful Initialize fails too, leaving an empty scene.
        EXPECT_FALSE(refused.importer->Import(refused.scene, refused.options)) << what;
        EXPECT_EQ(refused.scene->GetRootNode()->GetChildCount(), 0) << what;
        // The encoding is detected by content.
        KFbxIOPluginRegistry* registry = refused.manager->GetIOPluginRegistry();
        int format = -1;
        EXPECT_EQ(registry->DetectFileFormat(path.c_str(), format), version > 0) << what;
        EXPECT_EQ(format, !version       ? -1
                          : *what == 'b' ? registry->GetNativeReaderFormat()
                                         : KFbxIOPluginRegistry::eFBX_ASCII)
            << what;
        EXPECT_FALSE(registry->DetectFileFormat(nullptr, format));
    }
    // A readable file still needs a scene to import into.
    Imported cube(Fbx("maya_cube_7500_binary.fbx"));
    EXPECT_FALSE(cube.importer->Import(nullptr, cube.options));
}

TEST(SceneImporter, OptionsAreSetByNameAndKindAndLeaveOutWhatIsSwitchedOff) {
    Imported file(Fbx("maya_transform_animation_7500_ascii.fbx"));
    EXPECT_TRUE(file.importer->IsFBX());
    EXPECT_EQ(FileVersion(file), 7500);
    KFbxStreamOptionsFbxReader* options = file.options;
    for (const char* name : {"MATERIAL", "TEXTURE", "LINK", "SHAPE", "GOBO", "ANIMATION",
                             "GLOBAL SETTINGS", "PASSWORD ENABLE"}) {
        EXPECT_TRUE(options->SetOption(name, true)) << name;
    }
    EXPECT_TRUE(options->SetOption("PASSWORD", "secret"));
    // Each option has its kind; unknown names are refused.
    EXPECT_FALSE(options->SetOption("PASSWORD", true) || options->SetOption("MATERIAL", "yes") ||
                 options->SetOption("NO SUCH OPTION", true));
    EXPECT_TRUE(options->GetBoolOption("MATERIAL"));
    EXPECT_EQ(options->GetStringOption("PASSWORD"), "secret");
    // The first import, with everything on, has a material and curves; this one neither.
    EXPECT_EQ(file.Find("pCube1")->GetMaterialCount(), 1);
    options->SetOption("MATERIAL", false);
    options->SetOption("ANIMATION", false);
    KFbxScene* scene = KFbxScene::Create(file.manager, "");
    ASSERT_TRUE(file.importer->Import(scene, options));
    KFbxNode* cube = scene->GetRootNode()->GetChild(0);
    EXPECT_EQ(cube->GetMaterialCount(), 0);
    cube->SetCurrentTakeNode(1);
    EXPECT_EQ(cube->LclTranslation.GetKFCurve("X"), nullptr);
}

TEST(SceneImporter, PasswordProtectedFiles) {
    EXPECT_EQ(fbx::PasswordHash("opensesame"), "7a9214a9c2bf1ce7");
    TempFile locked(CubeWithHeader(
        "FBXVersion: 7500\n\tEncryptionType: 1\n\tPasswordHash: \"7a9214a9c2bf1ce7\""));
    Imported file(locked.Path());
    ASSERT_TRUE(file.initialized);
    EXPECT_FALSE(file.imported);
    // No password, a wrong one, the right one not enabled, the right one.
    const std::tuple<const char*, bool, bool> attempts[] = {{"", false, false},
                                                            {"wrong", true, false},
                                                            {"opensesame", false, false},
                                                            {"opensesame", true, true}};
    for (const auto& [password, enable, opens] : attempts) {
        file.options->SetOption("PASSWORD", password);
        file.options->SetOption("PASSWORD ENABLE", enable);
        EXPECT_EQ(file.importer->Import(file.scene, file.options), opens) << password;
        EXPECT_EQ(file.importer->GetLastErrorID() == KFbxImporter::ePASSWORD_ERROR, !opens);
        EXPECT_EQ(file.scene->GetRootNode()->GetChildCount(), opens ? 1 : 0);
    }
    EXPECT_EQ(file.scene->GetRootNode()->GetChild(0)->GetMesh()->GetPolygonCount(), 6);
}

// Polygons of one and two corners, a corner naming a control point that does not exist,
// connections from and to unknown ids and one of the model to itself; a name holding "::"
// after the class prefix; a transform only the property template gives.
TEST(SceneImporter, SmallHandWrittenFileWithBadIndicesAndConnections) {
    TempFile small(
        "; FBX 7.5.0 project file\n"
        "FBXHeaderExtension:  {\n\tFBXVersion: 7500\n}\n"
        "Definitions: { ObjectType: \"Model\" { PropertyTemplate: \"FbxNode\" { Properties70: {\n"
        "\tP: \"Lcl Translation\", \"Lcl Translation\", \"\", \"A\", 1, 2, 3\n} } } }\n"
        "Objects:  {\n"
        "\tGeometry: 10, \"Geometry::\", \"Mesh\" {\n"
        "\t\tVertices: *9 {\n\t\t\ta: 0,0,0,1,0,0,0,1,0\n\t\t}\n"
        "\t\tPolygonVertexIndex: *6 {\n\t\t\ta: -1,0,-2,0,1,-43\n\t\t}\n"
        "\t}\n"
        "\tModel: 20, \"Model::ns:tiny::left\", \"Mesh\" {\n\t}\n"
        "}\n"
        "Connections:  {\n\tC: \"OO\",20,20\n\tC: \"OO\",20,0\n\tC: \"OO\",10,20\n"
        "\tC: \"OO\",99,20\n\tC: \"OO\",10,99\n}\n");
    Imported file(small.Path());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    // The object graph keeps no connection of the model to itself; a name without a class
    // prefix has no class.
    const auto graph = fbx::ObjectGraph::Build(fbx::ParseFile(small.Path()).document);
    for (std::size_t i = 0; i < graph->Objects().size(); ++i)
        EXPECT_TRUE(i == graph->Root() || graph->Sources(i, "Model").empty()) << i;
    std::string cls = "Model", name;
    fbx::SplitObjectName("plain", cls, name);
    EXPECT_EQ(cls + "|" + name, "|plain");
    ASSERT_EQ(file.scene->GetRootNode()->GetChildCount(), 1);
    KFbxNode* tiny = file.scene->GetRootNode()->GetChild(0);
    EXPECT_STREQ(tiny->GetName(), "ns:tiny::left");
    EXPECT_EQ(tiny->LclTranslation.Get()[1], 2.0);  // from the template
    EXPECT_EQ(tiny->GetChildCount(), 0);
    KFbxMesh* mesh = tiny->GetMesh();
    ASSERT_TRUE(mesh && mesh->GetPolygonCount() == 3);
    EXPECT_EQ(
        (std::vector<int>{mesh->GetPolygonSize(0), mesh->GetPolygonSize(1), mesh->GetPolygonSize(2),
                          mesh->GetPolygonVertex(1, 1), mesh->GetPolygonVertex(2, 2),
                          mesh->GetLayerCount(), mesh->GetTextureUVIndex(0, 0)}),
        (std::vector<int>{1, 2, 3, 1, 0, 0, -1}));  // 42 does not exist: 0
}

}  // namespace
