#include "fbx/sdk/Summary.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "fbx/sdk/TextureLocation.h"
#include "fbx/sdk/fbxsdk.h"

namespace fbx {

namespace {

class Writer {
public:
    void Line(const std::string& text) {
        m_Text += text;
        m_Text += '\n';
    }
    std::string& Text() { return m_Text; }

private:
    std::string m_Text;
};

std::string Num(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%.4f", v);
    if (std::strcmp(text, "-0.0000") == 0)
        return "0.0000";
    return text;
}

std::string Triple(double a, double b, double c) {
    return "(" + Num(a) + ", " + Num(b) + ", " + Num(c) + ")";
}

std::string Triple(const fbxDouble3& v) {
    return Triple(v[0], v[1], v[2]);
}

std::string Quote(const char* text) {
    return std::string("\"") + (text ? text : "") + "\"";
}

const char* MappingName(KFbxLayerElement::EMappingMode mode) {
    switch (mode) {
        case KFbxLayerElement::eBY_CONTROL_POINT:
            return "by-control-point";
        case KFbxLayerElement::eBY_POLYGON_VERTEX:
            return "by-polygon-vertex";
        case KFbxLayerElement::eBY_POLYGON:
            return "by-polygon";
        case KFbxLayerElement::eBY_EDGE:
            return "by-edge";
        case KFbxLayerElement::eALL_SAME:
            return "all-same";
        default:
            return "none";
    }
}

const char* ReferenceName(KFbxLayerElement::EReferenceMode mode) {
    switch (mode) {
        case KFbxLayerElement::eINDEX:
            return "index";
        case KFbxLayerElement::eINDEX_TO_DIRECT:
            return "index-to-direct";
        default:
            return "direct";
    }
}

template <class Element>
void ElementLine(Writer& out, const char* what, const Element* e) {
    if (!e)
        return;
    out.Line(std::string("    ") + what + " " + MappingName(e->GetMappingMode()) + " " +
             ReferenceName(e->GetReferenceMode()) + " direct " +
             std::to_string(e->GetDirectArray().GetCount()) + " index " +
             std::to_string(e->GetIndexArray().GetCount()));
}

// Nodes below the root in depth-first order, with their depth.
std::vector<std::pair<KFbxNode*, int>> NodesInOrder(KFbxNode* root) {
    std::vector<std::pair<KFbxNode*, int>> order;
    std::vector<std::pair<KFbxNode*, int>> pending;
    for (int i = root->GetChildCount() - 1; i >= 0; --i)
        pending.emplace_back(root->GetChild(i), 0);
    while (!pending.empty()) {
        auto [node, depth] = pending.back();
        pending.pop_back();
        order.emplace_back(node, depth);
        for (int i = node->GetChildCount() - 1; i >= 0; --i) {
            pending.emplace_back(node->GetChild(i), depth + 1);
        }
    }
    return order;
}

// Where the texture's image is: " image embedded (N bytes)", " image "PATH"" or " image missing".
std::string ImageText(const KFbxTexture& texture, const std::string& modelFile) {
    const TextureImageSource source = LocateTextureImage(texture, modelFile);
    switch (source.where) {
        case TextureImageSource::Where::Embedded:
            return " image embedded (" + std::to_string(source.size) + " bytes)";
        case TextureImageSource::Where::File:
            return " image " + Quote(source.path.c_str());
        case TextureImageSource::Where::Missing:
            break;
    }
    return " image missing";
}

void MaterialLines(Writer& out, KFbxSurfaceMaterial* material, const std::string& modelFile) {
    std::string line =
        "material " + Quote(material->GetName()) + " " + material->GetClassId().GetName();
    auto colour = [&](const char* label, const char* property) {
        KFbxProperty p = material->FindProperty(property);
        if (p.IsValid())
            line += std::string(" ") + label + " " + Triple(p.Get<fbxDouble3>());
    };
    auto number = [&](const char* label, const char* property) {
        KFbxProperty p = material->FindProperty(property);
        if (p.IsValid())
            line += std::string(" ") + label + " " + Num(p.Get<double>());
    };
    colour("ambient", "AmbientColor");
    colour("diffuse", "DiffuseColor");
    colour("emissive", "EmissiveColor");
    number("transparency", "TransparencyFactor");
    if (material->Is(KFbxSurfacePhong::ClassId)) {
        colour("specular", "SpecularColor");
        number("shininess", "ShininessExponent");
        colour("reflection", "ReflectionColor");
    }
    out.Line(line);

    // Textured properties by name, so that both file layouts list them alike.
    std::vector<KFbxProperty> textured;
    for (int i = 0; i < material->GetPropertyCount(); ++i) {
        KFbxProperty p = material->GetPropertyAt(i);
        if (p.GetSrcObjectCount() > 0)
            textured.push_back(p);
    }
    std::sort(textured.begin(), textured.end(), [](const KFbxProperty& a, const KFbxProperty& b) {
        return std::strcmp(a.GetName(), b.GetName()) < 0;
    });
    for (const KFbxProperty& p : textured) {
        for (int s = 0; s < p.GetSrcObjectCount(); ++s) {
            KFbxTexture* texture = KFbxCast<KFbxTexture>(p.GetSrcObject(s));
            if (!texture)
                continue;
            if (KFbxLayeredTexture* layered = KFbxCast<KFbxLayeredTexture>(texture)) {
                std::string l = "  layered " + std::string(p.GetName()) + " " +
                                Quote(layered->GetName()) + " blend";
                for (int t = 0; t < layered->GetSrcObjectCount(KFbxTexture::ClassId); ++t) {
                    KFbxLayeredTexture::EBlendMode mode = KFbxLayeredTexture::eTRANSLUCENT;
                    l += layered->GetTextureBlendMode(t, mode) ? " " + std::to_string(mode) : " -";
                }
                out.Line(l);
                for (int t = 0; t < layered->GetSrcObjectCount(KFbxTexture::ClassId); ++t) {
                    auto* inner =
                        static_cast<KFbxTexture*>(layered->GetSrcObject(KFbxTexture::ClassId, t));
                    out.Line("    texture " + Quote(inner->GetName()) + " file " +
                             Quote(inner->GetFileName()) + " relative " +
                             Quote(inner->GetRelativeFileName()) + ImageText(*inner, modelFile));
                }
                continue;
            }
            out.Line(
                "  texture " + std::string(p.GetName()) + " " + Quote(texture->GetName()) +
                " file " + Quote(texture->GetFileName()) + " relative " +
                Quote(texture->GetRelativeFileName()) + " scale " + Num(texture->GetScaleU()) +
                " " + Num(texture->GetScaleV()) + " translation " +
                Num(texture->GetTranslationU()) + " " + Num(texture->GetTranslationV()) +
                " rotation " +
                Triple(texture->GetRotationU(), texture->GetRotationV(), texture->GetRotationW()) +
                " alpha " + Num(texture->GetDefaultAlpha()) + ImageText(*texture, modelFile));
        }
    }
}

void MeshLines(Writer& out, KFbxNode* node, KFbxMesh* mesh) {
    out.Line("mesh " + Quote(node->GetName()) + " polygons " +
             std::to_string(mesh->GetPolygonCount()) + " corners " +
             std::to_string(mesh->GetPolygonVertexCount()) + " points " +
             std::to_string(mesh->GetControlPointsCount()) + " layers " +
             std::to_string(mesh->GetLayerCount()));
    if (mesh->GetControlPointsCount() > 0) {
        double lo[3], hi[3];
        for (int a = 0; a < 3; ++a)
            lo[a] = hi[a] = mesh->GetControlPoints()[0][a];
        for (int i = 0; i < mesh->GetControlPointsCount(); ++i) {
            for (int a = 0; a < 3; ++a) {
                lo[a] = std::min(lo[a], mesh->GetControlPoints()[i][a]);
                hi[a] = std::max(hi[a], mesh->GetControlPoints()[i][a]);
            }
        }
        out.Line("  bounds " + Triple(lo[0], lo[1], lo[2]) + " " + Triple(hi[0], hi[1], hi[2]));
    }
    // Polygon sizes, as a histogram.
    std::vector<int> sizes;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p) {
        int size = mesh->GetPolygonSize(p);
        if (size >= static_cast<int>(sizes.size()))
            sizes.resize(static_cast<std::size_t>(size) + 1);
        ++sizes[static_cast<std::size_t>(size)];
    }
    std::string histogram = "  sizes";
    for (std::size_t s = 0; s < sizes.size(); ++s) {
        if (sizes[s])
            histogram += " " + std::to_string(s) + ":" + std::to_string(sizes[s]);
    }
    out.Line(histogram);
    for (int l = 0; l < mesh->GetLayerCount(); ++l) {
        KFbxLayer* layer = mesh->GetLayer(l);
        out.Line("  layer " + std::to_string(l));
        ElementLine(out, "normals", layer->GetNormals());
        ElementLine(out, "binormals", layer->GetBinormals());
        ElementLine(out, "tangents", layer->GetTangents());
        ElementLine(out, "uvs", layer->GetUVs());
        ElementLine(out, "colors", layer->GetVertexColors());
        ElementLine(out, "materials", layer->GetMaterials());
        ElementLine(out, "textures", layer->GetTextures());
        ElementLine(out, "holes", layer->GetHoles());
        if (KFbxLayerElementHole* holes = layer->GetHoles()) {
            int count = 0;
            for (int i = 0; i < holes->GetDirectArray().GetCount(); ++i)
                count += holes->GetDirectArray().GetAt(i);
            out.Line("    hole polygons " + std::to_string(count));
        }
    }
    for (int d = 0; d < mesh->GetDeformerCount(KFbxDeformer::eSKIN); ++d) {
        auto* skin = static_cast<KFbxSkin*>(mesh->GetDeformer(d, KFbxDeformer::eSKIN));
        out.Line("  skin " + std::to_string(d) + " clusters " +
                 std::to_string(skin->GetClusterCount()));
        for (int c = 0; c < skin->GetClusterCount(); ++c) {
            KFbxCluster* cluster = skin->GetCluster(c);
            double total = 0;
            for (int i = 0; i < cluster->GetControlPointIndicesCount(); ++i) {
                total += cluster->GetControlPointWeights()[i];
            }
            KFbxXMatrix link;
            cluster->GetTransformLinkMatrix(link);
            out.Line("    cluster " + std::to_string(c) + " link " +
                     Quote(cluster->GetLink() ? cluster->GetLink()->GetName() : "") + " indices " +
                     std::to_string(cluster->GetControlPointIndicesCount()) + " weight-sum " +
                     Num(total) + " link-translation " +
                     Triple(link.GetT()[0], link.GetT()[1], link.GetT()[2]));
        }
    }
}

}  // namespace

