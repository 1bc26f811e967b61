#include "states/GameState.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMNodeList.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "import/SceneImport.h"
#include "model/Model.h"
#include "states/Game.h"
#include "states/StateAction.h"
#include "states/XmlEntityLimit.h"
#include "states/XmlText.h"

using xercesc::XMLPlatformUtils;

namespace {
int ReadNumber(xercesc::DOMDocument* document, const char* tagName) {
    return std::atoi(GetTagText(document, tagName).c_str());
}

int ReadChildNumber(xercesc::DOMElement* element, const char* tagName) {
    return std::atoi(GetChildTagText(element, tagName).c_str());
}

// The frame the state's running action shows at the next tick, stepped as the action pass
// steps it: on to the next frame, wrapping to the start before the end frame; a frame past
// the end, or a state without a running action, stays where it is.
int NextFrame(const GameState& state) {
    const auto action = state.m_Actions.find(state.m_CurrentAction);
    const int frame = state.m_CurrentFrame;
    if (action == state.m_Actions.end() || action->second == nullptr ||
        frame > action->second->m_EndFrame) {
        return frame;
    }
    const long long next = static_cast<long long>(frame) + 1;
    return next >= action->second->m_EndFrame ? action->second->m_StartFrame : frame + 1;
}

// How far the game is from the last tick to the next one, 0 to 1.
float TickFraction(const Game& game) {
    if (game.m_TickRate <= 0 || game.m_TickRate > 1000) {
        return 0.0f;  // every frame ticks
    }
    const float fraction =
        static_cast<float>(game.m_TickAccumulator) / static_cast<float>(1000 / game.m_TickRate);
    return std::clamp(fraction, 0.0f, 1.0f);
}

// A library failure while loading is formatted but never shown; the state goes on with
// what it has read so far.
void KeepExceptionMessage(const XMLCh* message) {
    char* text = new char[256];  // deliberately kept, like the message itself
    std::snprintf(text, 256, "Exception message is: \n%s\n", TranscodeXmlText(message).c_str());
}
}  // namespace

GameState::GameState(Game* game, std::string file) : m_Game(game), m_File(std::move(file)) {
    Load();
}

GameState::~GameState() {
    for (Model* model : m_Models) {
        delete model;
    }
    m_Models.clear();
    for (auto& entry : m_Actions) {
        delete entry.second;
    }
    m_Actions.clear();
    for (auto& entry : m_NamedModels) {
        delete entry.second;
    }
    m_NamedModels.clear();
    if (m_Document != nullptr) {
        m_Document->release();
        m_Document = nullptr;
    }
}

void GameState::Load() {
    using xercesc::XercesDOMParser;

    std::unique_ptr<XercesDOMParser> parser;
    std::unique_ptr<xercesc::HandlerBase> handler;
    try {
        parser.reset(new (XMLPlatformUtils::fgMemoryManager)
                         XercesDOMParser(nullptr, XMLPlatformUtils::fgMemoryManager));
        parser->setValidationScheme(XercesDOMParser::Val_Always);
        parser->setDoNamespaces(true);
        LimitEntityExpansion(*parser);
        handler = std::make_unique<xercesc::HandlerBase>();
        parser->setErrorHandler(handler.get());

        parser->parse(m_File.c_str());
        // The state keeps its document after the parser is gone (the background music is
        // read from it again later), so take it over from the parser.
        if (xercesc::DOMDocument* document = parser->adoptDocument()) {
            if (m_Document != nullptr) {
                m_Document->release();
            }
            m_Document = document;
            ReadStateValues();
            ReadModels();
            ReadActions();
        }
    } catch (const xercesc::XMLException& exception) {
        KeepExceptionMessage(exception.getMessage());
    } catch (const xercesc::DOMException& exception) {
        KeepExceptionMessage(exception.getMessage());
    } catch (...) {
        // Malformed XML ends up here: the state stays usable with what it holds.
    }
    handler.reset();
    parser.reset();

    m_CurrentAction = m_DefaultAction;
    if (!m_Actions.empty() && m_Actions[m_CurrentAction] != nullptr) {
        m_CurrentFrame = m_Actions[m_CurrentAction]->m_StartFrame;
    } else {
        m_CurrentFrame = 1;
    }

    CompleteLoad();
    SubmitModels();
}

