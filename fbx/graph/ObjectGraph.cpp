#include "fbx/graph/ObjectGraph.h"

#include <algorithm>
#include <set>
#include <utility>

#include "fbx/graph/TakeKeys.h"

namespace fbx {

namespace {

const char* const kTransformProperties[3] = {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"};
const char* const kTransformChannels[3] = {"T", "R", "S"};
const char* const kAxes[3] = {"X", "Y", "Z"};

std::string NormalisedKey(std::string_view written) {
    std::string className;
    std::string name;
    SplitObjectName(written, className, name);
    return className + "::" + name;
}

// The material property that an older file's texture layer element feeds, or nullptr.
const char* TextureChannelProperty(const std::string& element) {
    static const std::pair<const char*, const char*> kChannels[] = {
        {"LayerElementTexture", "DiffuseColor"},
        {"LayerElementDiffuseFactorTextures", "DiffuseFactor"},
        {"LayerElementEmissive_Textures", "EmissiveColor"},
        {"LayerElementEmissiveFactor_Textures", "EmissiveFactor"},
        {"LayerElementAmbientTextures", "AmbientColor"},
        {"LayerElementAmbientFactorTextures", "AmbientFactor"},
        {"LayerElementSpecularTextures", "SpecularColor"},
        {"LayerElementSpecularFactorTextures", "SpecularFactor"},
        {"LayerElementShininessExponentTextures", "ShininessExponent"},
        {"LayerElementBumpTextures", "Bump"},
        {"LayerElementNormalMapTextures", "NormalMap"},
        {"LayerElementTransparentTextures", "TransparentColor"},
        {"LayerElementTransparencyFactorTextures", "TransparencyFactor"},
        {"LayerElementReflectionTextures", "ReflectionColor"},
        {"LayerElementReflectionFactorTextures", "ReflectionFactor"},
    };
    for (const auto& [name, property] : kChannels) {
        if (element == name)
            return property;
    }
    return nullptr;
}

bool IsLegacyMeshRecord(const Record& model) {
    return model.Child("Vertices") != nullptr;
}

// The layer-element mapping name of older files' "MaterialAssignation"/UV info.
std::string MappingFor(std::size_t count, std::size_t components, std::size_t corners,
                       std::size_t points, std::size_t polygons) {
    if (count == components * corners)
        return "ByPolygonVertex";
    if (count == components * points)
        return "ByVertice";
    if (count == components * polygons)
        return "ByPolygon";
    return "AllSame";
}

Record TextRecord(std::string name, std::string text) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeText(std::move(text)));
    return r;
}

Record DoubleRecord(std::string name, std::vector<double> values) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeArray(std::move(values)));
    return r;
}

Record IntRecord(std::string name, std::vector<std::int32_t> values) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeArray(std::move(values)));
    return r;
}

Record LayerEntry(const char* type) {
    Record entry;
    entry.name = "LayerElement";
    entry.children.push_back(TextRecord("Type", type));
    Record index;
    index.name = "TypedIndex";
    index.values.push_back(Value::MakeInt(0));
    entry.children.push_back(std::move(index));
    return entry;
}

}  // namespace

void SplitObjectName(std::string_view written, std::string& className, std::string& name) {
    std::size_t binarySep = written.find(std::string_view("\0\1", 2));
    if (binarySep != std::string_view::npos) {
        name.assign(written.substr(0, binarySep));
        className.assign(written.substr(binarySep + 2));
        return;
    }
    std::size_t asciiSep = written.find("::");
    if (asciiSep != std::string_view::npos) {
        className.assign(written.substr(0, asciiSep));
        name.assign(written.substr(asciiSep + 2));
        return;
    }
    className.clear();
    name.assign(written);
}

std::vector<PropertyValue> ReadProperties(const Record& block) {
    std::vector<PropertyValue> properties;
    properties.reserve(block.children.size());
    for (const Record& p : block.children) {
        // Properties70 "P": name, type, label, flags, values; Properties60 "Property": name,
        // type, flags, values.
        std::size_t first;
        if (p.name == "P") {
            first = 4;
        } else if (p.name == "Property") {
            first = 3;
        } else {
            continue;
        }
        PropertyValue value;
        value.name = p.TextAt(0);
        value.type = p.TextAt(1);
        for (std::size_t i = first; i < p.values.size(); ++i) {
            const Value& v = p.values[i];
            if (v.IsText()) {
                if (value.text.empty())
                    value.text = v.AsText();
            } else {
                for (std::size_t k = 0, n = v.Count(); k < n; ++k)
                    value.numbers.push_back(v.DoubleAt(k));
            }
        }
        properties.push_back(std::move(value));
    }
    return properties;
}

