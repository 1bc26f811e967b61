#include "fbx/sdk/Importer.h"

#include <sys/stat.h>

#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "fbx/graph/ObjectGraph.h"
#include "fbx/format/Parse.h"
#include "fbx/sdk/SceneBuilder.h"

namespace fbx {

std::string PasswordHash(const std::string& password) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (unsigned char c : password) {
        hash ^= c;
        hash *= 0x100000001b3ULL;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

}  // namespace fbx

namespace {

constexpr std::uint32_t kNewestVersion = 7700;
constexpr std::uint32_t kOldestVersion = 5800;

const char* const kBoolOptions[] = {"MATERIAL", "TEXTURE",   "LINK",           "SHAPE",
                                    "GOBO",     "ANIMATION", "GLOBAL SETTINGS"};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Reads in large blocks straight into the buffer, sized up front from the file's length, so
// that a model file is not copied byte by byte or regrown on its way in. A read error ends
// the data early; the parser then reports the file as cut.
// Only regular files are read: a device or a pipe named as a model could never end. Returns
// why the file could not be read, or "" when it was.
std::string ReadWholeFile(const char* fileName, std::vector<std::uint8_t>& bytes) {
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(fileName, "rb"));
    if (!file)
        return "File not found or cannot be opened: ";
    struct stat info;
    if (fstat(fileno(file.get()), &info) != 0 || !S_ISREG(info.st_mode))
        return "Not a regular file: ";
    std::size_t size = 0;
    if (info.st_size > 0)
        size = static_cast<std::size_t>(info.st_size);
    bytes.clear();
    std::size_t used = 0;
    std::size_t capacity = size + 1;  // one more byte to see the end without another resize
    for (;;) {
        if (used == capacity)
            capacity = capacity * 2;
        bytes.resize(capacity);
        const std::size_t n = std::fread(bytes.data() + used, 1, capacity - used, file.get());
        used += n;
        if (used < capacity)
            break;
    }
    bytes.resize(used);
    return "";
}

std::string VersionText(std::uint32_t v) {
    return std::to_string(v / 1000) + "." + std::to_string(v / 100 % 10) + "." +
           std::to_string(v % 100);
}

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

// ---- KFbxStreamOptionsFbxReader ----------------------------------------------------------

KFbxStreamOptionsFbxReader::KFbxStreamOptionsFbxReader(KFbxSdkManager* manager, const char* name)
    : KFbxObject(manager, name) {
    for (const char* option : kBoolOptions)
        AddProperty(option, eBOOL1).numbers = {1.0};
    AddProperty("PASSWORD", eSTRING);
    AddProperty("PASSWORD ENABLE", eBOOL1).numbers = {0.0};
}

KFbxStreamOptionsFbxReader* KFbxStreamOptionsFbxReader::Create(KFbxSdkManager* manager,
                                                               const char* name) {
    return manager->Adopt(new KFbxStreamOptionsFbxReader(manager, name));
}

bool KFbxStreamOptionsFbxReader::SetOption(const char* name, bool value) {
    return FindProperty(name).Set(value);
}

bool KFbxStreamOptionsFbxReader::SetOption(const char* name, const char* value) {
    return FindProperty(name).Set(value);
}

bool KFbxStreamOptionsFbxReader::GetBoolOption(const char* name) const {
    KFbxProperty p = FindProperty(name);
    return p.GetPropertyDataType() == eBOOL1 && p.Get<bool>();
}

std::string KFbxStreamOptionsFbxReader::GetStringOption(const char* name) const {
    KFbxProperty p = FindProperty(name);
    return p.GetPropertyDataType() == eSTRING ? p.Get<std::string>() : std::string();
}

void KFbxStreamOptionsFbxReader::Destroy(bool recursive, bool dependents) {
    KFbxObject::Destroy(recursive, dependents);
}

// ---- KFbxIOPluginRegistry ----------------------------------------------------------------

bool KFbxIOPluginRegistry::DetectFileFormat(const char* fileName, int& format) const {
    if (!fileName)
        return false;
    std::ifstream in(fileName, std::ios::binary);
    if (!in)
        return false;
    std::vector<std::uint8_t> head(4096);
    in.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(in.gcount()));
    if (fbx::IsBinaryFbx(head.data(), head.size())) {
        format = eFBX_BINARY;
        return true;
    }
    if (fbx::LooksLikeFbx(head.data(), head.size())) {
        format = eFBX_ASCII;
        return true;
    }
    return false;
}

