#include "state_test_support.h"

#include <unistd.h>

#include <atomic>
#include <fstream>

#include <xercesc/util/PlatformUtils.hpp>

namespace {
// The XML library is started once for the whole test program, as the engine's entry point
// does, and stopped after the last test.
class XercesEnvironment : public ::testing::Environment {
public:
    void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
    void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

::testing::Environment* const g_XercesEnvironment =
    ::testing::AddGlobalTestEnvironment(new XercesEnvironment);

std::atomic<int> g_DirCounter{0};
}  // namespace

ScratchDir::ScratchDir() {
    m_Path = std::filesystem::temp_directory_path() /
             ("states_tests_" + std::to_string(::getpid()) + "_" + std::to_string(g_DirCounter++));
    std::filesystem::remove_all(m_Path);
    std::filesystem::create_directories(m_Path);
}

ScratchDir::~ScratchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

std::string ScratchDir::Write(const std::string& name, const std::string& text) const {
    const std::string path = Path(name);
    std::ofstream out(path, std::ios::binary);
    out << text;
    return path;
}

std::string ScratchDir::Path(const std::string& name) const {
    return (m_Path / name).string();
}
