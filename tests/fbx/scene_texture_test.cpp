// Texture images: the video clips of corpus files and the images they embed, the video a
// pre-7000 texture names by "Media", and where LocateTextureImage finds an image.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "fbx/sdk/TextureLocation.h"
#include "fbx/write/WriterScene.h"
#include "scene_support.h"

namespace {

namespace fs = std::filesystem;
using fbx::TextureImageSource;
using scenetest::Fbx;
using scenetest::Imported;
using Bytes = std::vector<std::uint8_t>;

const Bytes kPngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

// The scene's textures by name: those on material properties and those stacked in them.
std::map<std::string, const KFbxTexture*> Textures(const KFbxScene& scene) {
    std::map<std::string, const KFbxTexture*> found;
    for (int m = 0; m < scene.GetMaterialCount(); ++m) {
        const KFbxSurfaceMaterial* material = scene.GetMaterial(m);
        for (int p = 0; p < material->GetPropertyCount(); ++p) {
            const KFbxProperty property = material->GetPropertyAt(p);
            for (int t = 0; t < property.GetSrcObjectCount(FBX_TYPE(KFbxTexture)); ++t) {
                const KFbxTexture* texture = property.GetSrcObject(FBX_TYPE(KFbxTexture), t);
                found[texture->GetName()] = texture;
                for (int i = 0; i < texture->GetSrcObjectCount(FBX_TYPE(KFbxTexture)); ++i) {
                    const KFbxTexture* inner = texture->GetSrcObject(FBX_TYPE(KFbxTexture), i);
                    found[inner->GetName()] = inner;
                }
            }
        }
    }
    return found;
}

const KFbxVideo* VideoOf(const KFbxTexture* texture) {
    return texture ? texture->GetSrcObject(FBX_TYPE(KFbxVideo)) : nullptr;
}

Bytes Content(const KFbxVideo& video) {
    return video.GetContent()
               ? Bytes(video.GetContent(), video.GetContent() + video.GetContentSize())
               : Bytes();
}

bool StartsWithPng(const Bytes& bytes) {
    return bytes.size() > kPngSignature.size() &&
           std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin());
}

// The videos of corpus files and what they embed. Maya's 6100 ASCII files and 3ds Max's ASCII
// files hold no Content; a Content record without a value embeds nothing.
TEST(SceneTextures, CorpusVideosHoldWhatTheFilesEmbed) {
    Bytes diffuse;
    for (const char* name :
         {"maya_textured_cube_6100_binary.fbx", "maya_textured_cube_7500_ascii.fbx",
          "maya_textured_cube_7500_binary.fbx", "maya_textured_cube_6100_ascii.fbx"}) {
        SCOPED_TRACE(name);
        Imported file(Fbx(name));
        ASSERT_TRUE(file.imported);
        const KFbxVideo* video = VideoOf(Textures(*file.scene)["file1"]);
        ASSERT_NE(video, nullptr);
        EXPECT_STREQ(video->GetName(), "file1");
        EXPECT_STREQ(video->GetFileName(),
                     "D:/Dev/clean/ufbx/data/textures/checkerboard_diffuse.png");
        EXPECT_STREQ(video->GetRelativeFileName(), "textures\\checkerboard_diffuse.png");
        if (std::string(name).find("6100_ascii") != std::string::npos) {
            EXPECT_TRUE(video->GetContent() == nullptr && video->GetContentSize() == 0);
            continue;
        }
        EXPECT_TRUE(StartsWithPng(Content(*video)));
        EXPECT_EQ(video->GetContentSize(), 1589u);
        if (diffuse.empty())
            diffuse = Content(*video);
        EXPECT_EQ(Content(*video), diffuse);
    }

    // 3ds Max: the 6100 texture's clip embeds tiny_clouds.png.
    Imported max6100(Fbx("max2009_cube_texture_6100_binary.fbx"));
    const KFbxVideo* clouds = VideoOf(Textures(*max6100.scene)["Clouds"]);
    ASSERT_NE(clouds, nullptr);
    EXPECT_STREQ(clouds->GetRelativeFileName(), "..\\..\\tiny_clouds.png");
    EXPECT_EQ(clouds->GetContentSize(), 2487u);
    EXPECT_TRUE(StartsWithPng(Content(*clouds)));

    // Maya embeds each image file once: file2 names the file file1 embeds, with an empty
    // Content, and shows file1's bytes.
    for (const char* name :
         {"maya_shared_textures_7500_ascii.fbx", "maya_shared_textures_7500_binary.fbx"}) {
        SCOPED_TRACE(name);
        Imported file(Fbx(name));
        auto textures = Textures(*file.scene);
        const KFbxVideo* empty = VideoOf(textures["file2"]);
        ASSERT_TRUE(empty && VideoOf(textures["file1"]));
        EXPECT_STREQ(empty->GetRelativeFileName(),
                     VideoOf(textures["file1"])->GetRelativeFileName());
        EXPECT_EQ(VideoOf(textures["file1"])->GetContentSize(), 1774u);
        EXPECT_EQ(empty->GetContent(), VideoOf(textures["file1"])->GetContent());
    }
}

