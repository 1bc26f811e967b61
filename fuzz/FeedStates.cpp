// Feeds for the state table and the state files (Xerces-C documents).
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "fuzz/Feeds.h"
#include "fuzz/ScratchFile.h"
#include "states/Game.h"
#include "states/GameState.h"

namespace fuzzing {

void InitialiseXml() {
    static const bool initialised = [] {
        xercesc::XMLPlatformUtils::Initialize();
        return true;
    }();
    (void)initialised;
}

namespace {
// A state table with nothing in it, written once.
const std::string& EmptyTable() {
    static const ScratchFile table("table", ".xml");
    static const bool written = [] {
        const char text[] = "<game/>";
        return table.Write(reinterpret_cast<const std::uint8_t*>(text), sizeof text - 1);
    }();
    (void)written;
    return table.Path();
}
}  // namespace

Game& SharedGame() {
    static Game* game = [] {
        InitialiseXml();
        return new Game(EmptyTable());
    }();
    return *game;
}

StateOutcome FeedStateFile(Game& game, const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("state", ".xml");
    StateOutcome outcome;
    if (!file.Write(data, size))
        return outcome;
    GameState* state = new GameState(&game, file.Path());
    outcome.name = state->GetName();
    outcome.models = state->m_Models.size();
    outcome.actions = state->m_Actions.size();
    // The state submitted its models to the game's draw list; they go with the state.
    game.m_DrawList.clear();
    delete state;
    return outcome;
}

TableOutcome FeedStateTable(const std::uint8_t* data, std::size_t size) {
    InitialiseXml();
    static const ScratchFile file("states", ".xml");
    TableOutcome outcome;
    if (!file.Write(data, size))
        return outcome;
    // The table is read as the reload key reads it: a Game made from an empty table reads
    // the fuzzed one with LoadStates, the code its constructor runs. A table that throws from
    // the constructor would strand its parser beyond reach; here the Game still holds it and
    // releases it, so thousands of bad tables do not add up to a false out-of-memory.
    Game game(EmptyTable());
    xercesc::XercesDOMParser* firstParser = game.m_Parser;
    xercesc::HandlerBase* firstHandler = game.m_ErrorHandler;
    game.m_StatesFile = file.Path();
    try {
        game.LoadStates();
        outcome.title = game.m_Title;
        outcome.states = game.m_States.size();
    } catch (const xercesc::SAXParseException&) {
        outcome.rejected = true;
    } catch (const xercesc::XMLException&) {
        outcome.rejected = true;
    } catch (const xercesc::DOMException&) {
        // An unsupported XML version in the declaration ends up here, not in the handler.
        outcome.rejected = true;
    }
    // What a reload keeps on purpose, let go of here for the same reason.
    delete firstParser;
    delete firstHandler;
    delete game.m_Loader;
    game.m_Loader = nullptr;
    return outcome;
}

}  // namespace fuzzing
