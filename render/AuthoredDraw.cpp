#include "render/AuthoredDraw.h"

#include <GL/gl.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/Pose.h"
#include "model/Skinning.h"
#include "render/Draw.h"
#include "render/TextureImageUpload.h"

namespace {

// A skinned mesh's corners for this frame, in the model's space (x y z per corner).
struct SkinnedCorners {
    std::vector<float> m_Positions;
    std::vector<float> m_Normals;
};

// A mesh with blended surfaces, put off until every opaque surface of the frame is drawn.
struct BlendedDraw {
    const Model* m_Model = nullptr;
    const AuthoredMesh* m_Mesh = nullptr;
    Matrix4 m_NodeMatrix;  // geometry to model space, for a mesh drawn from its lists
    int m_Skinned = -1;    // index into FrameScratch::m_Skinned; -1 for a mesh that is not
};

// What drawing keeps from frame to frame, so that a steady frame allocates nothing.
struct FrameScratch {
    std::vector<Matrix4> m_World;           // the model being drawn, by node
    std::vector<SkinnedCorners> m_Skinned;  // one per skinned mesh drawn in the frame
    std::vector<BlendedDraw> m_Blended;
};

FrameScratch& Scratch() {
    static FrameScratch scratch;
    return scratch;
}

// The range's material; null for the default grey (-1, or an index with no material).
const AuthoredMaterial* RangeMaterial(const AuthoredMesh& mesh, const MaterialRange& range) {
    if (range.m_Material < 0 ||
        static_cast<std::size_t>(range.m_Material) >= mesh.m_Materials.size()) {
        return nullptr;
    }
    return &mesh.m_Materials[static_cast<std::size_t>(range.m_Material)];
}

bool IsBlended(const AuthoredMesh& mesh, const MaterialRange& range) {
    const AuthoredMaterial* material = RangeMaterial(mesh, range);
    return material != nullptr && material->m_Blended;
}

// Sets the material on both faces and, for a textured one, binds its texture and turns
// texturing on. Returns whether it did.
bool ApplyMaterial(const AuthoredMaterial* material) {
    if (material == nullptr) {
        const float grey[4] = {0.7f, 0.7f, 0.7f, 1.0f};
        const float black[4] = {0.0f, 0.0f, 0.0f, 1.0f};
        glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, grey);
        glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, grey);
        glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, black);
        glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, black);
        glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 0.0f);
        return false;
    }
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, material->m_Ambient);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, material->m_Diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, material->m_Specular);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, material->m_Emissive);
    // OpenGL refuses an exponent outside 0 to 128 and would keep the previous one.
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, std::clamp(material->m_Shininess, 0.0f, 128.0f));
    if (material->m_Texture && material->m_Texture->m_GlName != 0) {
        glBindTexture(GL_TEXTURE_2D, material->m_Texture->m_GlName);
        glEnable(GL_TEXTURE_2D);
        return true;
    }
    return false;
}

// The range's corners in m_Triangles, cut to whole triangles inside the list.
struct CornerSpan {
    std::size_t m_First = 0;
    std::size_t m_Count = 0;
};

CornerSpan RangeCorners(const AuthoredMesh& mesh, const MaterialRange& range) {
    const std::size_t total = mesh.m_Triangles.size();
    CornerSpan span;
    span.m_First = std::min<std::size_t>(range.m_First, total);
    // glDrawElements takes an int count.
    span.m_Count = std::min<std::size_t>({range.m_Count, total - span.m_First, INT_MAX});
    span.m_Count -= span.m_Count % 3;
    return span;
}

// Whether the corner's control point, normal and (when wanted) UV exist.
bool CornerIsWhole(const AuthoredMesh& mesh, std::uint32_t corner, bool textured) {
    const std::size_t c = corner;
    if (c >= mesh.m_CornerPoints.size() || c * 3 + 3 > mesh.m_CornerNormals.size()) {
        return false;
    }
    if (textured && c * 2 + 2 > mesh.m_CornerUVs.size()) {
        return false;
    }
    return std::size_t{mesh.m_CornerPoints[c]} * 3 + 3 <= mesh.m_Points.size();
}

