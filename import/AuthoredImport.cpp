#include "import/AuthoredImport.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

#include "fbx/sdk/fbxsdk.h"
#include "import/AuthoredMesh.h"
#include "model/Pose.h"

namespace {

// Deeper hierarchies than this come only from damaged files.
constexpr int kMaxNodeDepth = 2048;
// Curve keys one model may hold in all, like the classic look's key-frame budget.
constexpr std::size_t kMaxCurveKeys = std::size_t{1} << 22;
// Takes played, and per-node take entries held in all; only damaged files come near these.
constexpr std::size_t kMaxTakes = 256;
constexpr std::size_t kMaxTakeEntries = std::size_t{1} << 20;

void CopyFinite(const fbxDouble3& value, double (&out)[3]) {
    for (int i = 0; i < 3; ++i) {
        if (std::isfinite(value[i]))
            out[i] = value[i];
    }
}

RotationOrder ReadRotationOrder(int value) {
    // Spheric XYZ (6) and values out of range turn like XYZ.
    return value >= 0 && value <= 5 ? static_cast<RotationOrder>(value) : RotationOrder::XYZ;
}

InheritType ReadInheritType(int value) {
    return value >= 0 && value <= 2 ? static_cast<InheritType>(value) : InheritType::RrSs;
}

TransformNode ReadNode(KFbxNode& node, int parent) {
    TransformNode out;
    out.m_Name = node.GetName();
    out.m_Parent = parent;
    CopyFinite(node.LclTranslation.Get(), out.m_Translation);
    CopyFinite(node.LclRotation.Get(), out.m_Rotation);
    CopyFinite(node.LclScaling.Get(), out.m_Scaling);
    CopyFinite(node.RotationOffset.Get(), out.m_RotationOffset);
    CopyFinite(node.RotationPivot.Get(), out.m_RotationPivot);
    CopyFinite(node.ScalingOffset.Get(), out.m_ScalingOffset);
    CopyFinite(node.ScalingPivot.Get(), out.m_ScalingPivot);
    if (node.RotationActive.Get()) {
        CopyFinite(node.PreRotation.Get(), out.m_PreRotation);
        CopyFinite(node.PostRotation.Get(), out.m_PostRotation);
    }
    out.m_RotationOrder = ReadRotationOrder(node.RotationOrder.Get());
    out.m_InheritType = ReadInheritType(node.InheritType.Get());
    CopyFinite(node.GeometricTranslation.Get(), out.m_GeometricTranslation);
    CopyFinite(node.GeometricRotation.Get(), out.m_GeometricRotation);
    CopyFinite(node.GeometricScaling.Get(), out.m_GeometricScaling);
    return out;
}

KeyInterpolation ReadInterpolation(const KFCurve& curve, int key) {
    switch (curve.KeyGetInterpolation(key)) {
        case KFCURVE_INTERPOLATION_CONSTANT:
            return curve.KeyGetConstantMode(key) == KFCURVE_CONSTANT_NEXT
                       ? KeyInterpolation::ConstantNext
                       : KeyInterpolation::Constant;
        case KFCURVE_INTERPOLATION_CUBIC:
            return KeyInterpolation::Cubic;
        default:
            return KeyInterpolation::Linear;
    }
}

float FiniteOrZero(double value) {
    return std::isfinite(value) ? static_cast<float>(value) : 0.0f;
}

// A scene node in the order the authored look numbers them, with its parent's number.
struct SceneNodeEntry {
    KFbxNode* m_Node = nullptr;
    int m_Parent = -1;  // -1 for a child of the root
};

void AddNodeTree(KFbxNode* node, int parent, int depth, std::vector<SceneNodeEntry>& order,
                 NodeIndex& index) {
    if (!node || depth > kMaxNodeDepth || index.count(node))
        return;
    const int number = static_cast<int>(order.size());
    index[node] = number;
    order.push_back({node, parent});
    for (int i = 0; i < node->GetChildCount(); ++i)
        AddNodeTree(node->GetChild(i), number, depth + 1, order, index);
}

// The scene's nodes, parents before children (each node once, however often it is met).
std::vector<SceneNodeEntry> SceneNodeOrder(KFbxScene& scene, NodeIndex* index = nullptr) {
    std::vector<SceneNodeEntry> order;
    NodeIndex own;
    if (KFbxNode* root = scene.GetRootNode()) {
        for (int i = 0; i < root->GetChildCount(); ++i)
            AddNodeTree(root->GetChild(i), -1, 0, order, index ? *index : own);
    }
    return order;
}

// Builds the scene's nodes, takes and curves, and adds the meshes once every node has its
// index.
class SceneReader {
public:
    SceneReader(KFbxScene& scene, AuthoredScene& out, AuthoredTextures* textures)
        : m_Scene(scene), m_Out(out), m_Textures(textures) {}

