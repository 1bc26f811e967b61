#include "states/CompositeState.h"

#include "states/XmlText.h"

CompositeState::CompositeState(Game* game, std::string file) : GameState(game, std::move(file)) {}

CompositeState::~CompositeState() = default;

void CompositeState::Reset() {
    m_Children.clear();
    m_Loaded = false;
    Load();
}

void CompositeState::Update(int value) {
    for (auto& entry : m_Children) {
        if (entry.second != nullptr) {
            entry.second->Update(value);
        }
    }
    m_LastUpdate = value;
    SubmitModels();
}

void CompositeState::SetVisible(bool visible) {
    for (auto& entry : m_Children) {
        if (entry.second != nullptr) {
            entry.second->SetVisible(visible);
        }
    }
}

void CompositeState::CompleteLoad() {
    m_Children.clear();
    // No document when the file never parsed: no music then.
    m_CompositeMusic =
        m_Document != nullptr ? GetTagText(m_Document, "BackgroundMusic") : std::string();
    m_Loaded = true;
}
