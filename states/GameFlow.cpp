// The Game's part of every frame: the global keys and which state is shown and updated.
#include "states/Game.h"
#include "states/GameState.h"

bool Game::KeyPressedThisFrame(char key) const {
    const auto code = static_cast<signed char>(key);
    if (static_cast<unsigned char>(key) == 0xFF || code < 0) {
        return false;
    }
    return m_Keyboard.m_KeyState[static_cast<unsigned char>(code)] == kKeyPressed;
}

void Game::HandleGlobalKeys() {
    if (KeyPressedThisFrame(m_ReloadKey)) {
        LoadStates();
    }
    if (KeyPressedThisFrame(m_ReturnKey)) {
        ReturnToDefaultState();
    }
}

void Game::ReturnToDefaultState() {
    m_CurrentState = m_DefaultState;
    for (auto& entry : m_States) {
        if (entry.second != nullptr) {
            entry.second->Reset();
        }
    }
}

void Game::UpdateStates(int elapsed) {
    for (auto& entry : m_States) {
        GameState* state = entry.second;
        if (state == nullptr) {
            continue;
        }
        if (entry.first != m_CurrentState) {
            state->SetVisible(false);
            continue;
        }
        if (state->IsLoaded()) {
            state->SetVisible(true);
            state->Update(elapsed);
            if (m_Loader != nullptr) {
                m_Loader->SetVisible(false);
            }
        } else {
            state->SetVisible(false);
            if (m_Loader != nullptr) {
                m_Loader->SetVisible(true);
            }
        }
    }
}
