// The 7000+ layout: objects with 64-bit ids, property templates in Definitions, Properties70,
// "C" connections, animation as stacks, layers, curve nodes and curves.
#include <algorithm>
#include <cstring>
#include <map>

#include "fbx/format/Encode.h"
#include "fbx/write/WriterLayout.h"

namespace fbx::layout {

namespace {

Record P(std::string name, std::string type, std::string label, std::string flags,
         std::vector<Value> values = {}) {
    std::vector<Value> all = {S(std::move(name)), S(std::move(type)), S(std::move(label)),
                              S(std::move(flags))};
    all.insert(all.end(), values.begin(), values.end());
    return Rec("P", std::move(all));
}

std::vector<Value> V3(const desc::Vec3& v) {
    return {D(v[0]), D(v[1]), D(v[2])};
}

// KeyAttrFlags as Maya writes them: the interpolation bit (0x02 constant, 0x04 linear, 0x08
// cubic) with the tangent mode, user (0x400) for linear and cubic keys, "next" (0x100) for a
// constant key that takes the next key's value.
constexpr std::int32_t kConstantKeyFlags = 0x002;
constexpr std::int32_t kConstantNextKeyFlags = 0x102;
constexpr std::int32_t kLinearKeyFlags = 0x404;
constexpr std::int32_t kCubicKeyFlags = 0x408;

class Builder7500 {
public:
    Builder7500(const SceneDescription& scene, int version, bool binary)
        : m_Scene(scene), m_Version(version), m_Binary(binary) {}

    Document Build() {
        BuildObjects();
        Document doc = StartDocument(m_Scene, m_Version, m_Binary);
        Record& root = doc.root;
        root.children.push_back(GlobalSettings());
        root.children.push_back(Documents());
        root.children.push_back(Rec("References"));
        root.children.push_back(Definitions());
        root.children.push_back(Rec("Objects", {}, std::move(m_Objects)));
        root.children.push_back(Rec("Connections", {}, std::move(m_Connections)));
        root.children.push_back(Takes());
        return doc;
    }

private:
    std::string Name(const char* objectClass, const std::string& name) const {
        return ObjectName(objectClass, name, m_Binary);
    }

    std::int64_t NewId() { return m_NextId++; }

    Record& AddObject(const char* recordName, std::int64_t id, const char* objectClass,
                      const std::string& name, const std::string& kind) {
        ++m_Counts[recordName];
        m_Objects.push_back(Rec(recordName, {L(id), S(Name(objectClass, name)), S(kind)}));
        return m_Objects.back();
    }

    void ConnectOO(std::int64_t child, std::int64_t parent) {
        m_Connections.push_back(Rec("C", {S("OO"), L(child), L(parent)}));
    }
    void ConnectOP(std::int64_t child, std::int64_t parent, const std::string& property) {
        m_Connections.push_back(Rec("C", {S("OP"), L(child), L(parent), S(property)}));
    }

    void BuildObjects() {
        const auto& nodes = m_Scene.nodes;
        std::vector<int> parents = CheckedParents(m_Scene);
        m_NodeIds.resize(nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
            m_NodeIds[i] = NewId();
        for (std::size_t i = 0; i < m_Scene.materials.size(); ++i)
            m_MaterialIds.push_back(NewId());

        // The node tree first, as the vendor's files list it.
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            ConnectOO(m_NodeIds[i], parents[i] >= 0 ? m_NodeIds[parents[i]] : 0);
        }
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const desc::Node& node = nodes[i];
            Record& model =
                AddObject("Model", m_NodeIds[i], "Model", node.name, ModelKind(node.type));
            model.children = {Rec("Version", {I(232)}),
                              Rec("Properties70", {}, NodeProperties(node)),
                              Rec("Shading", {W(node.type == desc::NodeType::Mesh ? "T" : "Y")}),
                              Rec("Culling", {S("CullingOff")})};
            if (node.type == desc::NodeType::Mesh) {
                AddGeometry(node, m_NodeIds[i]);
            } else {
                AddNodeAttribute(node, m_NodeIds[i]);
            }
            for (int m : node.materials) {
                if (m >= 0 && m < static_cast<int>(m_MaterialIds.size())) {
                    ConnectOO(m_MaterialIds[m], m_NodeIds[i]);
                }
            }
        }
        for (std::size_t i = 0; i < m_Scene.materials.size(); ++i)
            AddMaterial(i);
        for (std::size_t i = 0; i < m_Scene.takes.size(); ++i)
            AddTake(m_Scene.takes[i]);
    }

