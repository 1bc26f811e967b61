#include "states/Game.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMNodeList.hpp>
#include <xercesc/util/XMLException.hpp>

#include "states/Clock.h"
#include "states/FatalErrorReporter.h"
#include "states/GameState.h"
#include "states/MenuState.h"
#include "states/XmlEntityLimit.h"
#include "states/XmlText.h"

namespace {
// First character of a value; NUL for an empty one.
char FirstCharacter(const std::string& text) {
    return text.empty() ? '\0' : text[0];
}

constexpr std::size_t kShownLookChars = 80;

// The look the table asks for; classic without a "model_look" element. Surrounding blanks
// are ignored; any other value is named on the console and gives the classic look.
ModelLook ReadModelLook(xercesc::DOMDocument* document) {
    const XmlTagName tag("model_look");
    if (document->getElementsByTagName(tag.Get())->getLength() == 0) {
        return ModelLook::Classic;
    }
    std::string value = GetTagText(document, "model_look");
    const char* blanks = " \t\r\n";
    value.erase(0, value.find_first_not_of(blanks));
    value.erase(value.find_last_not_of(blanks) + 1);
    if (value == "authored") {
        return ModelLook::Authored;
    }
    if (value != "classic") {
        // One line whatever the value holds: breaks become blanks, a long value is cut.
        std::replace_if(
            value.begin(), value.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        if (value.size() > kShownLookChars) {
            value = value.substr(0, kShownLookChars) + "...";
        }
        std::printf(
            "Unknown model_look \"%s\": expected \"classic\" or \"authored\"; using the "
            "classic look.\n",
            value.c_str());
    }
    return ModelLook::Classic;
}
}  // namespace

Game::Game() : Game("./Assets/states.xml") {}

Game::Game(std::string statesFile) : m_StatesFile(std::move(statesFile)) {
    const int now = ClockMilliseconds();
    m_TimerLastClock = now;
    m_TimerCurrentClock = now;
    m_FrameStartClock = now;
    m_FrameEndClock = now;
    LoadStates();
    std::printf("Finished loading xml.\n");
}

Game::~Game() {
    for (auto it = m_States.begin(); it != m_States.end();) {
        if (it->second != nullptr) {
            delete it->second;
            it = m_States.erase(it);
        } else {
            ++it;
        }
    }
    // The loader state is not released: it is not in the table and the process ends here.
    delete m_ErrorHandler;
    m_ErrorHandler = nullptr;
    delete m_Parser;  // takes the state table document with it
    m_Parser = nullptr;
    m_Data = nullptr;
    m_DrawList.clear();
}

void Game::LoadStates() {
    using xercesc::XercesDOMParser;

    // Earlier parsers and handlers are kept: a reload must not pull the ground from under
    // anything that still points into the previous table.
    m_Parser = new XercesDOMParser();
    m_Parser->setValidationScheme(XercesDOMParser::Val_Always);
    m_Parser->setDoNamespaces(true);
    LimitEntityExpansion(*m_Parser);
    m_ErrorHandler = new FatalErrorReporter(m_StatesFile);
    m_Parser->setErrorHandler(m_ErrorHandler);

    // A malformed table throws from here, uncaught: the program cannot run without it. The
    // error handler names the place of parse errors; the few errors the parser raises without
    // it (a bad XML declaration, say) are named here before they go on.
    try {
        m_Parser->parse(m_StatesFile.c_str());
    } catch (const xercesc::DOMException& error) {
        std::fprintf(stderr, "Fatal error in %s: %s\n", m_StatesFile.c_str(),
                     TranscodeXmlText(error.getMessage()).c_str());
        throw;
    } catch (const xercesc::XMLException& error) {
        std::fprintf(stderr, "Fatal error in %s: %s\n", m_StatesFile.c_str(),
                     TranscodeXmlText(error.getMessage()).c_str());
        throw;
    }
    m_Data = m_Parser->getDocument();
    if (m_Data == nullptr) {
        char message[512];
        std::snprintf(message, sizeof message, "m_Data is null from file: %s",
                      m_StatesFile.c_str());
        return;
    }

    m_ReturnKey = FirstCharacter(GetTagText(m_Data, "return_action"));
    const std::string reload = GetTagText(m_Data, "reload_action");
    m_ReloadKey = reload.empty() ? static_cast<char>(0xFF) : reload[0];
    m_PauseKey = FirstCharacter(GetTagText(m_Data, "pause_game"));
    // Every state imports its models in this look, the loader too.
    m_ModelLook = ReadModelLook(m_Data);

    const std::string loader = GetTagText(m_Data, "loader");
    if (!loader.empty()) {
        m_Loader = new GameState(this, loader);
    }

    m_Title = GetTagText(m_Data, "Title");
    m_Viewport.m_Width = std::atoi(GetTagText(m_Data, "Width").c_str());
    m_Viewport.m_Height = std::atoi(GetTagText(m_Data, "Height").c_str());
    m_DefaultState = GetTagText(m_Data, "default");
    m_CurrentState = m_DefaultState;

    const XmlTagName stateTag("state");
    xercesc::DOMNodeList* states = m_Data->getElementsByTagName(stateTag.Get());
    for (XMLSize_t i = 0; i < states->getLength(); ++i) {
        auto* element = static_cast<xercesc::DOMElement*>(states->item(i));
        const std::string type = GetChildTagText(element, "type");
        const std::string name = GetChildTagText(element, "name");
        const std::string resources = GetChildTagText(element, "resources");
        if (type == "MenuState") {
            // A state replaced by a later one of the same name is not released.
            m_States[name] = new MenuState(this, resources);
        }
    }
}
