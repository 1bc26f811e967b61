// The object graph's core: objects, connections and the queries over them, property
// templates and blocks, and the Objects and Connections sections that 6100 and 7000+ files
// share. The readers of older layouts are in Layout5800.cpp and Layout6100.cpp.
#include "fbx/graph/ObjectGraph.h"

#include <algorithm>
#include <utility>

#include "fbx/graph/LegacyRecords.h"

namespace fbx {

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
        graph->ReadMediaVideos();
        graph->AddLegacyGeometryAndAttributes();
        graph->AttachLegacyTextures();
        graph->ConnectTextureVideos();
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

void ObjectGraph::ReadTakes() {
    const Record* takes = m_Document.root.Child("Takes");
    if (takes)
        m_CurrentTake = takes->ChildText("Current");
    bool haveStacks = std::any_of(m_Objects.begin(), m_Objects.end(),
                                  [](const Object& o) { return o.kind == "AnimationStack"; });
    if (haveStacks || !takes)
        return;
    ReadLegacyTakes(*takes);
}

}  // namespace fbx
