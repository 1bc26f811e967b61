// The keys of a game written by newgame: the movement keys of the demo, the keys between the
// models' states and one key per take.
#pragma once

#include <cstddef>

// A movement action of the engine (an action of this name moves or turns the state) and the
// key the demo gives it.
struct MovementKey {
    const char* m_Action;
    char m_Key;
    const char* m_Meaning;  // for the README
};

constexpr MovementKey kMovementKeys[] = {
    {"MoveLeft", 'j', "move left"},   {"MoveRight", 'k', "move right"},
    {"MoveUp", 'i', "move up"},       {"MoveDown", 'm', "move down"},
    {"RotateLeft", 'a', "turn left"}, {"RotateRight", 'd', "turn right"},
    {"RotateUp", 'w', "turn up"},     {"RotateDown", 's', "turn down"},
    {"ZoomIn", 'z', "come closer"},   {"ZoomOut", 'x', "go away"},
};

constexpr char kNextModelKey = 'n';
constexpr char kPreviousModelKey = 'b';
constexpr char kReturnKey = 'r';  // back to the first model, every state reset
constexpr char kReloadKey = 'l';  // re-read every file
constexpr char kPauseKey = 'p';   // stored by the engine; kept free

// The key of a state's take-th take (from 0): 1 to 9, then the lower-case letters no other key
// uses, then the upper-case letters; '\0' when the keys have run out.
char TakeKey(std::size_t take);
