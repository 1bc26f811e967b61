// Small meshes for the drawing tests, built point by point.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>

#include "model/Model.h"

// Fills a position, rotation, colour or scale from its values.
inline void Set(float* target, std::initializer_list<float> values) {
    std::copy(values.begin(), values.end(), target);
}

// Adds to the mesh a polygon through the points, each used as control point, face point and
// drawn position.
inline Polygon& AddPolygon(Mesh& mesh, std::initializer_list<std::array<float, 3>> points) {
    Polygon& polygon = mesh.AddPolygon({});
    for (const std::array<float, 3>& point : points) {
        Vertex& vertex = mesh.m_Vertices.emplace_back();
        for (int k = 0; k < 3; ++k) {
            vertex.m_Point[k] = vertex.m_FacePoint[k] = vertex.m_Position[k] = point[k];
        }
        ++polygon.m_Count;
    }
    return polygon;
}

// A small triangle around the origin, facing +z.
inline Mesh TriangleMesh() {
    Mesh mesh;
    AddPolygon(mesh, {{0, 0, 0}, {0.1f, 0, 0}, {0, 0.1f, 0}});
    return mesh;
}

// A red, lit square from (-1, -1) to (1, 1) in the XY plane, facing +z.
inline Mesh RedSquare() {
    Mesh mesh;
    AddPolygon(mesh, {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}});
    Material red;
    red.m_Valid = true;
    red.m_Ambient[0] = red.m_Diffuse[0] = red.m_Alpha = 1.0f;
    mesh.m_Materials.push_back(red);
    return mesh;
}
