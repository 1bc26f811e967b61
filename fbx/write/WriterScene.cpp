#include "fbx/write/WriterScene.h"

#include <fstream>

#include "fbx/sdk/Importer.h"
#include "fbx/format/Encode.h"
#include "fbx/write/WriterLayout.h"

namespace fbx {

Document BuildDocument(const SceneDescription& scene, int version, bool binary) {
    if (version < 7000)
        return layout::Build6100(scene, version, binary);
    return layout::Build7500(scene, version, binary);
}

bool WriteFile(const std::string& path, const SceneDescription& scene, int version, bool binary,
               std::string* error) {
    auto fail = [&](const std::string& why) {
        if (error)
            *error = why;
        return false;
    };
    std::string text;
    std::vector<std::uint8_t> bytes;
    try {
        Document doc = BuildDocument(scene, version, binary);
        if (binary) {
            bytes = WriteBinary(doc);
        } else {
            text = WriteAscii(doc);
        }
    } catch (const std::exception& e) {
        return fail(std::string("cannot encode the scene: ") + e.what());
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out)
        return fail("cannot open " + path + " for writing");
    if (binary) {
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
    } else {
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    out.close();
    if (!out)
        return fail("cannot write " + path + " (disk full?)");
    return true;
}

void MarkPasswordProtected(Record& headerExtension, const std::string& password) {
    Record* encryption = nullptr;
    for (Record& child : headerExtension.children) {
        if (child.name == "EncryptionType")
            encryption = &child;
    }
    if (!encryption) {
        Record r;
        r.name = "EncryptionType";
        headerExtension.children.push_back(std::move(r));
        encryption = &headerExtension.children.back();
    }
    encryption->values = {Value::MakeInt(1, ValueType::Int32)};
    Record hash;
    hash.name = "PasswordHash";
    hash.values = {Value::MakeText(PasswordHash(password))};
    headerExtension.children.push_back(std::move(hash));
}

}  // namespace fbx