std::unique_ptr<ObjectGraph> ObjectGraph::Build(Document document) {
    std::unique_ptr<ObjectGraph> graph(new ObjectGraph());
    graph->m_Document = std::move(document);

    Object root;
    root.kind = "Model";
    root.className = "Model";
    root.name = "RootNode";
    root.record = &graph->m_Document.root;
    graph->m_Root = graph->AddObject(std::move(root));
    graph->m_ById[0] = graph->m_Root;
    graph->m_ByKey["Model::Scene"] = graph->m_Root;

    const Record& top = graph->m_Document.root;
    graph->ReadTemplates();
    if (const Record* objects = top.Child("Objects")) {
        graph->ReadObjects(*objects);
        if (const Record* connections = top.Child("Connections")) {
            graph->ReadConnections(*connections);
        }
    } else {
        graph->m_NamedLayout = true;
        graph->ReadLegacyModels();
    }
    if (graph->m_NamedLayout) {
        graph->AddLegacyGeometryAndAttributes();
        graph->AttachLegacyTextures();
    }
    graph->ReadTakes();
    return graph;
}

std::size_t ObjectGraph::AddObject(Object object) {
    m_Objects.push_back(std::move(object));
    return m_Objects.size() - 1;
}

void ObjectGraph::Connect(std::size_t child, std::size_t parent, std::string property) {
    if (child >= m_Objects.size() || parent >= m_Objects.size() || child == parent)
        return;
    m_Connections.push_back({child, parent, std::move(property)});
    m_Objects[parent].sources.push_back(m_Connections.size() - 1);
    m_Objects[child].destinations.push_back(m_Connections.size() - 1);
}

Record& ObjectGraph::MakeRecord(std::string name) {
    m_Synthetic.emplace_back();
    m_Synthetic.back().name = std::move(name);
    return m_Synthetic.back();
}

std::vector<std::size_t> ObjectGraph::Sources(std::size_t parent, std::string_view kind) const {
    std::vector<std::size_t> found;
    if (parent >= m_Objects.size())
        return found;
    for (std::size_t c : m_Objects[parent].sources) {
        const Connection& link = m_Connections[c];
        if (!link.property.empty())
            continue;
        if (!kind.empty() && m_Objects[link.child].kind != kind)
            continue;
        found.push_back(link.child);
    }
    return found;
}

std::vector<std::size_t> ObjectGraph::PropertySources(std::size_t parent,
                                                      std::string_view property) const {
    std::vector<std::size_t> found;
    if (parent >= m_Objects.size())
        return found;
    for (std::size_t c : m_Objects[parent].sources) {
        const Connection& link = m_Connections[c];
        if (link.property == property)
            found.push_back(link.child);
    }
    return found;
}

std::vector<std::size_t> ObjectGraph::Destinations(std::size_t child, std::string_view kind) const {
    std::vector<std::size_t> found;
    if (child >= m_Objects.size())
        return found;
    for (std::size_t c : m_Objects[child].destinations) {
        const Connection& link = m_Connections[c];
        if (!link.property.empty())
            continue;
        if (!kind.empty() && m_Objects[link.parent].kind != kind)
            continue;
        found.push_back(link.parent);
    }
    return found;
}

const PropertyValue* ObjectGraph::FindProperty(std::size_t object, std::string_view name) const {
    if (object >= m_Objects.size())
        return nullptr;
    const Object& o = m_Objects[object];
    for (const PropertyValue& p : o.properties) {
        if (p.name == name)
            return &p;
    }
    auto t = m_Templates.find(o.kind);
    if (t != m_Templates.end()) {
        for (const PropertyValue& p : t->second) {
            if (p.name == name)
                return &p;
        }
    }
    return nullptr;
}

