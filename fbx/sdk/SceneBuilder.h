// Turns an object graph into an SDK-style scene: nodes, attributes, meshes, skins, materials,
// textures with their video clips and per-take curves. Internal to the library; the importer
// drives it.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "fbx/graph/ObjectGraph.h"

class KFbxScene;
class KFbxNode;
class KFbxObject;
class KFbxMesh;
class KFbxNodeAttribute;
class KFbxSurfaceMaterial;
class KFbxTexture;
class KFbxVideo;
class KFCurve;

namespace fbx {

// What to read beyond nodes and geometry (the reader options of the same names).
struct BuildOptions {
    bool materials = true;
    bool textures = true;
    bool links = true;  // skins and clusters
    bool animation = true;
};

class SceneBuilder {
public:
    // Fills an empty scene from the graph. Never fails: what is missing stays out.
    static void Build(const ObjectGraph& graph, KFbxScene& scene, const BuildOptions& options);

private:
    SceneBuilder(const ObjectGraph& graph, KFbxScene& scene, const BuildOptions& options);

    void ReadTakes();
    void BuildNodes();
    void ReadNodeProperties(std::size_t model, KFbxNode& node);
    KFbxNodeAttribute* BuildAttribute(std::size_t model, KFbxNode& node);
    KFbxMesh* BuildMesh(std::size_t geometry, KFbxNode& node);
    void BuildLayers(std::size_t geometry, KFbxMesh& mesh, KFbxNode& node);
    void BuildSkins(std::size_t geometry, KFbxMesh& mesh);
    KFbxSurfaceMaterial* BuildMaterial(std::size_t material);
    void ReadMaterialProperties(std::size_t material, KFbxSurfaceMaterial& target, bool phong);
    void ConnectMaterialTextures(const Object& material, KFbxSurfaceMaterial& target);
    KFbxTexture* BuildTexture(std::size_t texture);
    KFbxVideo* BuildVideo(std::size_t video);
    // Clips the file left empty take the content of another clip of the same image file.
    void ShareVideoContent();

    // Curves already read, by curve node channel and curve, for sharing between nodes.
    using SharedCurves = std::map<std::pair<std::size_t, std::size_t>, std::shared_ptr<KFCurve>>;
    void BuildAnimation();
    void AnimateNodes(std::size_t curveNode, std::size_t slot, SharedCurves& shared);
    std::shared_ptr<KFCurve> ChannelCurve(std::size_t curveNode, int axis, SharedCurves& shared);
    // One AnimationCurve record as a curve (CurveKeys.cpp).
    static std::shared_ptr<KFCurve> ReadCurve(const Record* curve, const PropertyValue* channel);

    // The kinds of layer element (SceneBuilder.cpp): for each, the record that holds it, how
    // it is read and which slot of a layer takes it.
    struct ElementSource;
    struct ElementKind;
    static const std::vector<ElementKind>& ElementKinds();

    const ObjectGraph& m_Graph;
    KFbxScene& m_Scene;
    BuildOptions m_Options;
    std::vector<KFbxObject*> m_Built;  // scene object per graph object, or null
};

}  // namespace fbx
