#include "render/Draw.h"

#include <GL/gl.h>

#include <cmath>
#include <utility>

#include "render/NodeTransform.h"

namespace {

// Material state compiled into a mesh's list. Returns whether the mesh is textured.
bool CompileMaterial(const Mesh& mesh) {
    if (!mesh.m_Materials.empty() && mesh.m_Materials.front().m_Valid) {
        const Material& material = mesh.m_Materials.front();
        const float alpha = material.m_Alpha;
        const float ambient[4] = {material.m_Ambient[0], material.m_Ambient[1],
                                  material.m_Ambient[2], alpha};
        const float diffuse[4] = {material.m_Diffuse[0], material.m_Diffuse[1],
                                  material.m_Diffuse[2], alpha};
        const float specular[4] = {material.m_Specular[0], material.m_Specular[1],
                                   material.m_Specular[2], alpha};
        const float emission[4] = {material.m_Emissive[0], material.m_Emissive[1],
                                   material.m_Emissive[2], alpha};
        glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
        glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
        glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
        glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission);
        glMaterialfv(GL_FRONT_AND_BACK, GL_SHININESS, &material.m_Shininess);
        if (material.m_HasTexture) {
            glBindTexture(GL_TEXTURE_2D, material.m_TextureId);
            glEnable(GL_TEXTURE_2D);
            return true;
        }
        return false;
    }
    // The default grey material only sets the front faces; back faces keep whatever was
    // there before.
    const float grey[4] = {0.7f, 0.7f, 0.7f, 1.0f};
    const float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    glMaterialfv(GL_FRONT, GL_AMBIENT, grey);
    glMaterialfv(GL_FRONT, GL_DIFFUSE, grey);
    glMaterialfv(GL_FRONT, GL_SPECULAR, white);
    glMaterialf(GL_FRONT, GL_SHININESS, std::pow(2.0f, 5.0f));
    return false;
}

void CompileMesh(Mesh& mesh) {
    const GLuint id = glGenLists(1);
    mesh.m_DisplayList = static_cast<int>(id);
    glNewList(id, GL_COMPILE);
    const bool textured = CompileMaterial(mesh);
    for (Polygon& polygon : mesh.m_Polygons) {
        // Every polygon is its own fan, whatever its vertex count.
        glBegin(GL_TRIANGLE_FAN);
        if (polygon.m_Normal[0] == -1.0f) {
            ComputeFaceNormal(polygon, std::as_const(mesh).Vertices(polygon));
        }
        glNormal3fv(polygon.m_Normal);
        for (const Vertex& vertex : mesh.Vertices(polygon)) {
            if (textured) {
                const Material& material = mesh.m_Materials.front();
                glTexCoord2f(vertex.m_UV[0] * material.m_TextureScale[0],
                             vertex.m_UV[1] * material.m_TextureScale[1]);
            }
            glColor4f(vertex.m_Color[0], vertex.m_Color[1], vertex.m_Color[2], vertex.m_Color[3]);
            glVertex3f(vertex.m_Position[0], vertex.m_Position[1], vertex.m_Position[2]);
        }
        glEnd();
    }
    if (textured) {
        glDisable(GL_TEXTURE_2D);
    }
    glEndList();
}

}  // namespace

void PlaceModel(const Model& model) {
    glTranslatef(model.m_Position[0], model.m_Position[1], model.m_Position[2]);
    glRotatef(model.m_Rotation[0], 1.0f, 0.0f, 0.0f);
    glRotatef(model.m_Rotation[1], 0.0f, 1.0f, 0.0f);
    glRotatef(model.m_Rotation[2], 0.0f, 0.0f, 1.0f);
}

bool DrawModel(Model& model) {
    // No push before these: each model is placed relative to the models drawn before it.
    PlaceModel(model);
    glPushMatrix();
    DrawMeshes(model);
    glPopMatrix();
    return false;
}

void DrawMeshes(Model& model) {
    for (auto& entry : model.m_Meshes) {
        Mesh& mesh = entry.second;
        glPushMatrix();
        glTranslatef(mesh.m_Translation[0], mesh.m_Translation[1], mesh.m_Translation[2]);
        // A mesh turns Z, Y, X: the reverse of the model's own order.
        glRotatef(mesh.m_Rotation[2], 0.0f, 0.0f, 1.0f);
        glRotatef(mesh.m_Rotation[1], 0.0f, 1.0f, 0.0f);
        glRotatef(mesh.m_Rotation[0], 1.0f, 0.0f, 0.0f);
        if (!mesh.m_Static) {
            ApplyNodeTransform(model.m_Frame, model, mesh.m_NodeName);
        }
        if (mesh.m_DisplayList == -1) {
            CompileMesh(mesh);
        }
        glCallList(static_cast<GLuint>(mesh.m_DisplayList));
        glPopMatrix();
    }
}

void ComputeFaceNormal(Polygon& polygon, VertexRun<const Vertex> corners) {
    // A polygon needs three corners to span a plane; fewer give no direction at all.
    if (corners.size() < 3) {
        polygon.m_Normal[0] = polygon.m_Normal[1] = polygon.m_Normal[2] = 0.0f;
        return;
    }
    const float* p0 = corners[0].m_FacePoint;
    const float* p1 = corners[1].m_FacePoint;
    const float* p2 = corners[2].m_FacePoint;
    const float a[3] = {p0[0] - p1[0], p0[1] - p1[1], p0[2] - p1[2]};
    const float b[3] = {p1[0] - p2[0], p1[1] - p2[1], p1[2] - p2[2]};
    polygon.m_Normal[0] = a[1] * b[2] - a[2] * b[1];
    polygon.m_Normal[1] = a[2] * b[0] - a[0] * b[2];
    polygon.m_Normal[2] = a[0] * b[1] - a[1] * b[0];
    Normalize(polygon.m_Normal);
}

void Normalize(float vector[3]) {
    float length = std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
    if (length == 0.0f) {
        length = 1.0f;
    }
    vector[0] /= length;
    vector[1] /= length;
    vector[2] /= length;
}
