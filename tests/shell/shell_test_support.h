// Helpers for the shell tests: a scratch directory with a state table, and a Game read from
// it (the XML library is brought up once for the whole program).
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "states/Game.h"

// A fresh directory under the system's temporary directory, removed with the object.
class ScratchFiles {
public:
    ScratchFiles();
    ~ScratchFiles();
    ScratchFiles(const ScratchFiles&) = delete;
    ScratchFiles& operator=(const ScratchFiles&) = delete;

    // Writes a file here and returns its path.
    std::string Write(const std::string& name, const std::string& text) const;
    // A Game read from a state table "states.xml" here, with the given title, default state
    // "b" and no states.
    std::unique_ptr<Game> MakeGame(const std::string& title = "Test") const;

private:
    std::filesystem::path m_Dir;
};

class ShellTest : public ::testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& text) const {
        return m_Files.Write(name, text);
    }
    std::unique_ptr<Game> MakeGame(const std::string& title = "Test") const {
        return m_Files.MakeGame(title);
    }

    ScratchFiles m_Files;
};
