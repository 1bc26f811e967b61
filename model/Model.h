// The engine's in-memory model: what the importer fills and what drawing reads.
//
// A Model owns its meshes, node records and animations by value; a Mesh owns its polygons,
// their vertices (one block, polygon after polygon), materials and skin influences; a Polygon
// names its run of that block. Nothing is shared between models.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/Animation.h"
#include "model/AuthoredScene.h"
#include "model/Material.h"
#include "model/SkinInfluences.h"

struct Vertex {
    float m_Point[3] = {0.0f, 0.0f, 0.0f};      // the imported control point
    float m_FacePoint[3] = {0.0f, 0.0f, 0.0f};  // used for the polygon's face normal
    float m_Position[3] = {0.0f, 0.0f, 0.0f};   // sent to OpenGL
    float m_Color[4] = {0.7f, 0.7f, 0.7f, 1.0f};
    float m_UV[2] = {-1.0f, -1.0f};  // before the material's texture scale
    SkinInfluences m_Skin;           // a run of the mesh's m_SkinInfluences (Mesh::Influences)
};

struct Polygon {
    unsigned int m_Flags = 0;  // importer bookkeeping; drawing does not read it
    // (-1, -1, -1) until drawing computes the face normal; -1 in [0] means "not computed".
    float m_Normal[3] = {-1.0f, -1.0f, -1.0f};
    // Its corners in winding order: m_Count vertices of the owning Mesh's m_Vertices from
    // m_First (Mesh::Vertices gives them).
    std::uint32_t m_First = 0;
    std::uint32_t m_Count = 0;
};

// A polygon's corners to iterate: Vertex or const Vertex.
template <class V>
struct VertexRun {
    V* m_Begin = nullptr;
    V* m_End = nullptr;

    V* begin() const { return m_Begin; }
    V* end() const { return m_End; }
    std::size_t size() const { return static_cast<std::size_t>(m_End - m_Begin); }
    bool empty() const { return m_Begin == m_End; }
    V& operator[](std::size_t i) const { return m_Begin[i]; }
    V& front() const { return *m_Begin; }
    V& back() const { return *(m_End - 1); }
};

// A bone record of a skinned mesh: the cluster's link node and its matrices.
struct Bone {
    std::string m_Name;
    double m_Transform[16] = {};      // cluster Transform (mesh at bind time)
    double m_TransformLink[16] = {};  // cluster TransformLink (bone at bind time)
};

struct Mesh {
    std::string m_NodeName;  // the scene node the mesh came from; keys the node transform
    int m_DisplayList = -1;  // -1 until the first draw compiles it
    float m_Translation[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float m_Rotation[4] = {0.0f, 0.0f, 0.0f, 0.0f};  // degrees; applied Z, then Y, then X
    // Filled by the import from the node; drawing does not read these.
    float m_Scaling[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    float m_GeometricScaling[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    float m_Pivot[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    float m_GeometricTranslation[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    bool m_Static = false;  // true: the per-frame node transform is not applied
    std::vector<Polygon> m_Polygons;
    std::vector<Vertex> m_Vertices;        // every polygon's corners, polygon after polygon
    std::vector<Material> m_Materials;     // drawing uses only the first
    std::vector<std::string> m_BoneNames;  // names that SkinInfluence::m_Bone indexes
    // The influences of every skinned control point, each point's in one run that its
    // vertices name.
    std::vector<SkinInfluence> m_SkinInfluences;
    std::vector<Bone> m_Bones;

    // The vertex's influences; none when its run is not within m_SkinInfluences.
    InfluenceSpan Influences(const Vertex& vertex) const;
    // The polygon's corners; none when its run is not within m_Vertices.
    VertexRun<Vertex> Vertices(const Polygon& polygon);
    VertexRun<const Vertex> Vertices(const Polygon& polygon) const;
    // Appends a polygon through the vertices, in their order, and returns it.
    Polygon& AddPolygon(std::initializer_list<Vertex> corners);
};

// One scene node, as the import's node traversal records it.
struct NodeInfo {
    std::string m_Name;
    std::string m_Parent;                      // empty for a hierarchy root
    float m_Rotation[3] = {0.0f, 0.0f, 0.0f};  // the node's own rotation, degrees X, Y, Z
    float m_Translation[3] = {0.0f, 0.0f, 0.0f};
    float m_Scaling[3] = {1.0f, 1.0f, 1.0f};
};

struct Model {
    float m_Position[3] = {0.0f, 0.0f, 0.0f};
    float m_Rotation[3] = {0.0f, 0.0f, 0.0f};  // degrees about X, Y, Z
    int m_Frame = 0;  // current animation frame; out of a node's range means no transform
    std::map<std::string, Animation> m_Animations;  // by node name
    std::map<std::string, NodeInfo> m_Nodes;        // by node name
    std::map<std::string, Mesh> m_Meshes;           // by mesh name; drawn in this order
    // The authored look's records; null in the classic look. Shared by copies of the model.
    std::shared_ptr<AuthoredScene> m_Authored;
    // The authored look moves on smoothly between ticks: m_FrameFraction (0 to 1) of the
    // way from m_Frame toward m_NextFrame, the frame the running action shows next.
    int m_NextFrame = 0;
    float m_FrameFraction = 0.0f;

    // Inserts a mesh under its name and hands the inserted mesh to the mesh-insertion hook
    // (the drawing side installs one that uploads the first material's texture to OpenGL).
    // Returns false, calling no hook, when the name is already taken.
    bool AddMesh(const std::string& name, const Mesh& mesh);
    // The same, taking over the mesh instead of copying it.
    bool AddMesh(const std::string& name, Mesh&& mesh);
};

// Called with every mesh that Model::AddMesh inserts; null (the default) calls nothing. The
// model records know nothing of OpenGL: the drawing side installs its texture upload here.
using MeshInsertedHook = void (*)(const Mesh& mesh);
void SetMeshInsertedHook(MeshInsertedHook hook);
