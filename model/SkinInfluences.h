// Skin data of the engine's meshes. A vertex's bone influences are those of its control
// point: each mesh keeps them once, in Mesh::m_SkinInfluences, and a vertex names its run of
// that table. A vertex stays small, and a copy of a mesh is valid as it stands.
#pragma once

#include <cstddef>
#include <cstdint>

// One bone influence: an index into the owning Mesh's m_BoneNames and a weight.
struct SkinInfluence {
    int m_Bone = 0;
    float m_Weight = 0.0f;
};

// The run of the owning Mesh's m_SkinInfluences that holds one vertex's influences
// (Mesh::Influences gives them); empty for a vertex no bone moves.
struct SkinInfluences {
    std::uint32_t m_First = 0;
    std::uint32_t m_Count = 0;

    bool empty() const { return m_Count == 0; }
    std::size_t size() const { return m_Count; }
};

// A run of influences to iterate.
struct InfluenceSpan {
    const SkinInfluence* m_Begin = nullptr;
    const SkinInfluence* m_End = nullptr;

    const SkinInfluence* begin() const { return m_Begin; }
    const SkinInfluence* end() const { return m_End; }
    std::size_t size() const { return static_cast<std::size_t>(m_End - m_Begin); }
    bool empty() const { return m_Begin == m_End; }
};
