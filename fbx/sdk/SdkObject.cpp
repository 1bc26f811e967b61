#include "fbx/sdk/SdkObject.h"

#include <algorithm>

#include "fbx/sdk/Importer.h"
#include "fbx/sdk/SceneNode.h"

// ---- KFbxProperty ----------------------------------------------------------------------

namespace {

double NumberAt(const KFbxPropertyData* data, std::size_t i) {
    return data && i < data->numbers.size() ? data->numbers[i] : 0.0;
}

}  // namespace

template <>
double KFbxProperty::Get<double>() const {
    return NumberAt(m_Data, 0);
}
template <>
float KFbxProperty::Get<float>() const {
    return static_cast<float>(NumberAt(m_Data, 0));
}
template <>
int KFbxProperty::Get<int>() const {
    double v = NumberAt(m_Data, 0);
    if (!(v > -2147483648.0 && v < 2147483648.0))
        return 0;
    return static_cast<int>(v);
}
template <>
bool KFbxProperty::Get<bool>() const {
    return NumberAt(m_Data, 0) != 0.0;
}
template <>
fbxDouble3 KFbxProperty::Get<fbxDouble3>() const {
    return fbxDouble3(NumberAt(m_Data, 0), NumberAt(m_Data, 1), NumberAt(m_Data, 2));
}
template <>
fbxDouble4 KFbxProperty::Get<fbxDouble4>() const {
    fbxDouble4 v;
    for (std::size_t i = 0; i < 4; ++i)
        v.mData[i] = NumberAt(m_Data, i);
    return v;
}
template <>
KFbxColor KFbxProperty::Get<KFbxColor>() const {
    double alpha = m_Data && m_Data->numbers.size() >= 4 ? m_Data->numbers[3] : 1.0;
    return KFbxColor(NumberAt(m_Data, 0), NumberAt(m_Data, 1), NumberAt(m_Data, 2), alpha);
}
template <>
std::string KFbxProperty::Get<std::string>() const {
    return m_Data ? m_Data->text : std::string();
}
template <>
KString KFbxProperty::Get<KString>() const {
    return KString(m_Data ? m_Data->text : std::string());
}

bool KFbxProperty::Get(double& value) const {
    if (!m_Data)
        return false;
    value = Get<double>();
    return true;
}

bool KFbxProperty::Get(fbxDouble3& value) const {
    if (!m_Data)
        return false;
    value = Get<fbxDouble3>();
    return true;
}

bool KFbxProperty::Set(bool value) {
    if (!m_Data || m_Data->type != eBOOL1)
        return false;
    m_Data->numbers.assign(1, value ? 1.0 : 0.0);
    return true;
}

bool KFbxProperty::Set(double value) {
    if (!m_Data || (m_Data->type != eDOUBLE1 && m_Data->type != eINTEGER1))
        return false;
    m_Data->numbers.assign(1, value);
    return true;
}

bool KFbxProperty::Set(const char* value) {
    if (!m_Data || m_Data->type != eSTRING)
        return false;
    m_Data->text = value ? value : "";
    return true;
}

int KFbxProperty::GetSrcObjectCount() const {
    return m_Data ? static_cast<int>(m_Data->sources.size()) : 0;
}

int KFbxProperty::GetSrcObjectCount(const KFbxClassId& classId) const {
    if (!m_Data)
        return 0;
    return static_cast<int>(std::count_if(m_Data->sources.begin(), m_Data->sources.end(),
                                          [&](KFbxObject* o) { return o->Is(classId); }));
}

KFbxObject* KFbxProperty::GetSrcObject(int index) const {
    if (!m_Data || index < 0 || index >= static_cast<int>(m_Data->sources.size()))
        return nullptr;
    return m_Data->sources[static_cast<std::size_t>(index)];
}

KFbxObject* KFbxProperty::GetSrcObject(const KFbxClassId& classId, int index) const {
    if (!m_Data || index < 0)
        return nullptr;
    for (KFbxObject* o : m_Data->sources) {
        if (o->Is(classId) && index-- == 0)
            return o;
    }
    return nullptr;
}

