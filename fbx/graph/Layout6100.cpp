// The 6100-era layout (and what it shares with 5800 files): objects named by string, a Model's
// geometry and attribute data inside the Model record, textures tied to the mesh Model and
// picked per layer with TextureId, a texture's video clip named by its "Media" record, and
// animation as channels and keys in the Takes section.
// The graph restates them as the Geometry and NodeAttribute objects, material connections and
// AnimationStack/Layer/CurveNode/Curve objects of a 7000+ file.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "fbx/graph/LegacyRecords.h"
#include "fbx/graph/ObjectGraph.h"
#include "fbx/graph/TakeKeys.h"

namespace fbx {

namespace {

const char* const kTransformProperties[3] = {"Lcl Translation", "Lcl Rotation", "Lcl Scaling"};
const char* const kTransformChannels[3] = {"T", "R", "S"};
const char* const kAxes[3] = {"X", "Y", "Z"};

// The material property that an older file's texture layer element feeds, or nullptr.
const char* TextureChannelProperty(const std::string& element) {
    static const std::pair<const char*, const char*> kChannels[] = {
        {"LayerElementTexture", "DiffuseColor"},
        {"LayerElementDiffuseFactorTextures", "DiffuseFactor"},
        {"LayerElementEmissive_Textures", "EmissiveColor"},
        {"LayerElementEmissiveFactor_Textures", "EmissiveFactor"},
        {"LayerElementAmbientTextures", "AmbientColor"},
        {"LayerElementAmbientFactorTextures", "AmbientFactor"},
        {"LayerElementSpecularTextures", "SpecularColor"},
        {"LayerElementSpecularFactorTextures", "SpecularFactor"},
        {"LayerElementShininessExponentTextures", "ShininessExponent"},
        {"LayerElementBumpTextures", "Bump"},
        {"LayerElementNormalMapTextures", "NormalMap"},
        {"LayerElementTransparentTextures", "TransparentColor"},
        {"LayerElementTransparencyFactorTextures", "TransparencyFactor"},
        {"LayerElementReflectionTextures", "ReflectionColor"},
        {"LayerElementReflectionFactorTextures", "ReflectionFactor"},
    };
    for (const auto& [name, property] : kChannels) {
        if (element == name)
            return property;
    }
    return nullptr;
}

// A texture that feeds a material's property.
struct TextureAttachment {
    std::size_t texture;
    std::size_t material;
    const char* property;
};

// The textures and materials connected to one mesh Model, in connection order.
struct ModelShading {
    std::vector<std::size_t> textures;
    std::vector<std::size_t> materials;
};

// What one texture layer element attaches: each TextureId picks a texture, which feeds the
// material of the same polygon when both elements map by polygon, else every material the
// layer's material element names (or the first material when it names none).
void AttachLayerTextures(const Record& geometry, const Record& element, const char* property,
                         const ModelShading& shading, std::vector<TextureAttachment>& pairs) {
    const std::vector<std::size_t>& textures = shading.textures;
    const std::vector<std::size_t>& materials = shading.materials;
    std::vector<std::int64_t> ids;
    if (const Record* r = element.Child("TextureId"))
        ids = r->Ints();
    std::vector<std::int64_t> mats;
    std::string materialMapping;
    for (const Record* m : geometry.Children("LayerElementMaterial")) {
        if (m->IntAt(0) != element.IntAt(0))
            continue;
        if (const Record* r = m->Child("Materials"))
            mats = r->Ints();
        materialMapping = m->ChildText("MappingInformationType");
    }
    bool perPolygon = element.ChildText("MappingInformationType") == "ByPolygon" &&
                      materialMapping == "ByPolygon" && mats.size() == ids.size();
    for (std::size_t p = 0; p < ids.size(); ++p) {
        if (ids[p] < 0 || static_cast<std::size_t>(ids[p]) >= textures.size())
            continue;
        std::size_t texture = textures[static_cast<std::size_t>(ids[p])];
        if (perPolygon) {
            if (mats[p] >= 0 && static_cast<std::size_t>(mats[p]) < materials.size())
                pairs.push_back({texture, materials[static_cast<std::size_t>(mats[p])], property});
            continue;
        }
        bool any = false;
        for (std::int64_t m : mats) {
            if (m >= 0 && static_cast<std::size_t>(m) < materials.size()) {
                pairs.push_back({texture, materials[static_cast<std::size_t>(m)], property});
                any = true;
            }
        }
        if (!any)
            pairs.push_back({texture, materials.front(), property});
    }
}

}  // namespace

// 6100-era files keep a Model's geometry and attribute data inside the Model record.
void ObjectGraph::AddLegacyGeometryAndAttributes() {
    std::size_t count = m_Objects.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i == m_Root || m_Objects[i].kind != "Model")
            continue;
        if (!Sources(i, "Geometry").empty() || !Sources(i, "NodeAttribute").empty())
            continue;
        Object object;
        object.subclass = m_Objects[i].subclass;
        object.name = m_Objects[i].name;
        object.record = m_Objects[i].record;
        object.id = -static_cast<std::int64_t>(m_Objects.size()) - 1000000;
        if (object.subclass == "Mesh" && IsLegacyMeshRecord(*object.record)) {
            object.kind = "Geometry";
            object.className = "Geometry";
        } else if (!object.subclass.empty()) {
            object.kind = "NodeAttribute";
            object.className = "NodeAttribute";
        } else {
            continue;
        }
        bool isGeometry = object.kind == "Geometry";
        std::size_t attribute = AddObject(std::move(object));
        Connect(attribute, i, "");
        if (!isGeometry)
            continue;
        // Skins hang off the mesh Model in these files; newer files hang them off the geometry.
        for (std::size_t deformer : Sources(i, "Deformer")) {
            if (m_Objects[deformer].subclass == "Skin")
                Connect(deformer, attribute, "");
        }
    }
}

