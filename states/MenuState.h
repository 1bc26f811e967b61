// MenuState: the state the player drives. Each frame it runs its actions (keys select
// actions, switch states, step frame ranges) and moves or turns its models for the ten
// movement actions ("RotateUp" ... "ZoomOut").
#pragma once

#include <string>

#include "states/CompositeState.h"

class MenuState : public CompositeState {
public:
    MenuState(Game* game, std::string file);
    ~MenuState() override;

    void Update(int value) override;
};
