#include "import/AuthoredMesh.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "fbx/sdk/fbxsdk.h"
#include "import/AuthoredMaterial.h"
#include "import/AuthoredSkin.h"

namespace {

// The direct-array index an element gives for one corner, through its index array when it
// has one; -1 for mappings the element cannot answer.
template <class Element>
int ElementIndex(const Element& element, int controlPoint, int polygon, int corner) {
    int index = -1;
    switch (element.GetMappingMode()) {
        case KFbxLayerElement::eBY_CONTROL_POINT:
            index = controlPoint;
            break;
        case KFbxLayerElement::eBY_POLYGON_VERTEX:
            index = corner;
            break;
        case KFbxLayerElement::eBY_POLYGON:
            index = polygon;
            break;
        case KFbxLayerElement::eALL_SAME:
            index = 0;
            break;
        default:
            return -1;
    }
    if (element.GetReferenceMode() != KFbxLayerElement::eDIRECT) {
        if (index < 0 || index >= element.GetIndexArray().GetCount())
            return -1;
        index = element.GetIndexArray().GetAt(index);
    }
    return index >= 0 && index < element.GetDirectArray().GetCount() ? index : -1;
}

// The first element of a kind over the mesh's layers; `get` picks it from a layer.
template <class Get>
auto FirstElement(const KFbxMesh& mesh, Get get) -> decltype(get(*mesh.GetLayer(0))) {
    for (int l = 0; l < mesh.GetLayerCount(); ++l) {
        const KFbxLayer* layer = mesh.GetLayer(l);
        if (layer && get(*layer))
            return get(*layer);
    }
    return nullptr;
}

// The unit normal of a polygon's corners (Newell's method, so any polygon gets one); zero
// when the corners span no plane.
void FaceNormal(const std::vector<float>& points, const std::vector<std::uint32_t>& corners,
                std::size_t first, std::size_t count, float (&normal)[3]) {
    double n[3] = {0.0, 0.0, 0.0};
    for (std::size_t k = 0; k < count; ++k) {
        const float* a = &points[corners[first + k] * 3];
        const float* b = &points[corners[first + (k + 1 < count ? k + 1 : 0)] * 3];
        n[0] += (static_cast<double>(a[1]) - b[1]) * (static_cast<double>(a[2]) + b[2]);
        n[1] += (static_cast<double>(a[2]) - b[2]) * (static_cast<double>(a[0]) + b[0]);
        n[2] += (static_cast<double>(a[0]) - b[0]) * (static_cast<double>(a[1]) + b[1]);
    }
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (int i = 0; i < 3; ++i)
        normal[i] =
            length > 0.0 && std::isfinite(length) ? static_cast<float>(n[i] / length) : 0.0f;
}

bool FiniteNormal(const KFbxVector4& v) {
    return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]) &&
           (v[0] != 0.0 || v[1] != 0.0 || v[2] != 0.0);
}

}  // namespace

