#include "fbx/sdk/Mesh.h"

int* KFbxCluster::GetControlPointIndices() const {
    return m_Indices.empty() ? nullptr : m_Indices.data();
}

double* KFbxCluster::GetControlPointWeights() const {
    return m_Weights.empty() ? nullptr : m_Weights.data();
}

KFbxXMatrix& KFbxCluster::GetTransformMatrix(KFbxXMatrix& matrix) const {
    matrix = m_Transform;
    return matrix;
}

KFbxXMatrix& KFbxCluster::GetTransformLinkMatrix(KFbxXMatrix& matrix) const {
    matrix = m_TransformLink;
    return matrix;
}

KFbxCluster* KFbxSkin::GetCluster(int index) const {
    if (index < 0 || index >= GetClusterCount())
        return nullptr;
    return m_Clusters[static_cast<std::size_t>(index)];
}

int KFbxGeometry::GetDeformerCount(KFbxDeformer::EDeformerType type) const {
    int count = 0;
    for (const KFbxDeformer* d : m_Deformers)
        count += d->GetDeformerType() == type ? 1 : 0;
    return count;
}

KFbxDeformer* KFbxGeometry::GetDeformer(int index) const {
    if (index < 0 || index >= GetDeformerCount())
        return nullptr;
    return m_Deformers[static_cast<std::size_t>(index)];
}

KFbxDeformer* KFbxGeometry::GetDeformer(int index, KFbxDeformer::EDeformerType type) const {
    if (index < 0)
        return nullptr;
    for (KFbxDeformer* d : m_Deformers) {
        if (d->GetDeformerType() == type && index-- == 0)
            return d;
    }
    return nullptr;
}

KFbxVector4* KFbxGeometry::GetControlPoints() const {
    return m_ControlPoints.empty() ? nullptr : m_ControlPoints.data();
}

KFbxVector4 KFbxGeometry::GetControlPointAt(int index) const {
    if (index < 0 || index >= GetControlPointsCount())
        return KFbxVector4();
    return m_ControlPoints[static_cast<std::size_t>(index)];
}

KFbxMesh* KFbxMesh::Create(KFbxSdkManager* manager, const char* name) {
    return manager->Adopt(new KFbxMesh(manager, name));
}

int KFbxMesh::GetTextureUVIndex(int polygon, int corner,
                                KFbxLayerElement::ELayerElementType type) const {
    int point = GetPolygonVertex(polygon, corner);
    if (point < 0)
        return -1;
    int cornerIndex = GetPolygonVertexIndex(polygon) + corner;
    for (int l = 0; l < GetLayerCount(); ++l) {
        const KFbxLayerElementUV* uvs = GetLayer(l)->GetUVs(type);
        if (!uvs)
            continue;
        int at;
        switch (uvs->GetMappingMode()) {
            case KFbxLayerElement::eBY_POLYGON_VERTEX:
                at = cornerIndex;
                break;
            case KFbxLayerElement::eBY_CONTROL_POINT:
                at = point;
                break;
            case KFbxLayerElement::eBY_POLYGON:
                at = polygon;
                break;
            case KFbxLayerElement::eALL_SAME:
                at = 0;
                break;
            default:
                return -1;
        }
        if (uvs->GetReferenceMode() == KFbxLayerElement::eDIRECT)
            return at;
        if (at >= uvs->GetIndexArray().GetCount())
            return -1;
        return uvs->GetIndexArray().GetAt(at);
    }
    return -1;
}
