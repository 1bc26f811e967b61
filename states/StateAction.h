// StateAction: one action of a state, read from an "Action" element of the state file.
// A key (the trigger) selects the action; it steps a frame range and may switch states.
#pragma once

#include <string>

struct StateAction {
    std::string m_Name;
    int m_StartFrame = 0;
    int m_EndFrame = 0;
    char m_Trigger = 0;     // first character of "Trigger"; 0 when empty
    std::string m_Event;    // state to switch to; empty for none
    int m_StopMoving = 0;   // stored, not acted on
    std::string m_SoundFX;  // stored, not acted on
};