void GameState::ReadStateValues() {
    m_Name = GetTagText(m_Document, "Name");
    const float z = static_cast<float>(ReadNumber(m_Document, "Z_Position"));
    const float y = static_cast<float>(ReadNumber(m_Document, "Y_Position"));
    const float x = static_cast<float>(ReadNumber(m_Document, "X_Position"));
    m_Position[0] = x;
    m_Position[1] = y;
    m_Position[2] = z;
    m_Height = ReadNumber(m_Document, "Height");
    m_Width = ReadNumber(m_Document, "Width");
    m_BackgroundMusic = GetTagText(m_Document, "BackgroundMusic");
    m_DefaultAction = GetTagText(m_Document, "Default_Action");
}

void GameState::ReadModels() {
    const XmlTagName urlTag("URL");
    xercesc::DOMNodeList* urls = m_Document->getElementsByTagName(urlTag.Get());
    for (XMLSize_t i = 0; i < urls->getLength(); ++i) {
        const XMLCh* text = urls->item(i)->getTextContent();
        if (text == nullptr) {
            continue;
        }
        LoadModelFile(TranscodeXmlText(text));
    }
}

void GameState::ReadActions() {
    const XmlTagName actionTag("Action");
    xercesc::DOMNodeList* actions = m_Document->getElementsByTagName(actionTag.Get());
    for (XMLSize_t i = 0; i < actions->getLength(); ++i) {
        auto* element = static_cast<xercesc::DOMElement*>(actions->item(i));
        const std::string name = GetChildTagText(element, "Name");
        // A later action of the same name wins; the earlier record is not released.
        auto* action = new StateAction();
        m_Actions[name] = action;
        action->m_Name = GetChildTagText(element, "Name");
        action->m_Event = GetChildTagText(element, "Event");
        action->m_StartFrame = ReadChildNumber(element, "Start_Frame");
        action->m_EndFrame = ReadChildNumber(element, "End_Frame");
        action->m_StopMoving = ReadChildNumber(element, "StopMoving");
        const std::string trigger = GetChildTagText(element, "Trigger");
        action->m_Trigger = trigger.empty() ? '\0' : trigger[0];
        action->m_SoundFX = GetChildTagText(element, "SoundFX");
    }
}

void GameState::LoadModelFile(const std::string& url) {
    auto* model = new Model();
    // A file that cannot be read still leaves its (empty) model in the state.
    ImportModelFile(url, model, m_Game != nullptr ? m_Game->m_ModelLook : ModelLook::Classic);
    m_Models.push_back(model);
}

void GameState::SubmitModels() {
    const bool authored = m_Game != nullptr && m_Game->m_ModelLook == ModelLook::Authored;
    const int nextFrame = authored ? NextFrame(*this) : 0;
    const float fraction = authored ? TickFraction(*m_Game) : 0.0f;
    for (Model* model : m_Models) {
        for (int i = 0; i < 3; ++i) {
            model->m_Rotation[i] = m_Rotation[i];
            model->m_Position[i] = m_Position[i];
        }
        model->m_Frame = m_CurrentFrame;
        if (authored) {
            model->m_NextFrame = nextFrame;
            model->m_FrameFraction = fraction;
        }
        if (m_Game != nullptr) {
            m_Game->m_DrawList.push_back(model);
        }
    }
}

void GameState::Reset() {
    m_Loaded = false;
    Load();
}

bool GameState::IsLoaded() {
    return m_Loaded;
}

void GameState::Update(int value) {
    m_LastUpdate = value;
    SubmitModels();
}

void GameState::SetVisible(bool visible) {
    (void)visible;
}

std::string GameState::GetName() {
    return m_Name;
}

void GameState::CompleteLoad() {
    m_Loaded = true;
}
