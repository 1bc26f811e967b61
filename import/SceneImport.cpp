#include "import/SceneImport.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <future>
#include <optional>

#include "fbx/sdk/fbxsdk.h"
#include "import/AnimationLoader.h"
#include "import/AuthoredImport.h"
#include "import/AuthoredTextures.h"
#include "import/BoneHierarchy.h"
#include "import/MeshLoader.h"

namespace {

void PrintTakeInformation(KFbxImporter* importer) {
    std::printf("Take Information\n");
    const int takeCount = importer->GetTakeCount();
    std::printf("    Number of takes: %d\n", takeCount);
    std::printf("    Current take: \"%s\"\n", importer->GetCurrentTakeName());
    std::printf("\n");
    for (int i = 0; i < takeCount; ++i) {
        KFbxTakeInfo* take = importer->GetTakeInfo(i);
        if (!take)
            continue;
        std::printf("    Take %d\n", i);
        std::printf("         Name: \"%s\"\n", take->mName.Buffer());
        std::printf("         Description: \"%s\"\n", take->mDescription.Buffer());
        std::printf("         Import Name: \"%s\"\n", take->mImportName.Buffer());
        std::printf("         Import State: %s\n", take->mSelect ? "true" : "false");
        std::printf("\n");
    }
}

}  // namespace

bool LoadScene(ImportContext* context, const char* fileName) {
    KFbxSdkManager* manager = context->Manager;
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager, "");

    int sdkMajor = 0, sdkMinor = 0, sdkRevision = 0;
    KFbxSdkManager::GetFileFormatVersion(sdkMajor, sdkMinor, sdkRevision);

    KFbxImporter* importer = KFbxImporter::Create(manager, "");

    // The importer and options stay with the manager on the early returns; it releases them.
    std::ifstream probe;
    probe.open(fileName, std::ios::in);
    probe.close();
    if (probe.fail() || probe.bad()) {
        std::printf("Failed to open %s.\n", fileName);
        return false;
    }

    int format = -1;
    KFbxIOPluginRegistry* registry = manager->GetIOPluginRegistry();
    if (!registry->DetectFileFormat(fileName, format)) {
        format = registry->GetNativeReaderFormat();
    }
    importer->SetFileFormat(format);

    const bool initialized = importer->Initialize(fileName);
    int fileMajor = 0, fileMinor = 0, fileRevision = 0;
    importer->GetFileVersion(fileMajor, fileMinor, fileRevision);

    if (!initialized) {
        std::printf("Call to KFbxImporter::Initialize() failed.\n");
        std::printf("Error returned: %s\n\n", importer->GetLastErrorString());
        const int error = importer->GetLastErrorID();
        if (error == KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_YET ||
            error == KFbxImporter::eFILE_VERSION_NOT_SUPPORTED_ANYMORE) {
            std::printf("FBX version number for this FBX SDK is %d.%d.%d\n", sdkMajor, sdkMinor,
                        sdkRevision);
            std::printf("FBX version number for file %s is %d.%d.%d\n\n", fileName, fileMajor,
                        fileMinor, fileRevision);
        }
        return false;
    }

    std::printf("FBX version number for this FBX SDK is %d.%d.%d\n", sdkMajor, sdkMinor,
                sdkRevision);

    if (importer->IsFBX()) {
        std::printf("FBX version number for file %s is %d.%d.%d\n\n", fileName, fileMajor,
                    fileMinor, fileRevision);
        PrintTakeInformation(importer);
        options->SetOption(KFBXSTREAMOPT_FBX_MATERIAL, true);
        options->SetOption(KFBXSTREAMOPT_FBX_TEXTURE, true);
        options->SetOption(KFBXSTREAMOPT_FBX_LINK, true);
        options->SetOption(KFBXSTREAMOPT_FBX_SHAPE, true);
        options->SetOption(KFBXSTREAMOPT_FBX_GOBO, true);
        options->SetOption(KFBXSTREAMOPT_FBX_ANIMATION, true);
        options->SetOption(KFBXSTREAMOPT_FBX_GLOBAL_SETTINGS, true);
    }

    bool imported = importer->Import(context->Scene, options);

    if (!imported && importer->GetLastErrorID() == KFbxImporter::ePASSWORD_ERROR) {
        std::printf("Please enter password: ");
        std::fflush(stdout);
        char password[1024];
        password[0] = '\0';
        // Bounded so a long word cannot overrun the buffer.
        if (std::scanf("%1023s", password) != 1) {
            password[0] = '\0';
        }
        options->SetOption(KFBXSTREAMOPT_FBX_PASSWORD, password);
        options->SetOption(KFBXSTREAMOPT_FBX_PASSWORD_ENABLE, true);
        imported = importer->Import(context->Scene, options);
        if (!imported && importer->GetLastErrorID() == KFbxImporter::ePASSWORD_ERROR) {
            std::printf("\nPassword is wrong, import aborted.\n");
        }
    }

    if (options)
        options->Destroy(false, false);
    importer->Destroy(false, false);
    return imported;
}