// Older files tie textures to the mesh Model and pick them per layer with TextureId; newer
// files connect them to the material's DiffuseColor. Restate the former as the latter.
void ObjectGraph::AttachLegacyTextures() {
    std::size_t count = m_Objects.size();
    for (std::size_t model = 0; model < count; ++model) {
        if (m_Objects[model].kind != "Model")
            continue;
        ModelShading shading{Sources(model, "Texture"), Sources(model, "Material")};
        if (shading.textures.empty() || shading.materials.empty())
            continue;
        std::vector<std::size_t> geometries = Sources(model, "Geometry");
        if (geometries.empty())
            continue;
        const Record* geometry = m_Objects[geometries.front()].record;
        std::vector<TextureAttachment> pairs;
        for (const Record& entry : geometry->children) {
            if (const char* property = TextureChannelProperty(entry.name))
                AttachLayerTextures(*geometry, entry, property, shading, pairs);
        }
        for (const TextureAttachment& a : pairs)
            ConnectTexture(a.texture, a.material, a.property);
    }
}

// A texture stacked in a layered texture reaches the material through the stack, once.
void ObjectGraph::ConnectTexture(std::size_t texture, std::size_t material, const char* property) {
    std::vector<std::size_t> stacks = Destinations(texture, "LayeredTexture");
    std::size_t source = stacks.empty() ? texture : stacks.front();
    std::vector<std::size_t> already = PropertySources(material, property);
    if (std::find(already.begin(), already.end(), source) == already.end())
        Connect(source, material, property);
}

// A texture names its video clip in its "Media" record ("Video::name"); files connect the two
// as well, or not. Restate the name as the connection, once.
void ObjectGraph::ConnectTextureVideos() {
    const std::size_t count = m_Objects.size();
    for (std::size_t texture = 0; texture < count; ++texture) {
        const Object& object = m_Objects[texture];
        if (object.kind != "Texture" || !object.record)
            continue;
        const std::string media = object.record->ChildText("Media");
        if (media.empty())
            continue;
        auto it = m_ByKey.find(NormalisedKey(media));
        if (it == m_ByKey.end() || m_Objects[it->second].kind != "Video")
            continue;
        const std::vector<std::size_t> videos = Sources(texture, "Video");
        if (std::find(videos.begin(), videos.end(), it->second) == videos.end())
            Connect(it->second, texture, "");
    }
}

// Each Take becomes an AnimationStack with one AnimationLayer holding its models' curves.
void ObjectGraph::ReadLegacyTakes(const Record& takes) {
    for (const Record* take : takes.Children("Take")) {
        Object stack;
        stack.kind = "AnimationStack";
        stack.className = "AnimStack";
        stack.name = take->TextAt(0);
        stack.record = take;
        std::size_t stackIndex = AddObject(std::move(stack));
        Object layer;
        layer.kind = "AnimationLayer";
        layer.className = "AnimLayer";
        layer.name = "BaseLayer";
        layer.record = take;
        std::size_t layerIndex = AddObject(std::move(layer));
        Connect(layerIndex, stackIndex, "");
        for (const Record* model : take->Children("Model"))
            ReadTakeModel(*model, layerIndex);
    }
}