    // Meshes: those read ahead by ReadAuthoredMeshes on the same scene, or read here when
    // null.
    void Read(std::vector<AuthoredMesh>* meshes) {
        ReadTakes();
        const std::vector<SceneNodeEntry> order = SceneNodeOrder(m_Scene);
        for (const SceneNodeEntry& entry : order) {
            m_Out.m_Nodes.push_back(ReadNode(*entry.m_Node, entry.m_Parent));
            ReadCurves(*entry.m_Node, m_Out.m_Nodes.back());
        }
        std::vector<AuthoredMesh> readHere;
        if (!meshes) {
            readHere = ReadAuthoredMeshes(m_Scene);
            meshes = &readHere;
        }
        for (AuthoredMesh& mesh : *meshes) {
            const auto node = static_cast<std::size_t>(mesh.m_Node);
            if (node >= order.size())
                continue;
            FinishAuthoredMesh(*order[node].m_Node, mesh, m_Textures);
            m_Out.m_Meshes.push_back(std::move(mesh));
        }
    }

private:
    void ReadTakes() {
        for (const std::string& name : m_Scene.GetTakeNames()) {
            if (name == "Default" || m_TakeIndex.count(name))
                continue;
            if (m_Out.m_Takes.size() >= kMaxTakes)
                break;
            m_TakeIndex[name] = m_Out.m_Takes.size();
            TakeSpan take;
            take.m_Name = name;
            if (const KFbxTakeInfo* info = m_Scene.GetTakeInfo(name.c_str())) {
                const double start = info->mLocalTimeSpan.GetStart().GetSecondDouble();
                const double stop = info->mLocalTimeSpan.GetStop().GetSecondDouble();
                if (std::isfinite(start) && std::isfinite(stop)) {
                    take.m_Start = start;
                    take.m_Stop = std::max(start, stop);
                }
            }
            m_Out.m_Takes.push_back(take);
        }
        NumberTakeFrames(m_Out.m_Takes);
    }

    void ReadCurves(KFbxNode& node, TransformNode& out) {
        static const char* const kAxes[3] = {"X", "Y", "Z"};
        const KFbxProperty* groups[3] = {&node.LclTranslation, &node.LclRotation, &node.LclScaling};
        const std::size_t takeCount = m_Out.m_Takes.size();
        if (takeCount == 0 || m_TakeEntries + takeCount > kMaxTakeEntries)
            return;
        NodeTakeCurves none;
        none.fill(-1);
        std::vector<NodeTakeCurves> takes(takeCount, none);
        bool animated = false;
        for (int i = 0; i < node.GetTakeNodeNameCount(); ++i) {
            auto take = m_TakeIndex.find(node.GetTakeNodeName(i));
            if (take == m_TakeIndex.end() || !node.SetCurrentTakeNode(i))
                continue;
            for (int g = 0; g < 3; ++g) {
                for (int a = 0; a < 3; ++a) {
                    const int curve = CurveIndex(groups[g]->GetKFCurve(kAxes[a]));
                    takes[take->second][static_cast<std::size_t>(g * 3 + a)] = curve;
                    animated = animated || curve >= 0;
                }
            }
        }
        if (animated) {
            m_TakeEntries += takeCount;
            out.m_TakeCurves = std::move(takes);
        }
    }

    // The index of a file curve among the model's curves, read once however many nodes
    // share it; -1 for none, an empty curve or one past the key budget.
    int CurveIndex(const KFCurve* curve) {
        if (!curve || curve->KeyGetCount() <= 0)
            return -1;
        auto found = m_Curves.find(curve);
        if (found != m_Curves.end())
            return found->second;
        const std::size_t count = static_cast<std::size_t>(curve->KeyGetCount());
        if (count > kMaxCurveKeys - std::min(m_Keys, kMaxCurveKeys))
            return m_Curves[curve] = -1;
        m_Keys += count;
        AnimCurve out;
        out.m_Keys.reserve(count);
        for (int k = 0; k < curve->KeyGetCount(); ++k) {
            CurveKey key;
            key.m_Time = curve->KeyGetTime(k).GetSecondDouble();
            const double value = curve->KeyGetValue(k);
            if (!std::isfinite(value) || !std::isfinite(key.m_Time))
                continue;
            // Keys must run forward in time; one that goes back is left out.
            if (!out.m_Keys.empty() && key.m_Time < out.m_Keys.back().m_Time)
                continue;
            key.m_Value = static_cast<float>(value);
            key.m_Interpolation = ReadInterpolation(*curve, k);
            key.m_RightSlope = FiniteOrZero(curve->KeyGetRightDerivative(k));
            key.m_NextLeftSlope = k + 1 < curve->KeyGetCount()
                                      ? FiniteOrZero(curve->KeyGetLeftDerivative(k + 1))
                                      : 0.0f;
            out.m_Keys.push_back(key);
        }
        if (out.m_Keys.empty())
            return m_Curves[curve] = -1;
        const int index = static_cast<int>(m_Out.m_Curves.size());
        m_Out.m_Curves.push_back(std::move(out));
        return m_Curves[curve] = index;
    }

    KFbxScene& m_Scene;
    AuthoredScene& m_Out;
    AuthoredTextures* m_Textures;
    std::unordered_map<const KFCurve*, int> m_Curves;
    std::unordered_map<std::string, std::size_t> m_TakeIndex;  // take name -> m_Takes index
    std::size_t m_Keys = 0;
    std::size_t m_TakeEntries = 0;
};

// The classic look's texture for a material of the same name on the mesh of the same node:
// the authored look draws the textures the classic import has already loaded.
}  // namespace

std::vector<AuthoredMesh> ReadAuthoredMeshes(KFbxScene& scene) {
    NodeIndex index;
    const std::vector<SceneNodeEntry> order = SceneNodeOrder(scene, &index);
    std::vector<AuthoredMesh> meshes;
    for (std::size_t i = 0; i < order.size(); ++i) {
        KFbxNode& node = *order[i].m_Node;
        const Matrix4 geometric = GeometricTransform(ReadNode(node, order[i].m_Parent));
        AuthoredMesh mesh;
        if (ReadAuthoredGeometry(node, static_cast<int>(i), index, geometric, mesh))
            meshes.push_back(std::move(mesh));
    }
    return meshes;
}

void ImportAuthoredScene(KFbxScene& scene, Model& model, AuthoredTextures* textures,
                         std::vector<AuthoredMesh>* meshes) {
    auto authored = std::make_shared<AuthoredScene>();
    SceneReader(scene, *authored, textures).Read(meshes);
    model.m_Authored = std::move(authored);
}
