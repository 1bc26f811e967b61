// A plain description of a scene to be written as an FBX file: nodes, meshes with their layer
// elements, materials, textures, skins and animation takes. Tests, benchmarks, the generator
// tool and the demo fill one in and hand it to BuildDocument()/WriteFile() (WriterScene.h).
//
// Everything refers to everything else by index into the scene's vectors; an index out of
// range is ignored when the file is written.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace fbx {
namespace desc {

using Vec2 = std::array<double, 2>;
using Vec3 = std::array<double, 3>;
using Matrix4 = std::array<double, 16>;  // column-major, translation in elements 12..14

constexpr Matrix4 kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// Time unit of FBX files.
constexpr std::int64_t kTicksPerSecond = 46186158000LL;

enum class NodeType { Null, Mesh, Skeleton, Camera, Light, Marker };

enum class Mapping { ByControlPoint, ByPolygonVertex, ByPolygon, ByEdge, AllSame, None };
enum class Reference { Direct, IndexToDirect };

// One layer element: `direct` holds the values (3 per normal, 2 per UV, 4 per colour);
// `index` is used with IndexToDirect.
struct LayerElement {
    std::string name;
    Mapping mapping = Mapping::ByPolygonVertex;
    Reference reference = Reference::Direct;
    std::vector<double> direct;
    std::vector<std::int32_t> index;
};

// Material indices into the node's material list (always written IndexToDirect).
struct MaterialElement {
    Mapping mapping = Mapping::AllSame;
    std::vector<std::int32_t> indices;
};

// Element i of each list goes into layer i.
struct Mesh {
    std::vector<Vec3> controlPoints;
    std::vector<std::vector<std::int32_t>> polygons;  // control-point indices, any size >= 1
    std::vector<LayerElement> normals;
    std::vector<LayerElement> uvs;
    std::vector<LayerElement> colors;
    std::vector<MaterialElement> materials;
};

struct Cluster {
    int linkNode = -1;  // the bone
    std::vector<std::int32_t> indexes;
    std::vector<double> weights;
    Matrix4 transform = kIdentity;
    Matrix4 transformLink = kIdentity;
};

struct Skin {
    std::vector<Cluster> clusters;
};

// How a node's rotation angles combine: the letters name the axes in the order they apply,
// so kXYZ is Rz * Ry * Rx (column vectors). kSphericXYZ is read as XYZ.
enum RotationOrder { kXYZ, kXZY, kYZX, kYXZ, kZXY, kZYX, kSphericXYZ };

// How a node inherits its parent's transform: kRrSs, kRSrs (the plain matrix product) or kRrs
// (the parent's scale is not inherited).
enum InheritType { kRrSs, kRSrs, kRrs };

// A node's local transform is
//   T * Roff * Rp * Rpre * R * Rpost^-1 * Rp^-1 * Soff * Sp * S * Sp^-1
// (column vectors): translation, rotation offset and pivot, pre-rotation, rotation,
// post-rotation, scaling offset and pivot, scaling. Pre- and post-rotation are Euler XYZ and
// count only where rotationActive is set. The geometric transform moves the node's own
// geometry only and is not inherited. Everything past `skin` is written only where it differs
// from its default, as modelling tools do; out-of-range enum values are written as the default.
struct Node {
    std::string name;
    NodeType type = NodeType::Null;
    int parent = -1;  // -1: child of the scene root
    Vec3 translation = {0, 0, 0};
    Vec3 rotation = {0, 0, 0};  // degrees
    Vec3 scaling = {1, 1, 1};
    Mesh mesh;                   // when type is Mesh
    std::vector<int> materials;  // indices into Scene::materials, in slot order
    Skin skin;                   // no clusters: not skinned

