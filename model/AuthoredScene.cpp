#include "model/AuthoredScene.h"

bool AuthoredMesh::HasBlended() const {
    for (const MaterialRange& range : m_Ranges) {
        if (range.m_Material >= 0 &&
            static_cast<std::size_t>(range.m_Material) < m_Materials.size() &&
            m_Materials[static_cast<std::size_t>(range.m_Material)].m_Blended)
            return true;
    }
    return false;
}