    static std::vector<Record> NodeProperties(const desc::Node& node) {
        std::vector<Record> props;
        for (NodeProperty& p : layout::NodeProperties(node))
            props.push_back(P(p.name, p.type, p.label, p.flags, std::move(p.values)));
        return props;
    }

    void AddNodeAttribute(const desc::Node& node, std::int64_t modelId) {
        std::int64_t id = NewId();
        Record& attr =
            AddObject("NodeAttribute", id, "NodeAttribute", node.name, ModelKind(node.type));
        switch (node.type) {
            case desc::NodeType::Skeleton:
                attr.children.push_back(
                    Rec("Properties70", {}, {P("Size", "double", "Number", "", {D(100)})}));
                break;
            case desc::NodeType::Light:
                attr.children.push_back(Rec("Properties70", {},
                                            {P("LightType", "enum", "", "", {I(0)}),
                                             P("Color", "Color", "", "A", V3({1, 1, 1})),
                                             P("Intensity", "Number", "", "A", {D(100)})}));
                break;
            case desc::NodeType::Camera:
                attr.children.push_back(Rec("Properties70", {},
                                            {P("FocalLength", "Number", "", "A", {D(35)}),
                                             P("NearPlane", "double", "Number", "", {D(0.1)}),
                                             P("FarPlane", "double", "Number", "", {D(10000)})}));
                break;
            default:
                break;
        }
        attr.children.push_back(Rec("TypeFlags", {S(TypeFlags(node.type))}));
        if (node.type == desc::NodeType::Camera || node.type == desc::NodeType::Light) {
            attr.children.push_back(Rec("GeometryVersion", {I(124)}));
        }
        ConnectOO(id, modelId);
    }

    void AddGeometry(const desc::Node& node, std::int64_t modelId) {
        std::int64_t id = NewId();
        Record& geometry = AddObject("Geometry", id, "Geometry", node.name, "Mesh");
        geometry.children = MeshRecords(node.mesh, 102);
        ConnectOO(id, modelId);
        if (node.skin.clusters.empty())
            return;
        std::int64_t skinId = NewId();
        Record& skin = AddObject("Deformer", skinId, "Deformer", node.name, "Skin");
        skin.children = {Rec("Version", {I(101)}), Rec("Link_DeformAcuracy", {D(50)}),
                         Rec("SkinningType", {S("Linear")})};
        ConnectOO(skinId, id);
        for (const desc::Cluster& cluster : node.skin.clusters) {
            const bool linked =
                cluster.linkNode >= 0 && cluster.linkNode < static_cast<int>(m_NodeIds.size());
            std::string name = linked ? m_Scene.nodes[cluster.linkNode].name : std::string();
            std::int64_t clusterId = NewId();
            Record& r = AddObject("Deformer", clusterId, "SubDeformer", name, "Cluster");
            r.children = {
                Rec("Version", {I(100)}),
                Rec("UserData", {S(""), S("")}),
                Rec("Indexes", {Ints(cluster.indexes)}),
                Rec("Weights", {Doubles(cluster.weights)}),
                Rec("Transform", {Doubles({cluster.transform.begin(), cluster.transform.end()})}),
                Rec("TransformLink",
                    {Doubles({cluster.transformLink.begin(), cluster.transformLink.end()})})};
            ConnectOO(clusterId, skinId);
            if (linked)
                ConnectOO(m_NodeIds[cluster.linkNode], clusterId);
        }
    }

