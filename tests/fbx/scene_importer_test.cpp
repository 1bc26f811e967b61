// Importer flows: failures, versions, passwords, take information and options.
#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "scene_support.h"

using scenetest::Fbx;
using scenetest::Imported;

namespace {

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A file in a fresh temporary folder, removed at the end of the test.
class TempFile {
public:
    explicit TempFile(const std::string& content) {
        char folder[] = "/tmp/scene_test_XXXXXX";
        m_Folder = mkdtemp(folder) ? folder : "/tmp";
        m_Path = m_Folder + "/model.fbx";
        std::ofstream(m_Path, std::ios::binary) << content;
    }
    ~TempFile() {
        std::remove(m_Path.c_str());
        rmdir(m_Folder.c_str());
    }
    const std::string& Path() const { return m_Path; }

private:
    std::string m_Folder;
    std::string m_Path;
};

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    std::size_t at = text.find(from);
    if (at != std::string::npos)
        text.replace(at, from.size(), to);
    return text;
}

// maya_cube_7500_ascii.fbx protected by the password "opensesame".
std::string ProtectedCube() {
    return Replace(ReadText(Fbx("maya_cube_7500_ascii.fbx")), "FBXVersion: 7500",
                   "FBXVersion: 7500\n\tEncryptionType: 1\n\tPasswordHash: \"7a9214a9c2bf1ce7\"");
}

TEST(SceneImporter, SdkVersionIsTheNewestFileVersionRead) {
    int major = 0, minor = 0, revision = 0;
    KFbxSdkManager::GetFileFormatVersion(major, minor, revision);
    EXPECT_EQ(major, 7);
    EXPECT_EQ(minor, 7);
    EXPECT_EQ(revision, 0);
}

TEST(SceneImporter, MissingFileFailsToInitialize) {
    Imported file("/nonexistent/folder/model.fbx");
    EXPECT_FALSE(file.initialized);
    EXPECT_EQ(file.importer->GetLastErrorID(), KFbxImporter::eFILE_NOT_OPENED);
    EXPECT_NE(std::string(file.importer->GetLastErrorString()).find("model.fbx"),
              std::string::npos);
    int format = -1;
    EXPECT_FALSE(
        file.manager->GetIOPluginRegistry()->DetectFileFormat("/nonexistent/x.fbx", format));
    // Import without a successful Initialize fails too, leaving an empty scene.
    EXPECT_FALSE(file.importer->Import(file.scene, file.options));
    EXPECT_EQ(file.scene->GetRootNode()->GetChildCount(), 0);
}

TEST(SceneImporter, NonFbxFileIsRejected) {
    TempFile text("This is a plain text file, not a model.\n");
    Imported file(text.Path());
    EXPECT_FALSE(file.initialized);
    EXPECT_FALSE(file.importer->IsFBX());
    EXPECT_NE(std::string(file.importer->GetLastErrorString()), "");
    int format = -1;
    EXPECT_FALSE(
        file.manager->GetIOPluginRegistry()->DetectFileFormat(text.Path().c_str(), format));
}

TEST(SceneImporter, FormatIsDetectedByContent) {
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxIOPluginRegistry* registry = manager->GetIOPluginRegistry();
    int format = -1;
    EXPECT_TRUE(registry->DetectFileFormat(Fbx("maya_cube_7500_binary.fbx").c_str(), format));
    EXPECT_EQ(format, registry->GetNativeReaderFormat());
    EXPECT_TRUE(registry->DetectFileFormat(Fbx("maya_cube_7500_ascii.fbx").c_str(), format));
    EXPECT_EQ(format, KFbxIOPluginRegistry::eFBX_ASCII);
    manager->Destroy();
}