void WalkScene(ImportContext* context) {
    KFbxNode* root = context->Scene ? context->Scene->GetRootNode() : nullptr;
    if (root) {
        for (int i = 0; i < root->GetChildCount(); ++i) {
            WalkNode(context, root->GetChild(i));
        }
    }
}

Model LoadModel(ImportContext* context) {
    WalkScene(context);
    return *context->Target;
}

namespace {

// Deeper hierarchies than this come only from damaged files; they would exhaust the stack.
constexpr int kMaxNodeDepth = 2048;

void WalkNodeAt(ImportContext* context, KFbxNode* node, int depth);

}  // namespace

void WalkNode(ImportContext* context, KFbxNode* node) {
    WalkNodeAt(context, node, 0);
}

namespace {

void WalkNodeAt(ImportContext* context, KFbxNode* node, int depth) {
    if (!node || depth > kMaxNodeDepth)
        return;
    KFbxNodeAttribute* attribute = node->GetNodeAttribute();
    if (!attribute)
        return;

    const int type = attribute->GetAttributeType();
    switch (type) {
        case KFbxNodeAttribute::eUNIDENTIFIED:
            std::printf("UNIDENTIFIED:\n");
            break;
        case KFbxNodeAttribute::eNULL:
            std::printf("NULL:\n");
            break;
        case KFbxNodeAttribute::eMARKER:
            std::printf("MARKER:\n");
            break;
        case KFbxNodeAttribute::eSKELETON:
            if (!context->SkeletonLoaded) {
                LoadBoneHierarchy(context, node, "");
                context->SkeletonLoaded = true;
            }
            LoadAnimation(node, *context->Target);
            break;
        case KFbxNodeAttribute::eMESH:
            std::printf("Mesh: %d\n", 0);
            LoadMesh(node, context);
            break;
        case KFbxNodeAttribute::eNURB:
            std::printf("NURB:\n");
            break;
        case KFbxNodeAttribute::ePATCH:
            std::printf("PATCH:\n");
            break;
        case KFbxNodeAttribute::eCAMERA:
            std::printf("CAMERA:\n");
            break;
        case KFbxNodeAttribute::eLIGHT:
            std::printf("LIGHT:\n");
            break;
        case KFbxNodeAttribute::eNURBS_CURVE:
            std::printf("NURBS_CURVE:\n");
            break;
        case KFbxNodeAttribute::eBOUNDARY:
            std::printf("BOUNDARY:\n");
            break;
        case KFbxNodeAttribute::eNURBS_SURFACE:
            std::printf("NURBS_SURFACE:\n");
            break;
        case KFbxNodeAttribute::eSHAPE:
            std::printf("SHAPE:\n");
            break;
        default:
            std::printf("Something: %d\n", type);
            break;
    }

    for (int i = 0; i < node->GetChildCount(); ++i) {
        WalkNodeAt(context, node->GetChild(i), depth + 1);
    }
}

}  // namespace

void ImportModelFile(const std::string& fileName, Model* model, ModelLook look) {
    ImportContext context;
    context.Manager = KFbxSdkManager::Create();
    context.Scene = KFbxScene::Create(context.Manager, "");
    context.Target = model;
    context.SkeletonLoaded = false;
    LoadScene(&context, fileName.c_str());
    // In the authored look the texture walk loads images of every format through these.
    AuthoredTextures textures(fileName);
    std::optional<AuthoredTextureScope> scope;
    if (look == ModelLook::Authored)
        scope.emplace(textures);
    // The authored meshes' geometry, most of the authored import's work, is read on a second
    // thread while the classic walk runs; both only read the scene.
    std::future<std::vector<AuthoredMesh>> meshes;
    if (look == ModelLook::Authored && context.Scene) {
        meshes = std::async(std::launch::async, ReadAuthoredMeshes, std::ref(*context.Scene));
    }
    // LoadModel's copy of the model would be thrown away unseen (a copied texture takes no
    // id): the walk alone fills *model without a second copy of every vertex.
    WalkScene(&context);
    if (meshes.valid()) {
        std::vector<AuthoredMesh> read = meshes.get();
        ImportAuthoredScene(*context.Scene, *model, &textures, &read);
    }
    context.Manager->Destroy();
    context.Manager = nullptr;
}