    void AddMaterial(std::size_t index) {
        const desc::Material& m = m_Scene.materials[index];
        const bool phong = m.shading == desc::ShadingModel::Phong;
        Record& r = AddObject("Material", m_MaterialIds[index], "Material", m.name, "");
        std::vector<Record> props = {
            P("ShadingModel", "KString", "", "", {S(phong ? "Phong" : "Lambert")}),
            P("EmissiveColor", "Color", "", "A", V3(m.emissive)),
            P("AmbientColor", "Color", "", "A", V3(m.ambient)),
            P("DiffuseColor", "Color", "", "A", V3(m.diffuse)),
            P("TransparencyFactor", "Number", "", "A", {D(m.transparencyFactor)})};
        if (phong) {
            props.push_back(P("SpecularColor", "Color", "", "A", V3(m.specular)));
            props.push_back(P("ShininessExponent", "Number", "", "A", {D(m.shininess)}));
            props.push_back(P("ReflectionColor", "Color", "", "A", V3(m.reflection)));
            props.push_back(P("ReflectionFactor", "Number", "", "A", {D(m.reflectionFactor)}));
            props.push_back(P("Shininess", "double", "Number", "", {D(m.shininess)}));
        }
        props.push_back(P("Opacity", "double", "Number", "", {D(1.0 - m.transparencyFactor)}));
        r.children = {Rec("Version", {I(102)}),
                      Rec("ShadingModel", {S(phong ? "phong" : "lambert")}),
                      Rec("MultiLayer", {I(0)}), Rec("Properties70", {}, std::move(props))};

        std::vector<std::int64_t> textures;
        for (int t : m.diffuseTextures) {
            if (t >= 0 && t < static_cast<int>(m_Scene.textures.size())) {
                textures.push_back(AddTexture(static_cast<std::size_t>(t)));
            }
        }
        if (textures.empty())
            return;
        if (textures.size() == 1 && m.layeredName.empty()) {
            ConnectOP(textures[0], m_MaterialIds[index], "DiffuseColor");
            return;
        }
        std::int64_t layeredId = NewId();
        Record& layered = AddObject("LayeredTexture", layeredId, "LayeredTexture",
                                    m.layeredName.empty() ? m.name + "_layers" : m.layeredName, "");
        std::vector<Value> modes, alphas;
        for (std::size_t i = 0; i < textures.size(); ++i) {
            modes.push_back(I(1));
            alphas.push_back(D(1));
        }
        layered.children = {Rec("LayeredTexture", {I(101)}), Rec("BlendModes", modes),
                            Rec("Alphas", alphas)};
        ConnectOP(layeredId, m_MaterialIds[index], "DiffuseColor");
        for (std::int64_t t : textures)
            ConnectOO(t, layeredId);
    }

    // Writes a texture and its video clip once, however many materials use it.
    std::int64_t AddTexture(std::size_t index) {
        auto known = m_TextureIds.find(index);
        if (known != m_TextureIds.end())
            return known->second;
        const desc::Texture& t = m_Scene.textures[index];
        std::int64_t videoId = NewId();
        Record& video = AddObject("Video", videoId, "Video", t.name, "Clip");
        video.children = {Rec("Type", {S("Clip")}),
                          Rec("Properties70", {},
                              {P("Path", "KString", "XRefUrl", "", {S(t.fileName)}),
                               P("RelPath", "KString", "XRefUrl", "", {S(t.relativeFileName)})}),
                          Rec("UseMipMap", {I(0)}), Rec("Filename", {S(t.fileName)}),
                          Rec("RelativeFilename", {S(t.relativeFileName)})};
        if (!t.content.empty()) {
            video.children.push_back(
                Rec("Content", {Value::MakeText(std::string(t.content.begin(), t.content.end()),
                                                ValueType::Raw)}));
        }
        std::int64_t id = NewId();
        Record& texture = AddObject("Texture", id, "Texture", t.name, "");
        texture.children = {
            Rec("Type", {S("TextureVideoClip")}),
            Rec("Version", {I(202)}),
            Rec("TextureName", {S(Name("Texture", t.name))}),
            Rec("Properties70", {},
                {P("Texture alpha", "Number", "", "A", {D(t.alpha)}),
                 P("TextureAlpha", "Number", "", "A", {D(t.alpha)}),
                 P("Translation", "Vector", "", "A",
                   V3({t.uvTranslation[0], t.uvTranslation[1], 0})),
                 P("Rotation", "Vector", "", "A", V3({0, 0, t.uvRotation})),
                 P("Scaling", "Vector", "", "A", V3({t.uvScaling[0], t.uvScaling[1], 1})),
                 P("UVSwap", "bool", "", "", {I(0)}),
                 P("CurrentTextureBlendMode", "enum", "", "", {I(0)}),
                 P("UVSet", "KString", "", "", {S("map1")}),
                 P("UseMaterial", "bool", "", "", {I(1)})}),
            Rec("Media", {S(Name("Video", t.name))}),
            Rec("FileName", {S(t.fileName)}),
            Rec("RelativeFilename", {S(t.relativeFileName)}),
            Rec("ModelUVTranslation", {D(t.uvTranslation[0]), D(t.uvTranslation[1])}),
            Rec("ModelUVScaling", {D(t.uvScaling[0]), D(t.uvScaling[1])}),
            Rec("Texture_Alpha_Source", {S("None")}),
            Rec("Cropping", {I(0), I(0), I(0), I(0)})};
        ConnectOO(videoId, id);
        m_TextureIds[index] = id;
        return id;
    }

