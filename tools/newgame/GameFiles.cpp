#include "tools/newgame/GameFiles.h"

#include <cctype>
#include <sstream>

#include "tools/newgame/GameKeys.h"

namespace {

// Text as XML element content.
std::string Escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (static_cast<unsigned char>(c) >= 0x20 || c == '\t')
            out += c;
    }
    return out;
}

void Action(std::ostringstream& out, const std::string& name, char trigger, int start, int end,
            const std::string& event = "") {
    out << "    <Action>\n        <Name>" << name << "</Name>\n";
    if (trigger != '\0')
        out << "        <Trigger>" << Escaped(std::string(1, trigger)) << "</Trigger>\n";
    out << "        <Start_Frame>" << start << "</Start_Frame>\n"
        << "        <End_Frame>" << end << "</End_Frame>\n";
    if (!event.empty())
        out << "        <Event>" << event << "</Event>\n";
    out << "    </Action>\n";
}

// Text without control characters, for the README.
std::string Printable(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f)
            out += c;
    }
    return out;
}

// The action name of a take: numbered, so that two takes of one name stay two actions.
std::string TakeAction(const TakeSpan& take, std::size_t index) {
    return "Take" + std::to_string(index + 1) + "_" + PlainName(take.m_Name, "");
}

}  // namespace

std::string PlainName(const std::string& text, const std::string& fallback) {
    std::string name;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_')
            name += c;
    }
    return name.empty() ? fallback : name;
}

std::string StateTableXml(const std::vector<PlannedState>& states, const std::string& title) {
    std::ostringstream out;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<!-- The state table: one state per model, drawn as it was authored. -->\n"
        << "<game>\n"
        << "    <return_action>" << kReturnKey << "</return_action>\n"
        << "    <reload_action>" << kReloadKey << "</reload_action>\n"
        << "    <pause_game>" << kPauseKey << "</pause_game>\n"
        << "    <loader>./Assets/" << kLoaderFile << "</loader>\n"
        << "    <Title>" << Escaped(title) << "</Title>\n"
        << "    <Width>640</Width>\n    <Height>480</Height>\n"
        << "    <default>" << (states.empty() ? "" : states.front().m_Name) << "</default>\n"
        << "    <model_look>authored</model_look>\n";
    for (const PlannedState& state : states) {
        out << "    <state>\n        <type>MenuState</type>\n"
            << "        <name>" << state.m_Name << "</name>\n"
            << "        <resources>./Assets/" << state.m_File << "</resources>\n"
            << "    </state>\n";
    }
    out << "</game>\n";
    return out.str();
}

std::string LoaderXml() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!-- Shown while a state is not loaded yet: nothing but the background. -->\n"
           "<state>\n"
           "    <Name>Loading</Name>\n"
           "    <X_Position>0</X_Position>\n"
           "    <Y_Position>0</Y_Position>\n"
           "    <Z_Position>-30</Z_Position>\n"
           "</state>\n";
}

std::string StateXml(const std::vector<PlannedState>& states, std::size_t index) {
    const PlannedState& state = states[index];
    const std::size_t count = states.size();
    // The default action plays the first take; without takes it holds the stored pose.
    const int idleStart = state.m_Takes.empty() ? 0 : state.m_Takes.front().m_FirstFrame;
    const int idleEnd = state.m_Takes.empty() ? 0 : state.m_Takes.front().m_LastFrame;

    std::ostringstream out;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<!-- Move the model with j/k/i/m, turn it with a/d/w/s, zoom with z/x; n and b go to\n"
        << "     the next and previous model; 1, 2, ... play its takes. -->\n"
        << "<state>\n"
        << "    <Name>" << state.m_Name << "</Name>\n"
        << "    <X_Position>" << state.m_Position.m_X << "</X_Position>\n"
        << "    <Y_Position>" << state.m_Position.m_Y << "</Y_Position>\n"
        << "    <Z_Position>" << state.m_Position.m_Z << "</Z_Position>\n"
        << "    <Width>640</Width>\n    <Height>480</Height>\n"
        << "    <URL>./" << Escaped(state.m_Model) << "</URL>\n"
        << "    <Default_Action>Idle</Default_Action>\n";
    Action(out, "Idle", '\0', idleStart, idleEnd);
    // Movements keep the default action's frames, so that they do not restart a take.
    for (const MovementKey& movement : kMovementKeys)
        Action(out, movement.m_Action, movement.m_Key, idleStart, idleEnd);
    if (count > 1) {
        Action(out, "NextModel", kNextModelKey, idleStart, idleEnd,
               states[(index + 1) % count].m_Name);
        Action(out, "PreviousModel", kPreviousModelKey, idleStart, idleEnd,
               states[(index + count - 1) % count].m_Name);
    }
    for (std::size_t t = 0; t < state.m_Takes.size(); ++t) {
        const char key = TakeKey(t);
        if (key != '\0') {
            const TakeSpan& take = state.m_Takes[t];
            Action(out, TakeAction(take, t), key, take.m_FirstFrame, take.m_LastFrame);
        }
    }
    out << "</state>\n";
    return out.str();
}

std::string ReadmeText(const std::vector<PlannedState>& states, const std::string& title) {
    std::ostringstream out;
    out << Printable(title) << "\n"
        << std::string(Printable(title).size(), '=') << "\n\n"
        << "Run the engine from this folder (it reads ./Assets/states.xml):\n\n"
        << "    engine\n\n"
        << "Every model has its own state; the first is shown first.\n\n"
        << "Keys everywhere\n";
    for (const MovementKey& movement : kMovementKeys)
        out << "  " << movement.m_Key << "  " << movement.m_Meaning << "\n";
    if (states.size() > 1) {
        out << "  " << kNextModelKey << "  next model\n"
            << "  " << kPreviousModelKey << "  previous model\n";
    }
    out << "  " << kReturnKey << "  back to the first model, everything reset\n"
        << "  " << kReloadKey << "  reload the files in Assets/ after editing them\n";
    for (const PlannedState& state : states) {
        out << "\nState " << state.m_Name << ": " << state.m_Model << " (from "
            << Printable(state.m_Source) << ")\n";
        if (state.m_Takes.empty())
            out << "  no takes: the model stands in its stored pose\n";
        for (std::size_t t = 0; t < state.m_Takes.size(); ++t) {
            const TakeSpan& take = state.m_Takes[t];
            const char key = TakeKey(t);
            out << "  " << (key != '\0' ? std::string(1, key) : std::string("-")) << "  take \""
                << Printable(take.m_Name) << "\", frames " << take.m_FirstFrame << " to "
                << take.m_LastFrame << (t == 0 ? " (plays while no key is held)" : "") << "\n";
        }
    }
    out << "\nThe state files are Assets/*.xml; docs/game-authoring.md of the engine tells what\n"
        << "each element does.\n";
    return out.str();
}
