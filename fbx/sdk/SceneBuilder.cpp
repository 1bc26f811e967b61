#include "fbx/sdk/SceneBuilder.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "fbx/sdk/Material.h"
#include "fbx/sdk/Mesh.h"
#include "fbx/sdk/SceneNode.h"
#include "fbx/sdk/TakeDescriber.h"
#include "fbx/sdk/Video.h"

namespace fbx {

namespace {

// Deeper node chains than this are cut off: nobody models that deep, and callers walk the
// tree recursively.
constexpr int kMaxNodeDepth = 1000;
// Layers beyond this number are ignored.
constexpr std::int64_t kMaxLayers = 64;

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

KFbxNodeAttribute::EAttributeType AttributeType(const std::string& subclass) {
    using A = KFbxNodeAttribute;
    static const std::map<std::string, A::EAttributeType> kTypes = {
        {"null", A::eNULL},
        {"marker", A::eMARKER},
        {"limb", A::eSKELETON},
        {"limbnode", A::eSKELETON},
        {"root", A::eSKELETON},
        {"skeleton", A::eSKELETON},
        {"mesh", A::eMESH},
        {"nurb", A::eNURB},
        {"nurbs", A::eNURB},
        {"patch", A::ePATCH},
        {"camera", A::eCAMERA},
        {"camerastereo", A::eCAMERA},
        {"cameraswitcher", A::eCAMERA_SWITCHER},
        {"light", A::eLIGHT},
        {"opticalreference", A::eOPTICAL_REFERENCE},
        {"opticalmarker", A::eOPTICAL_MARKER},
        {"constraint", A::eCONSTRAINT},
        {"nurbscurve", A::eNURBS_CURVE},
        {"trimnurbssurface", A::eTRIM_NURBS_SURFACE},
        {"boundary", A::eBOUNDARY},
        {"nurbssurface", A::eNURBS_SURFACE},
        {"shape", A::eSHAPE},
        {"lodgroup", A::eLODGROUP},
        {"subdiv", A::eSUBDIV},
        {"line", A::eLINE},
    };
    auto it = kTypes.find(Lower(subclass));
    return it == kTypes.end() ? A::eUNIDENTIFIED : it->second;
}

KFbxLayerElement::EMappingMode Mapping(const std::string& text) {
    if (text == "ByVertice" || text == "ByVertex" || text == "ByControlPoint") {
        return KFbxLayerElement::eBY_CONTROL_POINT;
    }
    if (text == "ByPolygonVertex")
        return KFbxLayerElement::eBY_POLYGON_VERTEX;
    if (text == "ByPolygon")
        return KFbxLayerElement::eBY_POLYGON;
    if (text == "ByEdge")
        return KFbxLayerElement::eBY_EDGE;
    if (text == "AllSame")
        return KFbxLayerElement::eALL_SAME;
    return KFbxLayerElement::eNONE;
}

KFbxLayerElement::EReferenceMode Reference(const std::string& text) {
    if (text == "IndexToDirect")
        return KFbxLayerElement::eINDEX_TO_DIRECT;
    if (text == "Index")
        return KFbxLayerElement::eINDEX;
    return KFbxLayerElement::eDIRECT;
}

EFbxType PropertyType(const PropertyValue& p) {
    const std::string t = Lower(p.type);
    if (t == "bool")
        return eBOOL1;
    if (t == "int" || t == "integer" || t == "enum")
        return eINTEGER1;
    if (t == "kstring" || t == "datetime" || t == "url" || t == "xrefurl")
        return eSTRING;
    if (t == "object" || t == "compound")
        return eREFERENCE;
    if (p.numbers.size() >= 4)
        return eDOUBLE4;
    if (p.numbers.size() == 3)
        return eDOUBLE3;
    if (p.numbers.size() == 1)
        return eDOUBLE1;
    return p.text.empty() ? eUNIDENTIFIED : eSTRING;
}

std::vector<double> ChildDoubles(const Record* record, const char* name) {
    const Record* child = record ? record->Child(name) : nullptr;
    return child ? child->Doubles() : std::vector<double>();
}

std::vector<std::int64_t> ChildInts(const Record* record, const char* name) {
    const Record* child = record ? record->Child(name) : nullptr;
    return child ? child->Ints() : std::vector<std::int64_t>();
}

int ToInt(std::int64_t v) {
    if (v < INT32_MIN || v > INT32_MAX)
        return -1;
    return static_cast<int>(v);
}

// The numbers of a child record as one contiguous run. Geometry is almost always one float64
// array, which is then read in place; anything else is flattened into storage first.
struct DoubleRun {
    const double* data = nullptr;
    std::size_t size = 0;
    double operator[](std::size_t i) const { return data[i]; }
};

DoubleRun ChildDoubleRun(const Record* record, const char* name, std::vector<double>& storage) {
    const Record* child = record ? record->Child(name) : nullptr;
    if (!child)
        return {};
    if (child->values.size() == 1) {
        const Value& value = child->values.front();
        if (const double* data = value.Float64s())
            return {data, value.Count()};
    }
    storage = child->Doubles();
    return {storage.data(), storage.size()};
}

std::size_t ChildNumberCount(const Record* record, const char* name) {
    const Record* child = record ? record->Child(name) : nullptr;
    return child ? child->NumberCount() : 0;
}

// Calls fn with each of a child's numbers as a 64-bit integer, in order, reading a lone
// int32 array in place.
template <class Fn>
void ForEachChildInt(const Record* record, const char* name, Fn&& fn) {
    const Record* child = record ? record->Child(name) : nullptr;
    if (!child)
        return;
    if (child->values.size() == 1) {
        const Value& value = child->values.front();
        if (const std::int32_t* data = value.Int32s()) {
            for (std::size_t i = 0, n = value.Count(); i < n; ++i)
                fn(static_cast<std::int64_t>(data[i]));
            return;
        }
    }
    for (std::int64_t v : child->Ints())
        fn(v);
}

// A child's numbers as ints (out-of-range values become -1), appended to out.
void AppendChildInts(const Record* record, const char* name, std::vector<int>& out) {
    const Record* child = record ? record->Child(name) : nullptr;
    if (!child)
        return;
    if (child->values.size() == 1) {
        const Value& value = child->values.front();
        if (const std::int32_t* data = value.Int32s()) {
            out.insert(out.end(), data, data + value.Count());
            return;
        }
    }
    const std::vector<std::int64_t> values = child->Ints();
    out.reserve(out.size() + values.size());
    for (std::int64_t v : values)
        out.push_back(ToInt(v));
}

// How many numbers make one vector of a layer element: 3, or 4 when the file evidently
// writes a w component.
std::size_t VectorWidth(std::size_t count, std::size_t expected) {
    if (expected > 0 && count == expected * 4 && count != expected * 3)
        return 4;
    if (count % 3 != 0 && count % 4 == 0)
        return 4;
    return 3;
}

KFbxXMatrix Matrix(const Record* cluster, const char* name) {
    KFbxXMatrix m;
    std::vector<double> v = ChildDoubles(cluster, name);
    if (v.size() >= 16) {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                m.m[r][c] = v[static_cast<std::size_t>(r * 4 + c)];
    }
    return m;
}

struct DefaultProperty {
    const char* name;
    EFbxType type;
    std::vector<double> numbers;
};

// Values the format assumes for material properties that neither the file nor its templates
// give.
const std::vector<DefaultProperty>& MaterialDefaults(bool phong) {
    static const std::vector<DefaultProperty> kLambert = {
        {"EmissiveColor", eDOUBLE3, {0, 0, 0}},      {"EmissiveFactor", eDOUBLE1, {1}},
        {"AmbientColor", eDOUBLE3, {0.2, 0.2, 0.2}}, {"AmbientFactor", eDOUBLE1, {1}},
        {"DiffuseColor", eDOUBLE3, {0.8, 0.8, 0.8}}, {"DiffuseFactor", eDOUBLE1, {1}},
        {"TransparentColor", eDOUBLE3, {0, 0, 0}},   {"TransparencyFactor", eDOUBLE1, {0}},
    };
    static const std::vector<DefaultProperty> kPhong = [] {
        std::vector<DefaultProperty> all = kLambert;
        all.push_back({"SpecularColor", eDOUBLE3, {0.2, 0.2, 0.2}});
        all.push_back({"SpecularFactor", eDOUBLE1, {1}});
        all.push_back({"ShininessExponent", eDOUBLE1, {20}});
        all.push_back({"ReflectionColor", eDOUBLE3, {0, 0, 0}});
        all.push_back({"ReflectionFactor", eDOUBLE1, {1}});
        return all;
    }();
    return phong ? kPhong : kLambert;
}

const char* const kTransformProperties[3] = {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"};
const char* const kCurveChannels[3] = {"d|X", "d|Y", "d|Z"};

// The shading model a material's record names, else the one its properties give.
std::string ShadingModel(const ObjectGraph& graph, std::size_t material) {
    const Record* record = graph.At(material).record;
    std::string shading = record ? record->ChildText("ShadingModel") : "";
    if (shading.empty()) {
        if (const PropertyValue* p = graph.FindProperty(material, "ShadingModel"))
            shading = p->text;
    }
    return shading;
}

// Which of a node's take slots an animation stack fills: 0 is "Default", the file's takes
// follow in scene order; none for a stack that is not one of the scene's takes.
std::optional<std::size_t> TakeSlot(const std::vector<std::string>& takes,
                                    const std::string& stack) {
    if (stack == "Default")
        return 0;
    auto it = std::find(takes.begin(), takes.end(), stack);
    if (it == takes.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - takes.begin()) + 1;
}

// 0, 1, 2 for the translation, rotation and scaling properties of a node; -1 for others.
int TransformGroup(const std::string& property) {
    for (int g = 0; g < 3; ++g) {
        if (property == kTransformProperties[g])
            return g;
    }
    return -1;
}

// The u, v pairs of a UV element's "UV" record.
std::vector<KFbxVector2> UVPairs(const Record& element) {
    std::vector<double> storage;
    const DoubleRun v = ChildDoubleRun(&element, "UV", storage);
    std::vector<KFbxVector2> pairs;
    pairs.reserve(v.size / 2);
    for (std::size_t i = 0; i + 1 < v.size; i += 2)
        pairs.emplace_back(v[i], v[i + 1]);
    return pairs;
}

// The red, green, blue, alpha quadruples of a colour element's "Colors" record.
std::vector<KFbxColor> Colours(const Record& element) {
    const std::vector<double> v = ChildDoubles(&element, "Colors");
    std::vector<KFbxColor> colours;
    colours.reserve(v.size() / 4);
    for (std::size_t i = 0; i + 3 < v.size(); i += 4)
        colours.emplace_back(v[i], v[i + 1], v[i + 2], v[i + 3]);
    return colours;
}

// How a texture element's textures blend, by the name its record gives; translucent when the
// name is not one of the others.
KFbxLayerElementTexture::EBlendMode TextureBlendMode(const std::string& text) {
    if (text == "Add")
        return KFbxLayerElementTexture::eADD;
    if (text == "Modulate")
        return KFbxLayerElementTexture::eMODULATE;
    if (text == "Modulate2")
        return KFbxLayerElementTexture::eMODULATE2;
    return KFbxLayerElementTexture::eTRANSLUCENT;
}

// A layer takes one element of each kind: the first one given for its slot.
template <class Element>
void PlaceOnce(Element*& slot, KFbxLayerElement* element) {
    if (!slot)
        slot = static_cast<Element*>(element);
}

// Puts an element into its slot of a layer.
using PlaceElement = void (*)(KFbxLayer& layer, KFbxLayerElement* element);

// A layer element and where a layer takes it.
struct PlacedElement {
    KFbxLayerElement* element;
    PlaceElement place;
};

// The layer elements of a geometry, by record name and index.
using ElementsByName = std::map<std::pair<std::string, std::int64_t>, PlacedElement>;
// Layer number -> the elements that layer holds, in order.
using LayerContents = std::map<std::int64_t, std::vector<PlacedElement>>;

// Which elements each layer holds: as the geometry's Layer records list them (each entry a
// Type and TypedIndex), or, in files without Layer records, by each element's own index.
LayerContents ListLayerContents(const Record& geometry, const ElementsByName& elements) {
    LayerContents layers;
    bool listed = false;
    for (const Record* layer : geometry.Children("Layer")) {
        std::int64_t number = layer->IntAt(0, 0);
        if (number < 0 || number >= kMaxLayers)
            continue;
        listed = true;
        layers[number];
        for (const Record* entry : layer->Children("LayerElement")) {
            auto it = elements.find({entry->ChildText("Type"), entry->ChildInt("TypedIndex", 0)});
            if (it != elements.end())
                layers[number].push_back(it->second);
        }
    }
    if (!listed) {
        for (const auto& [key, element] : elements) {
            if (key.second >= 0 && key.second < kMaxLayers)
                layers[key.second].push_back(element);
        }
    }
    return layers;
}

}  // namespace

void SceneBuilder::Build(const ObjectGraph& graph, KFbxScene& scene, const BuildOptions& options) {
    SceneBuilder builder(graph, scene, options);
    builder.ReadTakes();
    builder.BuildNodes();
    builder.ShareVideoContent();
    if (options.animation)
        builder.BuildAnimation();
}

// Maya embeds each image file once: a clip of a file already embedded by another clip is
// left empty. Such a clip shows the other's content.
void SceneBuilder::ShareVideoContent() {
    std::map<std::string, std::shared_ptr<const std::vector<std::uint8_t>>> byFile;
    std::vector<KFbxVideo*> empty;
    for (KFbxObject* object : m_Built) {
        auto* video = KFbxCast<KFbxVideo>(object);
        if (!video || video->m_FileName.empty())
            continue;
        if (video->m_Content)
            byFile.emplace(video->m_FileName, video->m_Content);
        else
            empty.push_back(video);
    }
    for (KFbxVideo* video : empty) {
        auto found = byFile.find(video->m_FileName);
        if (found != byFile.end())
            video->m_Content = found->second;
    }
}

SceneBuilder::SceneBuilder(const ObjectGraph& graph, KFbxScene& scene, const BuildOptions& options)
    : m_Graph(graph),
      m_Scene(scene),
      m_Options(options),
      m_Built(graph.Objects().size(), nullptr) {}

// Each take name once, with the take of the first stack of that name.
void SceneBuilder::ReadTakes() {
    TakeDescriber describer(m_Graph);
    auto& names = m_Scene.m_TakeNames;
    for (std::size_t i = 0; i < m_Graph.Objects().size(); ++i) {
        const Object& o = m_Graph.At(i);
        if (o.kind != "AnimationStack" || o.name == "Default")
            continue;
        if (std::find(names.begin(), names.end(), o.name) == names.end()) {
            names.push_back(o.name);
            m_Scene.m_TakeInfos.push_back(describer.Describe(i));
        }
    }
}

void SceneBuilder::BuildNodes() {
    KFbxNode* root = m_Scene.GetRootNode();
    m_Built[m_Graph.Root()] = root;
    root->m_TakeNames.insert(root->m_TakeNames.end(), m_Scene.m_TakeNames.begin(),
                             m_Scene.m_TakeNames.end());
    root->m_Curves.resize(root->m_TakeNames.size());

    // Breadth first from the root; a node reached twice keeps its first parent, so loops in
    // the connections cannot make cycles in the tree.
    std::deque<std::pair<std::size_t, int>> pending{{m_Graph.Root(), 0}};
    std::vector<std::pair<std::size_t, KFbxNode*>> order;
    while (!pending.empty()) {
        auto [parentIndex, depth] = pending.front();
        pending.pop_front();
        if (depth >= kMaxNodeDepth)
            continue;
        KFbxNode* parent = static_cast<KFbxNode*>(m_Built[parentIndex]);
        for (std::size_t child : m_Graph.Sources(parentIndex, "Model")) {
            if (m_Built[child])
                continue;
            const Object& object = m_Graph.At(child);
            KFbxNode* node =
                m_Scene.Own(new KFbxNode(m_Scene.GetFbxSdkManager(), object.name.c_str()));
            node->m_NamePrefix = "Model";
            m_Built[child] = node;
            m_Scene.m_Nodes.push_back(node);
            node->m_Parent = parent;
            parent->m_Children.push_back(node);
            parent->m_Sources.push_back(node);

            for (int i = 0; i < 3; ++i) {
                if (const PropertyValue* p = m_Graph.FindProperty(child, kTransformProperties[i])) {
                    KFbxPropertyData& data = node->AddProperty(kTransformProperties[i], eDOUBLE3);
                    for (std::size_t k = 0; k < 3 && k < p->numbers.size(); ++k) {
                        data.numbers[k] = p->numbers[k];
                    }
                }
            }
            ReadNodeProperties(child, *node);
            node->m_TakeNames.insert(node->m_TakeNames.end(), m_Scene.m_TakeNames.begin(),
                                     m_Scene.m_TakeNames.end());
            node->m_Curves.resize(node->m_TakeNames.size());
            order.emplace_back(child, node);
            pending.emplace_back(child, depth + 1);
        }
    }

    // Attributes once every node exists, so that skin clusters find their bones.
    for (auto [index, node] : order) {
        if (m_Options.materials) {
            for (std::size_t m : m_Graph.Sources(index, "Material")) {
                if (KFbxSurfaceMaterial* material = BuildMaterial(m)) {
                    node->m_Materials.push_back(material);
                    node->m_Sources.push_back(material);
                }
            }
        }
        node->m_Attribute = BuildAttribute(index, *node);
        if (node->m_Attribute)
            node->m_Sources.push_back(node->m_Attribute);
    }
}

// The node's transform properties beyond Lcl T/R/S, each made with the format's default by
// KFbxNode: the file's finite numbers replace the default's, as many as it has; an enum keeps
// its default for a value outside its range.
void SceneBuilder::ReadNodeProperties(std::size_t model, KFbxNode& node) {
    static const std::pair<const char*, double> kEnumRanges[] = {{"RotationOrder", 6},
                                                                 {"InheritType", 2}};
    for (KFbxPropertyData& data : node.m_Properties) {
        const PropertyValue* p =
            TransformGroup(data.name) < 0 ? m_Graph.FindProperty(model, data.name) : nullptr;
        if (!p)
            continue;
        if (data.type == eINTEGER1) {
            double highest = 0;
            for (const auto& [name, last] : kEnumRanges)
                highest = data.name == name ? last : highest;
            const double v = p->numbers.empty() ? -1 : p->numbers[0];
            if (v >= 0 && v <= highest && v == std::floor(v))
                data.numbers.assign(1, v);
            continue;
        }
        for (std::size_t k = 0; k < data.numbers.size() && k < p->numbers.size(); ++k) {
            if (std::isfinite(p->numbers[k]))
                data.numbers[k] = p->numbers[k];
        }
    }
}

KFbxNodeAttribute* SceneBuilder::BuildAttribute(std::size_t model, KFbxNode& node) {
    std::size_t source = kNoObject;
    for (std::size_t candidate : m_Graph.Sources(model)) {
        const std::string& kind = m_Graph.At(candidate).kind;
        if (kind == "Geometry" || kind == "NodeAttribute") {
            source = candidate;
            break;
        }
    }
    if (source == kNoObject)
        return nullptr;
    if (m_Built[source])
        return static_cast<KFbxNodeAttribute*>(m_Built[source]);

    const Object& object = m_Graph.At(source);
    KFbxSdkManager* manager = m_Scene.GetFbxSdkManager();
    KFbxNodeAttribute::EAttributeType type = AttributeType(object.subclass);
    KFbxNodeAttribute* attribute = nullptr;
    switch (type) {
        case KFbxNodeAttribute::eMESH:
            attribute = BuildMesh(source, node);
            break;
        case KFbxNodeAttribute::eNULL:
            attribute = m_Scene.Own(new KFbxNull(manager, ""));
            break;
        case KFbxNodeAttribute::eMARKER:
            attribute = m_Scene.Own(new KFbxMarker(manager, ""));
            break;
        case KFbxNodeAttribute::eCAMERA:
            attribute = m_Scene.Own(new KFbxCamera(manager, ""));
            break;
        case KFbxNodeAttribute::eLIGHT:
            attribute = m_Scene.Own(new KFbxLight(manager, ""));
            break;
        case KFbxNodeAttribute::eSKELETON: {
            KFbxSkeleton* skeleton = m_Scene.Own(new KFbxSkeleton(manager, ""));
            std::string kind = Lower(object.subclass);
            skeleton->m_SkeletonType = kind == "root"   ? KFbxSkeleton::eROOT
                                       : kind == "limb" ? KFbxSkeleton::eLIMB
                                                        : KFbxSkeleton::eLIMB_NODE;
            attribute = skeleton;
            break;
        }
        default:
            attribute = m_Scene.Own(new KFbxNodeAttribute(manager, "", type));
            break;
    }
    attribute->SetName(object.name.c_str());
    attribute->m_NamePrefix = object.kind;
    attribute->m_Node = &node;
    attribute->m_TypeName = object.subclass;
    m_Built[source] = attribute;
    return attribute;
}

KFbxMesh* SceneBuilder::BuildMesh(std::size_t geometry, KFbxNode& node) {
    KFbxMesh* mesh = m_Scene.Own(new KFbxMesh(m_Scene.GetFbxSdkManager(), ""));
    m_Built[geometry] = mesh;
    const Record* record = m_Graph.At(geometry).record;

    std::vector<double> storage;
    const DoubleRun vertices = ChildDoubleRun(record, "Vertices", storage);
    mesh->m_ControlPoints.reserve(vertices.size / 3);
    for (std::size_t i = 0; i + 2 < vertices.size; i += 3) {
        mesh->m_ControlPoints.emplace_back(vertices[i], vertices[i + 1], vertices[i + 2], 1.0);
    }

    // The last corner of each polygon is stored as -(index + 1). A corner naming a control
    // point that does not exist is pointed at control point 0, so that callers indexing the
    // control points with it stay inside them; without control points there are no polygons.
    std::int64_t points = static_cast<std::int64_t>(mesh->m_ControlPoints.size());
    if (points > 0) {
        mesh->m_Corners.reserve(ChildNumberCount(record, "PolygonVertexIndex"));
        bool startNew = true;
        ForEachChildInt(record, "PolygonVertexIndex", [&](std::int64_t v) {
            bool last = v < 0;
            std::int64_t index = last ? -(v + 1) : v;
            if (index >= points)
                index = 0;
            if (startNew)
                mesh->m_PolygonStarts.push_back(static_cast<int>(mesh->m_Corners.size()));
            mesh->m_Corners.push_back(static_cast<int>(index));
            startNew = last;
        });
    }

    BuildLayers(geometry, *mesh, node);
    if (m_Options.links)
        BuildSkins(geometry, *mesh);
    return mesh;
}

// What a layer element is read from: its record, and the geometry, node and mesh it belongs to.
struct SceneBuilder::ElementSource {
    SceneBuilder& builder;
    std::size_t geometry;
    const KFbxNode& node;
    const KFbxMesh& mesh;

