// Turning a SceneDescription into an FBX record tree laid out as the vendor's tools write it,
// and writing it to disk in either encoding.
#pragma once

#include <string>

#include "fbx/format/Record.h"
#include "fbx/write/SceneDescription.h"

namespace fbx {

// Versions below 7000 get the 6100 layout (objects named by string, geometry inside Model
// records, Properties60, "Connect" connections, animation in the Takes section); 7000 and up
// the 7500 layout (64-bit ids, Geometry/NodeAttribute objects, Properties70, "C" connections,
// animation stacks, layers and curves). `binary` chooses the spelling of object names and adds
// the top-level records binary files carry.
Document BuildDocument(const SceneDescription& scene, int version, bool binary = false);

// Builds and writes a file. On failure returns false and, when error is given, says why.
bool WriteFile(const std::string& path, const SceneDescription& scene, int version, bool binary,
               std::string* error = nullptr);

// Marks a file's FBXHeaderExtension record as password-protected: EncryptionType 1 and a
// "PasswordHash" text holding PasswordHash(password) (fbx/sdk/Importer.h), which the importer checks.
void MarkPasswordProtected(Record& headerExtension, const std::string& password);

}  // namespace fbx
