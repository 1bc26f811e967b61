// The oldest layout (5800 files, and the 5000-era ones before them): no Objects section, but
// top-level Model records with their materials inside them, "Children" lists naming each
// model's children, and meshes written as Vertices, PolygonVertexIndex, Normals,
// GeometryUVInfo and Materials records of the Model; video clips sit in a top-level
// `Media { Video { Video: "name" {...} } }` section. The graph restates them as Model,
// Material, Geometry and Video objects, as a 7000+ file holds them.
#include <set>
#include <utility>
#include <vector>

#include "fbx/graph/LegacyRecords.h"
#include "fbx/graph/ObjectGraph.h"

namespace fbx {

namespace {

// How many corners, control points and polygons a mesh has: what a layer element's value
// count is compared with to find its mapping.
struct MeshCounts {
    std::size_t corners = 0;
    std::size_t points = 0;
    std::size_t polygons = 0;
};

MeshCounts CountMesh(const Record& vertices, const Record* polygons) {
    MeshCounts counts;
    counts.corners = polygons ? polygons->NumberCount() : 0;
    counts.points = vertices.NumberCount() / 3;
    if (polygons) {
        for (std::int64_t i : polygons->Ints())
            counts.polygons += i < 0 ? 1 : 0;
    }
    return counts;
}

// The mapping of a layer element holding count values of components numbers each.
std::string MappingFor(std::size_t count, std::size_t components, const MeshCounts& mesh) {
    if (count == components * mesh.corners)
        return "ByPolygonVertex";
    if (count == components * mesh.points)
        return "ByVertice";
    if (count == components * mesh.polygons)
        return "ByPolygon";
    return "AllSame";
}

Record LayerElement(const char* type) {
    Record element;
    element.name = type;
    element.values.push_back(Value::MakeInt(0));
    return element;
}

Record NormalElement(const Record& normals, const MeshCounts& mesh) {
    Record element = LayerElement("LayerElementNormal");
    element.children.push_back(
        TextRecord("MappingInformationType", MappingFor(normals.NumberCount(), 3, mesh)));
    element.children.push_back(TextRecord("ReferenceInformationType", "Direct"));
    element.children.push_back(DoubleRecord("Normals", normals.Doubles()));
    return element;
}

Record UvElement(const Record& uv, const Record* uvIndex, const MeshCounts& mesh) {
    Record element = LayerElement("LayerElementUV");
    std::size_t n = uvIndex ? uvIndex->NumberCount() : uv.NumberCount() / 2;
    element.children.push_back(TextRecord("MappingInformationType", MappingFor(n, 1, mesh)));
    element.children.push_back(
        TextRecord("ReferenceInformationType", uvIndex ? "IndexToDirect" : "Direct"));
    element.children.push_back(DoubleRecord("UV", uv.Doubles()));
    if (uvIndex)
        element.children.push_back(IntRecord("UVIndex", uvIndex->Int32s()));
    return element;
}

Record MaterialElement(const Record& materials, const std::string& assignation) {
    Record element = LayerElement("LayerElementMaterial");
    element.children.push_back(
        TextRecord("MappingInformationType", assignation.empty() ? "AllSame" : assignation));
    element.children.push_back(TextRecord("ReferenceInformationType", "IndexToDirect"));
    element.children.push_back(IntRecord("Materials", materials.Int32s()));
    return element;
}

// An embedded material with the property names of newer files.
Object MaterialFromModel(const Record& material, std::int64_t id) {
    Object object;
    object.kind = "Material";
    object.id = id;
    object.record = &material;
    SplitObjectName(material.TextAt(0), object.className, object.name);
    auto colour = [&](const char* from, const char* to) {
        if (const Record* r = material.Child(from))
            object.properties.push_back({to, "ColorRGB", r->Doubles(), ""});
    };
    colour("Ambient", "AmbientColor");
    colour("Diffuse", "DiffuseColor");
    colour("Specular", "SpecularColor");
    colour("Emissive", "EmissiveColor");
    if (const Record* r = material.Child("Shininess"))
        object.properties.push_back({"ShininessExponent", "double", {r->DoubleAt(0)}, ""});
    if (const Record* r = material.Child("Alpha"))
        object.properties.push_back({"TransparencyFactor", "double", {1.0 - r->DoubleAt(0)}, ""});
    if (const Record* r = material.Child("Reflectivity"))
        object.properties.push_back({"ReflectionFactor", "double", {r->DoubleAt(0)}, ""});
    return object;
}

}  // namespace

void ObjectGraph::ReadLegacyModels() {
    std::int64_t nextSynthetic = -1;
    const std::vector<std::pair<std::size_t, const Record*>> models =
        ReadTopLevelModels(nextSynthetic);
    std::set<std::size_t> isChild;
    for (const auto& [index, rec] : models) {
        AddEmbeddedMaterials(index, *rec, nextSynthetic);
        ConnectChildList(index, *rec, isChild);
    }
    for (const auto& [index, rec] : models) {
        if (!isChild.count(index))
            Connect(index, m_Root, "");
    }
    for (const auto& [index, rec] : models) {
        if (IsLegacyMeshRecord(*rec))
            AddModelGeometry(index, *rec, nextSynthetic);
    }
}

// Every top-level Model becomes an object; a repeated name keeps only its first model in the
// scene (the later ones are objects that nothing connects).
std::vector<std::pair<std::size_t, const Record*>> ObjectGraph::ReadTopLevelModels(
    std::int64_t& nextSynthetic) {
    std::vector<std::pair<std::size_t, const Record*>> models;
    for (const Record& rec : m_Document.root.children) {
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
    return models;
}

// Materials inside a Model become objects of their own, shared by name between models.
void ObjectGraph::AddEmbeddedMaterials(std::size_t model, const Record& rec,
                                       std::int64_t& nextSynthetic) {
    for (const Record* material : rec.Children("Material")) {
        std::string key = NormalisedKey(material->TextAt(0));
        auto found = m_ByKey.find(key);
        std::size_t mat;
        if (found != m_ByKey.end()) {
            mat = found->second;
        } else {
            mat = AddObject(MaterialFromModel(*material, nextSynthetic--));
            m_ByKey.emplace(key, mat);
        }
        Connect(mat, model, "");
    }
}

// "Children" lists name the models below this one; a model keeps the first parent naming it.
void ObjectGraph::ConnectChildList(std::size_t model, const Record& rec,
                                   std::set<std::size_t>& isChild) {
    for (const Record* children : rec.Children("Children")) {
        for (const Value& v : children->values) {
            auto it = m_ByKey.find(NormalisedKey(v.AsText()));
            if (it == m_ByKey.end() || m_Objects[it->second].kind != "Model")
                continue;
            if (isChild.insert(it->second).second)
                Connect(it->second, model, "");
        }
    }
}

// The mesh of a Model, restated as a Geometry with layer elements and one layer.
void ObjectGraph::AddModelGeometry(std::size_t model, const Record& rec,
                                   std::int64_t& nextSynthetic) {
    Record& geometry = MakeRecord("Geometry");
    const Record* vertices = rec.Child("Vertices");
    const Record* polygons = rec.Child("PolygonVertexIndex");
    geometry.children.push_back(*vertices);
    if (polygons)
        geometry.children.push_back(*polygons);
    const MeshCounts mesh = CountMesh(*vertices, polygons);
    Record layer;
    layer.name = "Layer";
    layer.values.push_back(Value::MakeInt(0));
    if (const Record* normals = rec.Child("Normals")) {
        geometry.children.push_back(NormalElement(*normals, mesh));
        layer.children.push_back(LayerEntry("LayerElementNormal"));
    }
    if (const Record* uvInfo = rec.Child("GeometryUVInfo")) {
        if (const Record* uv = uvInfo->Child("TextureUV")) {
            geometry.children.push_back(
                UvElement(*uv, uvInfo->Child("TextureUVVerticeIndex"), mesh));
            layer.children.push_back(LayerEntry("LayerElementUV"));
        }
    }
    if (const Record* materials = rec.Child("Materials")) {
        geometry.children.push_back(
            MaterialElement(*materials, rec.ChildText("MaterialAssignation")));
        layer.children.push_back(LayerEntry("LayerElementMaterial"));
    }
    geometry.children.push_back(std::move(layer));

    Object object;
    object.kind = "Geometry";
    object.subclass = "Mesh";
    object.className = "Geometry";
    object.name = m_Objects[model].name;
    object.id = nextSynthetic--;
    object.record = &geometry;
    Connect(AddObject(std::move(object)), model, "");
}

// The clips of the top-level Media section, grouped in a "Video" record (or listed directly),
// become Video objects named "Video::name", unless an object of that name exists already.
void ObjectGraph::ReadMediaVideos() {
    const Record* media = m_Document.root.Child("Media");
    if (!media)
        return;
    std::vector<const Record*> clips;
    for (const Record* entry : media->Children("Video")) {
        if (!entry->values.empty()) {
            clips.push_back(entry);
            continue;
        }
        for (const Record* clip : entry->Children("Video")) {
            if (!clip->values.empty())
                clips.push_back(clip);
        }
    }
    for (const Record* clip : clips) {
        Object object;
        object.kind = "Video";
        object.record = clip;
        object.id = -static_cast<std::int64_t>(m_Objects.size()) - 1000000;
        SplitObjectName(clip->TextAt(0), object.className, object.name);
        if (object.className.empty())
            object.className = "Video";
        object.subclass = clip->ChildText("Type");
        if (const Record* block = clip->Child("Properties60"))
            object.properties = ReadProperties(*block);
        std::string key = object.className + "::" + object.name;
        if (m_ByKey.count(key))
            continue;
        m_ByKey.emplace(std::move(key), AddObject(std::move(object)));
    }
}

}  // namespace fbx
