// The class ids of every SDK-style class, defined together so that each parent's record is
// at hand; they are constant-initialised, so no start-up order matters.
#include "fbx/sdk/Importer.h"
#include "fbx/sdk/Material.h"
#include "fbx/sdk/Mesh.h"
#include "fbx/sdk/SceneNode.h"
#include "fbx/sdk/Video.h"

static const KFbxClassInfo kKFbxObjectInfo = {"KFbxObject", nullptr};
const KFbxClassId KFbxObject::ClassId{&kKFbxObjectInfo};

KFBX_CLASS_IMPLEMENT(KFbxScene, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxNode, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxNodeAttribute, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxNull, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxMarker, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxSkeleton, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxCamera, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxLight, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxGeometry, KFbxNodeAttribute)
KFBX_CLASS_IMPLEMENT(KFbxMesh, KFbxGeometry)
KFBX_CLASS_IMPLEMENT(KFbxDeformer, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxSkin, KFbxDeformer)
KFBX_CLASS_IMPLEMENT(KFbxCluster, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxSurfaceMaterial, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxSurfaceLambert, KFbxSurfaceMaterial)
KFBX_CLASS_IMPLEMENT(KFbxSurfacePhong, KFbxSurfaceLambert)
KFBX_CLASS_IMPLEMENT(KFbxTexture, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxLayeredTexture, KFbxTexture)
KFBX_CLASS_IMPLEMENT(KFbxVideo, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxImporter, KFbxObject)
KFBX_CLASS_IMPLEMENT(KFbxStreamOptionsFbxReader, KFbxObject)

bool KFbxClassId::Is(const KFbxClassId& other) const {
    for (const KFbxClassInfo* info = m_Info; info; info = info->parent) {
        if (info == other.m_Info)
            return true;
    }
    return false;
}
