#include "states/MenuState.h"

MenuState::MenuState(Game* game, std::string file) : CompositeState(game, std::move(file)) {}

MenuState::~MenuState() = default;

void MenuState::Update(int value) {
    m_LastUpdate = value;
    RunActions(true);
    CompositeState::Update(value);
}