void SendCorner(const AuthoredMesh& mesh, std::uint32_t corner, bool textured) {
    glNormal3fv(&mesh.m_CornerNormals[std::size_t{corner} * 3]);
    if (textured) {
        glTexCoord2fv(&mesh.m_CornerUVs[std::size_t{corner} * 2]);
    }
    glVertex3fv(&mesh.m_Points[std::size_t{mesh.m_CornerPoints[corner]} * 3]);
}

// Issues the ranges of the one kind (blended or opaque), each with its material, corner by
// corner with its own normal. Triangles with a missing corner are left out.
void IssueRanges(const AuthoredMesh& mesh, bool blended) {
    for (const MaterialRange& range : mesh.m_Ranges) {
        if (IsBlended(mesh, range) != blended) {
            continue;
        }
        const bool textured = ApplyMaterial(RangeMaterial(mesh, range));
        const CornerSpan span = RangeCorners(mesh, range);
        glBegin(GL_TRIANGLES);
        for (std::size_t i = span.m_First; i < span.m_First + span.m_Count; i += 3) {
            const std::uint32_t* corners = &mesh.m_Triangles[i];
            if (CornerIsWhole(mesh, corners[0], textured) &&
                CornerIsWhole(mesh, corners[1], textured) &&
                CornerIsWhole(mesh, corners[2], textured)) {
                for (int k = 0; k < 3; ++k) {
                    SendCorner(mesh, corners[k], textured);
                }
            }
        }
        glEnd();
        if (textured) {
            glDisable(GL_TEXTURE_2D);
        }
    }
}

unsigned int CompileList(const AuthoredMesh& mesh, bool blended) {
    const GLuint list = glGenLists(1);
    if (list != 0) {
        glNewList(list, GL_COMPILE);
        IssueRanges(mesh, blended);
        glEndList();
    }
    return list;
}

// A mesh that only follows its node is compiled once: its opaque ranges into one list and
// its blended ones into another.
void CompileMesh(AuthoredMesh& mesh) {
    mesh.m_OpaqueList = CompileList(mesh, false);
    if (mesh.m_OpaqueList != 0 && mesh.HasBlended()) {
        mesh.m_BlendedList = CompileList(mesh, true);
    }
}

// Draws the ranges of the one kind from this frame's skinned corners.
void DrawSkinnedRanges(const AuthoredMesh& mesh, const SkinnedCorners& corners, bool blended) {
    const std::size_t cornerCount = mesh.m_CornerPoints.size();
    if (corners.m_Positions.size() < cornerCount * 3 ||
        corners.m_Normals.size() < cornerCount * 3) {
        return;
    }
    const bool hasUVs = mesh.m_CornerUVs.size() >= cornerCount * 2;
    glVertexPointer(3, GL_FLOAT, 0, corners.m_Positions.data());
    glNormalPointer(GL_FLOAT, 0, corners.m_Normals.data());
    if (hasUVs) {
        glTexCoordPointer(2, GL_FLOAT, 0, mesh.m_CornerUVs.data());
    }
    for (const MaterialRange& range : mesh.m_Ranges) {
        if (IsBlended(mesh, range) != blended) {
            continue;
        }
        const CornerSpan span = RangeCorners(mesh, range);
        const std::uint32_t* first = mesh.m_Triangles.data() + span.m_First;
        // OpenGL would read past the arrays for a corner that is not there.
        if (span.m_Count == 0 || std::any_of(first, first + span.m_Count,
                                             [&](std::uint32_t c) { return c >= cornerCount; })) {
            continue;
        }
        const bool textured = ApplyMaterial(RangeMaterial(mesh, range));
        if (textured && hasUVs) {
            glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        }
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(span.m_Count), GL_UNSIGNED_INT, first);
        if (textured) {
            glDisableClientState(GL_TEXTURE_COORD_ARRAY);
            glDisable(GL_TEXTURE_2D);
        }
    }
}

bool IsPlaceable(const Model& model) {
    for (int i = 0; i < 3; ++i) {
        if (!std::isfinite(model.m_Position[i]) || !std::isfinite(model.m_Rotation[i])) {
            return false;
        }
    }
    return true;
}

// The mesh's geometry to model space: its node's world and geometric transforms. False
// when the node is not there or the product is not finite.
bool NodeMatrix(const AuthoredScene& scene, const AuthoredMesh& mesh,
                const std::vector<Matrix4>& world, Matrix4& matrix) {
    if (mesh.m_Node < 0 || static_cast<std::size_t>(mesh.m_Node) >= world.size() ||
        static_cast<std::size_t>(mesh.m_Node) >= scene.m_Nodes.size()) {
        return false;
    }
    const auto node = static_cast<std::size_t>(mesh.m_Node);
    matrix = world[node] * GeometricTransform(scene.m_Nodes[node]);
    return matrix.IsFinite();
}

