// The SDK-style interface of the scene-interchange library, in one header: the manager,
// scenes and nodes, meshes with their layers and skins, materials and textures, take curves,
// and the importer with its options.
#pragma once

#include "fbx/Importer.h"
#include "fbx/Material.h"
#include "fbx/Mesh.h"
#include "fbx/SceneNode.h"
#include "fbx/SdkObject.h"
#include "fbx/SdkTypes.h"