    void AddTake(const desc::Take& take) {
        std::int64_t start, stop;
        TakeSpan(take, start, stop);
        std::int64_t stackId = NewId();
        Record& stack = AddObject("AnimationStack", stackId, "AnimStack", take.name, "");
        stack.children = {Rec("Properties70", {},
                              {P("LocalStart", "KTime", "Time", "", {L(start)}),
                               P("LocalStop", "KTime", "Time", "", {L(stop)}),
                               P("ReferenceStart", "KTime", "Time", "", {L(start)}),
                               P("ReferenceStop", "KTime", "Time", "", {L(stop)})})};
        std::int64_t layerId = NewId();
        // Readers expect every object to open a block, so the layer gets an empty table.
        AddObject("AnimationLayer", layerId, "AnimLayer", "BaseLayer", "")
            .children.push_back(Rec("Properties70"));
        ConnectOO(layerId, stackId);
        for (const desc::NodeAnimation& anim : take.nodes) {
            if (anim.node < 0 || anim.node >= static_cast<int>(m_NodeIds.size()))
                continue;
            const desc::Node& node = m_Scene.nodes[anim.node];
            AddCurveNode("T", "Lcl Translation", anim.translation, node.translation, layerId,
                         m_NodeIds[anim.node]);
            AddCurveNode("R", "Lcl Rotation", anim.rotation, node.rotation, layerId,
                         m_NodeIds[anim.node]);
            AddCurveNode("S", "Lcl Scaling", anim.scaling, node.scaling, layerId,
                         m_NodeIds[anim.node]);
        }
        m_TakeSpans.push_back({start, stop});
    }

    void AddCurveNode(const char* name, const char* property,
                      const std::array<desc::Curve, 3>& curves, const desc::Vec3& defaults,
                      std::int64_t layerId, std::int64_t modelId) {
        if (!HasKeys(curves))
            return;
        static const char* kAxes[3] = {"d|X", "d|Y", "d|Z"};
        std::int64_t id = NewId();
        Record& curveNode = AddObject("AnimationCurveNode", id, "AnimCurveNode", name, "");
        Record props = Rec("Properties70");
        for (int axis = 0; axis < 3; ++axis) {
            props.children.push_back(P(kAxes[axis], "Number", "", "A", {D(defaults[axis])}));
        }
        curveNode.children.push_back(std::move(props));
        ConnectOO(id, layerId);
        ConnectOP(id, modelId, property);
        for (int axis = 0; axis < 3; ++axis) {
            const desc::Curve& c = curves[axis];
            if (c.Empty())
                continue;
            std::int64_t curveId = NewId();
            Record& curve = AddObject("AnimationCurve", curveId, "AnimCurve", "", "");
            const std::size_t n = std::min(c.times.size(), c.values.size());
            std::vector<float> values(n);
            for (std::size_t k = 0; k < n; ++k)
                values[k] = ToFloat(c.values[k]);
            curve.children = {Rec("Default", {D(defaults[axis])}), Rec("KeyVer", {I(4009)}),
                              Rec("KeyTime", {Value::MakeArray(std::vector<std::int64_t>(
                                                 c.times.begin(), c.times.begin() + n))}),
                              Rec("KeyValueFloat", {Value::MakeArray(std::move(values))})};
            if (c.interpolation.empty()) {
                curve.children.push_back(
                    Rec("KeyAttrFlags", {Ints(std::vector<std::int32_t>(n, kLinearKeyFlags))}));
                curve.children.push_back(
                    Rec("KeyAttrDataFloat", {Value::MakeArray(std::vector<float>(n * 4, 0.0f))}));
                curve.children.push_back(
                    Rec("KeyAttrRefCount", {Ints(std::vector<std::int32_t>(n, 1))}));
            } else {
                AddKeyAttributes(curve, KeyShapes(c, n));
            }
            ConnectOP(curveId, id, kAxes[axis]);
        }
    }