    // How many values an element with this mapping holds when every one is given.
    std::size_t ExpectedCount(KFbxLayerElement::EMappingMode mode) const {
        switch (mode) {
            case KFbxLayerElement::eBY_CONTROL_POINT:
                return mesh.m_ControlPoints.size();
            case KFbxLayerElement::eBY_POLYGON_VERTEX:
                return mesh.m_Corners.size();
            case KFbxLayerElement::eBY_POLYGON:
                return mesh.m_PolygonStarts.size();
            case KFbxLayerElement::eALL_SAME:
                return 1;
            default:
                return 0;
        }
    }

    // A new element with the mapping, reference and name its record gives.
    template <class Element>
    static std::unique_ptr<Element> Start(const Record& r) {
        auto e = std::make_unique<Element>();
        e->m_Mapping = Mapping(r.ChildText("MappingInformationType"));
        e->m_Reference = Reference(r.ChildText("ReferenceInformationType"));
        e->m_Name = r.ChildText("Name");
        return e;
    }

    // An element of x, y, z vectors with a w that is written inline, in a separate record or
    // not at all (then 1).
    template <class Element>
    std::unique_ptr<Element> Vectors(const Record& r, const char* data, const char* index,
                                     const char* wName) const {
        auto e = Start<Element>(r);
        std::vector<double> vStorage, wStorage;
        const DoubleRun v = ChildDoubleRun(&r, data, vStorage);
        const DoubleRun w = ChildDoubleRun(&r, wName, wStorage);
        std::size_t expected =
            e->m_Reference == KFbxLayerElement::eDIRECT ? ExpectedCount(e->m_Mapping) : 0;
        std::size_t width = w.size == 0 ? VectorWidth(v.size, expected) : 3;
        e->m_Direct.Assign(v.size / width, [&](std::size_t n) {
            const std::size_t i = n * width;
            const double wv = width == 4 ? v[i + 3] : (n < w.size ? w[n] : 1.0);
            return KFbxVector4(v[i], v[i + 1], v[i + 2], wv);
        });
        AppendChildInts(&r, index, e->m_Index.m_Items);
        return e;
    }