// A 6100 texture that names its clip only by "Media" shows it; two textures naming one clip share
// it; a name that matches no clip gives none.
TEST(SceneTextures, OlderFilesNameATexturesVideoByMedia) {
    const scenetest::TempFile text(R"(; FBX 6.1.0 project file
FBXHeaderExtension:  {
	FBXVersion: 6100
}
Objects:  {
	Model: "Model::Box", "Null" {
	}
	Material: "Material::Paint", "" {
		ShadingModel: "lambert"
	}
	Video: "Video::Clip", "Clip" {
		Properties60:  {
			Property: "Path", "KString", "", "C:\images\clip.png"
		}
		RelativeFilename: "images\clip.png"
		Content: ,
		 "iVBORw0KGg",
		 "oAAAA"
	}
	Texture: "Texture::Paint", "" {
		Media: "Video::Clip"
	}
	Texture: "Texture::Gloss", "" {
		Media: "Video::Clip"
	}
	Texture: "Texture::Lost", "" {
		Media: "Video::Nowhere"
	}
}
Connections:  {
	Connect: "OO", "Model::Box", "Model::Scene"
	Connect: "OO", "Material::Paint", "Model::Box"
	Connect: "OP", "Texture::Paint", "Material::Paint", "DiffuseColor"
	Connect: "OP", "Texture::Gloss", "Material::Paint", "SpecularColor"
	Connect: "OP", "Texture::Lost", "Material::Paint", "EmissiveColor"
}
)");
    Imported file(text.Path());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
    auto textures = Textures(*file.scene);
    const KFbxVideo* clip = VideoOf(textures["Paint"]);
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(VideoOf(textures["Gloss"]), clip);
    EXPECT_EQ(VideoOf(textures["Lost"]), nullptr);
    EXPECT_EQ(textures["Paint"]->GetSrcObjectCount(), 1);
    EXPECT_STREQ(clip->GetFileName(), "C:\\images\\clip.png");
    EXPECT_STREQ(clip->GetRelativeFileName(), "images\\clip.png");
    Bytes expected = kPngSignature;
    expected.insert(expected.end(), 3, 0);
    EXPECT_EQ(Content(*clip), expected);
}

// Changes the working directory for the life of the object.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const fs::path& path) : m_Previous(fs::current_path()) {
        fs::current_path(path);
    }
    ~WorkingDirectory() {
        std::error_code ignored;
        fs::current_path(m_Previous, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    fs::path m_Previous;
};

// Where a model's textures are found in a scratch folder: embedded first, then the relative
// name against the model's folder, the absolute name, and the bare name beside the model and in
// its .fbm folder; drive-letter names only by their bare name, though the working directory
// holds files of those names; folders do not count.
TEST(SceneTextures, LocateTextureImageFindsImagesWhereToolsLeaveThem) {
    const fs::path scratch =
        fs::path(ENGINE_BINARY_DIR) / ("texture_images_" + std::to_string(getpid()));
    fs::remove_all(scratch);
    const fs::path models = scratch / "models";
    for (const char* folder : {"images", "abs", "models/room.fbm", "D:/x", "C:/x"})
        fs::create_directories(scratch / folder);
    for (const char* image :
         {"images/rel.png", "abs/abs.png", "models/beside.png", "models/room.fbm/inside.png",
          "models/drive.png", "D:/x/drive.png", "C:/x/drive.png"}) {
        std::ofstream(scratch / image) << "image";
    }
    const std::string absolute = (scratch / "abs/abs.png").string();

    struct Case {
        fbx::desc::Texture texture;
        TextureImageSource::Where where;
        std::string path;  // File: relative to the scratch folder
        std::string name;
    };
    using W = TextureImageSource::Where;
    const std::vector<Case> cases = {
        {{"embedded", "C:\\art\\rel.png", "..\\images\\rel.png", {0, 0}, {1, 1}, 0, 1, {1, 2, 3}},
         W::Embedded,
         "",
         "../images/rel.png"},
        // (Not the embedded clip's file, whose content it would show.)
        {{"relative", "C:\\other\\rel.png", "..\\images\\rel.png"},
         W::File,
         "models/../images/rel.png",
         "../images/rel.png"},
        {{"absolute", absolute, "nowhere\\abs.png"}, W::File, "abs/abs.png", "nowhere/abs.png"},
        {{"beside", "D:/art/beside.png", "textures\\beside.png"},
         W::File,
         "models/beside.png",
         "textures/beside.png"},
        {{"fbm", "C:\\art\\inside.png", "elsewhere\\inside.png"},
         W::File,
         "models/room.fbm/inside.png",
         "elsewhere/inside.png"},
        {{"drive", "D:/x/drive.png", "C:\\x\\drive.png"},
         W::File,
         "models/drive.png",
         "C:/x/drive.png"},
        {{"missing", "C:/art/none.png", "textures\\none.png"}, W::Missing, "", "textures/none.png"},
    };
    fbx::SceneDescription scene;
    const int node = scene.AddNode("Room", fbx::desc::NodeType::Null);
    for (const Case& c : cases) {
        scene.textures.push_back(c.texture);
        scene.materials.emplace_back();
        scene.materials.back().name = c.texture.name;
        scene.materials.back().diffuseTextures = {static_cast<int>(scene.textures.size()) - 1};
        scene.nodes[node].materials.push_back(static_cast<int>(scene.materials.size()) - 1);
    }
    const std::string model = (models / "room.fbx").string();
    std::string error;
    ASSERT_TRUE(fbx::WriteFile(model, scene, 7500, true, &error)) << error;
    {
        const WorkingDirectory inScratch(scratch);
        Imported file(model);
        ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();
        auto textures = Textures(*file.scene);
        for (const Case& c : cases) {
            SCOPED_TRACE(c.texture.name);
            ASSERT_TRUE(textures[c.texture.name]);
            const TextureImageSource found =
                fbx::LocateTextureImage(*textures[c.texture.name], model);
            EXPECT_EQ(found.where, c.where);
            EXPECT_EQ(found.path, c.path.empty() ? "" : (scratch / c.path).string());
            EXPECT_EQ(found.name, c.name);
            EXPECT_EQ(found.size, c.texture.content.size());
            EXPECT_EQ(found.bytes == nullptr, c.texture.content.empty());
        }
    }
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
}

}  // namespace
