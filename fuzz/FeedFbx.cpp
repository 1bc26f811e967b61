// Feeds for the FBX parsers and the importer. The walks read every element the interfaces
// offer, in and just out of range, so a bad index or a dangling pointer in what the reader
// built shows up under the sanitizers instead of later in the engine.
#include <memory>
#include <unordered_set>
#include <vector>

#include "fbx/format/Parse.h"
#include "fbx/sdk/fbxsdk.h"
#include "fuzz/Feeds.h"
#include "fuzz/ScratchFile.h"

namespace fuzzing {

namespace {

// Keeps the reads from being optimised away.
volatile double g_Sink = 0.0;

void Touch(double value) {
    g_Sink = g_Sink + value;
}

void TouchText(const char* text) {
    if (text != nullptr)
        Touch(static_cast<double>(std::char_traits<char>::length(text)));
}

std::size_t WalkRecords(const fbx::Record& root) {
    std::size_t count = 0;
    std::vector<const fbx::Record*> pending{&root};
    while (!pending.empty()) {
        const fbx::Record* record = pending.back();
        pending.pop_back();
        ++count;
        Touch(static_cast<double>(record->name.size()));
        for (const fbx::Value& value : record->values) {
            if (value.IsText()) {
                Touch(static_cast<double>(value.AsText().size()));
            } else if (value.IsArray()) {
                const std::size_t n = value.Count();
                if (n > 0)
                    Touch(value.DoubleAt(0) + value.DoubleAt(n - 1) +
                          static_cast<double>(value.IntAt(n / 2)));
            } else {
                Touch(value.AsDouble() + static_cast<double>(value.AsInt()));
            }
        }
        Touch(static_cast<double>(record->NumberCount()));
        for (const fbx::Record& child : record->children)
            pending.push_back(&child);
    }
    return count;
}

struct ManagerDeleter {
    void operator()(KFbxSdkManager* manager) const { manager->Destroy(); }
};

class SceneWalk {
public:
    explicit SceneWalk(ImportOutcome& outcome) : m_Outcome(outcome) {}

    void Scene(const KFbxScene& scene) {
        for (int i = 0; i < scene.GetNodeCount(); ++i)
            Nodes(scene.GetNode(i));
        Nodes(scene.GetRootNode());
        for (int i = 0; i < scene.GetMaterialCount(); ++i)
            Material(scene.GetMaterial(i));
        Touch(scene.GetTextureCount());
        for (const std::string& take : scene.GetTakeNames())
            Touch(static_cast<double>(take.size()));
    }

private:
    // Depth first without recursion: a file may chain nodes very deep.
    void Nodes(KFbxNode* start) {
        std::vector<KFbxNode*> pending{start};
        while (!pending.empty()) {
            KFbxNode* node = pending.back();
            pending.pop_back();
            if (node == nullptr || !m_Seen.insert(node).second)
                continue;
            Node(*node);
            for (int i = 0; i < node->GetChildCount(); ++i)
                pending.push_back(node->GetChild(i));
            Touch(node->GetChild(-1) == nullptr &&
                  node->GetChild(node->GetChildCount()) == nullptr);
        }
    }

    void Node(KFbxNode& node) {
        ++m_Outcome.nodes;
        TouchText(node.GetName());
        Touch(node.GetNameWithNameSpacePrefix().size());
        Touch(node.GetParent() != nullptr);
        KFbxVector4 v;
        Touch(node.GetDefaultT(v)[0] + node.GetDefaultR(v)[1] + node.GetDefaultS(v)[2]);
        Touch(node.LclTranslation.Get()[0] + node.LclRotation.Get()[1] + node.LclScaling.Get()[2]);
        Properties(node);

        if (KFbxNodeAttribute* attribute = node.GetNodeAttribute()) {
            Touch(attribute->GetAttributeType());
            TouchText(attribute->GetTypeName());
            Touch(attribute->GetNode() != nullptr);
        }
        if (KFbxSkeleton* skeleton = node.GetSkeleton())
            Touch(skeleton->GetSkeletonType());
        if (KFbxMesh* mesh = node.GetMesh())
            Mesh(*mesh);
        for (int i = 0; i <= node.GetMaterialCount(); ++i)
            Material(node.GetMaterial(i));
        Takes(node);
    }

    void Takes(KFbxNode& node) {
        const int takes = node.GetTakeNodeNameCount();
        for (int take = 0; take < takes; ++take) {
            TouchText(node.GetTakeNodeName(take));
            node.SetCurrentTakeNode(take);
            for (const KFbxProperty* property :
                 {static_cast<const KFbxProperty*>(&node.LclTranslation),
                  static_cast<const KFbxProperty*>(&node.LclRotation),
                  static_cast<const KFbxProperty*>(&node.LclScaling)}) {
                for (const char* channel : {"X", "Y", "Z"})
                    Curve(property->GetKFCurve(channel));
            }
        }
        TouchText(node.GetTakeNodeName(takes));
        node.SetCurrentTakeNode(0);
    }