    // The textures of the first model that uses the geometry, for a texture element.
    std::vector<KFbxTexture*> NodeTextures() const {
        std::vector<KFbxTexture*> textures;
        if (!builder.m_Options.textures)
            return textures;
        for (std::size_t model : builder.m_Graph.Destinations(geometry, "Model")) {
            for (std::size_t t : builder.m_Graph.Sources(model, "Texture")) {
                if (KFbxTexture* texture = builder.BuildTexture(t))
                    textures.push_back(texture);
            }
            break;
        }
        return textures;
    }
};

// One kind of layer element: the record that holds it, how the element is read from that
// record, and which slot of a layer takes it.
struct SceneBuilder::ElementKind {
    const char* record;
    std::unique_ptr<KFbxLayerElement> (*read)(const ElementSource& source, const Record& r);
    PlaceElement place;
};

// Every kind of layer element BuildLayers reads, by the name of its record.
const std::vector<SceneBuilder::ElementKind>& SceneBuilder::ElementKinds() {
    using Read = std::unique_ptr<KFbxLayerElement>;
    using Source = const ElementSource&;
    static const std::vector<ElementKind> kKinds = {
        {"LayerElementNormal",
         [](Source s, const Record& r) -> Read {
             return s.Vectors<KFbxLayerElementNormal>(r, "Normals", "NormalsIndex", "NormalsW");
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Normals, e); }},
        {"LayerElementBinormal",
         [](Source s, const Record& r) -> Read {
             return s.Vectors<KFbxLayerElementBinormal>(r, "Binormals", "BinormalsIndex",
                                                        "BinormalsW");
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Binormals, e); }},
        {"LayerElementTangent",
         [](Source s, const Record& r) -> Read {
             return s.Vectors<KFbxLayerElementTangent>(r, "Tangents", "TangentsIndex", "TangentsW");
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Tangents, e); }},
        {"LayerElementUV",
         [](Source, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementUV>(r);
             e->m_Direct.m_Items = UVPairs(r);
             AppendChildInts(&r, "UVIndex", e->m_Index.m_Items);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_UVs, e); }},
        {"LayerElementColor",
         [](Source, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementVertexColor>(r);
             e->m_Direct.m_Items = Colours(r);
             AppendChildInts(&r, "ColorIndex", e->m_Index.m_Items);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Colors, e); }},
        {"LayerElementMaterial",
         // Material numbers always index the node's materials, whatever the record says.
         [](Source s, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementMaterial>(r);
             e->m_Reference = KFbxLayerElement::eINDEX_TO_DIRECT;
             e->m_Direct.m_Items = s.node.m_Materials;
             AppendChildInts(&r, "Materials", e->m_Index.m_Items);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Materials, e); }},
        {"LayerElementTexture",
         [](Source s, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementTexture>(r);
             e->m_Direct.m_Items = s.NodeTextures();
             AppendChildInts(&r, "TextureId", e->m_Index.m_Items);
             e->m_BlendMode = TextureBlendMode(r.ChildText("BlendMode"));
             if (const Record* alpha = r.Child("TextureAlpha"))
                 e->m_Alpha = alpha->DoubleAt(0, 1.0);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Textures, e); }},
        {"LayerElementHole",
         [](Source, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementHole>(r);
             for (std::int64_t v : ChildInts(&r, "Hole"))
                 e->m_Direct.m_Items.push_back(v != 0);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Holes, e); }},
        {"LayerElementSmoothing",
         [](Source, const Record& r) -> Read {
             auto e = ElementSource::Start<KFbxLayerElementSmoothing>(r);
             AppendChildInts(&r, "Smoothing", e->m_Direct.m_Items);
             return e;
         },
         [](KFbxLayer& l, KFbxLayerElement* e) { PlaceOnce(l.m_Smoothing, e); }},
    };
    return kKinds;
}

