#include "fbx/write/WriterSynthetic.h"

#include <algorithm>
#include <cmath>

namespace fbx {

namespace {

constexpr std::int64_t kTicksPerFrame = desc::kTicksPerSecond / 24;

void AddTexture(SceneDescription& scene, desc::Material& material, const std::string& file) {
    if (file.empty())
        return;
    desc::Texture texture;
    texture.name = "DiffuseTexture";
    texture.fileName = file;
    texture.relativeFileName = file;
    scene.textures.push_back(texture);
    material.diffuseTextures.push_back(static_cast<int>(scene.textures.size()) - 1);
}

}  // namespace

SceneDescription MakeSyntheticScene(const SyntheticOptions& options) {
    SceneDescription scene;
    scene.password = options.password;
    const int gridNode = scene.AddNode("Grid", desc::NodeType::Mesh);
    desc::Mesh& mesh = scene.nodes[gridNode].mesh;

    const std::size_t corners = options.corners;
    const std::size_t quads = (corners + 3) / 4;
    const std::size_t width =
        std::max<std::size_t>(1, static_cast<std::size_t>(std::ceil(std::sqrt(double(quads)))));
    const std::size_t rows = std::max<std::size_t>(1, (quads + width - 1) / width);
    for (std::size_t y = 0; y <= rows; ++y) {
        for (std::size_t x = 0; x <= width; ++x) {
            mesh.controlPoints.push_back({double(x), double(y), 0.0});
        }
    }
    std::size_t left = corners;
    for (std::size_t q = 0; q < quads; ++q) {
        const auto x = static_cast<std::int32_t>(q % width);
        const auto y = static_cast<std::int32_t>(q / width);
        const auto stride = static_cast<std::int32_t>(width + 1);
        std::vector<std::int32_t> quad = {y * stride + x, y * stride + x + 1,
                                          (y + 1) * stride + x + 1, (y + 1) * stride + x};
        quad.resize(std::min<std::size_t>(4, left));
        left -= quad.size();
        mesh.polygons.push_back(std::move(quad));
    }

    desc::LayerElement normals;
    normals.mapping = desc::Mapping::ByPolygonVertex;
    normals.direct.reserve(corners * 3);
    for (std::size_t i = 0; i < corners; ++i) {
        normals.direct.insert(normals.direct.end(), {0.0, 0.0, 1.0});
    }
    mesh.normals.push_back(std::move(normals));

    desc::LayerElement uvs;
    uvs.name = "map1";
    uvs.mapping = desc::Mapping::ByPolygonVertex;
    uvs.reference = desc::Reference::IndexToDirect;
    for (const desc::Vec3& p : mesh.controlPoints) {
        uvs.direct.push_back(p[0] / double(width));
        uvs.direct.push_back(p[1] / double(rows));
    }
    for (const auto& polygon : mesh.polygons) {
        uvs.index.insert(uvs.index.end(), polygon.begin(), polygon.end());
    }
    mesh.uvs.push_back(std::move(uvs));

    desc::MaterialElement materials;
    materials.indices = {0};
    mesh.materials.push_back(materials);
    desc::Material material;
    material.name = "GridMaterial";
    AddTexture(scene, material, options.texture);
    scene.materials.push_back(material);
    scene.nodes[gridNode].materials = {0};

    // Bones along X, each one unit of the chain; a control point is shared by the two bones
    // around it with linear weights.
    const int bones = std::max(0, options.clusters);
    const double spacing = bones > 0 ? double(width) / bones : 1.0;
    std::vector<int> boneNodes;
    for (int b = 0; b < bones; ++b) {
        int parent = b == 0 ? -1 : boneNodes.back();
        int node = scene.AddNode("Bone" + std::to_string(b), desc::NodeType::Skeleton, parent);
        scene.nodes[node].translation = {b == 0 ? 0.0 : spacing, 0, 0};
        boneNodes.push_back(node);
    }
    if (bones > 0) {
        const desc::Mesh& grid = scene.nodes[gridNode].mesh;  // AddNode moved the nodes
        std::vector<desc::Cluster> clusters(bones);
        for (int b = 0; b < bones; ++b) {
            clusters[b].linkNode = boneNodes[b];
            clusters[b].transformLink[12] = b * spacing;
        }
        for (std::size_t i = 0; i < grid.controlPoints.size(); ++i) {
            double along = grid.controlPoints[i][0] / spacing;
            int b = std::min(bones - 1, static_cast<int>(along));
            double t = std::min(1.0, along - b);
            auto index = static_cast<std::int32_t>(i);
            if (b + 1 < bones && t > 0) {
                clusters[b].indexes.push_back(index);
                clusters[b].weights.push_back(1.0 - t);
                clusters[b + 1].indexes.push_back(index);
                clusters[b + 1].weights.push_back(t);
            } else {
                clusters[b].indexes.push_back(index);
                clusters[b].weights.push_back(1.0);
            }
        }
        scene.nodes[gridNode].skin.clusters = std::move(clusters);
    }

    for (int t = 0; t < options.takes; ++t) {
        desc::Take take;
        char name[32];
        std::snprintf(name, sizeof name, "Take %03d", t + 1);
        take.name = name;
        auto makeCurve = [&](double amplitude, double phase) {
            desc::Curve curve;
            for (int k = 0; k < options.keys; ++k) {
                curve.times.push_back(k * kTicksPerFrame);
                curve.values.push_back(amplitude * std::sin(k * 0.2 + phase + t));
            }
            return curve;
        };
        if (boneNodes.empty()) {
            desc::NodeAnimation anim;
            anim.node = gridNode;
            anim.translation[1] = makeCurve(1.0, 0.0);
            take.nodes.push_back(anim);
        }
        for (std::size_t b = 0; b < boneNodes.size(); ++b) {
            desc::NodeAnimation anim;
            anim.node = boneNodes[b];
            anim.rotation[2] = makeCurve(30.0, double(b));
            take.nodes.push_back(anim);
        }
        scene.takes.push_back(std::move(take));
    }
    return scene;
}

SceneDescription MakeCubeScene(const std::string& texture) {
    SceneDescription scene;
    const int node = scene.AddNode("Cube", desc::NodeType::Mesh);
    desc::Mesh& mesh = scene.nodes[node].mesh;
    mesh.controlPoints = {{-0.5, -0.5, 0.5},  {0.5, -0.5, 0.5},  {-0.5, 0.5, 0.5},
                          {0.5, 0.5, 0.5},    {-0.5, 0.5, -0.5}, {0.5, 0.5, -0.5},
                          {-0.5, -0.5, -0.5}, {0.5, -0.5, -0.5}};
    mesh.polygons = {{0, 1, 3, 2}, {2, 3, 5, 4}, {4, 5, 7, 6},
                     {6, 7, 1, 0}, {1, 7, 5, 3}, {6, 0, 2, 4}};
    const double faceNormals[6][3] = {{0, 0, 1},  {0, 1, 0}, {0, 0, -1},
                                      {0, -1, 0}, {1, 0, 0}, {-1, 0, 0}};
    desc::LayerElement normals;
    desc::LayerElement uvs;
    uvs.name = "map1";
    uvs.reference = desc::Reference::IndexToDirect;
    uvs.direct = {0, 0, 1, 0, 1, 1, 0, 1};
    const std::int32_t corner[4] = {0, 1, 2, 3};
    for (int f = 0; f < 6; ++f) {
        for (int c = 0; c < 4; ++c) {
            normals.direct.insert(normals.direct.end(), faceNormals[f], faceNormals[f] + 3);
            uvs.index.push_back(corner[c]);
        }
    }
    mesh.normals.push_back(normals);
    mesh.uvs.push_back(uvs);
    mesh.materials.push_back({});
    mesh.materials[0].indices = {0};
    desc::Material material;
    material.name = "CubeMaterial";
    material.shading = desc::ShadingModel::Phong;
    material.diffuse = {0.8, 0.2, 0.2};
    material.specular = {0.5, 0.5, 0.5};
    AddTexture(scene, material, texture);
    scene.materials.push_back(material);
    scene.nodes[node].materials = {0};
    return scene;
}

}  // namespace fbx