    void Curve(const KFCurve* curve) {
        if (curve == nullptr)
            return;
        Touch(curve->GetValue());
        const int keys = curve->KeyGetCount();
        for (int i = -1; i <= keys; ++i)
            Touch(curve->KeyGetValue(i) + curve->KeyGetTime(i).GetSecondDouble());
        m_Outcome.curveKeys += keys;
    }

    void Mesh(const KFbxMesh& mesh) {
        if (!m_Seen.insert(&mesh).second)
            return;
        const int points = mesh.GetControlPointsCount();
        if (const KFbxVector4* all = mesh.GetControlPoints()) {
            for (int i = 0; i < points; ++i)
                Touch(all[i][0] + all[i][3]);
        }
        Touch(mesh.GetControlPointAt(-1)[0] + mesh.GetControlPointAt(points)[0]);

        const int polygons = mesh.GetPolygonCount();
        m_Outcome.polygons += polygons;
        for (int p = -1; p <= polygons; ++p) {
            const int corners = mesh.GetPolygonSize(p);
            Touch(mesh.GetPolygonVertexIndex(p));
            for (int k = -1; k <= corners; ++k) {
                const int vertex = mesh.GetPolygonVertex(p, k);
                Touch(mesh.GetControlPointAt(vertex)[1]);
                Touch(mesh.GetTextureUVIndex(p, k));
            }
        }
        Touch(mesh.GetPolygonVertexCount());

        for (int l = -1; l <= mesh.GetLayerCount(); ++l) {
            const KFbxLayer* layer = mesh.GetLayer(l);
            if (layer == nullptr)
                continue;
            Element(layer->GetNormals());
            Element(layer->GetBinormals());
            Element(layer->GetTangents());
            Element(layer->GetUVs());
            Element(layer->GetVertexColors());
            Element(layer->GetMaterials());
            Element(layer->GetTextures());
            Element(layer->GetHoles());
            Element(layer->GetSmoothing());
            if (const KFbxLayerElementTexture* textures = layer->GetTextures())
                Touch(textures->GetBlendMode() + textures->GetAlpha());
        }

        for (int d = -1; d <= mesh.GetDeformerCount(); ++d) {
            KFbxDeformer* deformer = mesh.GetDeformer(d);
            if (deformer == nullptr)
                continue;
            Touch(deformer->GetDeformerType());
            if (const KFbxSkin* skin = KFbxCast<KFbxSkin>(deformer))
                Skin(*skin);
        }
        Touch(mesh.GetDeformerCount(KFbxDeformer::eSKIN));
        Touch(mesh.GetDeformer(0, KFbxDeformer::eSKIN) != nullptr);
    }

    void Skin(const KFbxSkin& skin) {
        for (int c = -1; c <= skin.GetClusterCount(); ++c) {
            const KFbxCluster* cluster = skin.GetCluster(c);
            if (cluster == nullptr)
                continue;
            const int count = cluster->GetControlPointIndicesCount();
            const int* indices = cluster->GetControlPointIndices();
            const double* weights = cluster->GetControlPointWeights();
            for (int i = 0; i < count; ++i) {
                if (indices != nullptr)
                    Touch(indices[i]);
                if (weights != nullptr)
                    Touch(weights[i]);
            }
            if (const KFbxNode* link = cluster->GetLink())
                TouchText(link->GetName());
            KFbxXMatrix matrix;
            Touch(cluster->GetTransformMatrix(matrix).Get(3, 0));
            Touch(cluster->GetTransformLinkMatrix(matrix).Get(3, 1));
        }
    }

    // Direct values, index values and what each index points at.
    template <class T>
    void Element(const KFbxLayerElementTemplate<T>* element) {
        if (element == nullptr)
            return;
        Touch(element->GetMappingMode() + element->GetReferenceMode());
        TouchText(element->GetName());
        const auto& direct = element->GetDirectArray();
        const auto& index = element->GetIndexArray();
        for (int i = -1; i <= direct.GetCount(); ++i)
            Item(direct.GetAt(i));
        for (int i = -1; i <= index.GetCount(); ++i)
            Item(direct.GetAt(index.GetAt(i)));
    }

    void Item(const KFbxVector4& v) { Touch(v[0] + v[3]); }
    void Item(const KFbxVector2& v) { Touch(v[0] + v[1]); }
    void Item(const KFbxColor& c) { Touch(c.mRed + c.mAlpha); }
    void Item(bool b) { Touch(b); }
    void Item(int i) { Touch(i); }
    void Item(KFbxSurfaceMaterial* material) { Material(material); }
    void Item(KFbxTexture* texture) { Texture(texture); }