void SceneBuilder::BuildLayers(std::size_t geometry, KFbxMesh& mesh, KFbxNode& node) {
    const Record* record = m_Graph.At(geometry).record;

    // Every layer element of the geometry, by its record name and index; of two with the
    // same name and index, layers get the first.
    const std::vector<ElementKind>& kinds = ElementKinds();
    const ElementSource source{*this, geometry, node, mesh};
    ElementsByName elements;
    for (const Record& r : record->children) {
        auto kind = std::find_if(kinds.begin(), kinds.end(),
                                 [&](const ElementKind& k) { return r.name == k.record; });
        if (kind == kinds.end())
            continue;
        const std::int64_t index = r.IntAt(0, 0);
        mesh.m_Elements.push_back(kind->read(source, r));
        elements.emplace(std::make_pair(r.name, index),
                         PlacedElement{mesh.m_Elements.back().get(), kind->place});
    }

    LayerContents contents = ListLayerContents(*record, elements);
    if (contents.empty())
        return;
    const std::int64_t count = contents.rbegin()->first + 1;
    for (std::int64_t n = 0; n < count; ++n) {
        auto layer = std::make_unique<KFbxLayer>();
        for (const PlacedElement& placed : contents[n])
            placed.place(*layer, placed.element);
        mesh.m_Layers.push_back(std::move(layer));
    }
}

