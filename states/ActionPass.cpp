// The per-frame action pass of a state and the ten movement actions.
#include <string>

#include "states/Game.h"
#include "states/GameState.h"
#include "states/StateAction.h"

void GameState::RunActions(bool applyMovement) {
    // With no trigger held the default action is in force.
    m_CurrentAction = m_DefaultAction;

    for (auto& [name, action] : m_Actions) {
        if (action == nullptr) {
            continue;
        }
        const int trigger = static_cast<signed char>(action->m_Trigger);
        // Negative characters (codes above 127) can never be a key index.
        if (trigger < 0) {
            continue;
        }
        if (m_Game == nullptr) {
            continue;
        }
        const int keyState = m_Game->m_Keyboard.m_KeyState[trigger];
        if (keyState != kKeyPressed && keyState != kKeyHeld) {
            continue;
        }

        m_CurrentAction = name;
        m_CurrentFrame = action->m_StartFrame;
        if (!action->m_Event.empty()) {
            m_Game->m_CurrentState = action->m_Event;
            m_CurrentAction = m_DefaultAction;
            continue;
        }
        if (applyMovement) {
            ApplyMovement(m_CurrentAction);
        }
    }

    // Looking the action up leaves an empty entry for a name that is not in the table.
    const StateAction* current = m_Actions[m_CurrentAction];
    if (current != nullptr && m_Game != nullptr && m_Game->m_Tick) {
        // The range wraps before showing its end frame; a frame already past the end stays.
        if (m_CurrentFrame <= current->m_EndFrame) {
            ++m_CurrentFrame;
            if (m_CurrentFrame >= current->m_EndFrame) {
                m_CurrentFrame = current->m_StartFrame;
            }
        }
    }
}

void GameState::ApplyMovement(const std::string& actionName) {
    // The step follows the frame's elapsed time, so movement speed does not depend on the
    // frame rate. Sums are taken in double precision and stored back as float.
    const double step = static_cast<double>(m_LastUpdate) * 0.3;
    auto add = [step](float& value, double sign) {
        value = static_cast<float>(value + sign * step);
    };
    if (actionName == "RotateUp") {
        add(m_Rotation[0], 1.0);
    } else if (actionName == "RotateDown") {
        add(m_Rotation[0], -1.0);
    } else if (actionName == "RotateLeft") {
        add(m_Rotation[1], -1.0);
    } else if (actionName == "RotateRight") {
        add(m_Rotation[1], 1.0);
    } else if (actionName == "MoveUp") {
        add(m_Position[1], 1.0);
    } else if (actionName == "MoveDown") {
        add(m_Position[1], -1.0);
    } else if (actionName == "MoveLeft") {
        add(m_Position[0], -1.0);
    } else if (actionName == "MoveRight") {
        add(m_Position[0], 1.0);
    } else if (actionName == "ZoomIn") {
        add(m_Position[2], 1.0);
    } else if (actionName == "ZoomOut") {
        add(m_Position[2], -1.0);
    }
}
