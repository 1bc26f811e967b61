// The pre-7000 layout: objects named by string, mesh geometry inside its Model record,
// Properties60, "Connect" connections, and animation as channel trees in the Takes section.
#include <algorithm>

#include "fbx/format/Encode.h"
#include "fbx/write/WriterLayout.h"

namespace fbx::layout {

namespace {

Record Property(std::string name, std::string type, std::string flags,
                std::vector<Value> values = {}) {
    std::vector<Value> all = {S(std::move(name)), S(std::move(type)), S(std::move(flags))};
    all.insert(all.end(), values.begin(), values.end());
    return Rec("Property", std::move(all));
}

std::vector<Value> V3(const desc::Vec3& v) {
    return {D(v[0]), D(v[1]), D(v[2])};
}

class Builder6100 {
public:
    Builder6100(const SceneDescription& scene, int version, bool binary)
        : m_Scene(scene), m_Version(version), m_Binary(binary) {}

    Document Build() {
        NameObjects();
        BuildObjects();
        Document doc = StartDocument(m_Scene, m_Version, m_Binary);
        Record& root = doc.root;
        root.children.push_back(Rec("Document", {}, {Rec("Name", {S("")})}));
        root.children.push_back(Rec("References"));
        root.children.push_back(Definitions());
        root.children.push_back(Rec("Objects", {}, std::move(m_Objects)));
        root.children.push_back(Rec("Connections", {}, std::move(m_Connections)));
        root.children.push_back(Takes());
        root.children.push_back(Version5());
        return doc;
    }

private:
    std::string Name(const char* objectClass, const std::string& name) const {
        return ObjectName(objectClass, name, m_Binary);
    }

    // Objects are referred to by name here, so names must be unique within their class.
    void NameObjects() {
        for (const desc::Node& node : m_Scene.nodes) {
            m_NodeNames.push_back(Name("Model", m_Names.Take("Model", node.name)));
        }
        for (const desc::Material& m : m_Scene.materials) {
            m_MaterialNames.push_back(Name("Material", m_Names.Take("Material", m.name)));
        }
        for (const desc::Texture& t : m_Scene.textures) {
            std::string unique = m_Names.Take("Texture", t.name);
            m_TextureNames.push_back(Name("Texture", unique));
            m_VideoNames.push_back(Name("Video", unique));
        }
    }

    void Connect(const std::string& child, const std::string& parent) {
        m_Connections.push_back(Rec("Connect", {S("OO"), S(child), S(parent)}));
    }
    void ConnectProperty(const std::string& child, const std::string& parent,
                         const std::string& property) {
        m_Connections.push_back(Rec("Connect", {S("OP"), S(child), S(parent), S(property)}));
    }

    void BuildObjects() {
        std::vector<int> parents = CheckedParents(m_Scene);
        const std::string sceneRoot = Name("Model", "Scene");
        // The node tree first, as the vendor's files list it.
        for (std::size_t i = 0; i < m_Scene.nodes.size(); ++i) {
            Connect(m_NodeNames[i], parents[i] >= 0 ? m_NodeNames[parents[i]] : sceneRoot);
        }
        for (std::size_t i = 0; i < m_Scene.nodes.size(); ++i) {
            const desc::Node& node = m_Scene.nodes[i];
            m_Objects.push_back(ModelRecord(node, m_NodeNames[i]));
            ++m_Counts["Model"];
            if (node.type == desc::NodeType::Mesh && !node.skin.clusters.empty()) {
                AddSkin(node, m_NodeNames[i]);
            }
            for (int m : node.materials) {
                if (m >= 0 && m < static_cast<int>(m_MaterialNames.size())) {
                    Connect(m_MaterialNames[m], m_NodeNames[i]);
                }
            }
        }
        for (std::size_t i = 0; i < m_Scene.materials.size(); ++i)
            AddMaterial(i);
        m_Objects.push_back(GlobalSettings());
    }

