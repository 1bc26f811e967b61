// The two ways a game shows its models: the classic look (the default) and the authored
// look, chosen by the state table's <model_look> element.
#pragma once

enum class ModelLook {
    Classic,   // control points as they are, flat light, one material per mesh
    Authored,  // node transforms, smooth shading, every material, skinning, all animation
};
