// The authored look's records of one model file: every node of the scene with all of its
// transform properties, the animation curves with each key's interpolation, the takes, and
// each mesh as triangles grouped by material, with per-corner normals and its skin.
//
// The import fills these only when the game asks for the authored look; drawing evaluates
// them every frame (model/Pose.h, model/Skinning.h). All indices are checked by the import:
// a node's parent comes before it, curve and cluster indices are in range, every corner's
// control point exists, and every number is finite.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/Matrix4.h"
#include "model/TextureImage.h"

enum class KeyInterpolation : std::uint8_t {
    Constant,      // holds this key's value until the next key
    ConstantNext,  // holds the next key's value from this key on
    Linear,
    Cubic,  // Hermite curve from this key's right slope to the next key's left slope
};

// One key of a curve; its interpolation shapes the span up to the next key.
struct CurveKey {
    double m_Time = 0.0;  // seconds
    float m_Value = 0.0f;
    KeyInterpolation m_Interpolation = KeyInterpolation::Linear;
    float m_RightSlope = 0.0f;     // value per second leaving this key (cubic)
    float m_NextLeftSlope = 0.0f;  // value per second arriving at the next key (cubic)
};

// Keys in ascending time. Before the first key the curve holds the first value, after the
// last one the last value.
struct AnimCurve {
    std::vector<CurveKey> m_Keys;
};

// The nine animated channels of a node's transform.
enum TransformChannel : int {
    kTranslationX,
    kTranslationY,
    kTranslationZ,
    kRotationX,
    kRotationY,
    kRotationZ,
    kScalingX,
    kScalingY,
    kScalingZ,
    kChannelCount
};

// Curves of one node in one take: an index into AuthoredScene::m_Curves per channel, -1 where
// the channel keeps the node's own value.
using NodeTakeCurves = std::array<int, kChannelCount>;

// One take of the file ("Default" is never one) and the game frames it is played at: frame
// m_FirstFrame shows m_Start, each further frame one game tick (1/15 s) later.
struct TakeSpan {
    std::string m_Name;
    double m_Start = 0.0;  // seconds
    double m_Stop = 0.0;   // seconds, not before m_Start
    int m_FirstFrame = 0;
    int m_LastFrame = 0;  // the frame at or just past m_Stop
};

// The order a node's three rotation angles are applied in; XYZ turns about X first.
enum class RotationOrder : std::uint8_t { XYZ, XZY, YZX, YXZ, ZXY, ZYX };

// How a node takes its parent's scale: RrSs after its own rotation, RSrs as the plain matrix
// product, Rrs not at all.
enum class InheritType : std::uint8_t { RrSs, RSrs, Rrs };

// One scene node with its transform properties as the file gives them (angles in degrees).
struct TransformNode {
    std::string m_Name;
    int m_Parent = -1;  // index into AuthoredScene::m_Nodes, always smaller; -1 for a root
    double m_Translation[3] = {0.0, 0.0, 0.0};
    double m_Rotation[3] = {0.0, 0.0, 0.0};
    double m_Scaling[3] = {1.0, 1.0, 1.0};
    double m_RotationOffset[3] = {0.0, 0.0, 0.0};
    double m_RotationPivot[3] = {0.0, 0.0, 0.0};
    double m_ScalingOffset[3] = {0.0, 0.0, 0.0};
    double m_ScalingPivot[3] = {0.0, 0.0, 0.0};
    double m_PreRotation[3] = {0.0, 0.0, 0.0};   // zero where the file does not activate it
    double m_PostRotation[3] = {0.0, 0.0, 0.0};  // zero where the file does not activate it
    RotationOrder m_RotationOrder = RotationOrder::XYZ;
    InheritType m_InheritType = InheritType::RrSs;
    double m_GeometricTranslation[3] = {0.0, 0.0, 0.0};
    double m_GeometricRotation[3] = {0.0, 0.0, 0.0};
    double m_GeometricScaling[3] = {1.0, 1.0, 1.0};
    // One entry per take of AuthoredScene::m_Takes, or empty when no take animates the node.
    std::vector<NodeTakeCurves> m_TakeCurves;
};

// A material as the authored look draws it (colours with their alpha in [3]).
struct AuthoredMaterial {
    std::string m_Name;
    float m_Ambient[4] = {0.2f, 0.2f, 0.2f, 1.0f};
    float m_Diffuse[4] = {0.8f, 0.8f, 0.8f, 1.0f};
    float m_Specular[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    float m_Emissive[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    float m_Shininess = 0.0f;  // OpenGL specular exponent, 0 to 128
    // Alpha below 1, or a texture image that is not fully opaque: drawn after the opaque
    // surfaces.
    bool m_Blended = false;
    // The image on the diffuse colour, shown lit by the material; null: the colours alone.
    // The corner UVs of the material's triangles already carry the texture's placement.
    std::shared_ptr<TextureImage> m_Texture;
};

// A run of a mesh's triangles drawn with one material.
struct MaterialRange {
    int m_Material = -1;        // index into AuthoredMesh::m_Materials; -1: the default grey
    std::uint32_t m_First = 0;  // first triangle corner in AuthoredMesh::m_Triangles
    std::uint32_t m_Count = 0;  // number of triangle corners (a multiple of 3)
};

// One bone of a skin: the node that moves it and the matrix from the mesh's geometry at bind
// time into the bone's space (TransformLink^-1 * Transform * geometric transform).
struct SkinCluster {
    int m_Bone = -1;  // index into AuthoredScene::m_Nodes
    Matrix4 m_BindMatrix;
};

// One bone weight of a control point; the weights of a point sum to 1.
struct SkinWeight {
    std::uint32_t m_Cluster = 0;  // index into AuthoredMesh::m_Clusters
    float m_Weight = 0.0f;
};

struct AuthoredMesh {
    std::string m_Name;           // the mesh node's name
    int m_Node = 0;               // index into AuthoredScene::m_Nodes
    std::vector<float> m_Points;  // control points, x y z each, in the mesh's own space
    // Per polygon corner: its control point, its normal (x y z) and its UV (u v).
    std::vector<std::uint32_t> m_CornerPoints;
    std::vector<float> m_CornerNormals;
    std::vector<float> m_CornerUVs;
    // Triangles as corner indices, 3 each, in runs of one material (m_Ranges).
    std::vector<std::uint32_t> m_Triangles;
    std::vector<MaterialRange> m_Ranges;
    std::vector<AuthoredMaterial> m_Materials;  // the node's materials, in slot order
    // The skin: empty m_Clusters for a mesh that only follows its node. The weights of
    // control point p are m_Weights[m_WeightStart[p] .. m_WeightStart[p + 1]); a point
    // without weights follows the mesh's node.
    std::vector<SkinCluster> m_Clusters;
    std::vector<std::uint32_t> m_WeightStart;  // control point count + 1 entries when skinned
    std::vector<SkinWeight> m_Weights;

    // Drawing's own: the compiled lists of a mesh that is not skinned (0 until compiled).
    unsigned int m_OpaqueList = 0;
    unsigned int m_BlendedList = 0;
    // Whether any range draws with a blended material.
    bool HasBlended() const;
    bool IsSkinned() const { return !m_Clusters.empty(); }
};

struct AuthoredScene {
    std::vector<TransformNode> m_Nodes;  // parents before children
    std::vector<AnimCurve> m_Curves;
    std::vector<TakeSpan> m_Takes;  // in file order, frames numbered one after the other
    std::vector<AuthoredMesh> m_Meshes;
};