    static std::vector<Record> NodeProperties(const desc::Node& node) {
        std::vector<Record> props;
        for (NodeProperty& p : layout::NodeProperties(node))
            props.push_back(Property(p.name, p.type, p.flags, std::move(p.values)));
        props.push_back(Property("Visibility", "Visibility", "A", {D(1)}));
        return props;
    }

    Record ModelRecord(const desc::Node& node, const std::string& name) {
        Record model = Rec("Model", {S(name), S(ModelKind(node.type))});
        model.children = {Rec("Version", {I(232)}),
                          Rec("Properties60", {}, NodeProperties(node)),
                          Rec("MultiLayer", {I(0)}),
                          Rec("MultiTake", {I(0)}),
                          Rec("Shading", {W(node.type == desc::NodeType::Mesh ? "T" : "Y")}),
                          Rec("Culling", {S("CullingOff")})};
        if (node.type == desc::NodeType::Mesh) {
            for (Record& r : MeshRecords(node.mesh, 101))
                model.children.push_back(std::move(r));
        } else {
            model.children.push_back(Rec("TypeFlags", {S(TypeFlags(node.type))}));
            if (node.type == desc::NodeType::Camera || node.type == desc::NodeType::Light) {
                model.children.push_back(Rec("GeometryVersion", {I(124)}));
            }
        }
        return model;
    }

    void AddSkin(const desc::Node& node, const std::string& modelName) {
        const std::string skinName =
            Name("Deformer", m_Names.Take("Deformer", "Skin " + node.name));
        m_Objects.push_back(Rec(
            "Deformer", {S(skinName), S("Skin")},
            {Rec("Version", {I(100)}), Rec("Properties60"), Rec("Link_DeformAcuracy", {D(50)})}));
        ++m_Counts["Deformer"];
        Connect(skinName, modelName);
        for (const desc::Cluster& cluster : node.skin.clusters) {
            const bool linked =
                cluster.linkNode >= 0 && cluster.linkNode < static_cast<int>(m_NodeNames.size());
            std::string bone = linked ? m_Scene.nodes[cluster.linkNode].name : std::string();
            const std::string clusterName =
                Name("SubDeformer", m_Names.Take("SubDeformer", "Cluster " + bone));
            m_Objects.push_back(Rec(
                "Deformer", {S(clusterName), S("Cluster")},
                {Rec("Version", {I(100)}),
                 Rec("Properties60", {}, {Property("SrcModelReference", "object", "")}),
                 Rec("UserData", {S(""), S("")}), Rec("Indexes", {Ints(cluster.indexes)}),
                 Rec("Weights", {Doubles(cluster.weights)}),
                 Rec("Transform", {Doubles({cluster.transform.begin(), cluster.transform.end()})}),
                 Rec("TransformLink",
                     {Doubles({cluster.transformLink.begin(), cluster.transformLink.end()})})}));
            ++m_Counts["Deformer"];
            Connect(clusterName, skinName);
            if (linked)
                Connect(m_NodeNames[cluster.linkNode], clusterName);
        }
    }