KFCurve* KFbxProperty::GetKFCurve(const char* channel, const char* takeName) const {
    if (!m_Data || !m_Owner)
        return nullptr;
    return m_Owner->GetPropertyCurve(m_Data->name, channel, takeName);
}

// ---- KFbxObject ------------------------------------------------------------------------

KFbxObject::KFbxObject(KFbxSdkManager* manager, const char* name)
    : m_Manager(manager), m_Name(name ? name : "") {}

KFbxObject::~KFbxObject() = default;

std::string KFbxObject::GetNameWithNameSpacePrefix() const {
    return m_NamePrefix.empty() ? m_Name : m_NamePrefix + "::" + m_Name;
}

KFbxProperty KFbxObject::FindProperty(const char* name) const {
    if (!name)
        return KFbxProperty();
    for (const KFbxPropertyData& p : m_Properties) {
        if (p.name == name) {
            return KFbxProperty(const_cast<KFbxObject*>(this), const_cast<KFbxPropertyData*>(&p));
        }
    }
    return KFbxProperty();
}

KFbxProperty KFbxObject::GetPropertyAt(int index) const {
    if (index < 0 || index >= GetPropertyCount())
        return KFbxProperty();
    const KFbxPropertyData& p = m_Properties[static_cast<std::size_t>(index)];
    return KFbxProperty(const_cast<KFbxObject*>(this), const_cast<KFbxPropertyData*>(&p));
}

KFbxPropertyData& KFbxObject::AddProperty(const std::string& name, EFbxType type) {
    for (KFbxPropertyData& p : m_Properties) {
        if (p.name == name)
            return p;
    }
    m_Properties.emplace_back();
    m_Properties.back().name = name;
    m_Properties.back().type = type;
    return m_Properties.back();
}

int KFbxObject::GetSrcObjectCount(const KFbxClassId& classId) const {
    return static_cast<int>(std::count_if(m_Sources.begin(), m_Sources.end(),
                                          [&](KFbxObject* o) { return o->Is(classId); }));
}

KFbxObject* KFbxObject::GetSrcObject(int index) const {
    if (index < 0 || index >= static_cast<int>(m_Sources.size()))
        return nullptr;
    return m_Sources[static_cast<std::size_t>(index)];
}

KFbxObject* KFbxObject::GetSrcObject(const KFbxClassId& classId, int index) const {
    if (index < 0)
        return nullptr;
    for (KFbxObject* o : m_Sources) {
        if (o->Is(classId) && index-- == 0)
            return o;
    }
    return nullptr;
}

void KFbxObject::Destroy(bool, bool) {
    if (m_OwnedByManager && m_Manager)
        m_Manager->DestroyObject(this);
}

KFCurve* KFbxObject::GetPropertyCurve(const std::string&, const char*, const char*) const {
    return nullptr;
}

// ---- KFbxSdkManager --------------------------------------------------------------------

KFbxSdkManager::KFbxSdkManager() : m_Registry(new KFbxIOPluginRegistry()) {}

KFbxSdkManager::~KFbxSdkManager() {
    // Newest first, so that objects made later (importers) go before what they refer to.
    while (!m_Objects.empty())
        m_Objects.pop_back();
}

KFbxSdkManager* KFbxSdkManager::Create() {
    return new KFbxSdkManager();
}

void KFbxSdkManager::Destroy() {
    delete this;
}

void KFbxSdkManager::GetFileFormatVersion(int& major, int& minor, int& revision) {
    major = 7;
    minor = 7;
    revision = 0;
}

void KFbxSdkManager::DestroyObject(KFbxObject* object) {
    auto it = std::find_if(m_Objects.begin(), m_Objects.end(),
                           [&](const std::unique_ptr<KFbxObject>& o) { return o.get() == object; });
    if (it != m_Objects.end())
        m_Objects.erase(it);
}
