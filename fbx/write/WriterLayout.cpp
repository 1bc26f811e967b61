#include "fbx/write/WriterLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "fbx/format/Encode.h"
#include "fbx/write/WriterScene.h"

namespace fbx::layout {

Record Rec(std::string name, std::vector<Value> values, std::vector<Record> children) {
    Record r;
    r.name = std::move(name);
    r.values = std::move(values);
    r.children = std::move(children);
    return r;
}

Value S(std::string text) {
    return Value::MakeText(std::move(text));
}
Value W(std::string letters) {
    return Value::MakeText(std::move(letters), ValueType::Word);
}
Value I(std::int64_t v) {
    return Value::MakeInt(v, ValueType::Int32);
}
Value L(std::int64_t v) {
    return Value::MakeInt(v, ValueType::Int64);
}
Value D(double v) {
    return Value::MakeFloat(v, ValueType::Float64);
}
Value Ints(std::vector<std::int32_t> v) {
    return Value::MakeArray(std::move(v));
}
Value Doubles(std::vector<double> v) {
    return Value::MakeArray(std::move(v));
}

namespace {

// Written files carry a fixed time stamp so that the same scene always gives the same bytes.
Record TimeStamp() {
    return Rec("CreationTimeStamp", {},
               {Rec("Version", {I(1000)}), Rec("Year", {I(2009)}), Rec("Month", {I(1)}),
                Rec("Day", {I(1)}), Rec("Hour", {I(0)}), Rec("Minute", {I(0)}),
                Rec("Second", {I(0)}), Rec("Millisecond", {I(0)})});
}

}  // namespace

Record HeaderExtension(const SceneDescription& scene, int version, bool binary) {
    Record header = Rec("FBXHeaderExtension", {},
                        {Rec("FBXHeaderVersion", {I(1003)}), Rec("FBXVersion", {I(version)})});
    if (binary)
        header.children.push_back(Rec("EncryptionType", {I(0)}));
    header.children.push_back(TimeStamp());
    header.children.push_back(Rec("Creator", {S(scene.creator)}));
    if (!scene.password.empty())
        MarkPasswordProtected(header, scene.password);
    return header;
}

std::vector<Record> BinaryTopLevelRecords(const SceneDescription& scene) {
    const std::string fileId("\x28\xb3\x2a\xeb\xb6\x24\xcc\xc2\xbf\xc8\xb0\x2a\xa9\x2b\xfc\xf1",
                             16);
    return {Rec("FileId", {Value::MakeText(fileId, ValueType::Raw)}),
            Rec("CreationTime", {S("2009-01-01 00:00:00:000")}),
            Rec("Creator", {S(scene.creator)})};
}

std::vector<std::int32_t> PolygonVertexIndex(const desc::Mesh& mesh) {
    std::vector<std::int32_t> out;
    std::size_t total = 0;
    for (const auto& polygon : mesh.polygons)
        total += polygon.size();
    out.reserve(total);
    for (const auto& polygon : mesh.polygons) {
        if (polygon.empty())
            continue;
        out.insert(out.end(), polygon.begin(), polygon.end());
        out.back() = ~out.back();
    }
    return out;
}

std::vector<double> FlatVertices(const desc::Mesh& mesh) {
    std::vector<double> out;
    out.reserve(mesh.controlPoints.size() * 3);
    for (const desc::Vec3& p : mesh.controlPoints)
        out.insert(out.end(), p.begin(), p.end());
    return out;
}

const char* MappingName(desc::Mapping mapping) {
    switch (mapping) {
        case desc::Mapping::ByControlPoint:
            return "ByVertice";
        case desc::Mapping::ByPolygonVertex:
            return "ByPolygonVertex";
        case desc::Mapping::ByPolygon:
            return "ByPolygon";
        case desc::Mapping::ByEdge:
            return "ByEdge";
        case desc::Mapping::AllSame:
            return "AllSame";
        case desc::Mapping::None:
            return "NoMappingInformation";
    }
    return "NoMappingInformation";
}

const char* ReferenceName(desc::Reference reference) {
    return reference == desc::Reference::Direct ? "Direct" : "IndexToDirect";
}

namespace {

Record ElementRecord(const char* type, int layer, int version, const desc::LayerElement& element,
                     const char* directName, const char* indexName) {
    Record r = Rec(type, {I(layer)},
                   {Rec("Version", {I(version)}), Rec("Name", {S(element.name)}),
                    Rec("MappingInformationType", {S(MappingName(element.mapping))}),
                    Rec("ReferenceInformationType", {S(ReferenceName(element.reference))}),
                    Rec(directName, {Doubles(element.direct)})});
    if (element.reference == desc::Reference::IndexToDirect) {
        r.children.push_back(Rec(indexName, {Ints(element.index)}));
    }
    return r;
}

Record LayerEntry(const char* type) {
    return Rec("LayerElement", {}, {Rec("Type", {S(type)}), Rec("TypedIndex", {I(0)})});
}

}  // namespace

std::vector<Record> MeshRecords(const desc::Mesh& mesh, int elementVersion) {
    std::vector<Record> out;
    out.push_back(Rec("Vertices", {Doubles(FlatVertices(mesh))}));
    out.push_back(Rec("PolygonVertexIndex", {Ints(PolygonVertexIndex(mesh))}));
    out.push_back(Rec("GeometryVersion", {I(124)}));
    std::size_t layers =
        std::max({mesh.normals.size(), mesh.uvs.size(), mesh.colors.size(), mesh.materials.size()});
    for (std::size_t i = 0; i < mesh.normals.size(); ++i) {
        out.push_back(ElementRecord("LayerElementNormal", static_cast<int>(i), elementVersion,
                                    mesh.normals[i], "Normals", "NormalsIndex"));
    }
    for (std::size_t i = 0; i < mesh.colors.size(); ++i) {
        out.push_back(ElementRecord("LayerElementColor", static_cast<int>(i), 101, mesh.colors[i],
                                    "Colors", "ColorIndex"));
    }
    for (std::size_t i = 0; i < mesh.uvs.size(); ++i) {
        out.push_back(ElementRecord("LayerElementUV", static_cast<int>(i), 101, mesh.uvs[i], "UV",
                                    "UVIndex"));
    }
    for (std::size_t i = 0; i < mesh.materials.size(); ++i) {
        const desc::MaterialElement& element = mesh.materials[i];
        out.push_back(Rec("LayerElementMaterial", {I(static_cast<int>(i))},
                          {Rec("Version", {I(101)}), Rec("Name", {S("")}),
                           Rec("MappingInformationType", {S(MappingName(element.mapping))}),
                           Rec("ReferenceInformationType", {S("IndexToDirect")}),
                           Rec("Materials", {Ints(element.indices)})}));
    }
    for (std::size_t i = 0; i < layers; ++i) {
        Record layer = Rec("Layer", {I(static_cast<int>(i))}, {Rec("Version", {I(100)})});
        auto entry = [&](const char* type, std::size_t have) {
            if (i < have) {
                Record e = LayerEntry(type);
                e.children[1].values[0] = I(static_cast<int>(i));
                layer.children.push_back(std::move(e));
            }
        };
        entry("LayerElementNormal", mesh.normals.size());
        entry("LayerElementMaterial", mesh.materials.size());
        entry("LayerElementColor", mesh.colors.size());
        entry("LayerElementUV", mesh.uvs.size());
        out.push_back(std::move(layer));
    }
    return out;
}

Document StartDocument(const SceneDescription& scene, int version, bool binary) {
    Document doc;
    doc.version = static_cast<std::uint32_t>(version);
    doc.binary = binary;
    doc.root.children.push_back(HeaderExtension(scene, version, binary));
    if (binary) {
        for (Record& r : BinaryTopLevelRecords(scene))
            doc.root.children.push_back(std::move(r));
    }
    return doc;
}

const char* ModelKind(desc::NodeType type) {
    switch (type) {
        case desc::NodeType::Mesh:
            return "Mesh";
        case desc::NodeType::Skeleton:
            return "LimbNode";
        case desc::NodeType::Camera:
            return "Camera";
        case desc::NodeType::Light:
            return "Light";
        case desc::NodeType::Marker:
            return "Marker";
        case desc::NodeType::Null:
            break;
    }
    return "Null";
}

const char* TypeFlags(desc::NodeType type) {
    switch (type) {
        case desc::NodeType::Skeleton:
            return "Skeleton";
        case desc::NodeType::Camera:
            return "Camera";
        case desc::NodeType::Light:
            return "Light";
        case desc::NodeType::Marker:
            return "Marker";
        default:
            return "Null";
    }
}

std::vector<KeyShape> KeyShapes(const desc::Curve& curve, std::size_t n) {
    n = std::min({n, curve.times.size(), curve.values.size()});
    auto given = [](const std::vector<double>& slopes, std::size_t k, double fallback) {
        return k < slopes.size() ? slopes[k] : fallback;
    };
    std::vector<KeyShape> shapes(n);
    for (std::size_t k = 0; k < n; ++k) {
        KeyShape& shape = shapes[k];
        if (k < curve.interpolation.size()) {
            switch (curve.interpolation[k]) {
                case desc::Interp::Constant:
                case desc::Interp::ConstantNext:
                case desc::Interp::Linear:
                case desc::Interp::Cubic:
                    shape.interp = curve.interpolation[k];
                    break;
                default:  // a value outside the enum: linear
                    break;
            }
        }
        double line = 0;
        if (k + 1 < n && curve.times[k + 1] > curve.times[k]) {
            const double seconds = static_cast<double>(curve.times[k + 1] - curve.times[k]) /
                                   static_cast<double>(desc::kTicksPerSecond);
            line = (curve.values[k + 1] - curve.values[k]) / seconds;
        }
        const bool linear = shape.interp == desc::Interp::Linear;
        shape.rightSlope = given(curve.rightSlopes, k, linear ? line : 0.0);
        shape.nextLeftSlope = given(curve.nextLeftSlopes, k, linear ? line : 0.0);
    }
    return shapes;
}

float ToFloat(double v) {
    constexpr double kMax = std::numeric_limits<float>::max();
    if (v > kMax)
        return std::numeric_limits<float>::infinity();
    if (v < -kMax)
        return -std::numeric_limits<float>::infinity();
    return static_cast<float>(v);  // NaN stays NaN
}

std::vector<NodeProperty> NodeProperties(const desc::Node& node) {
    std::vector<NodeProperty> props;
    auto vector = [&](const char* name, const desc::Vec3& v, const desc::Vec3& unchanged) {
        if (v != unchanged)
            props.push_back({name, "Vector3D", "Vector", "", {D(v[0]), D(v[1]), D(v[2])}});
    };
    auto enumeration = [&](const char* name, int value) {
        props.push_back({name, "enum", "", "", {I(value)}});
    };
    const desc::Vec3 zero = {0, 0, 0};
    vector("RotationOffset", node.rotationOffset, zero);
    vector("RotationPivot", node.rotationPivot, zero);
    vector("ScalingOffset", node.scalingOffset, zero);
    vector("ScalingPivot", node.scalingPivot, zero);
    if (node.rotationOrder > desc::kXYZ && node.rotationOrder <= desc::kSphericXYZ)
        enumeration("RotationOrder", node.rotationOrder);
    vector("PreRotation", node.preRotation, zero);
    vector("PostRotation", node.postRotation, zero);
    props.push_back({"RotationActive", "bool", "", "", {I(node.rotationActive ? 1 : 0)}});
    const bool inheritKnown = node.inheritType >= desc::kRrSs && node.inheritType <= desc::kRrs;
    enumeration("InheritType", inheritKnown ? node.inheritType : desc::kRSrs);
    props.push_back({"ScalingMax", "Vector3D", "Vector", "", {D(0), D(0), D(0)}});
    vector("GeometricTranslation", node.geometricTranslation, zero);
    vector("GeometricRotation", node.geometricRotation, zero);
    vector("GeometricScaling", node.geometricScaling, {1, 1, 1});
    props.push_back({"DefaultAttributeIndex", "int", "Integer", "", {I(0)}});
    const std::pair<const char*, const desc::Vec3*> local[] = {
        {"Lcl Translation", &node.translation},
        {"Lcl Rotation", &node.rotation},
        {"Lcl Scaling", &node.scaling}};
    for (const auto& [name, v] : local)
        props.push_back({name, name, "", "A", {D((*v)[0]), D((*v)[1]), D((*v)[2])}});
    return props;
}

bool HasKeys(const std::array<desc::Curve, 3>& curves) {
    for (const desc::Curve& c : curves) {
        if (!c.Empty())
            return true;
    }
    return false;
}

void TakeSpan(const desc::Take& take, std::int64_t& start, std::int64_t& stop) {
    start = take.start;
    stop = take.stop;
    if (start != 0 || stop != 0)
        return;
    bool any = false;
    std::int64_t lo = std::numeric_limits<std::int64_t>::max();
    std::int64_t hi = std::numeric_limits<std::int64_t>::min();
    for (const desc::NodeAnimation& anim : take.nodes) {
        for (const auto* curves : {&anim.translation, &anim.rotation, &anim.scaling}) {
            for (const desc::Curve& c : *curves) {
                for (std::int64_t t : c.times) {
                    lo = std::min(lo, t);
                    hi = std::max(hi, t);
                    any = true;
                }
            }
        }
    }
    if (any) {
        start = lo;
        stop = hi;
    }
}

std::vector<int> CheckedParents(const SceneDescription& scene) {
    const int n = static_cast<int>(scene.nodes.size());
    std::vector<int> parents(n, -1);
    for (int i = 0; i < n; ++i) {
        int p = scene.nodes[i].parent;
        if (p < 0 || p >= n || p == i)
            continue;
        // Walk up: a chain longer than the node count, or one that leaves the range, loops.
        int steps = 0;
        int at = p;
        while (at >= 0 && at < n && at != i && steps <= n) {
            at = scene.nodes[at].parent;
            ++steps;
        }
        if (at == i || steps > n)
            continue;
        parents[i] = p;
    }
    return parents;
}

std::string UniqueNames::Take(const std::string& objectClass, const std::string& wanted) {
    std::string name = wanted;
    for (int suffix = 1; m_Used.count(objectClass + "::" + name); ++suffix) {
        name = wanted + " " + std::to_string(suffix);
    }
    m_Used[objectClass + "::" + name] = 1;
    return name;
}

}  // namespace fbx::layout