    void AddMaterial(std::size_t index) {
        const desc::Material& m = m_Scene.materials[index];
        const bool phong = m.shading == desc::ShadingModel::Phong;
        std::vector<Record> props = {
            Property("ShadingModel", "KString", "", {S(phong ? "Phong" : "Lambert")}),
            Property("MultiLayer", "bool", "", {I(0)}),
            Property("EmissiveColor", "ColorRGB", "A", V3(m.emissive)),
            Property("EmissiveFactor", "double", "A", {D(1)}),
            Property("AmbientColor", "ColorRGB", "A", V3(m.ambient)),
            Property("AmbientFactor", "double", "A", {D(1)}),
            Property("DiffuseColor", "ColorRGB", "A", V3(m.diffuse)),
            Property("DiffuseFactor", "double", "A", {D(1)}),
            Property("TransparencyFactor", "double", "A", {D(m.transparencyFactor)})};
        if (phong) {
            props.push_back(Property("SpecularColor", "ColorRGB", "A", V3(m.specular)));
            props.push_back(Property("SpecularFactor", "double", "A", {D(1)}));
            props.push_back(Property("ShininessExponent", "double", "A", {D(m.shininess)}));
            props.push_back(Property("ReflectionColor", "ColorRGB", "A", V3(m.reflection)));
            props.push_back(Property("ReflectionFactor", "double", "A", {D(m.reflectionFactor)}));
            props.push_back(Property("Shininess", "double", "", {D(m.shininess)}));
        }
        props.push_back(Property("Opacity", "double", "", {D(1.0 - m.transparencyFactor)}));
        m_Objects.push_back(
            Rec("Material", {S(m_MaterialNames[index]), S("")},
                {Rec("Version", {I(102)}), Rec("ShadingModel", {S(phong ? "phong" : "lambert")}),
                 Rec("MultiLayer", {I(0)}), Rec("Properties60", {}, props)}));
        ++m_Counts["Material"];

        std::vector<std::string> textures;
        for (int t : m.diffuseTextures) {
            if (t >= 0 && t < static_cast<int>(m_Scene.textures.size())) {
                textures.push_back(AddTexture(static_cast<std::size_t>(t)));
            }
        }
        if (textures.empty())
            return;
        if (textures.size() == 1 && m.layeredName.empty()) {
            ConnectProperty(textures[0], m_MaterialNames[index], "DiffuseColor");
            return;
        }
        const std::string layeredName =
            Name("LayeredTexture",
                 m_Names.Take("LayeredTexture",
                              m.layeredName.empty() ? m.name + "_layers" : m.layeredName));
        std::vector<Value> modes;
        for (std::size_t i = 0; i < textures.size(); ++i)
            modes.push_back(I(1));
        m_Objects.push_back(Rec("LayeredTexture", {S(layeredName), S("")},
                                {Rec("LayeredTexture", {I(100)}),
                                 Rec("Properties60", {},
                                     {Property("TextureTypeUse", "enum", "", {I(0)}),
                                      Property("Texture alpha", "Number", "A", {D(1)})}),
                                 Rec("BlendModes", modes)}));
        ++m_Counts["LayeredTexture"];
        ConnectProperty(layeredName, m_MaterialNames[index], "DiffuseColor");
        for (const std::string& t : textures)
            Connect(t, layeredName);
    }

    // Writes a texture and its video clip once, however many materials use it.
    std::string AddTexture(std::size_t index) {
        if (std::find(m_TexturesWritten.begin(), m_TexturesWritten.end(), index) !=
            m_TexturesWritten.end()) {
            return m_TextureNames[index];
        }
        m_TexturesWritten.push_back(index);
        const desc::Texture& t = m_Scene.textures[index];
        Record video = Rec("Video", {S(m_VideoNames[index]), S("Clip")},
                           {Rec("Type", {S("Clip")}),
                            Rec("Properties60", {},
                                {Property("Path", "KString", "", {S(t.fileName)}),
                                 Property("RelPath", "KString", "", {S(t.relativeFileName)})}),
                            Rec("UseMipMap", {I(0)}), Rec("Filename", {S(t.fileName)}),
                            Rec("RelativeFilename", {S(t.relativeFileName)})});
        if (!t.content.empty()) {
            video.children.push_back(
                Rec("Content", {Value::MakeText(std::string(t.content.begin(), t.content.end()),
                                                ValueType::Raw)}));
        }
        m_Objects.push_back(std::move(video));
        ++m_Counts["Video"];
        m_Objects.push_back(Rec(
            "Texture", {S(m_TextureNames[index]), S("")},
            {Rec("Type", {S("TextureVideoClip")}), Rec("Version", {I(202)}),
             Rec("TextureName", {S(m_TextureNames[index])}),
             Rec("Properties60", {},
                 {Property("TextureTypeUse", "enum", "", {I(0)}),
                  Property("Texture alpha", "Number", "A", {D(t.alpha)}),
                  Property("UVSwap", "bool", "", {I(0)}),
                  Property("Translation", "Vector", "A",
                           V3({t.uvTranslation[0], t.uvTranslation[1], 0})),
                  Property("Rotation", "Vector", "A", V3({0, 0, t.uvRotation})),
                  Property("Scaling", "Vector", "A", V3({t.uvScaling[0], t.uvScaling[1], 1})),
                  Property("UVSet", "KString", "", {S("map1")}),
                  Property("UseMaterial", "bool", "", {I(1)})}),
             Rec("Media", {S(m_VideoNames[index])}), Rec("FileName", {S(t.fileName)}),
             Rec("RelativeFilename", {S(t.relativeFileName)}),
             Rec("ModelUVTranslation", {D(t.uvTranslation[0]), D(t.uvTranslation[1])}),
             Rec("ModelUVScaling", {D(t.uvScaling[0]), D(t.uvScaling[1])}),
             Rec("Texture_Alpha_Source", {S("None")}), Rec("Cropping", {I(0), I(0), I(0), I(0)})}));
        ++m_Counts["Texture"];
        Connect(m_VideoNames[index], m_TextureNames[index]);
        return m_TextureNames[index];
    }