TEST(SceneImporter, VersionsOutOfRangeAreRefused) {
    std::string cube = ReadText(Fbx("maya_cube_7500_ascii.fbx"));
    TempFile newer(Replace(cube, "FBXVersion: 7500", "FBXVersion: 7800"));
    Imported tooNew(newer.Path());
    EXPECT_FALSE(tooNew.initialized);
    EXPECT_EQ(tooNew.importer->GetLastErrorID(), KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_YET);
    int major, minor, revision;
    tooNew.importer->GetFileVersion(major, minor, revision);
    EXPECT_EQ(major * 1000 + minor * 100 + revision, 7800);

    TempFile older(Replace(cube, "FBXVersion: 7500", "FBXVersion: 5000"));
    Imported tooOld(older.Path());
    EXPECT_FALSE(tooOld.initialized);
    EXPECT_EQ(tooOld.importer->GetLastErrorID(), KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_ANYMORE);

    // A binary header announcing a future version.
    std::string binary = ReadText(Fbx("maya_cube_7500_binary.fbx"));
    binary[23] = static_cast<char>(0x60);  // 9056 = 0x2360, little-endian
    binary[24] = static_cast<char>(0x23);
    TempFile future(binary);
    Imported tooNewBinary(future.Path());
    EXPECT_FALSE(tooNewBinary.initialized);
    EXPECT_EQ(tooNewBinary.importer->GetLastErrorID(),
              KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_YET);
}

TEST(SceneImporter, FileVersionAndTakeInformation) {
    Imported file(Fbx("maya_transform_animation_6100_binary.fbx"));
    ASSERT_TRUE(file.imported);
    EXPECT_TRUE(file.importer->IsFBX());
    int major, minor, revision;
    file.importer->GetFileVersion(major, minor, revision);
    EXPECT_EQ(major, 6);
    EXPECT_EQ(minor, 1);
    EXPECT_EQ(revision, 0);
    ASSERT_EQ(file.importer->GetTakeCount(), 1);
    EXPECT_STREQ(file.importer->GetCurrentTakeName(), "Take 001");
    KFbxTakeInfo* take = file.importer->GetTakeInfo(0);
    ASSERT_NE(take, nullptr);
    EXPECT_EQ(take->mName, "Take 001");
    EXPECT_EQ(take->mImportName, "Take 001");
    EXPECT_TRUE(take->mSelect);
    EXPECT_EQ(file.importer->GetTakeInfo(1), nullptr);

    Imported blender(Fbx("blender_279_sausage_6100_ascii.fbx"));
    ASSERT_TRUE(blender.imported);
    EXPECT_EQ(blender.importer->GetTakeCount(), 4);
    EXPECT_EQ(blender.scene->GetTakeNames().size(), 4u);
}

TEST(SceneImporter, OptionsAreSetByNameAndKind) {
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager, "");
    for (const char* name : {"MATERIAL", "TEXTURE", "LINK", "SHAPE", "GOBO", "ANIMATION",
                             "GLOBAL SETTINGS", "PASSWORD ENABLE"}) {
        EXPECT_TRUE(options->SetOption(name, true)) << name;
    }
    EXPECT_TRUE(options->SetOption("PASSWORD", "secret"));
    EXPECT_EQ(options->GetStringOption("PASSWORD"), "secret");
    EXPECT_FALSE(options->SetOption("PASSWORD", true));   // a string option
    EXPECT_FALSE(options->SetOption("MATERIAL", "yes"));  // a boolean option
    EXPECT_FALSE(options->SetOption("NO SUCH OPTION", true));
    EXPECT_TRUE(options->GetBoolOption("MATERIAL"));
    EXPECT_EQ(options->GetStringOption("PASSWORD"), "secret");
    options->Destroy(false, false);
    manager->Destroy();
}

