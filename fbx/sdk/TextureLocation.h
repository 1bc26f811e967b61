// Finding the image a texture shows: embedded in the FBX file, or a file on disk found the way
// modelling tools leave them, relative to the model file, at the absolute path the tool wrote,
// or beside the model (also in the "NAME.fbm" folder exporters write next to "NAME.fbx").
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

class KFbxTexture;

namespace fbx {

// Where a texture's image is, found as modelling tools leave it.
struct TextureImageSource {
    enum class Where { Embedded, File, Missing };
    Where where = Where::Missing;
    std::string path;                     // File: the path that exists, as it was tried
    const std::uint8_t* bytes = nullptr;  // Embedded: the video's content, owned by the scene
    std::size_t size = 0;                 // Embedded: its byte count
    // For messages: the relative file name with '\\' turned to '/', else the file name (the
    // name the engine's texture loading has always picked).
    std::string name;
};

// The embedded content of the texture's video first; then the relative file name against the
// model file's folder; then the absolute file name; then the bare file name beside the model and
// in the "NAME.fbm/" folder exporters write next to "NAME.fbx". Windows paths: backslashes are
// separators, and a drive-letter path ("D:/x/y.png", "C:\\x\\y.png") is never tried as it stands
// (on this system it would be relative to the working directory) but its bare name is.
//
// The names are the texture's (GetRelativeFileName, GetFileName), each falling back to its
// video's when empty. A candidate counts when it is an existing regular file; empty names are
// skipped. A texture with no names and no content is Missing. Never throws for bad names.
TextureImageSource LocateTextureImage(const KFbxTexture& texture, const std::string& modelFile);

}  // namespace fbx
