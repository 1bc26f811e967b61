#include "import/AnimationLoader.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "fbx/sdk/fbxsdk.h"
#include "model/Model.h"

namespace {

struct ChannelCurves {
    KFCurve* m_X = nullptr;
    KFCurve* m_Y = nullptr;
    KFCurve* m_Z = nullptr;
};

ChannelCurves CurvesOf(const KFbxProperty& property) {
    return {property.GetKFCurve("X"), property.GetKFCurve("Y"), property.GetKFCurve("Z")};
}

// The value of key f; a component curve with fewer keys holds its last key, and a missing
// one the node's unanimated value.
float KeyValue(const KFCurve* curve, int f, double unanimated) {
    if (!curve || curve->KeyGetCount() <= 0)
        return static_cast<float>(unanimated);
    const int last = curve->KeyGetCount() - 1;
    return static_cast<float>(curve->KeyGetValue(f < last ? f : last));
}

void Fill(float (&out)[3], const ChannelCurves& curves, int f, const fbxDouble3& unanimated) {
    out[0] = KeyValue(curves.m_X, f, unanimated[0]);
    out[1] = KeyValue(curves.m_Y, f, unanimated[1]);
    out[2] = KeyValue(curves.m_Z, f, unanimated[2]);
}

// Key frames one model may hold in all. Files that share one long curve among many nodes
// would otherwise multiply a small file into gigabytes; real takes stay far below this.
constexpr std::size_t kMaxModelKeyFrames = std::size_t{1} << 22;

std::size_t KeyFramesHeld(const Model& model) {
    std::size_t held = 0;
    for (const auto& entry : model.m_Animations)
        held += entry.second.m_Keys.size();
    return held;
}

}  // namespace

bool LoadAnimation(KFbxNode* node, Model& model) {
    Animation animation;
    animation.m_Name = node->GetName();
    std::printf("Loading animation: %s\n", animation.m_Name.c_str());

    const fbxDouble3 translation = node->LclTranslation.Get();
    const fbxDouble3 rotation = node->LclRotation.Get();
    const fbxDouble3 scaling = node->LclScaling.Get();

    const std::size_t held = KeyFramesHeld(model);
    const std::size_t budget = held < kMaxModelKeyFrames ? kMaxModelKeyFrames - held : 0;
    bool overBudget = false;

    const int takeCount = node->GetTakeNodeNameCount();
    for (int take = 0; take < takeCount && !overBudget; ++take) {
        const char* takeName = node->GetTakeNodeName(take);
        if (takeName && std::strcmp(takeName, "Default") == 0)
            continue;
        node->SetCurrentTakeNode(take);

        const ChannelCurves t = CurvesOf(node->LclTranslation);
        const ChannelCurves r = CurvesOf(node->LclRotation);
        const ChannelCurves s = CurvesOf(node->LclScaling);

        // The last present of the three X curves decides how many frames the take gives.
        int frames = 0;
        if (t.m_X)
            frames = t.m_X->KeyGetCount();
        if (r.m_X)
            frames = r.m_X->KeyGetCount();
        if (s.m_X)
            frames = s.m_X->KeyGetCount();

        for (int f = 0; f < frames; ++f) {
            if (animation.m_Keys.size() >= budget) {
                std::printf("Too many animation keys in the model: the rest of %s is left out.\n",
                            animation.m_Name.c_str());
                overBudget = true;
                break;
            }
            KeyFrame key;
            if (t.m_X) {
                Fill(key.m_Translation, t, f, translation);
                key.m_HasTranslation = true;
            }
            if (r.m_X) {
                Fill(key.m_Rotation, r, f, rotation);
                key.m_HasRotation = true;
            }
            if (s.m_X) {
                Fill(key.m_Scale, s, f, scaling);
                key.m_HasScale = true;
            }
            if (key.m_HasTranslation || key.m_HasRotation || key.m_HasScale) {
                animation.m_Keys.push_back(key);
            }
        }
    }

    std::printf("Added animation for %s with %d keys.\n", animation.m_Name.c_str(),
                static_cast<int>(animation.m_Keys.size()));
    model.m_Animations[animation.m_Name] = animation;
    return false;
}
