// model_digest: what an import produced, as text to compare before and after a change to the
// import. Imports each file as a state does, in the given look, and prints its console report
// followed by one line per record: the model's own fields, each animation, node and mesh
// (every vertex, polygon, material, texture and bone field folded into a hash), and in the
// authored look every node, curve, take and mesh array.
//
//   model_digest classic|authored FILE...
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "import/SceneImport.h"
#include "model/Model.h"

namespace {

// FNV-1a over the bytes of plain values.
class Hash {
public:
    template <class T>
    Hash& Add(const T& value) {
        static_assert(std::is_trivially_copyable<T>::value, "plain values only");
        return Bytes(&value, sizeof value);
    }
    Hash& Add(const std::string& text) { return Add(text.size()).Bytes(text.data(), text.size()); }
    template <class T>
    Hash& Add(const std::vector<T>& values) {
        Add(values.size());
        for (const T& v : values)
            Add(v);
        return *this;
    }
    Hash& Bytes(const void* data, std::size_t size) {
        const auto* p = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i)
            m_Value = (m_Value ^ p[i]) * 1099511628211ull;
        return *this;
    }
    unsigned long long Value() const { return m_Value; }

private:
    unsigned long long m_Value = 14695981039346656037ull;
};

// Fields one by one: padding bytes are not part of any record's content.
void AddTexture(Hash& h, const Texture& t) {
    h.Add(t.m_Name).Add(t.m_Loaded).Add(t.m_Id).Add(t.m_ScaleU).Add(t.m_ScaleV);
    h.Add(t.m_TranslationU).Add(t.m_TranslationV).Add(t.m_RotationU).Add(t.m_RotationV);
    h.Add(t.m_RotationW).Add(t.m_Alpha).Add(t.m_Width).Add(t.m_Height).Add(t.m_ImageSize);
    if (t.m_Pixels)
        h.Bytes(t.m_Pixels, t.m_ImageSize);
}

void AddMaterial(Hash& h, const Material& m) {
    h.Add(m.m_Name).Add(m.m_Ambient).Add(m.m_Diffuse).Add(m.m_Specular).Add(m.m_Emissive);
    h.Add(m.m_Shininess).Add(m.m_Reflection).Add(m.m_Alpha).Add(m.m_Valid).Add(m.m_HasTexture);
    h.Add(m.m_TextureId).Add(m.m_TextureScale);
    AddTexture(h, m.m_Texture);
}

void AddVertex(Hash& h, const Mesh& mesh, const Vertex& v) {
    h.Add(v.m_Point).Add(v.m_FacePoint).Add(v.m_Position).Add(v.m_Color).Add(v.m_UV);
    h.Add(v.m_Skin.size());
    for (const SkinInfluence& influence : mesh.Influences(v))
        h.Add(influence.m_Bone).Add(influence.m_Weight);
}

void PrintMesh(const std::string& name, const Mesh& mesh) {
    Hash h;
    h.Add(mesh.m_NodeName).Add(mesh.m_DisplayList).Add(mesh.m_Translation).Add(mesh.m_Rotation);
    h.Add(mesh.m_Scaling).Add(mesh.m_GeometricScaling).Add(mesh.m_Pivot);
    h.Add(mesh.m_GeometricTranslation).Add(mesh.m_Static);
    std::size_t corners = 0;
    for (const Polygon& polygon : mesh.m_Polygons) {
        const VertexRun<const Vertex> run = mesh.Vertices(polygon);
        h.Add(polygon.m_Flags).Add(polygon.m_Normal).Add(run.size());
        for (const Vertex& vertex : run)
            AddVertex(h, mesh, vertex);
        corners += run.size();
    }
    for (const Material& material : mesh.m_Materials)
        AddMaterial(h, material);
    for (const std::string& bone : mesh.m_BoneNames)
        h.Add(bone);
    for (const Bone& bone : mesh.m_Bones)
        h.Add(bone.m_Name).Add(bone.m_Transform).Add(bone.m_TransformLink);
    std::printf("mesh %s polygons %zu corners %zu materials %zu bones %zu hash %016llx\n",
                name.c_str(), mesh.m_Polygons.size(), corners, mesh.m_Materials.size(),
                mesh.m_Bones.size(), h.Value());
}