    Record GlobalSettings() const {
        return Rec(
            "GlobalSettings", {},
            {Rec("Version", {I(1000)}),
             Rec("Properties60", {},
                 {Property("UpAxis", "int", "", {I(1)}), Property("UpAxisSign", "int", "", {I(1)}),
                  Property("FrontAxis", "int", "", {I(2)}),
                  Property("FrontAxisSign", "int", "", {I(1)}),
                  Property("CoordAxis", "int", "", {I(0)}),
                  Property("CoordAxisSign", "int", "", {I(1)}),
                  Property("UnitScaleFactor", "double", "", {D(1)}),
                  Property("TimeMode", "enum", "", {I(11)})})});
    }

    Record Definitions() const {
        int total = 1;
        for (const auto& entry : m_Counts)
            total += entry.second;
        Record defs = Rec("Definitions", {}, {Rec("Version", {I(100)}), Rec("Count", {I(total)})});
        for (const char* type :
             {"Model", "Material", "Deformer", "Texture", "Video", "LayeredTexture"}) {
            auto it = m_Counts.find(type);
            if (it == m_Counts.end())
                continue;
            defs.children.push_back(Rec("ObjectType", {S(type)}, {Rec("Count", {I(it->second)})}));
        }
        defs.children.push_back(Rec("ObjectType", {S("GlobalSettings")}, {Rec("Count", {I(1)})}));
        return defs;
    }

    // One axis channel: its default, then the keys as time, value and interpolation letter
    // with what follows it at KeyVer 4005: 'L' (linear) nothing, 'C' (constant) 's' to hold
    // the key's value or 'n' to take the next one's, 'U' (cubic) 's' with the right and next
    // left slopes and 'n' for unweighted tangents.
    static Record AxisChannel(const char* axis, const desc::Curve& curve, double fallback) {
        Record channel = Rec("Channel", {S(axis)});
        const std::size_t n = std::min(curve.times.size(), curve.values.size());
        channel.children.push_back(Rec("Default", {D(n ? curve.values[0] : fallback)}));
        if (n > 0) {
            channel.children.push_back(Rec("KeyVer", {I(4005)}));
            channel.children.push_back(Rec("KeyCount", {I(static_cast<std::int64_t>(n))}));
            std::vector<KeyShape> shapes(n);  // all linear when the curve names none
            if (!curve.interpolation.empty())
                shapes = KeyShapes(curve, n);
            std::vector<Value> keys;
            keys.reserve(n * 3);
            for (std::size_t k = 0; k < n; ++k) {
                keys.push_back(L(curve.times[k]));
                keys.push_back(D(curve.values[k]));
                switch (shapes[k].interp) {
                    case desc::Interp::Constant:
                    case desc::Interp::ConstantNext:
                        keys.push_back(W("C"));
                        keys.push_back(W(shapes[k].interp == desc::Interp::Constant ? "s" : "n"));
                        break;
                    case desc::Interp::Cubic:
                        keys.insert(keys.end(), {W("U"), W("s"), D(shapes[k].rightSlope),
                                                 D(shapes[k].nextLeftSlope), W("n")});
                        break;
                    case desc::Interp::Linear:
                        keys.push_back(W("L"));
                        break;
                }
            }
            channel.children.push_back(Rec("Key", std::move(keys)));
        }
        channel.children.push_back(Rec("Color", {D(1), D(1), D(1)}));
        return channel;
    }