void ObjectGraph::ReadTemplates() {
    const Record* definitions = m_Document.root.Child("Definitions");
    if (!definitions)
        return;
    for (const Record* type : definitions->Children("ObjectType")) {
        std::vector<PropertyValue>& list = m_Templates[type->TextAt(0)];
        for (const Record* tmpl : type->Children("PropertyTemplate")) {
            const Record* block = tmpl->Child("Properties70");
            if (!block)
                block = tmpl->Child("Properties60");
            if (!block)
                continue;
            for (PropertyValue& p : ReadProperties(*block)) {
                bool known = std::any_of(list.begin(), list.end(),
                                         [&](const PropertyValue& q) { return q.name == p.name; });
                if (!known)
                    list.push_back(std::move(p));
            }
        }
    }
}

void ObjectGraph::ReadObjects(const Record& objects) {
    std::int64_t nextSynthetic = -1;
    for (const Record& rec : objects.children) {
        Object object;
        object.kind = rec.name;
        object.record = &rec;
        std::string written;
        const Value* first = rec.ValueAt(0);
        if (first && first->IsNumber()) {
            object.id = first->AsInt();
            written = rec.TextAt(1);
            object.subclass = rec.TextAt(2);
        } else {
            m_NamedLayout = true;
            object.id = nextSynthetic--;
            written = rec.TextAt(0);
            object.subclass = rec.TextAt(1);
        }
        SplitObjectName(written, object.className, object.name);
        const Record* block = rec.Child("Properties70");
        if (!block)
            block = rec.Child("Properties60");
        if (block)
            object.properties = ReadProperties(*block);

        std::string key = object.className + "::" + object.name;
        std::int64_t id = object.id;
        bool named = !object.className.empty() || !object.name.empty();
        std::size_t index = AddObject(std::move(object));
        m_ById.emplace(id, index);
        if (named)
            m_ByKey.emplace(std::move(key), index);
    }
}

void ObjectGraph::ReadConnections(const Record& connections) {
    for (const Record& rec : connections.children) {
        if (rec.name != "C" && rec.name != "Connect")
            continue;
        std::string type = rec.TextAt(0);
        if (type != "OO" && type != "OP")
            continue;
        auto resolve = [&](std::size_t i) -> std::size_t {
            const Value* v = rec.ValueAt(i);
            if (!v)
                return kNoObject;
            if (v->IsNumber()) {
                auto it = m_ById.find(v->AsInt());
                return it == m_ById.end() ? kNoObject : it->second;
            }
            auto it = m_ByKey.find(NormalisedKey(v->AsText()));
            return it == m_ByKey.end() ? kNoObject : it->second;
        };
        std::size_t child = resolve(1);
        std::size_t parent = resolve(2);
        if (child == kNoObject || parent == kNoObject)
            continue;
        std::string property = type == "OP" ? rec.TextAt(3) : std::string();
        if (type == "OP" && property.empty())
            continue;
        Connect(child, parent, std::move(property));
    }
}