bool ReadAuthoredGeometry(const KFbxNode& node, int index, const NodeIndex& nodes,
                          const Matrix4& geometric, AuthoredMesh& target) {
    const KFbxMesh* source = node.GetMesh();
    if (!source)
        return false;
    const KFbxMesh& mesh = *source;
    target.m_Node = index;
    target.m_Name = node.GetName();

    const int pointCount = std::max(0, mesh.GetControlPointsCount());
    const KFbxVector4* points = mesh.GetControlPoints();
    target.m_Points.assign(static_cast<std::size_t>(pointCount) * 3, 0.0f);
    for (int p = 0; points && p < pointCount; ++p) {
        for (int i = 0; i < 3; ++i) {
            const double v = points[p][i];
            target.m_Points[static_cast<std::size_t>(p) * 3 + i] =
                std::isfinite(v) ? static_cast<float>(v) : 0.0f;
        }
    }

    const KFbxLayerElementNormal* normals =
        FirstElement(mesh, [](const KFbxLayer& l) { return l.GetNormals(); });
    const KFbxLayerElementUV* uvs =
        FirstElement(mesh, [](const KFbxLayer& l) { return l.GetUVs(); });
    const KFbxLayerElementMaterial* materials =
        FirstElement(mesh, [](const KFbxLayer& l) { return l.GetMaterials(); });

    // Triangles by material slot; -1 (the default material) is kept in the last list.
    const auto materialCount = static_cast<std::size_t>(std::max(0, node.GetMaterialCount()));
    const std::size_t slots = materialCount + 1;
    const int polygonCount = std::max(0, mesh.GetPolygonCount());
    // The list of a polygon's triangles, or `slots` for a polygon that is not drawn (fewer
    // than three corners, or a corner without its control point).
    auto listOf = [&](int p) -> std::size_t {
        const int size = mesh.GetPolygonSize(p);
        bool valid = size >= 3;
        for (int k = 0; valid && k < size; ++k) {
            const int cp = mesh.GetPolygonVertex(p, k);
            valid = cp >= 0 && cp < pointCount;
        }
        if (!valid)
            return slots;
        int slot = materialCount == 0 ? -1 : 0;
        if (materials) {
            int index = -1;
            switch (materials->GetMappingMode()) {
                case KFbxLayerElement::eBY_POLYGON:
                    index = materials->GetIndexArray().GetAt(p);
                    break;
                case KFbxLayerElement::eALL_SAME:
                    index = materials->GetIndexArray().GetAt(0);
                    break;
                default:
                    index = 0;
                    break;
            }
            slot = index >= 0 && static_cast<std::size_t>(index) < materialCount ? index : -1;
        }
        return slot >= 0 ? static_cast<std::size_t>(slot) : slots - 1;
    };

    // Sizes first, so that every array is made once at its size; each polygon's list is kept
    // for the second pass.
    std::vector<std::size_t> listSizes(slots, 0);
    std::vector<std::uint32_t> lists(static_cast<std::size_t>(polygonCount));
    std::size_t corners = 0;
    for (int p = 0; p < polygonCount; ++p) {
        const std::size_t list = listOf(p);
        lists[static_cast<std::size_t>(p)] = static_cast<std::uint32_t>(list);
        if (list == slots)
            continue;
        const auto size = static_cast<std::size_t>(mesh.GetPolygonSize(p));
        listSizes[list] += (size - 2) * 3;
        corners += size;
    }
    target.m_CornerPoints.reserve(corners);
    target.m_CornerNormals.reserve(corners * 3);
    target.m_CornerUVs.reserve(corners * 2);
    std::vector<std::size_t> cursor(slots, 0);
    std::size_t triangleCorners = 0;
    for (std::size_t s = 0; s < slots; ++s) {
        cursor[s] = triangleCorners;
        if (listSizes[s] == 0)
            continue;
        MaterialRange range;
        range.m_Material = s + 1 < slots ? static_cast<int>(s) : -1;
        range.m_First = static_cast<std::uint32_t>(triangleCorners);
        range.m_Count = static_cast<std::uint32_t>(listSizes[s]);
        target.m_Ranges.push_back(range);
        triangleCorners += listSizes[s];
    }
    target.m_Triangles.resize(triangleCorners);

    int running = 0;
    for (int p = 0; p < polygonCount; ++p) {
        const int size = mesh.GetPolygonSize(p);
        const int first = running;
        running += std::max(0, size);
        const std::size_t list = lists[static_cast<std::size_t>(p)];
        if (list == slots)
            continue;
        const std::size_t base = target.m_CornerPoints.size();
        for (int k = 0; k < size; ++k)
            target.m_CornerPoints.push_back(
                static_cast<std::uint32_t>(mesh.GetPolygonVertex(p, k)));
        float face[3];
        FaceNormal(target.m_Points, target.m_CornerPoints, base, static_cast<std::size_t>(size),
                   face);
        for (int k = 0; k < size; ++k) {
            const auto cp =
                static_cast<int>(target.m_CornerPoints[base + static_cast<std::size_t>(k)]);
            const int index = normals ? ElementIndex(*normals, cp, p, first + k) : -1;
            const KFbxVector4 n =
                index >= 0 ? normals->GetDirectArray().GetAt(index) : KFbxVector4();
            const bool own = index >= 0 && FiniteNormal(n);
            for (int i = 0; i < 3; ++i)
                target.m_CornerNormals.push_back(own ? static_cast<float>(n[i]) : face[i]);
            const int uv = uvs ? ElementIndex(*uvs, cp, p, first + k) : -1;
            const KFbxVector2 value = uv >= 0 ? uvs->GetDirectArray().GetAt(uv) : KFbxVector2();
            float u = std::isfinite(value[0]) ? static_cast<float>(value[0]) : 0.0f;
            float v = std::isfinite(value[1]) ? static_cast<float>(value[1]) : 0.0f;
            target.m_CornerUVs.push_back(u);
            target.m_CornerUVs.push_back(v);
        }
        // A fan over the polygon's corners.
        std::uint32_t* fan = target.m_Triangles.data() + cursor[list];
        for (int k = 1; k + 1 < size; ++k) {
            *fan++ = static_cast<std::uint32_t>(base);
            *fan++ = static_cast<std::uint32_t>(base + k);
            *fan++ = static_cast<std::uint32_t>(base + k + 1);
        }
        cursor[list] += static_cast<std::size_t>(size - 2) * 3;
    }

    ReadAuthoredSkin(mesh, nodes, geometric, target);
    return true;
}

void FinishAuthoredMesh(const KFbxNode& node, AuthoredMesh& mesh, AuthoredTextures* textures) {
    AuthoredMaterials shading = ReadAuthoredMaterials(node, textures);
    mesh.m_Materials = std::move(shading.m_Materials);
    // Each corner belongs to one polygon, so to one range: placed once.
    std::vector<bool> placed;
    for (const MaterialRange& range : mesh.m_Ranges) {
        const auto slot = static_cast<std::size_t>(range.m_Material);
        if (range.m_Material < 0 || slot >= shading.m_Placements.size() ||
            shading.m_Placements[slot].IsIdentity())
            continue;
        placed.resize(mesh.m_CornerPoints.size(), false);
        const std::size_t end = std::min<std::size_t>(range.m_First + std::size_t{range.m_Count},
                                                      mesh.m_Triangles.size());
        for (std::size_t t = range.m_First; t < end; ++t) {
            const std::uint32_t corner = mesh.m_Triangles[t];
            if (corner >= placed.size() || placed[corner])
                continue;
            placed[corner] = true;
            shading.m_Placements[slot].Apply(mesh.m_CornerUVs[corner * 2],
                                             mesh.m_CornerUVs[corner * 2 + 1]);
        }
    }
}