TEST(SceneImporter, OptionsLeaveOutWhatIsSwitchedOff) {
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxScene* scene = KFbxScene::Create(manager, "");
    KFbxImporter* importer = KFbxImporter::Create(manager, "");
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager, "");
    options->SetOption("MATERIAL", false);
    options->SetOption("ANIMATION", false);
    ASSERT_TRUE(importer->Initialize(Fbx("maya_transform_animation_7500_ascii.fbx").c_str()));
    ASSERT_TRUE(importer->Import(scene, options));
    KFbxNode* cube = scene->GetRootNode()->GetChild(0);
    EXPECT_EQ(cube->GetMaterialCount(), 0);
    cube->SetCurrentTakeNode(1);
    EXPECT_EQ(cube->LclTranslation.GetKFCurve("X"), nullptr);
    importer->Destroy(false, false);
    manager->Destroy();
}

TEST(SceneImporter, PasswordProtectedFiles) {
    TempFile locked(ProtectedCube());
    KFbxSdkManager* manager = KFbxSdkManager::Create();
    KFbxScene* scene = KFbxScene::Create(manager, "");
    KFbxImporter* importer = KFbxImporter::Create(manager, "");
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager, "");
    ASSERT_TRUE(importer->Initialize(locked.Path().c_str()));

    EXPECT_FALSE(importer->Import(scene, options));
    EXPECT_EQ(importer->GetLastErrorID(), KFbxImporter::ePASSWORD_ERROR);
    EXPECT_EQ(scene->GetRootNode()->GetChildCount(), 0);

    options->SetOption("PASSWORD", "wrong");
    options->SetOption("PASSWORD ENABLE", true);
    EXPECT_FALSE(importer->Import(scene, options));
    EXPECT_EQ(importer->GetLastErrorID(), KFbxImporter::ePASSWORD_ERROR);

    options->SetOption("PASSWORD", "opensesame");
    options->SetOption("PASSWORD ENABLE", false);
    EXPECT_FALSE(importer->Import(scene, options));

    options->SetOption("PASSWORD ENABLE", true);
    EXPECT_TRUE(importer->Import(scene, options)) << importer->GetLastErrorString();
    ASSERT_EQ(scene->GetRootNode()->GetChildCount(), 1);
    EXPECT_EQ(scene->GetRootNode()->GetChild(0)->GetMesh()->GetPolygonCount(), 6);
    EXPECT_EQ(fbx::PasswordHash("opensesame"), "7a9214a9c2bf1ce7");
    manager->Destroy();
}

TEST(SceneImporter, SmallHandWrittenPolygonsAndBadIndices) {
    // Polygons of one and two corners, and a corner naming a control point that does not exist.
    TempFile small(
        "; FBX 7.5.0 project file\n"
        "FBXHeaderExtension:  {\n\tFBXVersion: 7500\n}\n"
        "Objects:  {\n"
        "\tGeometry: 10, \"Geometry::\", \"Mesh\" {\n"
        "\t\tVertices: *9 {\n\t\t\ta: 0,0,0,1,0,0,0,1,0\n\t\t}\n"
        "\t\tPolygonVertexIndex: *6 {\n\t\t\ta: -1,0,-2,0,1,-43\n\t\t}\n"
        "\t}\n"
        "\tModel: 20, \"Model::tiny\", \"Mesh\" {\n\t}\n"
        "}\n"
        "Connections:  {\n\tC: \"OO\",20,0\n\tC: \"OO\",10,20\n}\n");
    Imported file(small.Path());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    KFbxMesh* mesh = file.Find("tiny")->GetMesh();
    ASSERT_NE(mesh, nullptr);
    ASSERT_EQ(mesh->GetPolygonCount(), 3);
    EXPECT_EQ(mesh->GetPolygonSize(0), 1);
    EXPECT_EQ(mesh->GetPolygonSize(1), 2);
    EXPECT_EQ(mesh->GetPolygonSize(2), 3);
    EXPECT_EQ(mesh->GetPolygonVertex(1, 1), 1);
    EXPECT_EQ(mesh->GetPolygonVertex(2, 2), 0);  // 42 does not exist
    EXPECT_EQ(mesh->GetLayerCount(), 0);
    EXPECT_EQ(mesh->GetTextureUVIndex(0, 0), -1);
}

}  // namespace