// The oldest layout: top-level Model records, materials inside them, "Children" lists.
void ObjectGraph::ReadLegacyModels() {
    const Record& top = m_Document.root;
    std::int64_t nextSynthetic = -1;
    std::vector<std::pair<std::size_t, const Record*>> models;
    for (const Record& rec : top.children) {
        if (rec.name != "Model")
            continue;
        Object object;
        object.kind = "Model";
        object.id = nextSynthetic--;
        object.record = &rec;
        SplitObjectName(rec.TextAt(0), object.className, object.name);
        object.subclass = rec.ChildText("Type");
        if (object.subclass.empty())
            object.subclass = IsLegacyMeshRecord(rec) ? "Mesh" : "Null";
        std::string key = object.className + "::" + object.name;
        std::size_t index = AddObject(std::move(object));
        if (!m_ByKey.emplace(std::move(key), index).second)
            continue;
        models.emplace_back(index, &rec);
    }

    std::set<std::size_t> isChild;
    for (auto& [index, rec] : models) {
        // Embedded materials become objects of their own, with the newer property names.
        for (const Record* material : rec->Children("Material")) {
            std::string key = NormalisedKey(material->TextAt(0));
            auto found = m_ByKey.find(key);
            std::size_t mat;
            if (found != m_ByKey.end()) {
                mat = found->second;
            } else {
                Object object;
                object.kind = "Material";
                object.id = nextSynthetic--;
                object.record = material;
                SplitObjectName(material->TextAt(0), object.className, object.name);
                auto colour = [&](const char* from, const char* to) {
                    if (const Record* r = material->Child(from)) {
                        object.properties.push_back({to, "ColorRGB", r->Doubles(), ""});
                    }
                };
                colour("Ambient", "AmbientColor");
                colour("Diffuse", "DiffuseColor");
                colour("Specular", "SpecularColor");
                colour("Emissive", "EmissiveColor");
                if (const Record* r = material->Child("Shininess")) {
                    object.properties.push_back(
                        {"ShininessExponent", "double", {r->DoubleAt(0)}, ""});
                }
                if (const Record* r = material->Child("Alpha")) {
                    object.properties.push_back(
                        {"TransparencyFactor", "double", {1.0 - r->DoubleAt(0)}, ""});
                }
                if (const Record* r = material->Child("Reflectivity")) {
                    object.properties.push_back(
                        {"ReflectionFactor", "double", {r->DoubleAt(0)}, ""});
                }
                mat = AddObject(std::move(object));
                m_ByKey.emplace(key, mat);
            }
            Connect(mat, index, "");
        }
        for (const Record* children : rec->Children("Children")) {
            for (const Value& v : children->values) {
                auto it = m_ByKey.find(NormalisedKey(v.AsText()));
                if (it == m_ByKey.end() || m_Objects[it->second].kind != "Model")
                    continue;
                if (isChild.insert(it->second).second)
                    Connect(it->second, index, "");
            }
        }
    }
    for (auto& [index, rec] : models) {
        if (!isChild.count(index))
            Connect(index, m_Root, "");
    }

    // Geometry of the oldest layout, restated with layer elements.
    for (auto& [index, rec] : models) {
        if (!IsLegacyMeshRecord(*rec))
            continue;
        Record& geometry = MakeRecord("Geometry");
        const Record* vertices = rec->Child("Vertices");
        const Record* polygons = rec->Child("PolygonVertexIndex");
        geometry.children.push_back(*vertices);
        if (polygons)
            geometry.children.push_back(*polygons);
        std::size_t corners = polygons ? polygons->NumberCount() : 0;
        std::size_t points = vertices->NumberCount() / 3;
        std::size_t polygonCount = 0;
        if (polygons) {
            for (std::int64_t i : polygons->Ints())
                polygonCount += i < 0 ? 1 : 0;
        }
        Record layer;
        layer.name = "Layer";
        layer.values.push_back(Value::MakeInt(0));
        if (const Record* normals = rec->Child("Normals")) {
            Record element;
            element.name = "LayerElementNormal";
            element.values.push_back(Value::MakeInt(0));
            element.children.push_back(
                TextRecord("MappingInformationType",
                           MappingFor(normals->NumberCount(), 3, corners, points, polygonCount)));
            element.children.push_back(TextRecord("ReferenceInformationType", "Direct"));
            element.children.push_back(DoubleRecord("Normals", normals->Doubles()));
            geometry.children.push_back(std::move(element));
            layer.children.push_back(LayerEntry("LayerElementNormal"));
        }
        if (const Record* uvInfo = rec->Child("GeometryUVInfo")) {
            const Record* uv = uvInfo->Child("TextureUV");
            const Record* uvIndex = uvInfo->Child("TextureUVVerticeIndex");
            if (uv) {
                Record element;
                element.name = "LayerElementUV";
                element.values.push_back(Value::MakeInt(0));
                std::size_t n = uvIndex ? uvIndex->NumberCount() : uv->NumberCount() / 2;
                element.children.push_back(TextRecord(
                    "MappingInformationType", MappingFor(n, 1, corners, points, polygonCount)));
                element.children.push_back(
                    TextRecord("ReferenceInformationType", uvIndex ? "IndexToDirect" : "Direct"));
                element.children.push_back(DoubleRecord("UV", uv->Doubles()));
                if (uvIndex)
                    element.children.push_back(IntRecord("UVIndex", uvIndex->Int32s()));
                geometry.children.push_back(std::move(element));
                layer.children.push_back(LayerEntry("LayerElementUV"));
            }
        }
        if (const Record* materials = rec->Child("Materials")) {
            Record element;
            element.name = "LayerElementMaterial";
            element.values.push_back(Value::MakeInt(0));
            std::string assignation = rec->ChildText("MaterialAssignation");
            element.children.push_back(TextRecord("MappingInformationType",
                                                  assignation.empty() ? "AllSame" : assignation));
            element.children.push_back(TextRecord("ReferenceInformationType", "IndexToDirect"));
            element.children.push_back(IntRecord("Materials", materials->Int32s()));
            geometry.children.push_back(std::move(element));
            layer.children.push_back(LayerEntry("LayerElementMaterial"));
        }
        geometry.children.push_back(std::move(layer));

        Object object;
        object.kind = "Geometry";
        object.subclass = "Mesh";
        object.className = "Geometry";
        object.name = m_Objects[index].name;
        object.id = nextSynthetic--;
        object.record = &geometry;
        Connect(AddObject(std::move(object)), index, "");
    }
}

