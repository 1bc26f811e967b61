#include "import/AuthoredTextures.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <vector>

#include "fbx/sdk/TextureLocation.h"
#include "fbx/sdk/fbxsdk.h"
#include "import/ImageDecode.h"
#include "import/Textures.h"

namespace {

// The largest image kept: 8192 x 8192 pixels of RGBA, or any other shape of the same bytes.
// OpenGL may take less; the upload shrinks what it cannot take.
constexpr std::size_t kImageBudget = std::size_t(256) << 20;
constexpr int kLargestSide = 1 << 15;

thread_local AuthoredTextures* t_Current = nullptr;

// Images decoded in this process, by where their bytes came from, for as long as some
// material shows them.
class ImageCache {
public:
    std::shared_ptr<TextureImage> Find(const std::string& key) {
        std::lock_guard<std::mutex> lock(m_Mutex);
        auto it = m_Images.find(key);
        return it == m_Images.end() ? nullptr : it->second.lock();
    }
    void Keep(const std::string& key, const std::shared_ptr<TextureImage>& image) {
        std::lock_guard<std::mutex> lock(m_Mutex);
        for (auto it = m_Images.begin(); it != m_Images.end();)
            it = it->second.expired() ? m_Images.erase(it) : std::next(it);
        m_Images[key] = image;
    }

private:
    std::mutex m_Mutex;
    std::map<std::string, std::weak_ptr<TextureImage>> m_Images;
};

ImageCache& Cache() {
    static ImageCache cache;
    return cache;
}

// Embedded images are known by their bytes: a 64-bit FNV-1a hash and the byte count.
std::string ContentKey(const std::uint8_t* bytes, std::size_t size) {
    std::uint64_t hash = 14695981039346656037ull;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 1099511628211ull;
    return "embedded " + std::to_string(hash) + " " + std::to_string(size);
}

// The whole file, or false when it cannot be read or is larger than the budget.
bool ReadWholeFile(const std::filesystem::path& path, std::vector<std::uint8_t>& bytes,
                   const std::string& name) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return false;
    if (size > kImageBudget) {
        std::printf(
            "Texture image %s: the file is %ju bytes, over the budget of %zu; not loaded.\n",
            name.c_str(), size, kImageBudget);
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    bytes.resize(static_cast<std::size_t>(size));
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    return in.gcount() == static_cast<std::streamsize>(size);
}

}  // namespace

std::shared_ptr<TextureImage> AuthoredTextures::Load(const KFbxTexture& texture,
                                                     const std::string& name) {
    const fbx::TextureImageSource source = fbx::LocateTextureImage(texture, m_ModelFile);
    std::filesystem::path path;
    std::string key;
    if (source.where == fbx::TextureImageSource::Where::Embedded) {
        key = ContentKey(source.bytes, source.size);
    } else {
        std::error_code error;
        if (source.where == fbx::TextureImageSource::Where::File)
            path = source.path;
        else if (!name.empty() && std::filesystem::is_regular_file(name, error))
            path = name;  // from the working directory, where the classic look reads it
        else
            return nullptr;
        const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
        key = "file " + (error ? path : canonical).string();
    }
    if (std::shared_ptr<TextureImage> known = Cache().Find(key))
        return known;

    std::vector<std::uint8_t> fileBytes;
    const std::uint8_t* bytes = source.bytes;
    std::size_t size = source.size;
    if (!path.empty()) {
        if (!ReadWholeFile(path, fileBytes, name))
            return nullptr;
        bytes = fileBytes.data();
        size = fileBytes.size();
    }
    ImageLimits limits;
    limits.m_MaxSide = kLargestSide;
    limits.m_MaxBytes = kImageBudget;
    DecodedImage decoded;
    std::string reason;
    if (!DecodeImage(bytes, size, limits, decoded, &reason)) {
        if (IsSizeRefusal(reason))
            std::printf("Texture image %s: %s; not loaded.\n", name.c_str(), reason.c_str());
        return nullptr;
    }
    auto image = std::make_shared<TextureImage>();
    image->m_Name = name;
    image->m_Width = decoded.m_Width;
    image->m_Height = decoded.m_Height;
    image->m_Pixels = std::move(decoded.m_Pixels);
    image->m_HasAlpha = decoded.m_HasAlpha;
    NotifyTextureImageDecoded(*image);
    Cache().Keep(key, image);
    return image;
}

std::shared_ptr<TextureImage> AuthoredTextures::Image(const KFbxTexture& texture, bool report) {
    const std::string name = TextureFileName(texture);
    auto tried = m_Tried.find(&texture);
    if (tried == m_Tried.end())
        tried = m_Tried.emplace(&texture, Load(texture, name)).first;
    if (!tried->second && report && !name.empty())
        std::printf("Failed to load %s.\n", name.c_str());
    return tried->second;
}

std::shared_ptr<TextureImage> AuthoredTextures::FirstLayer(const KFbxLayeredTexture& layered,
                                                           bool report) {
    const int layers = layered.GetSrcObjectCount(KFbxTexture::ClassId);
    auto* first = KFbxCast<KFbxTexture>(layered.GetSrcObject(KFbxTexture::ClassId, 0));
    if (!first)
        return nullptr;
    if (layers > 1 && m_LayersReported.insert(&layered).second) {
        std::printf("Layered texture %s: only its first layer, %s, is drawn; %d more %s not.\n",
                    layered.GetName(), first->GetName(), layers - 1, layers == 2 ? "is" : "are");
    }
    return Image(*first, report);
}

DiffuseTexture AuthoredTextures::Diffuse(const KFbxSurfaceMaterial& material) {
    DiffuseTexture diffuse;
    const KFbxProperty property = material.FindProperty("DiffuseColor");
    if (!property.IsValid())
        return diffuse;
    if (auto* layered =
            KFbxCast<KFbxLayeredTexture>(property.GetSrcObject(KFbxLayeredTexture::ClassId, 0))) {
        diffuse.m_Texture = KFbxCast<KFbxTexture>(layered->GetSrcObject(KFbxTexture::ClassId, 0));
        const bool met = diffuse.m_Texture && m_Tried.count(diffuse.m_Texture) > 0;
        diffuse.m_Image = FirstLayer(*layered, !met);
        return diffuse;
    }
    const int count = property.GetSrcObjectCount(KFbxTexture::ClassId);
    for (int i = 0; i < count; ++i) {
        auto* texture = KFbxCast<KFbxTexture>(property.GetSrcObject(KFbxTexture::ClassId, i));
        if (!texture || texture->Is(KFbxLayeredTexture::ClassId))
            continue;
        const bool met = m_Tried.count(texture) > 0;
        if (std::shared_ptr<TextureImage> image = Image(*texture, !met)) {
            diffuse.m_Image = std::move(image);
            diffuse.m_Texture = texture;
        }
    }
    return diffuse;
}

AuthoredTextureScope::AuthoredTextureScope(AuthoredTextures& textures) : m_Previous(t_Current) {
    t_Current = &textures;
}

AuthoredTextureScope::~AuthoredTextureScope() {
    t_Current = m_Previous;
}

AuthoredTextures* AuthoredTextureScope::Current() {
    return t_Current;
}
