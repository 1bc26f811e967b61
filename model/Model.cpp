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
