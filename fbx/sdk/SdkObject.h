// The object model of the SDK-style scene interface: class ids, objects, properties and the
// manager that owns them.
//
// Every scene object (node, mesh, material, texture, ...) is a KFbxObject with a class id
// (KFbxClassId, whose Is() follows the parent chain), a UTF-8 name, named properties and a
// list of source objects (what the file connects to it). The manager owns the objects
// created through it; KFbxSdkManager::Destroy() releases them all.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "fbx/sdk/SdkTypes.h"

namespace fbx {
class SceneBuilder;
}

// Static description of one class: its name and its parent.
struct KFbxClassInfo {
    const char* name;
    const KFbxClassInfo* parent;
};

class KFbxClassId {
public:
    constexpr KFbxClassId() = default;
    constexpr explicit KFbxClassId(const KFbxClassInfo* info) : m_Info(info) {}
    // True when this class is other or derives from it.
    bool Is(const KFbxClassId& other) const;
    const char* GetName() const { return m_Info ? m_Info->name : ""; }
    bool IsValid() const { return m_Info != nullptr; }
    bool operator==(const KFbxClassId& o) const { return m_Info == o.m_Info; }
    bool operator!=(const KFbxClassId& o) const { return m_Info != o.m_Info; }

private:
    const KFbxClassInfo* m_Info = nullptr;
};

// Declares the class id members of an SDK-style class.
#define KFBX_CLASS(Class)                     \
public:                                       \
    static const KFbxClassId ClassId;         \
    KFbxClassId GetClassId() const override { \
        return ClassId;                       \
    }                                         \
                                              \
private:

