// ImportContext: what one model import carries from step to step: the SDK manager, the
// scene the file is read into, the Model being filled, and whether the bone hierarchy has
// been built already.
#pragma once

class KFbxSdkManager;
class KFbxScene;
struct Model;

struct ImportContext {
    KFbxSdkManager* Manager = nullptr;
    KFbxScene* Scene = nullptr;
    Model* Target = nullptr;
    bool SkeletonLoaded = false;
};