void SceneBuilder::BuildSkins(std::size_t geometry, KFbxMesh& mesh) {
    KFbxSdkManager* manager = m_Scene.GetFbxSdkManager();
    for (std::size_t d : m_Graph.Sources(geometry, "Deformer")) {
        const Object& deformer = m_Graph.At(d);
        if (deformer.subclass != "Skin")
            continue;
        KFbxSkin* skin = static_cast<KFbxSkin*>(m_Built[d]);
        if (!skin) {
            skin = m_Scene.Own(new KFbxSkin(manager, deformer.name.c_str()));
            skin->m_NamePrefix = deformer.className;
            m_Built[d] = skin;
            for (std::size_t c : m_Graph.Sources(d, "Deformer")) {
                const Object& object = m_Graph.At(c);
                if (object.subclass != "Cluster" || m_Built[c])
                    continue;
                KFbxCluster* cluster = m_Scene.Own(new KFbxCluster(manager, object.name.c_str()));
                cluster->m_NamePrefix = object.className;
                m_Built[c] = cluster;
                std::vector<double> storage;
                const DoubleRun weights = ChildDoubleRun(object.record, "Weights", storage);
                AppendChildInts(object.record, "Indexes", cluster->m_Indices);
                std::size_t n = std::min(cluster->m_Indices.size(), weights.size);
                cluster->m_Indices.resize(n);
                cluster->m_Weights.assign(weights.data, weights.data + n);
                cluster->m_Transform = Matrix(object.record, "Transform");
                cluster->m_TransformLink = Matrix(object.record, "TransformLink");
                // The bone is the Model connected to the cluster (either direction by layout).
                for (std::size_t link : m_Graph.Sources(c, "Model")) {
                    cluster->m_Link = static_cast<KFbxNode*>(m_Built[link]);
                    if (cluster->m_Link)
                        break;
                }
                if (!cluster->m_Link) {
                    for (std::size_t link : m_Graph.Destinations(c, "Model")) {
                        cluster->m_Link = static_cast<KFbxNode*>(m_Built[link]);
                        if (cluster->m_Link)
                            break;
                    }
                }
                if (cluster->m_Link)
                    cluster->m_Sources.push_back(cluster->m_Link);
                skin->m_Clusters.push_back(cluster);
                skin->m_Sources.push_back(cluster);
            }
        }
        mesh.m_Deformers.push_back(skin);
        mesh.m_Sources.push_back(skin);
    }
}

