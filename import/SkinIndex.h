// SkinIndex: the skin influences of every control point of one mesh, built once so that
// loading a corner costs nothing but naming its point's run.
#pragma once

#include <string>
#include <vector>

#include "model/Model.h"

class KFbxMesh;

class SkinIndex {
public:
    // Walks every skin, cluster and index of the mesh: the influences of each control point
    // go into table as one run, in the order a scan of skins, then clusters, then index
    // positions would find them; zero weights are left out. Bone names are collected into
    // boneNames (one entry per distinct link name).
    SkinIndex(const KFbxMesh& mesh, std::vector<std::string>& boneNames,
              std::vector<SkinInfluence>& table);

    // The run of one control point's influences; empty for a point no cluster names.
    SkinInfluences At(int controlPoint) const;

private:
    std::vector<SkinInfluences> m_ByControlPoint;
};