    static Record TransformChannel(const char* name, const std::array<desc::Curve, 3>& curves,
                                   const desc::Vec3& defaults, int layerType) {
        Record channel = Rec("Channel", {S(name)});
        const char* axes[3] = {"X", "Y", "Z"};
        for (int a = 0; a < 3; ++a) {
            channel.children.push_back(AxisChannel(axes[a], curves[a], defaults[a]));
        }
        channel.children.push_back(Rec("LayerType", {I(layerType)}));
        return channel;
    }

    Record Takes() const {
        Record takes = Rec(
            "Takes", {}, {Rec("Current", {S(m_Scene.takes.empty() ? "" : m_Scene.takes[0].name)})});
        for (const desc::Take& take : m_Scene.takes) {
            std::int64_t start, stop;
            TakeSpan(take, start, stop);
            std::string file = take.name;
            for (char& c : file) {
                if (c == ' ')
                    c = '_';
            }
            Record r =
                Rec("Take", {S(take.name)},
                    {Rec("FileName", {S(file + ".tak")}), Rec("LocalTime", {L(start), L(stop)}),
                     Rec("ReferenceTime", {L(start), L(stop)})});
            for (const desc::NodeAnimation& anim : take.nodes) {
                if (anim.node < 0 || anim.node >= static_cast<int>(m_NodeNames.size()))
                    continue;
                const desc::Node& node = m_Scene.nodes[anim.node];
                Record transform =
                    Rec("Channel", {S("Transform")},
                        {TransformChannel("T", anim.translation, node.translation, 1),
                         TransformChannel("R", anim.rotation, node.rotation, 2),
                         TransformChannel("S", anim.scaling, node.scaling, 3)});
                r.children.push_back(Rec("Model", {S(m_NodeNames[anim.node])},
                                         {Rec("Version", {D(1.1)}), std::move(transform)}));
            }
            takes.children.push_back(std::move(r));
        }
        return takes;
    }

    static Record Version5() {
        return Rec(
            "Version5", {},
            {Rec("AmbientRenderSettings", {},
                 {Rec("Version", {I(101)}), Rec("AmbientLightColor", {D(0), D(0), D(0), D(1)})}),
             Rec("Settings", {},
                 {Rec("FrameRate", {S("24")}), Rec("TimeFormat", {I(1)}),
                  Rec("SnapOnFrames", {I(0)}), Rec("ReferenceTimeIndex", {I(-1)})}),
             Rec("RendererSetting", {},
                 {Rec("DefaultCamera", {S("Producer Perspective")}),
                  Rec("DefaultViewingMode", {I(0)})})});
    }

    const SceneDescription& m_Scene;
    int m_Version;
    bool m_Binary;
    UniqueNames m_Names;
    std::vector<std::string> m_NodeNames, m_MaterialNames, m_TextureNames, m_VideoNames;
    std::vector<std::size_t> m_TexturesWritten;
    std::map<std::string, int> m_Counts;
    std::vector<Record> m_Objects;
    std::vector<Record> m_Connections;
};

}  // namespace

Document Build6100(const SceneDescription& scene, int version, bool binary) {
    return Builder6100(scene, version, binary).Build();
}

}  // namespace fbx::layout