KFbxSurfaceMaterial* SceneBuilder::BuildMaterial(std::size_t index) {
    if (m_Built[index])
        return KFbxCast<KFbxSurfaceMaterial>(m_Built[index]);
    const Object& object = m_Graph.At(index);
    KFbxSdkManager* manager = m_Scene.GetFbxSdkManager();

    const std::string shading = ShadingModel(m_Graph, index);
    const std::string kind = Lower(shading);
    KFbxSurfaceMaterial* material;
    if (kind == "phong") {
        material = m_Scene.Own(new KFbxSurfacePhong(manager, object.name.c_str()));
    } else if (kind == "lambert") {
        material = m_Scene.Own(new KFbxSurfaceLambert(manager, object.name.c_str()));
    } else {
        material = m_Scene.Own(new KFbxSurfaceMaterial(manager, object.name.c_str()));
    }
    material->m_NamePrefix = "Material";
    material->m_ShadingModel = shading;
    m_Built[index] = material;

    ReadMaterialProperties(index, *material, kind == "phong");
    if (m_Options.textures)
        ConnectMaterialTextures(object, *material);
    return material;
}

// The material's own properties, then what older files call "Shininess" as the shininess
// exponent, then for each colour and factor still missing the property template's value or
// the format's default.
void SceneBuilder::ReadMaterialProperties(std::size_t index, KFbxSurfaceMaterial& material,
                                          bool phong) {
    auto add = [&](const PropertyValue& p) {
        if (material.FindProperty(p.name.c_str()).IsValid())
            return;
        KFbxPropertyData& data = material.AddProperty(p.name, PropertyType(p));
        data.numbers = p.numbers;
        data.text = p.text;
    };
    const Object& object = m_Graph.At(index);
    for (const PropertyValue& p : object.properties)
        add(p);
    if (!material.FindProperty("ShininessExponent").IsValid()) {
        for (const PropertyValue& p : object.properties) {
            if (p.name != "Shininess")
                continue;
            PropertyValue alias = p;
            alias.name = "ShininessExponent";
            add(alias);
        }
    }
    for (const DefaultProperty& d : MaterialDefaults(phong)) {
        if (material.FindProperty(d.name).IsValid())
            continue;
        if (const PropertyValue* t = m_Graph.FindProperty(index, d.name)) {
            add(*t);
        } else {
            KFbxPropertyData& data = material.AddProperty(d.name, d.type);
            data.numbers = d.numbers;
        }
    }
}

