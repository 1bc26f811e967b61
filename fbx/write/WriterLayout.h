// Pieces shared by the 6100 and 7500 layouts of the scene writer: record and value
// shorthands, header sections, mesh arrays and layer elements, take spans.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "fbx/format/Record.h"
#include "fbx/write/SceneDescription.h"

namespace fbx::layout {

// The two layouts (see BuildDocument()).
Document Build6100(const SceneDescription& scene, int version, bool binary);
Document Build7500(const SceneDescription& scene, int version, bool binary);

Record Rec(std::string name, std::vector<Value> values = {}, std::vector<Record> children = {});
Value S(std::string text);
Value W(std::string letters);  // bare word: 'T', 'Y', key interpolation letters
Value I(std::int64_t v);       // int32
Value L(std::int64_t v);       // int64
Value D(double v);
Value Ints(std::vector<std::int32_t> v);
Value Doubles(std::vector<double> v);

// The FBXHeaderExtension record (with the password mark when the scene has one).
Record HeaderExtension(const SceneDescription& scene, int version, bool binary);
// FileId, CreationTime and Creator, which binary files repeat at the top level.
std::vector<Record> BinaryTopLevelRecords(const SceneDescription& scene);
// A document of that version and encoding holding what every layout starts with: the header
// extension and, in binary files, the top-level records binary files carry.
Document StartDocument(const SceneDescription& scene, int version, bool binary);

// Control-point indices per corner, the last corner of each polygon stored as ~index.
std::vector<std::int32_t> PolygonVertexIndex(const desc::Mesh& mesh);
std::vector<double> FlatVertices(const desc::Mesh& mesh);

const char* MappingName(desc::Mapping mapping);
const char* ReferenceName(desc::Reference reference);

// Geometry records of a mesh: Vertices, PolygonVertexIndex, GeometryVersion, the layer
// elements and the Layer records grouping them. The layer-element Version differs by layout.
std::vector<Record> MeshRecords(const desc::Mesh& mesh, int elementVersion);

// Model kind string ("Mesh", "LimbNode", ...) and TypeFlags of a node attribute.
const char* ModelKind(desc::NodeType type);
const char* TypeFlags(desc::NodeType type);

// One key as the layouts write it: its interpolation and its two slopes (see desc::Curve).
struct KeyShape {
    desc::Interp interp = desc::Interp::Linear;
    double rightSlope = 0;
    double nextLeftSlope = 0;
};
// The shapes of the curve's first n keys; only for curves that name their interpolation.
// Interpolation values outside the enum count as linear.
std::vector<KeyShape> KeyShapes(const desc::Curve& curve, std::size_t n);
// The nearest float (infinities for finite doubles beyond the float range).
float ToFloat(double v);

// One property of a node: the 7000+ layout writes all five parts, the older one leaves out
// the label ("Vector", "Integer" or "").
struct NodeProperty {
    const char* name;
    const char* type;
    const char* label;
    const char* flags;
    std::vector<Value> values;
};
// A node's transform properties in the order Maya lists them. Those that keep their default
// are left out, except the ones Maya writes on every node (RotationActive, InheritType,
// ScalingMax, DefaultAttributeIndex and the local transform); enum values out of range are
// written as their default.
std::vector<NodeProperty> NodeProperties(const desc::Node& node);

// The take's time span: as given, or that of its keys.
void TakeSpan(const desc::Take& take, std::int64_t& start, std::int64_t& stop);
bool HasKeys(const std::array<desc::Curve, 3>& curves);

// Nodes whose parent chain is valid and loop-free keep their parent; others hang off the root.
std::vector<int> CheckedParents(const SceneDescription& scene);

// Hands out names unique within a class ("cube", "cube 1", ...), for layouts that refer to
// objects by name.
class UniqueNames {
public:
    std::string Take(const std::string& objectClass, const std::string& wanted);

private:
    std::map<std::string, int> m_Used;
};

}  // namespace fbx::layout
