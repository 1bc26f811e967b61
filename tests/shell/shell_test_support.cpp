#include "shell_test_support.h"

#include <cstdlib>
#include <fstream>

#include <xercesc/util/PlatformUtils.hpp>

namespace {
class XmlEnvironment : public ::testing::Environment {
public:
    void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
    void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

const auto* const g_XmlEnvironment = ::testing::AddGlobalTestEnvironment(new XmlEnvironment);
}  // namespace

ScratchFiles::ScratchFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "shell-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) {
        m_Dir = pattern;
    }
}

ScratchFiles::~ScratchFiles() {
    std::error_code ignored;
    if (!m_Dir.empty()) {
        std::filesystem::remove_all(m_Dir, ignored);
    }
}

std::string ScratchFiles::Write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = m_Dir / name;
    std::ofstream(path) << text;
    return path.string();
}

std::unique_ptr<Game> ScratchFiles::MakeGame(const std::string& title) const {
    const std::string table = Write("states.xml", "<?xml version=\"1.0\"?>\n<game><Title>" + title +
                                                      "</Title><default>b</default></game>\n");
    return std::make_unique<Game>(table);
}
