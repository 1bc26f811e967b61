// Helpers for the state tests: a scratch directory for XML files, and a few builders of the
// state table and state files.
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

// A fresh directory under the system's temporary directory, removed with the object.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    // Writes text into a file of that name here and returns its full path.
    std::string Write(const std::string& name, const std::string& text) const;
    std::string Path(const std::string& name) const;

private:
    std::filesystem::path m_Path;
};

// A test fixture with a scratch directory.
class StatesTest : public ::testing::Test {
protected:
    ScratchDir m_Dir;
};