    Vec3 rotationOffset = {0, 0, 0};
    Vec3 rotationPivot = {0, 0, 0};
    Vec3 scalingOffset = {0, 0, 0};
    Vec3 scalingPivot = {0, 0, 0};
    Vec3 preRotation = {0, 0, 0};   // degrees
    Vec3 postRotation = {0, 0, 0};  // degrees
    // Always written; set on every node, as Maya writes it (and as this writer always has).
    bool rotationActive = true;
    int rotationOrder = kXYZ;  // a RotationOrder
    int inheritType = kRSrs;   // an InheritType; always written
    Vec3 geometricTranslation = {0, 0, 0};
    Vec3 geometricRotation = {0, 0, 0};  // degrees, Euler XYZ
    Vec3 geometricScaling = {1, 1, 1};
};

enum class ShadingModel { Lambert, Phong };

struct Texture {
    std::string name;
    std::string fileName;          // absolute path, as a modelling tool writes it
    std::string relativeFileName;  // relative to the FBX file
    Vec2 uvTranslation = {0, 0};
    Vec2 uvScaling = {1, 1};
    double uvRotation = 0;  // degrees
    double alpha = 1;
    // Image bytes embedded in the file's video clip; none when empty. (Initialised here so that
    // brace-initialising only the fields before it stays warning-free.)
    std::vector<std::uint8_t> content = {};
};

struct Material {
    std::string name;
    ShadingModel shading = ShadingModel::Lambert;
    Vec3 ambient = {0.2, 0.2, 0.2};
    Vec3 diffuse = {0.8, 0.8, 0.8};
    Vec3 specular = {0.2, 0.2, 0.2};  // phong only
    Vec3 emissive = {0, 0, 0};
    double transparencyFactor = 0;
    double shininess = 20;        // phong only
    Vec3 reflection = {0, 0, 0};  // phong only
    double reflectionFactor = 1;  // phong only
    // Textures on DiffuseColor (indices into Scene::textures). Several, or layeredName set,
    // stack them in a layered texture.
    std::vector<int> diffuseTextures;
    std::string layeredName;
};

// How a curve runs from one key to the next: holding the key's value (Constant), jumping to
// the next key's value right away (ConstantNext), straight (Linear), or along the cubic the two
// slopes describe (Cubic).
enum class Interp { Constant, ConstantNext, Linear, Cubic };

// Keys of one animated value: times in ticks, values in the property's unit.
//
// interpolation, rightSlopes and nextLeftSlopes are per key. With no interpolation at all,
// every key is written linear with no slope data, as this writer always has; otherwise a key
// past the end of `interpolation` is linear. Slopes are in value units per second: the slope
// leaving key k and the one arriving at key k + 1; only cubic keys use them. A slope missing
// from its vector is written as Maya writes it: the slope of the straight line to the next
// key for linear keys (0 after the last key), else 0.
struct Curve {
    std::vector<std::int64_t> times;
    std::vector<double> values;
    // (Initialised here so that brace-initialising only times and values stays warning-free.)
    std::vector<Interp> interpolation = {};
    std::vector<double> rightSlopes = {};
    std::vector<double> nextLeftSlopes = {};
    bool Empty() const { return times.empty(); }
};

// Curves for one node: index 0..2 are X, Y, Z.
struct NodeAnimation {
    int node = -1;
    std::array<Curve, 3> translation;
    std::array<Curve, 3> rotation;
    std::array<Curve, 3> scaling;
};

struct Take {
    std::string name;
    std::vector<NodeAnimation> nodes;
    // Time span in ticks; when both are 0 the span of the keys is used.
    std::int64_t start = 0;
    std::int64_t stop = 0;
};

struct Scene {
    std::vector<Node> nodes;
    std::vector<Material> materials;
    std::vector<Texture> textures;
    std::vector<Take> takes;
    std::string creator = "FBX SDK/FBX Plugins version 2019.2";
    std::string password;  // non-empty: the file is marked as password-protected

    // Appends a node and returns its index.
    int AddNode(std::string name, NodeType type, int parent = -1) {
        Node node;
        node.name = std::move(name);
        node.type = type;
        node.parent = parent;
        nodes.push_back(std::move(node));
        return static_cast<int>(nodes.size()) - 1;
    }
};

}  // namespace desc

using SceneDescription = desc::Scene;

}  // namespace fbx
