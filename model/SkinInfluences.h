// SkinInfluences: the bone influences of one vertex. Most vertices have at most four, which
// are kept inside the vertex; more spill into a heap array, so copying a vertex usually
// allocates nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// One bone influence on a vertex: an index into the owning Mesh's m_BoneNames and a weight.
struct SkinInfluence {
    int m_Bone = 0;
    float m_Weight = 0.0f;
};

class SkinInfluences {
public:
    static constexpr std::size_t kInline = 4;

    SkinInfluences() = default;
    SkinInfluences(const SkinInfluences& other) { *this = other; }
    SkinInfluences& operator=(const SkinInfluences& other) {
        if (this == &other)
            return *this;
        m_Count = other.m_Count;
        for (std::size_t i = 0; i < kInline; ++i)
            m_Inline[i] = other.m_Inline[i];
        m_More =
            other.m_More ? std::make_unique<std::vector<SkinInfluence>>(*other.m_More) : nullptr;
        return *this;
    }
    SkinInfluences(SkinInfluences&&) noexcept = default;
    SkinInfluences& operator=(SkinInfluences&&) noexcept = default;

    void push_back(const SkinInfluence& influence) {
        if (!m_More && m_Count < kInline) {
            m_Inline[m_Count++] = influence;
            return;
        }
        if (!m_More) {
            m_More = std::make_unique<std::vector<SkinInfluence>>(m_Inline, m_Inline + m_Count);
        }
        m_More->push_back(influence);
        ++m_Count;
    }

    std::size_t size() const { return m_Count; }
    bool empty() const { return m_Count == 0; }
    const SkinInfluence* begin() const { return m_More ? m_More->data() : m_Inline; }
    const SkinInfluence* end() const { return begin() + m_Count; }
    const SkinInfluence& operator[](std::size_t i) const { return begin()[i]; }

private:
    std::uint32_t m_Count = 0;
    SkinInfluence m_Inline[kInline];
    std::unique_ptr<std::vector<SkinInfluence>> m_More;  // all influences, once past kInline
};
