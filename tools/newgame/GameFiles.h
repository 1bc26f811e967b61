// The text of the files of a game written by newgame: the state table, the loading state, one
// state per model and the README listing the keys.
#pragma once

#include <string>
#include <vector>

#include "model/AuthoredScene.h"
#include "tools/newgame/StatePlacement.h"

// One model's state in the new game.
struct PlannedState {
    std::string m_Name;    // the state's name: letters, digits and '_' only, unique
    std::string m_File;    // its state file's name in Assets/, e.g. "robot.xml"
    std::string m_Model;   // the model's path from the game folder, e.g. "Assets/models/x.fbx"
    std::string m_Source;  // the model file it was copied from (for the README)
    StatePosition m_Position;
    std::vector<TakeSpan> m_Takes;  // frames as the game numbers them
};

// The name of the loading state's file in Assets/.
constexpr const char* kLoaderFile = "loading.xml";

// Letters, digits and '_' of the text, others dropped; `fallback` when nothing is left.
std::string PlainName(const std::string& text, const std::string& fallback);

// Assets/states.xml: the authored look, the loader, the first state as the default, titled.
std::string StateTableXml(const std::vector<PlannedState>& states, const std::string& title);

// Assets/loading.xml: a state with no model, shown while a state is not loaded yet.
std::string LoaderXml();

// The state file of states[index]: its model and place, the movement keys, the keys to the
// next and previous states (wrapping round), one key per take, the first take as the default
// action (frame 0 to 0 without takes).
std::string StateXml(const std::vector<PlannedState>& states, std::size_t index);

// README.txt: how to run the game and every key of every state.
std::string ReadmeText(const std::vector<PlannedState>& states, const std::string& title);
