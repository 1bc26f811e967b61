// Materials: the FBX materials of a mesh's node become engine Material records, at most one
// per mesh layer that has a material element.
#pragma once

class KFbxMesh;
struct Mesh;

// Appends the materials of the mesh's node to target.m_Materials. For each layer with a
// material element (not mapped by control point) every node material is read into the same
// record, so the last one wins. Lambert and Phong surfaces are both read as Lambert. Always
// returns false.
bool LoadMaterials(KFbxMesh* mesh, Mesh& target);