    // One attribute (flags and four floats) per run of keys that share them, as the vendor's
    // SDK merges them: right slope, next key's left slope, both tangent weights at their
    // default of one third (packed as two 16-bit ten-thousandths) and no velocity. ASCII
    // files print the floats as the integers that share their bits.
    void AddKeyAttributes(Record& curve, const std::vector<KeyShape>& shapes) const {
        constexpr std::uint32_t kDefaultWeights = 0x0D050D05;  // 3333 and 3333
        std::vector<std::int32_t> flags, counts;
        std::vector<std::uint32_t> bits;
        for (const KeyShape& shape : shapes) {
            const std::int32_t flag = KeyFlags(shape.interp);
            const std::uint32_t data[4] = {FloatBits(ToFloat(shape.rightSlope)),
                                           FloatBits(ToFloat(shape.nextLeftSlope)), kDefaultWeights,
                                           0};
            if (!flags.empty() && flags.back() == flag &&
                std::equal(data, data + 4, bits.end() - 4)) {
                ++counts.back();
                continue;
            }
            flags.push_back(flag);
            counts.push_back(1);
            bits.insert(bits.end(), data, data + 4);
        }
        Value data;
        if (m_Binary) {
            std::vector<float> floats(bits.size());
            if (!bits.empty())
                std::memcpy(floats.data(), bits.data(), bits.size() * sizeof(float));
            data = Value::MakeArray(std::move(floats));
        } else {
            data = Ints(std::vector<std::int32_t>(bits.begin(), bits.end()));
        }
        curve.children.push_back(Rec("KeyAttrFlags", {Ints(std::move(flags))}));
        curve.children.push_back(Rec("KeyAttrDataFloat", {std::move(data)}));
        curve.children.push_back(Rec("KeyAttrRefCount", {Ints(std::move(counts))}));
    }

    static std::int32_t KeyFlags(desc::Interp interp) {
        switch (interp) {
            case desc::Interp::Constant:
                return kConstantKeyFlags;
            case desc::Interp::ConstantNext:
                return kConstantNextKeyFlags;
            case desc::Interp::Cubic:
                return kCubicKeyFlags;
            case desc::Interp::Linear:
                break;
        }
        return kLinearKeyFlags;
    }

    static std::uint32_t FloatBits(float f) {
        std::uint32_t bits;
        std::memcpy(&bits, &f, sizeof bits);
        return bits;
    }

    Record GlobalSettings() const {
        return Rec("GlobalSettings", {},
                   {Rec("Version", {I(1000)}),
                    Rec("Properties70", {},
                        {P("UpAxis", "int", "Integer", "", {I(1)}),
                         P("UpAxisSign", "int", "Integer", "", {I(1)}),
                         P("FrontAxis", "int", "Integer", "", {I(2)}),
                         P("FrontAxisSign", "int", "Integer", "", {I(1)}),
                         P("CoordAxis", "int", "Integer", "", {I(0)}),
                         P("CoordAxisSign", "int", "Integer", "", {I(1)}),
                         P("UnitScaleFactor", "double", "Number", "", {D(1)}),
                         P("TimeMode", "enum", "", "", {I(11)}),
                         P("TimeSpanStart", "KTime", "Time", "", {L(0)}),
                         P("TimeSpanStop", "KTime", "Time", "", {L(desc::kTicksPerSecond)})})});
    }

