#include "import/MeshLoader.h"

#include <cstdio>
#include <string>
#include <vector>

#include "fbx/sdk/fbxsdk.h"
#include "import/Materials.h"
#include "import/SkinIndex.h"
#include "model/Model.h"

namespace {

// Index into a layer element's direct array for one corner, or -1 when its mapping or
// reference mode is not one the engine reads.
template <class Element>
int DirectIndex(const Element& element, int controlPoint, int corner, bool polygonVertex) {
    int index = -1;
    switch (element.GetMappingMode()) {
        case KFbxLayerElement::eBY_CONTROL_POINT:
            index = controlPoint;
            break;
        case KFbxLayerElement::eBY_POLYGON_VERTEX:
            if (!polygonVertex)
                return -1;
            index = corner;
            break;
        default:
            return -1;
    }
    switch (element.GetReferenceMode()) {
        case KFbxLayerElement::eDIRECT:
            return index;
        case KFbxLayerElement::eINDEX:
        case KFbxLayerElement::eINDEX_TO_DIRECT:
            return element.GetIndexArray().GetAt(index);
        default:
            return -1;
    }
}

// The normals and UV elements of one layer, looked up once per mesh rather than per corner.
struct LayerElements {
    const KFbxLayerElementNormal* m_Normals = nullptr;
    const KFbxLayerElementUV* m_UVs = nullptr;
};

std::vector<LayerElements> CollectLayers(const KFbxMesh& mesh) {
    std::vector<LayerElements> layers;
    for (int l = 0; l < mesh.GetLayerCount(); ++l) {
        const KFbxLayer* layer = mesh.GetLayer(l);
        if (!layer)
            continue;
        LayerElements elements;
        elements.m_Normals = layer->GetNormals();
        elements.m_UVs = layer->GetUVs();
        if (elements.m_Normals || elements.m_UVs)
            layers.push_back(elements);
    }
    return layers;
}

void ReadLayers(const std::vector<LayerElements>& layers, int controlPoint, int corner,
                Vertex& vertex) {
    for (const LayerElements& layer : layers) {
        // Layer normals go into the colour slots; drawing lights each polygon with its own
        // face normal.
        if (const KFbxLayerElementNormal* normals = layer.m_Normals) {
            const int index = DirectIndex(*normals, controlPoint, corner, true);
            if (index >= 0 && index < normals->GetDirectArray().GetCount()) {
                const KFbxVector4 normal = normals->GetDirectArray().GetAt(index);
                for (int i = 0; i < 4; ++i)
                    vertex.m_Color[i] = static_cast<float>(normal[i]);
            }
        }

        if (const KFbxLayerElementUV* uvs = layer.m_UVs) {
            const int index = DirectIndex(*uvs, controlPoint, corner, true);
            if (index >= 0 && index < uvs->GetDirectArray().GetCount()) {
                const KFbxVector2 uv = uvs->GetDirectArray().GetAt(index);
                vertex.m_UV[0] = static_cast<float>(uv[0]);
                vertex.m_UV[1] = static_cast<float>(uv[1]);
            }
        }
    }
}

void LoadBones(const KFbxMesh& mesh, Mesh& target) {
    std::printf("Loading bones for mesh: %s\n", target.m_NodeName.c_str());
    int total = 0;
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
        auto* skin = static_cast<KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (skin)
            total += skin->GetClusterCount();
    }
    int added = 0;
    for (int s = 0; s < mesh.GetDeformerCount(KFbxDeformer::eSKIN); ++s) {
        auto* skin = static_cast<KFbxSkin*>(mesh.GetDeformer(s, KFbxDeformer::eSKIN));
        if (!skin)
            continue;
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            KFbxCluster* cluster = skin->GetCluster(c);
            if (!cluster)
                continue;
            Bone bone;
            bone.m_Name = cluster->GetLink() ? cluster->GetLink()->GetName() : "";
            KFbxXMatrix transform, link;
            cluster->GetTransformMatrix(transform);
            cluster->GetTransformLinkMatrix(link);
            for (int r = 0; r < 4; ++r) {
                for (int k = 0; k < 4; ++k) {
                    bone.m_Transform[r * 4 + k] = transform.Get(r, k);
                    bone.m_TransformLink[r * 4 + k] = link.Get(r, k);
                }
            }
            target.m_Bones.push_back(bone);
            std::printf("Added a bone. %d of %d\n", ++added, total);
        }
    }
}

void CopyVector(float (&out)[4], const fbxDouble3& value) {
    for (int i = 0; i < 3; ++i)
        out[i] = static_cast<float>(value[i]);
}

}  // namespace

void LoadMesh(KFbxNode* node, ImportContext* context) {
    KFbxMesh* fbxMesh = node ? node->GetMesh() : nullptr;
    if (!fbxMesh)
        return;

    Mesh mesh;
    mesh.m_NodeName = node->GetName();
    std::printf("Loading mesh: %s\n", mesh.m_NodeName.c_str());

    // Kept for the importer's own use; drawing places meshes by the model only.
    CopyVector(mesh.m_Scaling, node->LclScaling.Get());

    const int pointCount = fbxMesh->GetControlPointsCount();
    const KFbxVector4* points = fbxMesh->GetControlPoints();
    const SkinIndex skin(*fbxMesh, mesh.m_BoneNames);
    const std::vector<LayerElements> layers = CollectLayers(*fbxMesh);

    const int polygonCount = fbxMesh->GetPolygonCount();
    mesh.m_Polygons.reserve(polygonCount > 0 ? static_cast<std::size_t>(polygonCount) : 0);
    int corner = 0;  // running count of polygon corners, for by-polygon-vertex layers
    for (int p = 0; p < polygonCount; ++p) {
        Polygon polygon;
        const int size = fbxMesh->GetPolygonSize(p);
        for (int k = 0; k < size; ++k, ++corner) {
            const int controlPoint = fbxMesh->GetPolygonVertex(p, k);
            float x = 0.0f, y = 0.0f, z = 0.0f;
            if (points && controlPoint >= 0 && controlPoint < pointCount) {
                x = static_cast<float>(points[controlPoint][0]);
                y = static_cast<float>(points[controlPoint][1]);
                z = static_cast<float>(points[controlPoint][2]);
            }
            Vertex vertex;
            const float xyz[3] = {x, y, z};
            for (int i = 0; i < 3; ++i) {
                vertex.m_Point[i] = xyz[i];
                vertex.m_FacePoint[i] = xyz[i];
                vertex.m_Position[i] = xyz[i];
            }
            vertex.m_Skin = skin.At(controlPoint);
            ReadLayers(layers, controlPoint, corner, vertex);
            polygon.m_Vertices.push_back(std::move(vertex));
        }
        mesh.m_Polygons.push_back(std::move(polygon));
    }

    LoadMaterials(fbxMesh, mesh);

    if (fbxMesh->GetDeformerCount(KFbxDeformer::eSKIN) > 0) {
        LoadBones(*fbxMesh, mesh);
    }

    const std::string name = mesh.m_NodeName;
    context->Target->AddMesh(name, std::move(mesh));
}