// Defines them: the class's info record and its id, with its parent class.
#define KFBX_CLASS_IMPLEMENT(Class, Parent)                                 \
    static const KFbxClassInfo k##Class##Info = {#Class, &k##Parent##Info}; \
    const KFbxClassId Class::ClassId{&k##Class##Info};

// The SDK's way of naming a class in templated queries: GetSrcObjectCount(FBX_TYPE(KFbxTexture)).
#define FBX_TYPE(Class) ((Class const*)nullptr)

enum EFbxType {
    eUNIDENTIFIED = 0,
    eBOOL1,
    eINTEGER1,
    eDOUBLE1,
    eDOUBLE3,
    eDOUBLE4,
    eSTRING,
    eREFERENCE,
};

class KFbxObject;
class KFbxSdkManager;
class KFCurve;

// The stored state of one property; KFbxProperty is a handle to it.
struct KFbxPropertyData {
    std::string name;
    EFbxType type = eUNIDENTIFIED;
    std::vector<double> numbers;
    std::string text;
    std::vector<KFbxObject*> sources;  // objects connected to this property, in file order
};

// A handle to a named property of an object; invalid when the property does not exist.
class KFbxProperty {
public:
    KFbxProperty() = default;
    KFbxProperty(KFbxObject* owner, KFbxPropertyData* data) : m_Owner(owner), m_Data(data) {}

    bool IsValid() const { return m_Data != nullptr; }
    const char* GetName() const { return m_Data ? m_Data->name.c_str() : ""; }
    EFbxType GetPropertyDataType() const { return m_Data ? m_Data->type : eUNIDENTIFIED; }

    // The value as the asked type: double, float, int, bool, fbxDouble3, fbxDouble4,
    // KFbxColor, KString / std::string. Missing parts read as 0 (or "").
    template <class T>
    T Get() const;
    // SDK-style reads into a variable; false when the property is invalid.
    bool Get(double& value) const;
    bool Get(fbxDouble3& value) const;

    // Replaces the value when the property exists and holds that kind of value.
    bool Set(bool value);
    bool Set(double value);
    bool Set(const char* value);

    // Objects connected to this property (e.g. textures on "DiffuseColor").
    int GetSrcObjectCount() const;
    int GetSrcObjectCount(const KFbxClassId& classId) const;
    KFbxObject* GetSrcObject(int index = 0) const;
    KFbxObject* GetSrcObject(const KFbxClassId& classId, int index = 0) const;
    template <class T>
    int GetSrcObjectCount(T const*) const {
        return GetSrcObjectCount(T::ClassId);
    }
    template <class T>
    T* GetSrcObject(T const*, int index = 0) const {
        return static_cast<T*>(GetSrcObject(T::ClassId, index));
    }

    // The animation curve of one component ("X", "Y", "Z") of this property in a take (the
    // owner's current take when none is named); null when there is none.
    KFCurve* GetKFCurve(const char* channel = nullptr, const char* takeName = nullptr) const;

    KFbxObject* GetOwner() const { return m_Owner; }

protected:
    KFbxObject* m_Owner = nullptr;
    KFbxPropertyData* m_Data = nullptr;
};

template <>
double KFbxProperty::Get<double>() const;
template <>
float KFbxProperty::Get<float>() const;
template <>
int KFbxProperty::Get<int>() const;
template <>
bool KFbxProperty::Get<bool>() const;
template <>
fbxDouble3 KFbxProperty::Get<fbxDouble3>() const;
template <>
fbxDouble4 KFbxProperty::Get<fbxDouble4>() const;
template <>
KFbxColor KFbxProperty::Get<KFbxColor>() const;
template <>
std::string KFbxProperty::Get<std::string>() const;
template <>
KString KFbxProperty::Get<KString>() const;

// A property handle whose plain Get() gives one type, like the SDK's typed properties.
template <class T>
class KFbxTypedProperty : public KFbxProperty {
public:
    KFbxTypedProperty() = default;
    KFbxTypedProperty(const KFbxProperty& p) : KFbxProperty(p) {}
    T Get() const { return KFbxProperty::Get<T>(); }
};

template <class T>
T KFbxGet(const KFbxProperty& property) {
    return property.template Get<T>();
}

class KFbxObject {
public:
    static const KFbxClassId ClassId;
    virtual KFbxClassId GetClassId() const { return ClassId; }
    virtual ~KFbxObject();

    KFbxObject(const KFbxObject&) = delete;
    KFbxObject& operator=(const KFbxObject&) = delete;

    const char* GetName() const { return m_Name.c_str(); }
    void SetName(const char* name) { m_Name = name ? name : ""; }
    // The name with its class prefix, as older files write it: "Model::pCube1".
    std::string GetNameWithNameSpacePrefix() const;
    KFbxSdkManager* GetFbxSdkManager() const { return m_Manager; }

    bool Is(const KFbxClassId& classId) const { return GetClassId().Is(classId); }

    // The property of that name, or an invalid handle.
    KFbxProperty FindProperty(const char* name) const;
    int GetPropertyCount() const { return static_cast<int>(m_Properties.size()); }
    KFbxProperty GetPropertyAt(int index) const;

    // Source objects: what the file connects to this object (children of a node, its
    // attribute and materials, the textures of a layered texture, the clusters of a skin...).
    int GetSrcObjectCount() const { return static_cast<int>(m_Sources.size()); }
    int GetSrcObjectCount(const KFbxClassId& classId) const;
    KFbxObject* GetSrcObject(int index = 0) const;
    KFbxObject* GetSrcObject(const KFbxClassId& classId, int index = 0) const;
    template <class T>
    int GetSrcObjectCount(T const*) const {
        return GetSrcObjectCount(T::ClassId);
    }
    template <class T>
    T* GetSrcObject(T const*, int index = 0) const {
        return static_cast<T*>(GetSrcObject(T::ClassId, index));
    }

    // Objects owned by a scene are released with it; others are released by their manager.
    virtual void Destroy(bool recursive = false, bool dependents = false);

    // The animation curve behind a component of one of this object's properties.
    virtual KFCurve* GetPropertyCurve(const std::string& property, const char* channel,
                                      const char* takeName) const;

protected:
    explicit KFbxObject(KFbxSdkManager* manager, const char* name);
    // Adds a property (or returns the existing one of that name) for the builder to fill.
    KFbxPropertyData& AddProperty(const std::string& name, EFbxType type);

private:
    friend class KFbxSdkManager;
    friend class KFbxScene;
    friend class fbx::SceneBuilder;

    KFbxSdkManager* m_Manager = nullptr;
    std::string m_Name;
    std::string m_NamePrefix;
    std::deque<KFbxPropertyData> m_Properties;
    std::vector<KFbxObject*> m_Sources;
    bool m_OwnedByManager = true;
};

// A checked downcast: null when the object is not of class T.
template <class T>
T* KFbxCast(KFbxObject* object) {
    return object && object->GetClassId().Is(T::ClassId) ? static_cast<T*>(object) : nullptr;
}
template <class T>
const T* KFbxCast(const KFbxObject* object) {
    return object && object->GetClassId().Is(T::ClassId) ? static_cast<const T*>(object) : nullptr;
}

class KFbxIOPluginRegistry;

class KFbxSdkManager {
public:
    static KFbxSdkManager* Create();
    // Releases every object created in this manager, then the manager itself.
    void Destroy();

    KFbxIOPluginRegistry* GetIOPluginRegistry() const { return m_Registry.get(); }

    // The newest file version this library reads: 7.7.0.
    static void GetFileFormatVersion(int& major, int& minor, int& revision);

    // Takes ownership of an object made by a class's Create().
    template <class T>
    T* Adopt(T* object) {
        m_Objects.emplace_back(object);
        return object;
    }
    // Releases one object that the manager owns; nothing happens for other objects.
    void DestroyObject(KFbxObject* object);

private:
    KFbxSdkManager();
    ~KFbxSdkManager();

    std::vector<std::unique_ptr<KFbxObject>> m_Objects;
    std::unique_ptr<KFbxIOPluginRegistry> m_Registry;
};