const char* AttributeTypeName(int type) {
    static const char* const kNames[] = {"unidentified",
                                         "null",
                                         "marker",
                                         "skeleton",
                                         "mesh",
                                         "nurb",
                                         "patch",
                                         "camera",
                                         "camera-switcher",
                                         "light",
                                         "optical-reference",
                                         "optical-marker",
                                         "constraint",
                                         "nurbs-curve",
                                         "trim-nurbs-surface",
                                         "boundary",
                                         "nurbs-surface",
                                         "shape",
                                         "lodgroup",
                                         "subdiv",
                                         "line"};
    if (type < 0 || type >= static_cast<int>(sizeof kNames / sizeof kNames[0]))
        return "unknown";
    return kNames[type];
}

std::string SummarizeScene(const KFbxImporter& importer, KFbxScene& scene,
                           const FrameNumbering& numbering) {
    Writer out;
    int major, minor, revision;
    importer.GetFileVersion(major, minor, revision);
    out.Line("fbx " + std::to_string(major) + "." + std::to_string(minor) + "." +
             std::to_string(revision) + (importer.IsBinaryFile() ? " binary" : " ascii"));

    out.Line("takes " + std::to_string(importer.GetTakeCount()) + " current " +
             Quote(importer.GetCurrentTakeName()));
    const std::vector<std::string>& names = scene.GetTakeNames();
    std::vector<TakeFrames> frames(names.size());
    if (numbering) {
        for (std::size_t t = 0; t < names.size(); ++t) {
            if (const KFbxTakeInfo* info = scene.GetTakeInfo(names[t].c_str())) {
                frames[t].start = info->mLocalTimeSpan.GetStart().GetSecondDouble();
                frames[t].stop = info->mLocalTimeSpan.GetStop().GetSecondDouble();
            }
        }
        numbering(frames);
    }
    for (int t = 0; t < importer.GetTakeCount(); ++t) {
        const std::string name = importer.GetTakeInfo(t)->mName;
        out.Line("take " + Quote(name.c_str()));
        const auto inScene = std::find(names.begin(), names.end(), name);
        if (!numbering || inScene == names.end() || frames.size() != names.size())
            continue;
        const TakeFrames& f = frames[static_cast<std::size_t>(inScene - names.begin())];
        char seconds[64];
        std::snprintf(seconds, sizeof seconds, "%.2f", f.stop - f.start);
        out.Line("  frames " + std::to_string(f.firstFrame) + " to " + std::to_string(f.lastFrame) +
                 " (" + seconds + " s)");
    }

    std::vector<std::pair<KFbxNode*, int>> nodes = NodesInOrder(scene.GetRootNode());
    std::vector<KFbxSurfaceMaterial*> materials;
    for (auto [node, depth] : nodes) {
        KFbxNodeAttribute* attribute = node->GetNodeAttribute();
        std::string line(static_cast<std::size_t>(depth) * 2, ' ');
        line += "node " + Quote(node->GetName()) + " " +
                (attribute ? AttributeTypeName(attribute->GetAttributeType()) : "-") + " T " +
                Triple(node->LclTranslation.Get()) + " R " + Triple(node->LclRotation.Get()) +
                " S " + Triple(node->LclScaling.Get());
        for (int m = 0; m < node->GetMaterialCount(); ++m) {
            KFbxSurfaceMaterial* material = node->GetMaterial(m);
            line += " material " + Quote(material->GetName());
            if (std::find(materials.begin(), materials.end(), material) == materials.end()) {
                materials.push_back(material);
            }
        }
        out.Line(line);
    }
    for (auto [node, depth] : nodes) {
        if (KFbxMesh* mesh = node->GetMesh())
            MeshLines(out, node, mesh);
    }
    for (KFbxSurfaceMaterial* material : materials)
        MaterialLines(out, material, importer.GetFileName());

    static const char* const kGroups[3] = {"T", "R", "S"};
    static const char* const kAxes[3] = {"X", "Y", "Z"};
    for (auto [node, depth] : nodes) {
        int previous = node->GetCurrentTakeNodeIndex();
        for (int t = 1; t < node->GetTakeNodeNameCount(); ++t) {
            node->SetCurrentTakeNode(t);
            std::string line =
                "curves " + Quote(node->GetTakeNodeName(t)) + " " + Quote(node->GetName());
            bool any = false;
            KFbxProperty* props[3] = {&node->LclTranslation, &node->LclRotation, &node->LclScaling};
            for (int g = 0; g < 3; ++g) {
                line += std::string(" ") + kGroups[g];
                for (int a = 0; a < 3; ++a) {
                    KFCurve* curve = props[g]->GetKFCurve(kAxes[a]);
                    any = any || curve;
                    line += curve ? " " + std::to_string(curve->KeyGetCount()) : std::string(" -");
                }
            }
            if (any)
                out.Line(line);
        }
        node->SetCurrentTakeNode(previous);
    }
    return std::move(out.Text());
}

}  // namespace fbx