// Textures connected to a property of the material (DiffuseColor, ...) become sources of
// that property.
void SceneBuilder::ConnectMaterialTextures(const Object& object, KFbxSurfaceMaterial& material) {
    for (std::size_t c : object.sources) {
        const Connection& link = m_Graph.Link(c);
        if (link.property.empty())
            continue;
        const std::string& kind = m_Graph.At(link.child).kind;
        if (kind != "Texture" && kind != "LayeredTexture")
            continue;
        KFbxTexture* texture = BuildTexture(link.child);
        if (!texture)
            continue;
        KFbxPropertyData& data = material.AddProperty(link.property, eDOUBLE3);
        if (data.numbers.empty() && data.type == eDOUBLE3)
            data.numbers = {0.0, 0.0, 0.0};
        if (std::find(data.sources.begin(), data.sources.end(), texture) == data.sources.end()) {
            data.sources.push_back(texture);
        }
    }
}

KFbxTexture* SceneBuilder::BuildTexture(std::size_t index) {
    if (m_Built[index])
        return KFbxCast<KFbxTexture>(m_Built[index]);
    const Object& object = m_Graph.At(index);
    KFbxSdkManager* manager = m_Scene.GetFbxSdkManager();
    KFbxTexture* texture;
    if (object.kind == "LayeredTexture") {
        auto* layered = m_Scene.Own(new KFbxLayeredTexture(manager, object.name.c_str()));
        m_Built[index] = layered;
        for (std::int64_t mode : ChildInts(object.record, "BlendModes")) {
            layered->m_BlendModes.push_back(ToInt(mode));
        }
        for (std::size_t t : m_Graph.Sources(index, "Texture")) {
            if (KFbxTexture* layer = BuildTexture(t))
                layered->m_Sources.push_back(layer);
        }
        texture = layered;
    } else {
        texture = m_Scene.Own(new KFbxTexture(manager, object.name.c_str()));
        m_Built[index] = texture;
    }
    texture->m_NamePrefix = object.kind;
    const Record* record = object.record;
    if (record) {
        texture->m_FileName = record->ChildText("FileName");
        if (texture->m_FileName.empty())
            texture->m_FileName = record->ChildText("Filename");
        texture->m_RelativeFileName = record->ChildText("RelativeFilename");
        std::vector<double> uvTranslation = ChildDoubles(record, "ModelUVTranslation");
        std::vector<double> uvScaling = ChildDoubles(record, "ModelUVScaling");
        for (std::size_t i = 0; i < 2; ++i) {
            if (i < uvTranslation.size())
                texture->m_Translation[i] = uvTranslation[i];
            if (i < uvScaling.size())
                texture->m_Scale[i] = uvScaling[i];
        }
    }
    if (const PropertyValue* p = m_Graph.FindProperty(index, "Translation")) {
        for (std::size_t i = 0; i < 2 && i < p->numbers.size(); ++i)
            texture->m_Translation[i] = p->numbers[i];
    }
    if (const PropertyValue* p = m_Graph.FindProperty(index, "Scaling")) {
        for (std::size_t i = 0; i < 2 && i < p->numbers.size(); ++i)
            texture->m_Scale[i] = p->numbers[i];
    }
    if (const PropertyValue* p = m_Graph.FindProperty(index, "Rotation")) {
        for (std::size_t i = 0; i < 3 && i < p->numbers.size(); ++i)
            texture->m_Rotation[i] = p->numbers[i];
    }
    const PropertyValue* alpha = m_Graph.FindProperty(index, "TextureAlpha");
    if (!alpha)
        alpha = m_Graph.FindProperty(index, "Texture alpha");
    if (alpha && !alpha->numbers.empty())
        texture->m_Alpha = alpha->numbers[0];
    if (const PropertyValue* p = m_Graph.FindProperty(index, "UVSwap")) {
        texture->m_SwapUV = !p->numbers.empty() && p->numbers[0] != 0.0;
    }
    // The video clip is a source of the texture, after any stacked textures.
    for (std::size_t v : m_Graph.Sources(index, "Video")) {
        if (KFbxVideo* video = BuildVideo(v))
            texture->m_Sources.push_back(video);
    }
    return texture;
}

