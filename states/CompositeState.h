// CompositeState: a state with a table of named child states, to which it forwards Update
// and SetVisible, and the name of its background music.
#pragma once

#include <map>
#include <string>

#include "states/GameState.h"

class CompositeState : public GameState {
public:
    CompositeState(Game* game, std::string file);
    ~CompositeState() override;

    void Reset() override;
    void Update(int value) override;
    void SetVisible(bool visible) override;
    void CompleteLoad() override;

    std::map<std::string, GameState*> m_Children;
    std::string m_CompositeMusic;
};
