// Reading a file into a scene: the importer, its options, the format registry and the take
// information it reports.
//
// Password-protected files: a file is protected when its FBXHeaderExtension holds
// "EncryptionType" with a value other than 0 and a "PasswordHash" string: the 16 lowercase
// hex digits of the FNV-1a 64-bit hash of the password's bytes (offset basis
// 0xcbf29ce484222325, prime 0x100000001b3). The content itself is stored plain. Import of such
// a file succeeds only when the options hold "PASSWORD ENABLE" = true and a "PASSWORD" whose
// hash matches; otherwise it fails with ePASSWORD_ERROR and leaves the scene empty.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fbx/format/ByteBuffer.h"
#include "fbx/sdk/SceneNode.h"

namespace fbx {
class ObjectGraph;
struct ParseResult;
// The hash that a protected file stores for its password ("PasswordHash").
std::string PasswordHash(const std::string& password);
}  // namespace fbx

// Option names of the reader options.
#define KFBXSTREAMOPT_FBX_MATERIAL "MATERIAL"
#define KFBXSTREAMOPT_FBX_TEXTURE "TEXTURE"
#define KFBXSTREAMOPT_FBX_LINK "LINK"
#define KFBXSTREAMOPT_FBX_SHAPE "SHAPE"
#define KFBXSTREAMOPT_FBX_GOBO "GOBO"
#define KFBXSTREAMOPT_FBX_ANIMATION "ANIMATION"
#define KFBXSTREAMOPT_FBX_GLOBAL_SETTINGS "GLOBAL SETTINGS"
#define KFBXSTREAMOPT_FBX_PASSWORD "PASSWORD"
#define KFBXSTREAMOPT_FBX_PASSWORD_ENABLE "PASSWORD ENABLE"

// Options of one read, as properties set by name. All boolean options start true,
// "PASSWORD" empty and "PASSWORD ENABLE" false.
class KFbxStreamOptionsFbxReader : public KFbxObject {
    KFBX_CLASS(KFbxStreamOptionsFbxReader)
public:
    static KFbxStreamOptionsFbxReader* Create(KFbxSdkManager* manager, const char* name);

    // True when the option exists with that kind of value (and is then replaced); false,
    // with nothing changed, otherwise.
    bool SetOption(const char* name, bool value);
    bool SetOption(const char* name, const char* value);
    bool SetOption(const char* name, const std::string& value) {
        return SetOption(name, value.c_str());
    }
    // Boolean options read false when missing; string options "".
    bool GetBoolOption(const char* name) const;
    std::string GetStringOption(const char* name) const;

    void Destroy(bool recursive = false, bool dependents = false) override;

private:
    KFbxStreamOptionsFbxReader(KFbxSdkManager* manager, const char* name);
};

// One take of the file as the importer (and the scene) reports it.
struct KFbxTakeInfo {
    KString mName;
    KString mDescription;
    KString mImportName;
    bool mSelect = true;
    // The span as the file writes it (LocalTime, or LocalStart/LocalStop); 0 where it has none.
    KTime mLocalStart;
    KTime mLocalStop;
    // The span the take plays: the file's local span, else its reference span, else the span
    // of the take's keys (0 to 0 without keys). Never stops before it starts.
    KTimeSpan mLocalTimeSpan;
};

// File formats by content.
class KFbxIOPluginRegistry {
public:
    enum { eFBX_BINARY = 0, eFBX_ASCII = 1 };
    // True, with the format set, when the file's content is FBX (binary or ASCII).
    bool DetectFileFormat(const char* fileName, int& format) const;
    int GetNativeReaderFormat() const { return eFBX_BINARY; }
    int GetReaderFormatCount() const { return 2; }
    const char* GetReaderFormatDescription(int format) const;
};

class KFbxImporter : public KFbxObject {
    KFBX_CLASS(KFbxImporter)
public:
    enum EError {
        eFILE_CORRUPTED = 0,
        eFILE_VERSION_NOT_SUPPORTED_YET = 1,      // newer than 7.7.0
        eFILE_VERSION_NOT_SUPPORTED_ANYMORE = 2,  // older than 5.8.0
        eFILE_NOT_OPENED = 3,
        eFILE_NOT_CREATED = 4,
        eOUT_OF_DISK_SPACE = 5,
        eUNINITIALIZED_FILENAME = 6,
        eUNIDENTIFIED_ERROR = 7,
        eINDEX_OUT_OF_RANGE = 8,
        ePASSWORD_ERROR = 9,
        eSTREAM_OPTIONS_NOT_SET = 10,
        eINVALID_FILE_FORMAT = 11,
        eNO_ERROR = 12,
    };

    static KFbxImporter* Create(KFbxSdkManager* manager, const char* name);
    ~KFbxImporter() override;

    void SetFileFormat(int format) { m_Format = format; }
    int GetFileFormat() const { return m_Format; }

    // Opens and reads the file; false for a missing, unreadable or non-FBX file, a version
    // out of range or a file too damaged to read at all.
    virtual bool Initialize(const char* fileName);
    // The version of the file last given to Initialize (0.0.0 before), as V/1000, V/100 % 10,
    // V % 100.
    void GetFileVersion(int& major, int& minor, int& revision) const;
    bool IsFBX() const { return m_IsFbx; }
    // Whether the initialised file is binary (else ASCII).
    bool IsBinaryFile() const { return m_Binary; }
    const char* GetFileName() const { return m_FileName.c_str(); }

    int GetTakeCount() const { return static_cast<int>(m_Takes.size()); }
    KFbxTakeInfo* GetTakeInfo(int index) const;
    const char* GetCurrentTakeName() const { return m_CurrentTake.c_str(); }

    // Fills the scene (emptied first) from the initialised file. False on a password error
    // (scene left empty) or when the file was damaged (scene holds what could be read).
    bool Import(KFbxScene* scene, KFbxStreamOptionsFbxReader* options = nullptr);

    EError GetLastErrorID() const { return m_LastError; }
    const char* GetLastErrorString() const { return m_LastErrorText.c_str(); }

    void Destroy(bool recursive = false, bool dependents = false) override;

private:
    KFbxImporter(KFbxSdkManager* manager, const char* name);
    void SetError(EError code, std::string text);

    // The steps of Initialize, in order; each false one has set the error.
    void Reset(const char* fileName);
    bool ReadFile(fbx::ByteBuffer& bytes);
    bool IdentifyFile(const fbx::ByteBuffer& bytes);
    bool TakeParsedVersion(const fbx::ParseResult& parsed);
    bool CheckVersion();
    bool AcceptParse(const fbx::ParseResult& parsed);
    void CollectTakes();
    // The step of Import that refuses a protected file without its password.
    bool CheckPassword(KFbxStreamOptionsFbxReader* options);

    int m_Format = KFbxIOPluginRegistry::eFBX_BINARY;
    std::string m_FileName;
    bool m_IsFbx = false;
    std::uint32_t m_Version = 0;
    bool m_Binary = false;
    bool m_Damaged = false;
    std::string m_DamageText;
    std::unique_ptr<fbx::ObjectGraph> m_Graph;
    std::vector<std::unique_ptr<KFbxTakeInfo>> m_Takes;
    std::string m_CurrentTake;
    EError m_LastError = eNO_ERROR;
    std::string m_LastErrorText;
};
