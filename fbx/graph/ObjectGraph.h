// The object graph: the objects of an FBX file, their properties and their connections,
// with the differences between file layouts taken out.
//
// Three layouts exist: the 7000+ one (objects with 64-bit ids, "C" connections, Properties70,
// animation as AnimationStack/Layer/CurveNode/Curve objects), the 6100-era one (objects named
// by string, "Connect" records, Properties60, geometry inside the Model record, animation in
// the Takes section, textures naming their video clip by "Media") and the oldest 5000-era one
// (top-level Model records with embedded materials and "Children" lists, video clips in a
// top-level Media section, no Objects section). The graph always presents the 7000+
// shape: older files get synthetic Geometry, NodeAttribute, Material, AnimationStack/Layer/
// CurveNode/Curve objects and the connections between them, so the scene above it reads every
// file the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fbx/format/Record.h"

namespace fbx {

// One property of an object ("Lcl Translation", "DiffuseColor", ...).
struct PropertyValue {
    std::string name;
    std::string type;  // as written: "Lcl Translation", "Color", "ColorRGB", "KString"...
    std::vector<double> numbers;  // the numeric values after the flags
    std::string text;             // the first text value after the flags, if any
};

constexpr std::size_t kNoObject = static_cast<std::size_t>(-1);

// child -> parent; property is empty for object-object links ("OO"), else the parent's
// property that the child feeds ("OP").
struct Connection {
    std::size_t child = kNoObject;
    std::size_t parent = kNoObject;
    std::string property;
};

struct Object {
    std::int64_t id = 0;
    std::string kind;       // record name: "Model", "Geometry", "Material", "Deformer", ...
    std::string subclass;   // class value: "Mesh", "LimbNode", "Skin", "Cluster", "" ...
    std::string className;  // prefix of the name as written: "Model", "SubDeformer", "AnimCurve"
    std::string name;       // bare UTF-8 name: "pCube1"
    const Record* record = nullptr;  // the object's data records (never null for real objects)
    std::vector<PropertyValue> properties;
    std::vector<std::size_t> sources;       // connections in which this object is the parent
    std::vector<std::size_t> destinations;  // connections in which it is the child
};

class ObjectGraph {
public:
    // Builds the graph of a parsed document (taking ownership of it). Never fails: whatever
    // cannot be understood is skipped.
    static std::unique_ptr<ObjectGraph> Build(Document document);

    ObjectGraph(const ObjectGraph&) = delete;
    ObjectGraph& operator=(const ObjectGraph&) = delete;

    const Document& GetDocument() const { return m_Document; }
    std::uint32_t Version() const { return m_Document.version; }

    const std::vector<Object>& Objects() const { return m_Objects; }
    const Object& At(std::size_t index) const { return m_Objects[index]; }
    const Connection& Link(std::size_t index) const { return m_Connections[index]; }
    std::size_t Root() const { return m_Root; }

    // Objects connected to parent (OO only, or only OP to that property when given), in
    // connection order; kind filters by record name when not empty.
    std::vector<std::size_t> Sources(std::size_t parent, std::string_view kind = {}) const;
    std::vector<std::size_t> PropertySources(std::size_t parent, std::string_view property) const;
    // Objects that child is connected to (OO only), in connection order.
    std::vector<std::size_t> Destinations(std::size_t child, std::string_view kind = {}) const;

    // The object's own property, else the property template of its kind, else nullptr.
    const PropertyValue* FindProperty(std::size_t object, std::string_view name) const;

    // Take names in file order, and the file's current take ("" when none).
    const std::string& CurrentTake() const { return m_CurrentTake; }

private:
    ObjectGraph() = default;

    std::size_t AddObject(Object object);
    void Connect(std::size_t child, std::size_t parent, std::string property);
    Record& MakeRecord(std::string name);

    // Sections every layout may have (ObjectGraph.cpp).
    void ReadTemplates();
    void ReadObjects(const Record& objects);
    void ReadConnections(const Record& connections);
    void ReadTakes();

    // The oldest layout, top-level Model and Media records (Layout5800.cpp).
    void ReadLegacyModels();
    std::vector<std::pair<std::size_t, const Record*>> ReadTopLevelModels(
        std::int64_t& nextSynthetic);
    void AddEmbeddedMaterials(std::size_t model, const Record& rec, std::int64_t& nextSynthetic);
    void ConnectChildList(std::size_t model, const Record& rec, std::set<std::size_t>& isChild);
    void AddModelGeometry(std::size_t model, const Record& rec, std::int64_t& nextSynthetic);
    void ReadMediaVideos();

    // Objects named by string, data inside Model records, Takes (Layout6100.cpp).
    void AddLegacyGeometryAndAttributes();
    void AttachLegacyTextures();
    void ConnectTexture(std::size_t texture, std::size_t material, const char* property);
    void ConnectTextureVideos();
    void ReadLegacyTakes(const Record& takes);
    void ReadTakeModel(const Record& model, std::size_t layer);
    void AddTakeCurve(const Record& channel, std::size_t curveNode, const char* axis);

    Document m_Document;
    std::vector<Object> m_Objects;
    std::vector<Connection> m_Connections;
    std::size_t m_Root = kNoObject;
    std::unordered_map<std::int64_t, std::size_t> m_ById;
    std::unordered_map<std::string, std::size_t> m_ByKey;  // "Class::Name" (older layouts)
    std::unordered_map<std::string, std::vector<PropertyValue>> m_Templates;  // by kind
    std::deque<Record> m_Synthetic;  // records made for older layouts; addresses stay put
    std::string m_CurrentTake;
    bool m_NamedLayout = false;  // objects are named by string rather than by id
};

// Splits a name as written ("Model::pCube1" or "pCube1\0\1Model") into class and bare name.
void SplitObjectName(std::string_view written, std::string& className, std::string& name);

// Reads one Properties60 / Properties70 block.
std::vector<PropertyValue> ReadProperties(const Record& block);

}  // namespace fbx
