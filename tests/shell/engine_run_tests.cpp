// The real engine started on a game without a usable state table (none, empty, cut short): it
// ends at start-up, failing, and says which file is broken and where. (Its window, title and
// closing are checked on the demo game, in the demo tests.)
#include <gtest/gtest.h>

#include <optional>
#include <regex>

#include "engine_session.h"

namespace {

TEST(EngineRunTest, WithoutAUsableStateTableItEndsAtStartUpNamingTheFile) {
    if (const std::string missing = MissingForWindows(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    for (const std::optional<std::string>& table :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("<game><Title>x</Title>")}) {
        EngineSession session;
        if (table) {
            session.Files().Write("Assets/states.xml", *table);
        }
        session.Start();
        const int status = session.WaitForExit(std::chrono::seconds(20));
        EXPECT_NE(status, -1) << "still running with states.xml \"" << table.value_or("(none)");
        EXPECT_NE(status, 0);
        EXPECT_TRUE(std::regex_search(
            session.Errors(),
            std::regex("Fatal error in [^ ]*Assets/states\\.xml at line [0-9]+, column [0-9]+: ")))
            << session.Errors();
    }
}

}  // namespace