void PrintAuthored(const AuthoredScene& scene) {
    Hash nodes;
    for (const TransformNode& n : scene.m_Nodes) {
        nodes.Add(n.m_Name).Add(n.m_Parent).Add(n.m_Translation).Add(n.m_Rotation);
        nodes.Add(n.m_Scaling).Add(n.m_RotationOffset).Add(n.m_RotationPivot);
        nodes.Add(n.m_ScalingOffset).Add(n.m_ScalingPivot).Add(n.m_PreRotation);
        nodes.Add(n.m_PostRotation).Add(n.m_RotationOrder).Add(n.m_InheritType);
        nodes.Add(n.m_GeometricTranslation).Add(n.m_GeometricRotation).Add(n.m_GeometricScaling);
        nodes.Add(n.m_TakeCurves);
    }
    Hash curves;
    for (const AnimCurve& c : scene.m_Curves) {
        curves.Add(c.m_Keys.size());
        for (const CurveKey& k : c.m_Keys)
            curves.Add(k.m_Time)
                .Add(k.m_Value)
                .Add(k.m_Interpolation)
                .Add(k.m_RightSlope)
                .Add(k.m_NextLeftSlope);
    }
    Hash takes;
    for (const TakeSpan& t : scene.m_Takes)
        takes.Add(t.m_Name).Add(t.m_Start).Add(t.m_Stop).Add(t.m_FirstFrame).Add(t.m_LastFrame);
    std::printf("authored nodes %zu hash %016llx curves %zu hash %016llx takes %zu hash %016llx\n",
                scene.m_Nodes.size(), nodes.Value(), scene.m_Curves.size(), curves.Value(),
                scene.m_Takes.size(), takes.Value());
    for (const AuthoredMesh& m : scene.m_Meshes) {
        Hash h;
        h.Add(m.m_Name).Add(m.m_Node).Add(m.m_Points).Add(m.m_CornerPoints);
        h.Add(m.m_CornerNormals).Add(m.m_CornerUVs).Add(m.m_Triangles);
        for (const MaterialRange& r : m.m_Ranges)
            h.Add(r.m_Material).Add(r.m_First).Add(r.m_Count);
        for (const AuthoredMaterial& a : m.m_Materials) {
            h.Add(a.m_Name).Add(a.m_Ambient).Add(a.m_Diffuse).Add(a.m_Specular);
            h.Add(a.m_Emissive).Add(a.m_Shininess).Add(a.m_Blended).Add(a.m_Texture != nullptr);
            if (a.m_Texture)
                h.Add(a.m_Texture->m_Width).Add(a.m_Texture->m_Height).Add(a.m_Texture->m_Pixels);
        }
        for (const SkinCluster& c : m.m_Clusters)
            h.Add(c.m_Bone).Add(c.m_BindMatrix);
        h.Add(m.m_WeightStart);
        for (const SkinWeight& w : m.m_Weights)
            h.Add(w.m_Cluster).Add(w.m_Weight);
        std::printf("authored mesh %s corners %zu hash %016llx\n", m.m_Name.c_str(),
                    m.m_CornerPoints.size(), h.Value());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || (std::strcmp(argv[1], "classic") != 0 && std::strcmp(argv[1], "authored"))) {
        std::fprintf(stderr, "usage: model_digest classic|authored FILE...\n");
        return 2;
    }
    const ModelLook look =
        std::strcmp(argv[1], "authored") == 0 ? ModelLook::Authored : ModelLook::Classic;
    for (int i = 2; i < argc; ++i) {
        std::printf("== %s\n", argv[i]);
        std::fflush(stdout);
        Model model;
        ImportModelFile(argv[i], &model, look);
        std::fflush(stdout);
        Hash own;
        own.Add(model.m_Position).Add(model.m_Rotation).Add(model.m_Frame);
        own.Add(model.m_NextFrame).Add(model.m_FrameFraction);
        std::printf("model hash %016llx\n", own.Value());
        for (const auto& [name, animation] : model.m_Animations) {
            Hash h;
            h.Add(animation.m_Name).Add(animation.m_Keys.size());
            for (const KeyFrame& k : animation.m_Keys)
                h.Add(k.m_HasTranslation)
                    .Add(k.m_HasRotation)
                    .Add(k.m_HasScale)
                    .Add(k.m_Translation)
                    .Add(k.m_RotationAngle)
                    .Add(k.m_Rotation)
                    .Add(k.m_Scale);
            std::printf("animation %s keys %zu hash %016llx\n", name.c_str(),
                        animation.m_Keys.size(), h.Value());
        }
        for (const auto& [name, node] : model.m_Nodes) {
            Hash h;
            h.Add(node.m_Name)
                .Add(node.m_Parent)
                .Add(node.m_Rotation)
                .Add(node.m_Translation)
                .Add(node.m_Scaling);
            std::printf("node %s hash %016llx\n", name.c_str(), h.Value());
        }
        for (const auto& [name, mesh] : model.m_Meshes)
            PrintMesh(name, mesh);
        if (model.m_Authored)
            PrintAuthored(*model.m_Authored);
    }
    return 0;
}