// Draws the model's opaque surfaces and puts its blended ones on the frame's list.
void DrawOpaque(Model& model, FrameScratch& scratch, std::size_t& skinnedUsed) {
    AuthoredScene& scene = *model.m_Authored;
    // Written this way round, a NaN fraction comes out as 0.
    const float fraction =
        model.m_FrameFraction > 0.0f ? std::min(model.m_FrameFraction, 1.0f) : 0.0f;
    const PoseTime time = BlendedFrameTime(scene, model.m_Frame, model.m_NextFrame, fraction);
    EvaluateWorld(scene, time, scratch.m_World);

    glPushMatrix();
    PlaceModel(model);
    for (AuthoredMesh& mesh : scene.m_Meshes) {
        // Images the import could not hand over go up before any list is compiled.
        for (AuthoredMaterial& material : mesh.m_Materials) {
            if (material.m_Texture)
                UploadTextureImage(*material.m_Texture);
        }
        if (mesh.IsSkinned()) {
            if (skinnedUsed == scratch.m_Skinned.size()) {
                scratch.m_Skinned.emplace_back();
            }
            SkinnedCorners& corners = scratch.m_Skinned[skinnedUsed];
            SkinMesh(scene, mesh, scratch.m_World, corners.m_Positions, corners.m_Normals);
            DrawSkinnedRanges(mesh, corners, false);
            if (mesh.HasBlended()) {
                scratch.m_Blended.push_back(
                    {&model, &mesh, Matrix4(), static_cast<int>(skinnedUsed)});
            }
            ++skinnedUsed;
            continue;
        }
        Matrix4 matrix;
        if (!NodeMatrix(scene, mesh, scratch.m_World, matrix)) {
            continue;
        }
        if (mesh.m_OpaqueList == 0) {
            CompileMesh(mesh);
        }
        glPushMatrix();
        glMultMatrixd(matrix.m);
        glCallList(mesh.m_OpaqueList);
        glPopMatrix();
        if (mesh.m_BlendedList != 0) {
            scratch.m_Blended.push_back({&model, &mesh, matrix, -1});
        }
    }
    glPopMatrix();
}

void DrawBlended(const BlendedDraw& draw, const FrameScratch& scratch) {
    glPushMatrix();
    PlaceModel(*draw.m_Model);
    if (draw.m_Skinned >= 0) {
        DrawSkinnedRanges(*draw.m_Mesh, scratch.m_Skinned[static_cast<std::size_t>(draw.m_Skinned)],
                          true);
    } else {
        glMultMatrixd(draw.m_NodeMatrix.m);
        glCallList(draw.m_Mesh->m_BlendedList);
    }
    glPopMatrix();
}

bool IsDrawn(const Model* model) {
    return model != nullptr && model->m_Authored != nullptr && IsPlaceable(*model);
}

}  // namespace

void DrawAuthoredModels(const std::list<Model*>& models) {
    if (std::none_of(models.begin(), models.end(), IsDrawn)) {
        return;
    }
    FrameScratch& scratch = Scratch();
    scratch.m_Blended.clear();

    // Everything changed below comes back with the pops at the end.
    glPushAttrib(GL_ENABLE_BIT | GL_LIGHTING_BIT | GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT |
                 GL_TEXTURE_BIT | GL_CURRENT_BIT);
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    // Node scaling stretches the normals; a mesh seen from behind is lit from its back.
    glEnable(GL_NORMALIZE);
    glShadeModel(GL_SMOOTH);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    // Textures tint the lit colour; highlights stay white on top of them.
    glLightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_BLEND);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);

    std::size_t skinnedUsed = 0;
    for (Model* model : models) {
        if (IsDrawn(model)) {
            DrawOpaque(*model, scratch, skinnedUsed);
        }
    }
    if (!scratch.m_Blended.empty()) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glDepthMask(GL_FALSE);
        for (const BlendedDraw& draw : scratch.m_Blended) {
            DrawBlended(draw, scratch);
        }
    }

    glPopClientAttrib();
    glPopAttrib();
}
