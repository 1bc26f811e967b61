// SkinIndex: the skin influences of every control point of one mesh, built once so that
// loading a corner costs the size of its own influence list, not a scan of every cluster.
#pragma once

#include <string>
#include <vector>

#include "model/Model.h"

class KFbxMesh;

class SkinIndex {
public:
    // Walks every skin, cluster and index of the mesh once. Influences come out in the order
    // a scan of skins, then clusters, then index positions would find them; zero weights are
    // left out. Bone names are collected into boneNames (one entry per distinct link name).
    SkinIndex(const KFbxMesh& mesh, std::vector<std::string>& boneNames);

    // The influences of one control point; empty for a point no cluster names.
    const SkinInfluences& At(int controlPoint) const;

private:
    std::vector<SkinInfluences> m_ByControlPoint;
    SkinInfluences m_None;
};
