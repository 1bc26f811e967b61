// Video clips of the SDK-style interface: what a texture shows.
//
// A texture's video is one of its source objects (texture->GetSrcObject(FBX_TYPE(KFbxVideo))).
// Files name the clip's image file as the tool wrote it and relative to the FBX file; many also
// embed the image's bytes. The scene keeps its own copy of those bytes, so they stay valid after
// the importer is gone, for as long as the scene holds the video. A clip left empty by a tool
// that embeds each image file once shows the content of the clip of the same file that has it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fbx/sdk/SdkObject.h"

// A video clip object: the image file a texture shows, and the image bytes when the FBX file
// embeds them.
class KFbxVideo : public KFbxObject {
    KFBX_CLASS(KFbxVideo)
public:
    KFbxVideo(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}

    // The "Filename" (or "FileName") record, else the "Path" property.
    const char* GetFileName() const { return m_FileName.c_str(); }
    // The "RelativeFilename" record, else the "RelPath" property.
    const char* GetRelativeFileName() const { return m_RelativeFileName.c_str(); }
    // The embedded image bytes ("Content"); nullptr and 0 when the file embeds none.
    const std::uint8_t* GetContent() const {
        return m_Content && !m_Content->empty() ? m_Content->data() : nullptr;
    }
    std::size_t GetContentSize() const { return m_Content ? m_Content->size() : 0; }

private:
    friend class fbx::SceneBuilder;
    std::string m_FileName;          // the image's path as the modelling tool wrote it
    std::string m_RelativeFileName;  // the image's path relative to the FBX file
    // The embedded image file, byte for byte; or null. Shared with the other clips of the
    // same file: a tool embeds each image file once and leaves the other clips empty.
    std::shared_ptr<const std::vector<std::uint8_t>> m_Content;
};