const char* KFbxIOPluginRegistry::GetReaderFormatDescription(int format) const {
    switch (format) {
        case eFBX_BINARY:
            return "FBX binary (*.fbx)";
        case eFBX_ASCII:
            return "FBX ascii (*.fbx)";
        default:
            return "";
    }
}

// ---- KFbxImporter ------------------------------------------------------------------------

KFbxImporter::KFbxImporter(KFbxSdkManager* manager, const char* name) : KFbxObject(manager, name) {}

KFbxImporter::~KFbxImporter() = default;

KFbxImporter* KFbxImporter::Create(KFbxSdkManager* manager, const char* name) {
    return manager->Adopt(new KFbxImporter(manager, name));
}

void KFbxImporter::Destroy(bool recursive, bool dependents) {
    KFbxObject::Destroy(recursive, dependents);
}

void KFbxImporter::SetError(EError code, std::string text) {
    m_LastError = code;
    m_LastErrorText = std::move(text);
}

bool KFbxImporter::Initialize(const char* fileName) {
    m_FileName = fileName ? fileName : "";
    m_IsFbx = false;
    m_Version = 0;
    m_Binary = false;
    m_Damaged = false;
    m_DamageText.clear();
    m_Graph.reset();
    m_Takes.clear();
    m_CurrentTake.clear();
    SetError(eNO_ERROR, "");

    if (m_FileName.empty()) {
        SetError(eUNINITIALIZED_FILENAME, "No file name given");
        return false;
    }
    std::vector<std::uint8_t> bytes;
    const std::string unreadable = ReadWholeFile(fileName, bytes);
    if (!unreadable.empty()) {
        SetError(eFILE_NOT_OPENED, unreadable + m_FileName);
        return false;
    }
    if (!fbx::LooksLikeFbx(bytes.data(), bytes.size())) {
        SetError(eINVALID_FILE_FORMAT, "Not an FBX file: " + m_FileName);
        return false;
    }
    m_IsFbx = true;
    m_Binary = fbx::IsBinaryFbx(bytes.data(), bytes.size());
    // A binary file states its version in the header; check it before reading further, as a
    // file of another version may use record headers of another size.
    if (m_Binary && bytes.size() >= 27) {
        bool bigEndian = bytes[22] != 0;
        std::uint32_t v = 0;
        for (int i = 0; i < 4; ++i) {
            std::uint32_t b = bytes[static_cast<std::size_t>(bigEndian ? 23 + i : 26 - i)];
            v = (v << 8) | b;
        }
        m_Version = v;
    }
    auto checkVersion = [&]() {
        if (m_Version > kNewestVersion) {
            SetError(eFILE_VERSION_NOT_SUPPORTED_YET,
                     "File version " + VersionText(m_Version) + " is newer than " +
                         VersionText(kNewestVersion) + ", the newest this reader supports");
            return false;
        }
        if (m_Version < kOldestVersion) {
            SetError(eFILE_VERSION_NOT_SUPPORTED_ANYMORE,
                     "File version " + VersionText(m_Version) + " is older than " +
                         VersionText(kOldestVersion) + ", the oldest this reader supports");
            return false;
        }
        return true;
    };
    // Header versions run behind the content in some older writers (3000 for 5800 files), so
    // only a header newer than we know stops us here; the FBXVersion record decides below.
    if (m_Binary && m_Version > kNewestVersion) {
        checkVersion();
        return false;
    }

    fbx::ParseResult parsed = fbx::ParseBuffer(bytes.data(), bytes.size());
    const fbx::Record* header = parsed.document.root.Child("FBXHeaderExtension");
    std::int64_t stated = header ? header->ChildInt("FBXVersion", 0) : 0;
    if (stated > 0 && stated < 100000) {
        m_Version = static_cast<std::uint32_t>(stated);
    } else if (!m_Binary || m_Version == 0) {
        m_Version = parsed.document.version;
    }
    if (m_Version == 0 && !parsed.ok) {
        SetError(eFILE_CORRUPTED, "File is corrupted: " + parsed.error);
        return false;
    }
    if (!checkVersion())
        return false;
    if (!parsed.ok) {
        if (parsed.document.root.children.empty()) {
            SetError(eFILE_CORRUPTED, "File is corrupted: " + parsed.error);
            return false;
        }
        m_Damaged = true;
        m_DamageText = "File is corrupted, only part of it was read: " + parsed.error;
    }
    m_Graph = fbx::ObjectGraph::Build(std::move(parsed.document));

    for (const fbx::Object& o : m_Graph->Objects()) {
        if (o.kind != "AnimationStack")
            continue;
        auto info = std::make_unique<KFbxTakeInfo>();
        info->mName = o.name;
        info->mImportName = o.name;
        info->mSelect = true;
        if (o.record && o.record->name == "Take") {
            info->mDescription = o.record->ChildText("Comments");
            if (const fbx::Record* t = o.record->Child("LocalTime")) {
                info->mLocalStart = KTime(t->IntAt(0));
                info->mLocalStop = KTime(t->IntAt(1));
            }
        } else {
            std::size_t index = static_cast<std::size_t>(&o - m_Graph->Objects().data());
            if (const fbx::PropertyValue* p = m_Graph->FindProperty(index, "Description")) {
                info->mDescription = p->text;
            }
            if (const fbx::PropertyValue* p = m_Graph->FindProperty(index, "LocalStart")) {
                if (!p->numbers.empty())
                    info->mLocalStart = KTime(static_cast<kLongLong>(p->numbers[0]));
            }
            if (const fbx::PropertyValue* p = m_Graph->FindProperty(index, "LocalStop")) {
                if (!p->numbers.empty())
                    info->mLocalStop = KTime(static_cast<kLongLong>(p->numbers[0]));
            }
        }
        m_Takes.push_back(std::move(info));
    }
    m_CurrentTake = m_Graph->CurrentTake();
    if (m_CurrentTake.empty() && !m_Takes.empty())
        m_CurrentTake = m_Takes.front()->mName;
    return true;
}