    Record Documents() {
        std::string active = m_Scene.takes.empty() ? "" : m_Scene.takes[0].name;
        return Rec("Documents", {},
                   {Rec("Count", {I(1)}),
                    Rec("Document", {L(NewId()), S(""), S("Scene")},
                        {Rec("Properties70", {},
                             {P("SourceObject", "object", "", ""),
                              P("ActiveAnimStackName", "KString", "", "", {S(active)})}),
                         Rec("RootNode", {L(0)})})});
    }

    static Record Template(const char* name, std::vector<Record> props) {
        return Rec("PropertyTemplate", {S(name)}, {Rec("Properties70", {}, std::move(props))});
    }

    Record Definitions() const {
        int total = 1;
        for (const auto& entry : m_Counts)
            total += entry.second;
        Record defs = Rec("Definitions", {}, {Rec("Version", {I(100)}), Rec("Count", {I(total)})});
        defs.children.push_back(Rec("ObjectType", {S("GlobalSettings")}, {Rec("Count", {I(1)})}));
        bool anyPhong = false;
        for (const desc::Material& m : m_Scene.materials) {
            anyPhong = anyPhong || m.shading == desc::ShadingModel::Phong;
        }
        const char* order[] = {"AnimationStack", "AnimationLayer", "AnimationCurveNode",
                               "AnimationCurve", "NodeAttribute",  "Geometry",
                               "Material",       "Deformer",       "Texture",
                               "LayeredTexture", "Video",          "Model"};
        for (const char* type : order) {
            auto it = m_Counts.find(type);
            if (it == m_Counts.end())
                continue;
            Record objectType = Rec("ObjectType", {S(type)}, {Rec("Count", {I(it->second)})});
            std::string t = type;
            if (t == "Model") {
                objectType.children.push_back(Template(
                    "FbxNode",
                    {P("RotationOrder", "enum", "", "", {I(0)}),
                     P("InheritType", "enum", "", "", {I(0)}),
                     P("PreRotation", "Vector3D", "Vector", "", V3({0, 0, 0})),
                     P("PostRotation", "Vector3D", "Vector", "", V3({0, 0, 0})),
                     P("RotationActive", "bool", "", "", {I(0)}),
                     P("ScalingMax", "Vector3D", "Vector", "", V3({1, 1, 1})),
                     P("GeometricTranslation", "Vector3D", "Vector", "", V3({0, 0, 0})),
                     P("GeometricRotation", "Vector3D", "Vector", "", V3({0, 0, 0})),
                     P("GeometricScaling", "Vector3D", "Vector", "", V3({1, 1, 1})),
                     P("Show", "bool", "", "", {I(1)}),
                     P("DefaultAttributeIndex", "int", "Integer", "", {I(-1)}),
                     P("Lcl Translation", "Lcl Translation", "", "A", V3({0, 0, 0})),
                     P("Lcl Rotation", "Lcl Rotation", "", "A", V3({0, 0, 0})),
                     P("Lcl Scaling", "Lcl Scaling", "", "A", V3({1, 1, 1})),
                     P("Visibility", "Visibility", "", "A", {D(1)}),
                     P("Visibility Inheritance", "Visibility Inheritance", "", "", {I(1)})}));
            } else if (t == "Geometry") {
                objectType.children.push_back(
                    Template("FbxMesh", {P("Color", "ColorRGB", "Color", "", V3({0.8, 0.8, 0.8})),
                                         P("Primary Visibility", "bool", "", "", {I(1)}),
                                         P("Casts Shadows", "bool", "", "", {I(1)}),
                                         P("Receive Shadows", "bool", "", "", {I(1)})}));
            } else if (t == "Material") {
                std::vector<Record> props = {
                    P("ShadingModel", "KString", "", "", {S(anyPhong ? "Phong" : "Lambert")}),
                    P("EmissiveColor", "Color", "", "A", V3({0, 0, 0})),
                    P("EmissiveFactor", "Number", "", "A", {D(1)}),
                    P("AmbientColor", "Color", "", "A", V3({0.2, 0.2, 0.2})),
                    P("AmbientFactor", "Number", "", "A", {D(1)}),
                    P("DiffuseColor", "Color", "", "A", V3({0.8, 0.8, 0.8})),
                    P("DiffuseFactor", "Number", "", "A", {D(1)}),
                    P("TransparentColor", "Color", "", "A", V3({0, 0, 0})),
                    P("TransparencyFactor", "Number", "", "A", {D(0)})};
                if (anyPhong) {
                    props.push_back(P("SpecularColor", "Color", "", "A", V3({0.2, 0.2, 0.2})));
                    props.push_back(P("SpecularFactor", "Number", "", "A", {D(1)}));
                    props.push_back(P("ShininessExponent", "Number", "", "A", {D(20)}));
                    props.push_back(P("ReflectionColor", "Color", "", "A", V3({0, 0, 0})));
                    props.push_back(P("ReflectionFactor", "Number", "", "A", {D(1)}));
                }
                objectType.children.push_back(
                    Template(anyPhong ? "FbxSurfacePhong" : "FbxSurfaceLambert", std::move(props)));
            } else if (t == "Texture") {
                objectType.children.push_back(
                    Template("FbxFileTexture", {P("Texture alpha", "Number", "", "A", {D(1)}),
                                                P("UVSwap", "bool", "", "", {I(0)}),
                                                P("Translation", "Vector", "", "A", V3({0, 0, 0})),
                                                P("Rotation", "Vector", "", "A", V3({0, 0, 0})),
                                                P("Scaling", "Vector", "", "A", V3({1, 1, 1})),
                                                P("UVSet", "KString", "", "", {S("default")}),
                                                P("UseMaterial", "bool", "", "", {I(0)})}));
            } else if (t == "Video") {
                objectType.children.push_back(
                    Template("FbxVideo", {P("Path", "KString", "XRefUrl", "", {S("")}),
                                          P("RelPath", "KString", "XRefUrl", "", {S("")})}));
            } else if (t == "AnimationStack") {
                objectType.children.push_back(
                    Template("FbxAnimStack", {P("Description", "KString", "", "", {S("")}),
                                              P("LocalStart", "KTime", "Time", "", {L(0)}),
                                              P("LocalStop", "KTime", "Time", "", {L(0)}),
                                              P("ReferenceStart", "KTime", "Time", "", {L(0)}),
                                              P("ReferenceStop", "KTime", "Time", "", {L(0)})}));
            } else if (t == "AnimationLayer") {
                objectType.children.push_back(Template(
                    "FbxAnimLayer",
                    {P("Weight", "Number", "", "A", {D(100)}), P("Mute", "bool", "", "", {I(0)}),
                     P("Solo", "bool", "", "", {I(0)}), P("Lock", "bool", "", "", {I(0)})}));
            } else if (t == "AnimationCurveNode") {
                objectType.children.push_back(
                    Template("FbxAnimCurveNode", {P("d", "Compound", "", "")}));
            }
            defs.children.push_back(std::move(objectType));
        }
        return defs;
    }