// A take's Model: Channel "Transform" holds channels T, R and S, each holding X, Y and Z.
// Each of T, R and S becomes a curve node on the model's Lcl property, each keyed axis a
// curve. The last channel of a name counts; of an axis, the first that has keys.
void ObjectGraph::ReadTakeModel(const Record& model, std::size_t layer) {
    auto it = m_ByKey.find(NormalisedKey(model.TextAt(0)));
    if (it == m_ByKey.end() || m_Objects[it->second].kind != "Model")
        return;
    std::size_t node = it->second;
    auto lastChannel = [](const Record& parent, const char* name) {
        const Record* found = nullptr;
        for (const Record* channel : parent.Children("Channel")) {
            if (channel->TextAt(0) == name)
                found = channel;
        }
        return found;
    };
    const Record* transform = lastChannel(model, "Transform");
    if (!transform)
        return;
    for (int c = 0; c < 3; ++c) {
        const Record* group = lastChannel(*transform, kTransformChannels[c]);
        if (!group)
            continue;
        Object curveNode;
        curveNode.kind = "AnimationCurveNode";
        curveNode.className = "AnimCurveNode";
        curveNode.name = kTransformChannels[c];
        curveNode.record = group;
        std::size_t nodeIndex = AddObject(std::move(curveNode));
        Connect(nodeIndex, layer, "");
        Connect(nodeIndex, node, kTransformProperties[c]);
        for (const char* axis : kAxes) {
            for (const Record* channel : group->Children("Channel")) {
                if (channel->TextAt(0) != axis || !channel->Child("Key"))
                    continue;
                AddTakeCurve(*channel, nodeIndex, axis);
                break;
            }
        }
    }
}

namespace {

// The key attribute flags a 7000+ file writes for a key of that kind.
std::int32_t KeyAttributeFlags(const TakeKey& key) {
    switch (key.interpolation) {
        case TakeInterpolation::Constant:
            return key.constantNext ? 0x102 : 0x02;
        case TakeInterpolation::Linear:
            return 0x04;
        case TakeInterpolation::Cubic:
            break;
    }
    switch (key.tangent) {
        case 's':
            return 0x408;  // user
        case 'b':
            return 0xC08;  // user, broken
        case 't':
            return 0x208;  // TCB
        default:
            return 0x108;  // automatic
    }
}

// A slope as float32; 0 beyond its range.
float Float32(double v) {
    return std::fabs(v) <= std::numeric_limits<float>::max() ? static_cast<float>(v) : 0.0f;
}

}  // namespace

// The keys of one axis channel as an AnimationCurve on the curve node's d|X, d|Y or d|Z, with
// one key attribute per key as 7000+ files write them (flags, then right slope, next left
// slope and two unused values).
void ObjectGraph::AddTakeCurve(const Record& channel, std::size_t curveNode, const char* axis) {
    std::vector<TakeKey> keys = ReadTakeKeys(channel, m_Document.version);
    std::vector<std::int64_t> times;
    std::vector<double> values;
    std::vector<std::int32_t> flags;
    std::vector<float> slopes;  // float32, as real files store them
    times.reserve(keys.size());
    values.reserve(keys.size());
    flags.reserve(keys.size());
    slopes.reserve(keys.size() * 4);
    for (const TakeKey& k : keys) {
        times.push_back(k.time);
        values.push_back(k.value);
        flags.push_back(KeyAttributeFlags(k));
        slopes.insert(slopes.end(), {Float32(k.rightSlope), Float32(k.nextLeftSlope), 0.0f, 0.0f});
    }
    Record& data = MakeRecord("AnimationCurve");
    Record timeRecord;
    timeRecord.name = "KeyTime";
    timeRecord.values.push_back(Value::MakeArray(std::move(times)));
    data.children.push_back(std::move(timeRecord));
    data.children.push_back(DoubleRecord("KeyValueFloat", std::move(values)));
    data.children.push_back(
        IntRecord("KeyAttrRefCount", std::vector<std::int32_t>(keys.size(), 1)));
    data.children.push_back(IntRecord("KeyAttrFlags", std::move(flags)));
    Record slopeRecord;
    slopeRecord.name = "KeyAttrDataFloat";
    slopeRecord.values.push_back(Value::MakeArray(std::move(slopes)));
    data.children.push_back(std::move(slopeRecord));
    Object curve;
    curve.kind = "AnimationCurve";
    curve.className = "AnimCurve";
    curve.record = &data;
    Connect(AddObject(std::move(curve)), curveNode, std::string("d|") + axis);
}

}  // namespace fbx