    void Material(KFbxSurfaceMaterial* material) {
        if (material == nullptr || !m_Seen.insert(material).second)
            return;
        ++m_Outcome.materials;
        TouchText(material->GetName());
        TouchText(material->GetShadingModel());
        if (const KFbxSurfaceLambert* lambert = KFbxCast<KFbxSurfaceLambert>(material)) {
            Touch(lambert->GetDiffuseColor().Get()[0] + lambert->GetAmbientColor().Get()[1] +
                  lambert->GetEmissiveColor().Get()[2] + lambert->GetTransparencyFactor().Get());
        }
        if (const KFbxSurfacePhong* phong = KFbxCast<KFbxSurfacePhong>(material)) {
            Touch(phong->GetSpecularColor().Get()[0] + phong->GetShininess().Get() +
                  phong->GetReflectionColor().Get()[1] + phong->GetReflectionFactor().Get());
        }
        Properties(*material);
    }

    // Every property as every kind of value, and the textures connected to it.
    void Properties(const KFbxObject& object) {
        for (int i = -1; i <= object.GetPropertyCount(); ++i) {
            const KFbxProperty property = object.GetPropertyAt(i);
            TouchText(property.GetName());
            Touch(property.GetPropertyDataType());
            Touch(property.Get<double>() + property.Get<int>() + property.Get<bool>());
            Touch(property.Get<fbxDouble3>()[2] + property.Get<fbxDouble4>()[3] +
                  property.Get<KFbxColor>().mAlpha);
            Touch(property.Get<std::string>().size());
            for (int s = -1; s <= property.GetSrcObjectCount(); ++s)
                Texture(KFbxCast<KFbxTexture>(property.GetSrcObject(s)));
            Touch(property.GetSrcObjectCount(FBX_TYPE(KFbxTexture)));
        }
        for (int s = -1; s <= object.GetSrcObjectCount(); ++s) {
            if (const KFbxObject* source = object.GetSrcObject(s))
                TouchText(source->GetName());
        }
    }

    void Texture(KFbxTexture* texture) {
        if (texture == nullptr || !m_Seen.insert(texture).second)
            return;
        ++m_Outcome.textures;
        TouchText(texture->GetFileName());
        TouchText(texture->GetRelativeFileName());
        Touch(texture->GetScaleU() + texture->GetScaleV() + texture->GetTranslationU() +
              texture->GetTranslationV() + texture->GetRotationU() + texture->GetRotationV() +
              texture->GetRotationW() + texture->GetDefaultAlpha() + texture->GetSwapUV());
        Properties(*texture);
        if (const KFbxLayeredTexture* layered = KFbxCast<KFbxLayeredTexture>(texture)) {
            for (int i = -1; i <= layered->GetSrcObjectCount(); ++i) {
                KFbxLayeredTexture::EBlendMode mode = KFbxLayeredTexture::eNORMAL;
                layered->GetTextureBlendMode(i, mode);
                Touch(mode);
                Texture(KFbxCast<KFbxTexture>(layered->GetSrcObject(i)));
            }
        }
    }

    ImportOutcome& m_Outcome;
    std::unordered_set<const void*> m_Seen;
};

}  // namespace

ParseOutcome FeedParser(const std::uint8_t* data, std::size_t size) {
    fbx::ParseResult result = fbx::ParseBuffer(data, size);
    ParseOutcome outcome;
    outcome.ok = result.ok;
    outcome.error = result.error;
    outcome.records = WalkRecords(result.document.root);
    // The ASCII parser must also survive bytes that do not look like an FBX file at all.
    if (!fbx::IsBinaryFbx(data, size) && !fbx::LooksLikeFbx(data, size))
        WalkRecords(fbx::ParseAscii(data, size).document.root);
    return outcome;
}

ImportOutcome FeedImporter(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("import", ".fbx");
    ImportOutcome outcome;
    if (!file.Write(data, size))
        return outcome;

    std::unique_ptr<KFbxSdkManager, ManagerDeleter> manager(KFbxSdkManager::Create());
    KFbxImporter* importer = KFbxImporter::Create(manager.get(), "");
    KFbxScene* scene = KFbxScene::Create(manager.get(), "");
    KFbxStreamOptionsFbxReader* options = KFbxStreamOptionsFbxReader::Create(manager.get(), "");

    int format = 0;
    Touch(manager->GetIOPluginRegistry()->DetectFileFormat(file.Path().c_str(), format));
    outcome.initialized = importer->Initialize(file.Path().c_str());
    if (outcome.initialized) {
        int major = 0, minor = 0, revision = 0;
        importer->GetFileVersion(major, minor, revision);
        Touch(major + minor + revision);
        for (int i = -1; i <= importer->GetTakeCount(); ++i) {
            if (const KFbxTakeInfo* take = importer->GetTakeInfo(i))
                Touch(take->mName.size() + take->mDescription.size() +
                      take->mLocalStop.GetSecondDouble());
        }
        TouchText(importer->GetCurrentTakeName());
        outcome.imported = importer->Import(scene, options);
        SceneWalk(outcome).Scene(*scene);
    }
    outcome.error = importer->GetLastErrorString();
    return outcome;
}

}  // namespace fuzzing