    Record Takes() const {
        Record takes = Rec(
            "Takes", {}, {Rec("Current", {S(m_Scene.takes.empty() ? "" : m_Scene.takes[0].name)})});
        for (std::size_t i = 0; i < m_Scene.takes.size(); ++i) {
            const desc::Take& take = m_Scene.takes[i];
            std::string file = take.name;
            for (char& c : file) {
                if (c == ' ')
                    c = '_';
            }
            auto span = m_TakeSpans.at(i);
            takes.children.push_back(Rec("Take", {S(take.name)},
                                         {Rec("FileName", {S(file + ".tak")}),
                                          Rec("LocalTime", {L(span.first), L(span.second)}),
                                          Rec("ReferenceTime", {L(span.first), L(span.second)})}));
        }
        return takes;
    }

    const SceneDescription& m_Scene;
    int m_Version;
    bool m_Binary;
    std::int64_t m_NextId = 1000000001;
    std::vector<std::int64_t> m_NodeIds;
    std::vector<std::int64_t> m_MaterialIds;
    std::map<std::size_t, std::int64_t> m_TextureIds;
    std::vector<std::pair<std::int64_t, std::int64_t>> m_TakeSpans;
    std::map<std::string, int> m_Counts;
    std::vector<Record> m_Objects;
    std::vector<Record> m_Connections;
};

}  // namespace

Document Build7500(const SceneDescription& scene, int version, bool binary) {
    return Builder7500(scene, version, binary).Build();
}

}  // namespace fbx::layout