// A video clip once, however many textures show it. Its names come from its records, else from
// its properties; its content is the first non-empty raw value of "Content", copied once.
KFbxVideo* SceneBuilder::BuildVideo(std::size_t index) {
    if (m_Built[index])
        return KFbxCast<KFbxVideo>(m_Built[index]);
    const Object& object = m_Graph.At(index);
    auto* video = m_Scene.Own(new KFbxVideo(m_Scene.GetFbxSdkManager(), object.name.c_str()));
    video->m_NamePrefix = "Video";
    m_Built[index] = video;
    if (const Record* record = object.record) {
        video->m_FileName = record->ChildText("Filename");
        if (video->m_FileName.empty())
            video->m_FileName = record->ChildText("FileName");
        video->m_RelativeFileName = record->ChildText("RelativeFilename");
        if (const Record* content = record->Child("Content")) {
            for (const Value& value : content->values) {
                const std::string& bytes = value.AsText();
                if (value.Type() == ValueType::Raw && !bytes.empty()) {
                    video->m_Content = std::make_shared<const std::vector<std::uint8_t>>(
                        bytes.begin(), bytes.end());
                    break;
                }
            }
        }
    }
    if (video->m_FileName.empty()) {
        if (const PropertyValue* p = m_Graph.FindProperty(index, "Path"))
            video->m_FileName = p->text;
    }
    if (video->m_RelativeFileName.empty()) {
        if (const PropertyValue* p = m_Graph.FindProperty(index, "RelPath"))
            video->m_RelativeFileName = p->text;
    }
    return video;
}

void SceneBuilder::BuildAnimation() {
    // A curve node that drives many nodes hands each the same curves, not a copy apiece: a
    // small file could otherwise grow by the number of nodes it names.
    SharedCurves shared;
    for (std::size_t s = 0; s < m_Graph.Objects().size(); ++s) {
        const Object& stack = m_Graph.At(s);
        if (stack.kind != "AnimationStack")
            continue;
        const std::optional<std::size_t> slot = TakeSlot(m_Scene.m_TakeNames, stack.name);
        if (!slot)
            continue;
        for (std::size_t layer : m_Graph.Sources(s, "AnimationLayer")) {
            for (std::size_t curveNode : m_Graph.Sources(layer, "AnimationCurveNode"))
                AnimateNodes(curveNode, *slot, shared);
        }
    }
}

// Hands the curves of one curve node to the transform channels it is connected to, in the
// given take slot of each node; a channel that already has a curve keeps it.
void SceneBuilder::AnimateNodes(std::size_t curveNode, std::size_t slot, SharedCurves& shared) {
    for (std::size_t c : m_Graph.At(curveNode).destinations) {
        const Connection& link = m_Graph.Link(c);
        const int group = TransformGroup(link.property);
        if (group < 0)
            continue;
        KFbxNode* node = KFbxCast<KFbxNode>(m_Built[link.parent]);
        if (!node || slot >= node->m_Curves.size())
            continue;
        for (int axis = 0; axis < 3; ++axis) {
            auto& target = node->m_Curves[slot][static_cast<std::size_t>(group * 3 + axis)];
            if (!target)
                target = ChannelCurve(curveNode, axis, shared);
        }
    }
}

// The curve on one channel (d|X, d|Y, d|Z) of a curve node: the first AnimationCurve
// connected to it, read once; null when there is none.
std::shared_ptr<KFCurve> SceneBuilder::ChannelCurve(std::size_t curveNode, int axis,
                                                    SharedCurves& shared) {
    for (std::size_t curveIndex : m_Graph.PropertySources(curveNode, kCurveChannels[axis])) {
        const Object& curve = m_Graph.At(curveIndex);
        if (curve.kind != "AnimationCurve")
            continue;
        std::shared_ptr<KFCurve>& read =
            shared[{curveNode * 3 + static_cast<std::size_t>(axis), curveIndex}];
        if (!read)
            read = ReadCurve(curve.record, m_Graph.FindProperty(curveNode, kCurveChannels[axis]));
        return read;
    }
    return nullptr;
}

}  // namespace fbx