// 6100-era files keep a Model's geometry and attribute data inside the Model record.
void ObjectGraph::AddLegacyGeometryAndAttributes() {
    std::size_t count = m_Objects.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i == m_Root || m_Objects[i].kind != "Model")
            continue;
        if (!Sources(i, "Geometry").empty() || !Sources(i, "NodeAttribute").empty())
            continue;
        Object object;
        object.subclass = m_Objects[i].subclass;
        object.name = m_Objects[i].name;
        object.record = m_Objects[i].record;
        object.id = -static_cast<std::int64_t>(m_Objects.size()) - 1000000;
        if (object.subclass == "Mesh" && IsLegacyMeshRecord(*object.record)) {
            object.kind = "Geometry";
            object.className = "Geometry";
        } else if (!object.subclass.empty()) {
            object.kind = "NodeAttribute";
            object.className = "NodeAttribute";
        } else {
            continue;
        }
        bool isGeometry = object.kind == "Geometry";
        std::size_t attribute = AddObject(std::move(object));
        Connect(attribute, i, "");
        if (!isGeometry)
            continue;
        // Skins hang off the mesh Model in these files; newer files hang them off the geometry.
        for (std::size_t deformer : Sources(i, "Deformer")) {
            if (m_Objects[deformer].subclass == "Skin")
                Connect(deformer, attribute, "");
        }
    }
}

// Older files tie textures to the mesh Model and pick them per layer with TextureId; newer
// files connect them to the material's DiffuseColor. Restate the former as the latter.
void ObjectGraph::AttachLegacyTextures() {
    std::size_t count = m_Objects.size();
    for (std::size_t model = 0; model < count; ++model) {
        if (m_Objects[model].kind != "Model")
            continue;
        std::vector<std::size_t> textures = Sources(model, "Texture");
        std::vector<std::size_t> materials = Sources(model, "Material");
        if (textures.empty() || materials.empty())
            continue;
        std::vector<std::size_t> geometries = Sources(model, "Geometry");
        if (geometries.empty())
            continue;
        const Record* geometry = m_Objects[geometries.front()].record;

        struct Attachment {
            std::size_t texture;
            std::size_t material;
            const char* property;
        };
        std::vector<Attachment> pairs;
        for (const Record& entry : geometry->children) {
            const char* property = TextureChannelProperty(entry.name);
            if (!property)
                continue;
            const Record* element = &entry;
            std::vector<std::int64_t> ids;
            if (const Record* r = element->Child("TextureId"))
                ids = r->Ints();
            std::vector<std::int64_t> mats;
            std::string materialMapping;
            for (const Record* m : geometry->Children("LayerElementMaterial")) {
                if (m->IntAt(0) != element->IntAt(0))
                    continue;
                if (const Record* r = m->Child("Materials"))
                    mats = r->Ints();
                materialMapping = m->ChildText("MappingInformationType");
            }
            bool perPolygon = element->ChildText("MappingInformationType") == "ByPolygon" &&
                              materialMapping == "ByPolygon" && mats.size() == ids.size();
            for (std::size_t p = 0; p < ids.size(); ++p) {
                if (ids[p] < 0 || static_cast<std::size_t>(ids[p]) >= textures.size())
                    continue;
                std::size_t texture = textures[static_cast<std::size_t>(ids[p])];
                if (perPolygon) {
                    if (mats[p] >= 0 && static_cast<std::size_t>(mats[p]) < materials.size()) {
                        pairs.push_back(
                            {texture, materials[static_cast<std::size_t>(mats[p])], property});
                    }
                    continue;
                }
                bool any = false;
                for (std::int64_t m : mats) {
                    if (m >= 0 && static_cast<std::size_t>(m) < materials.size()) {
                        pairs.push_back(
                            {texture, materials[static_cast<std::size_t>(m)], property});
                        any = true;
                    }
                }
                if (!any)
                    pairs.push_back({texture, materials.front(), property});
            }
        }
        for (const Attachment& a : pairs) {
            // A texture stacked in a layered texture reaches the material through the stack.
            std::vector<std::size_t> stacks = Destinations(a.texture, "LayeredTexture");
            std::size_t source = stacks.empty() ? a.texture : stacks.front();
            std::vector<std::size_t> already = PropertySources(a.material, a.property);
            if (std::find(already.begin(), already.end(), source) == already.end()) {
                Connect(source, a.material, a.property);
            }
        }
    }
}

