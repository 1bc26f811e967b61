#include "fbx/sdk/TextureLocation.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "fbx/sdk/Material.h"
#include "fbx/sdk/Video.h"

namespace fbx {

namespace {

namespace fs = std::filesystem;

// Files written on Windows name images with backslashes.
std::string WithForwardSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

// "C:/x.png", "c:\\x.png", "C:x.png": a path on a Windows drive.
bool HasDriveLetter(const std::string& path) {
    const char c = path.size() >= 2 ? path[0] : '\0';
    return ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) && path[1] == ':';
}

// A name that can be looked up at all: not empty, and no NUL (which would cut it short).
bool Usable(const std::string& name) {
    return !name.empty() && name.find('\0') == std::string::npos;
}

// The last part of a path (slashes already forward), without any drive letter.
std::string BareName(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    std::string bare = slash == std::string::npos ? path : path.substr(slash + 1);
    if (HasDriveLetter(bare))
        bare.erase(0, 2);
    return bare;
}

bool IsRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

}  // namespace

TextureImageSource LocateTextureImage(const KFbxTexture& texture, const std::string& modelFile) {
    const KFbxVideo* video = texture.GetSrcObject(FBX_TYPE(KFbxVideo));
    std::string relative = texture.GetRelativeFileName();
    std::string absolute = texture.GetFileName();
    if (video && relative.empty())
        relative = video->GetRelativeFileName();
    if (video && absolute.empty())
        absolute = video->GetFileName();
    relative = WithForwardSlashes(std::move(relative));
    absolute = WithForwardSlashes(std::move(absolute));

    TextureImageSource source;
    source.name = relative.empty() ? absolute : relative;
    if (video && video->GetContentSize() > 0) {
        source.where = TextureImageSource::Where::Embedded;
        source.bytes = video->GetContent();
        source.size = video->GetContentSize();
        return source;
    }

    const fs::path model(modelFile);
    const fs::path folder = model.parent_path();
    std::vector<fs::path> candidates;
    if (Usable(relative) && !HasDriveLetter(relative))
        candidates.push_back(folder / relative);
    if (Usable(absolute) && !HasDriveLetter(absolute))
        candidates.push_back(absolute);
    std::vector<std::string> bareNames;
    for (const std::string* name : {&relative, &absolute}) {
        if (!Usable(*name))
            continue;
        std::string bare = BareName(*name);
        if (!bare.empty() && std::find(bareNames.begin(), bareNames.end(), bare) == bareNames.end())
            bareNames.push_back(std::move(bare));
    }
    for (const std::string& bare : bareNames)
        candidates.push_back(folder / bare);
    const fs::path stem = model.stem();
    if (!stem.empty()) {
        const fs::path exported = folder / (stem.string() + ".fbm");
        for (const std::string& bare : bareNames)
            candidates.push_back(exported / bare);
    }

    for (const fs::path& candidate : candidates) {
        if (IsRegularFile(candidate)) {
            source.where = TextureImageSource::Where::File;
            source.path = candidate.string();
            return source;
        }
    }
    return source;
}

}  // namespace fbx
