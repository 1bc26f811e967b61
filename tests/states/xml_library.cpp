// The XML library is started once for the whole test program, as the engine's entry point
// does, and stopped after the last test.
#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

namespace {
class XmlLibrary : public ::testing::Environment {
public:
    void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
    void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

::testing::Environment* const g_XmlLibrary = ::testing::AddGlobalTestEnvironment(new XmlLibrary);
}  // namespace
