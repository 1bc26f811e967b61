#include "model/Model.h"

#include <utility>

namespace {
MeshInsertedHook g_MeshInserted = nullptr;
}

void SetMeshInsertedHook(MeshInsertedHook hook) {
    g_MeshInserted = hook;
}

bool Model::AddMesh(const std::string& name, const Mesh& mesh) {
    if (m_Meshes.count(name) != 0)
        return false;
    return AddMesh(name, Mesh(mesh));
}

bool Model::AddMesh(const std::string& name, Mesh&& mesh) {
    const auto inserted = m_Meshes.try_emplace(name, std::move(mesh));
    if (!inserted.second) {
        return false;
    }
    if (g_MeshInserted)
        g_MeshInserted(inserted.first->second);
    return true;
}

InfluenceSpan Mesh::Influences(const Vertex& vertex) const {
    const std::size_t first = vertex.m_Skin.m_First;
    const std::size_t count = vertex.m_Skin.m_Count;
    if (count == 0 || first > m_SkinInfluences.size() || count > m_SkinInfluences.size() - first)
        return {};
    const SkinInfluence* begin = m_SkinInfluences.data() + first;
    return {begin, begin + count};
}

namespace {

// The run of `vertices` that `polygon` names, or none when it is not within them.
template <class V, class Vector>
VertexRun<V> RunOf(Vector& vertices, const Polygon& polygon) {
    const std::size_t first = polygon.m_First;
    const std::size_t count = polygon.m_Count;
    if (count == 0 || first > vertices.size() || count > vertices.size() - first)
        return {};
    V* begin = vertices.data() + first;
    return {begin, begin + count};
}

}  // namespace

VertexRun<Vertex> Mesh::Vertices(const Polygon& polygon) {
    return RunOf<Vertex>(m_Vertices, polygon);
}

VertexRun<const Vertex> Mesh::Vertices(const Polygon& polygon) const {
    return RunOf<const Vertex>(m_Vertices, polygon);
}

Polygon& Mesh::AddPolygon(std::initializer_list<Vertex> corners) {
    Polygon polygon;
    polygon.m_First = static_cast<std::uint32_t>(m_Vertices.size());
    polygon.m_Count = static_cast<std::uint32_t>(corners.size());
    m_Vertices.insert(m_Vertices.end(), corners);
    m_Polygons.push_back(polygon);
    return m_Polygons.back();
}
