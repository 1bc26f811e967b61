#include "fbx/sdk/Importer.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <memory>

#include "fbx/format/BinaryHeader.h"
#include "fbx/format/FileBytes.h"
#include "fbx/format/Parse.h"
#include "fbx/graph/ObjectGraph.h"
#include "fbx/sdk/SceneBuilder.h"
#include "fbx/sdk/TakeDescriber.h"

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
    Reset(fileName);
    if (m_FileName.empty()) {
        SetError(eUNINITIALIZED_FILENAME, "No file name given");
        return false;
    }
    fbx::ByteBuffer bytes;
    if (!ReadFile(bytes) || !IdentifyFile(bytes))
        return false;
    // Header versions run behind the content in some older writers (3000 for 5800 files), so
    // only a header newer than we know stops us here; the FBXVersion record decides below.
    if (m_Binary && m_Version > kNewestVersion) {
        CheckVersion();
        return false;
    }
    fbx::ParseResult parsed = fbx::ParseBuffer(bytes.data(), bytes.size());
    if (!TakeParsedVersion(parsed) || !CheckVersion() || !AcceptParse(parsed))
        return false;
    m_Graph = fbx::ObjectGraph::Build(std::move(parsed.document));
    CollectTakes();
    return true;
}

// Forgets everything about the file given before.
void KFbxImporter::Reset(const char* fileName) {
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
}

// The whole file into bytes. A read error part way ends the data early; the parser then
// reports the file as cut.
bool KFbxImporter::ReadFile(fbx::ByteBuffer& bytes) {
    const fbx::FileReadResult read = fbx::ReadWholeFile(m_FileName, bytes);
    if (read.status == fbx::FileReadStatus::CannotOpen) {
        SetError(eFILE_NOT_OPENED, "File not found or cannot be opened: " + m_FileName);
        return false;
    }
    if (read.status == fbx::FileReadStatus::NotRegular) {
        SetError(eFILE_NOT_OPENED, "Not a regular file: " + m_FileName);
        return false;
    }
    return true;
}

// Whether the content is FBX, which encoding, and the version a binary header states: a file
// of another version may use record headers of another size, so it is checked before parsing.
bool KFbxImporter::IdentifyFile(const fbx::ByteBuffer& bytes) {
    if (!fbx::LooksLikeFbx(bytes.data(), bytes.size())) {
        SetError(eINVALID_FILE_FORMAT, "Not an FBX file: " + m_FileName);
        return false;
    }
    m_IsFbx = true;
    m_Binary = fbx::IsBinaryFbx(bytes.data(), bytes.size());
    if (m_Binary) {
        const fbx::BinaryHeader header = fbx::ReadBinaryHeader(bytes.data(), bytes.size());
        if (header.complete)
            m_Version = header.version;
    }
    return true;
}

// The FBXHeaderExtension/FBXVersion record is the file's version; without it, the binary
// header's, else what the parser found. False when nothing at all could be read.
bool KFbxImporter::TakeParsedVersion(const fbx::ParseResult& parsed) {
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
    return true;
}

bool KFbxImporter::CheckVersion() {
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
}

// A damaged file is still imported when part of it could be read; Import then reports it.
bool KFbxImporter::AcceptParse(const fbx::ParseResult& parsed) {
    if (parsed.ok)
        return true;
    if (parsed.document.root.children.empty()) {
        SetError(eFILE_CORRUPTED, "File is corrupted: " + parsed.error);
        return false;
    }
    m_Damaged = true;
    m_DamageText = "File is corrupted, only part of it was read: " + parsed.error;
    return true;
}

// One take per animation stack (pre-7000 takes are stacks in the graph), and the current one.
void KFbxImporter::CollectTakes() {
    fbx::TakeDescriber describer(*m_Graph);
    for (std::size_t i = 0; i < m_Graph->Objects().size(); ++i) {
        if (m_Graph->At(i).kind == "AnimationStack")
            m_Takes.push_back(describer.Describe(i));
    }
    m_CurrentTake = m_Graph->CurrentTake();
    if (m_CurrentTake.empty() && !m_Takes.empty())
        m_CurrentTake = m_Takes.front()->mName;
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

    if (!CheckPassword(options))
        return false;

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

// A protected file opens only with the password enabled in the options and matching its hash.
bool KFbxImporter::CheckPassword(KFbxStreamOptionsFbxReader* options) {
    const fbx::Record* header = m_Graph->GetDocument().root.Child("FBXHeaderExtension");
    if (!header || header->ChildInt("EncryptionType", 0) == 0)
        return true;
    bool enabled = options && options->GetBoolOption("PASSWORD ENABLE");
    std::string given = options ? options->GetStringOption("PASSWORD") : std::string();
    std::string stored = Lower(header->ChildText("PasswordHash"));
    if (!enabled || stored.empty() || fbx::PasswordHash(given) != stored) {
        SetError(ePASSWORD_ERROR, enabled ? "Wrong password" : "File is password protected");
        return false;
    }
    return true;
}