void KFbxImporter::GetFileVersion(int& major, int& minor, int& revision) const {
    major = static_cast<int>(m_Version / 1000);
    minor = static_cast<int>(m_Version / 100 % 10);
    revision = static_cast<int>(m_Version % 100);
}

KFbxTakeInfo* KFbxImporter::GetTakeInfo(int index) const {
    if (index < 0 || index >= GetTakeCount())
        return nullptr;
    return m_Takes[static_cast<std::size_t>(index)].get();
}

bool KFbxImporter::Import(KFbxScene* scene, KFbxStreamOptionsFbxReader* options) {
    if (!scene) {
        SetError(eUNIDENTIFIED_ERROR, "No scene to import into");
        return false;
    }
    if (!m_Graph) {
        SetError(eUNINITIALIZED_FILENAME, "Initialize did not succeed; there is nothing to import");
        return false;
    }
    scene->Clear();

    const fbx::Record* header = m_Graph->GetDocument().root.Child("FBXHeaderExtension");
    if (header && header->ChildInt("EncryptionType", 0) != 0) {
        bool enabled = options && options->GetBoolOption("PASSWORD ENABLE");
        std::string given = options ? options->GetStringOption("PASSWORD") : std::string();
        std::string stored = Lower(header->ChildText("PasswordHash"));
        if (!enabled || stored.empty() || fbx::PasswordHash(given) != stored) {
            SetError(ePASSWORD_ERROR, enabled ? "Wrong password" : "File is password protected");
            return false;
        }
    }

    fbx::BuildOptions build;
    if (options) {
        build.materials = options->GetBoolOption("MATERIAL");
        build.textures = options->GetBoolOption("TEXTURE");
        build.links = options->GetBoolOption("LINK");
        build.animation = options->GetBoolOption("ANIMATION");
    }
    fbx::SceneBuilder::Build(*m_Graph, *scene, build);
    if (m_Damaged) {
        SetError(eFILE_CORRUPTED, m_DamageText);
        return false;
    }
    SetError(eNO_ERROR, "");
    return true;
}