void ObjectGraph::ReadTakes() {
    const Record* takes = m_Document.root.Child("Takes");
    if (takes)
        m_CurrentTake = takes->ChildText("Current");
    bool haveStacks = std::any_of(m_Objects.begin(), m_Objects.end(),
                                  [](const Object& o) { return o.kind == "AnimationStack"; });
    if (haveStacks || !takes)
        return;
    for (const Record* take : takes->Children("Take")) {
        Object stack;
        stack.kind = "AnimationStack";
        stack.className = "AnimStack";
        stack.name = take->TextAt(0);
        stack.record = take;
        std::size_t stackIndex = AddObject(std::move(stack));
        Object layer;
        layer.kind = "AnimationLayer";
        layer.className = "AnimLayer";
        layer.name = "BaseLayer";
        layer.record = take;
        std::size_t layerIndex = AddObject(std::move(layer));
        Connect(layerIndex, stackIndex, "");
        for (const Record* model : take->Children("Model"))
            ReadTakeModel(*model, layerIndex);
    }
}

void ObjectGraph::ReadTakeModel(const Record& model, std::size_t layer) {
    auto it = m_ByKey.find(NormalisedKey(model.TextAt(0)));
    if (it == m_ByKey.end() || m_Objects[it->second].kind != "Model")
        return;
    std::size_t node = it->second;
    const Record* transform = nullptr;
    for (const Record* channel : model.Children("Channel")) {
        if (channel->TextAt(0) == "Transform")
            transform = channel;
    }
    if (!transform)
        return;
    for (int c = 0; c < 3; ++c) {
        const Record* group = nullptr;
        for (const Record* channel : transform->Children("Channel")) {
            if (channel->TextAt(0) == kTransformChannels[c])
                group = channel;
        }
        if (!group)
            continue;
        Object curveNode;
        curveNode.kind = "AnimationCurveNode";
        curveNode.className = "AnimCurveNode";
        curveNode.name = kTransformChannels[c];
        curveNode.record = group;
        std::size_t nodeIndex = AddObject(std::move(curveNode));
        Connect(nodeIndex, layer, "");
        Connect(nodeIndex, node, kTransformProperties[c]);
        for (int a = 0; a < 3; ++a) {
            for (const Record* channel : group->Children("Channel")) {
                if (channel->TextAt(0) != kAxes[a] || !channel->Child("Key"))
                    continue;
                std::vector<TakeKey> keys = ReadTakeKeys(*channel, m_Document.version);
                std::vector<std::int64_t> times;
                std::vector<double> values;
                times.reserve(keys.size());
                values.reserve(keys.size());
                for (const TakeKey& k : keys) {
                    times.push_back(k.time);
                    values.push_back(k.value);
                }
                Record& data = MakeRecord("AnimationCurve");
                Record timeRecord;
                timeRecord.name = "KeyTime";
                timeRecord.values.push_back(Value::MakeArray(std::move(times)));
                data.children.push_back(std::move(timeRecord));
                data.children.push_back(DoubleRecord("KeyValueFloat", std::move(values)));
                Object curve;
                curve.kind = "AnimationCurve";
                curve.className = "AnimCurve";
                curve.record = &data;
                Connect(AddObject(std::move(curve)), nodeIndex, std::string("d|") + kAxes[a]);
                break;
            }
        }
    }
}

}  // namespace fbx
