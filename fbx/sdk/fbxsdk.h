// The SDK-style interface of the scene-interchange library, in one header: the manager,
// scenes and nodes, meshes with their layers and skins, materials, textures and their video
// clips, take curves, and the importer with its options.
#pragma once

#include "fbx/sdk/Importer.h"
#include "fbx/sdk/Material.h"
#include "fbx/sdk/Mesh.h"
#include "fbx/sdk/SceneNode.h"
#include "fbx/sdk/SdkObject.h"
#include "fbx/sdk/SdkTypes.h"
#include "fbx/sdk/Video.h"
