// The XML look-ups that every configuration reader goes through.
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNodeList.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "state_test_support.h"
#include "states/XmlText.h"

namespace {
class XmlTextTest : public StatesTest {
protected:
    xercesc::DOMDocument* Parse(const std::string& text) {
        m_Parser = std::make_unique<xercesc::XercesDOMParser>();
        m_Parser->parse(m_Dir.Write("doc.xml", text).c_str());
        return m_Parser->getDocument();
    }

    std::unique_ptr<xercesc::XercesDOMParser> m_Parser;
};

TEST_F(XmlTextTest, FirstElementInDocumentOrderAtAnyDepthWins) {
    xercesc::DOMDocument* document =
        Parse("<root><group><deep><Name>inner</Name></deep></group><Name>outer</Name></root>");
    EXPECT_EQ(GetTagText(document, "Name"), "inner");
}

TEST_F(XmlTextTest, TextIsKeptAsWrittenAndChildTextsAreJoined) {
    xercesc::DOMDocument* document =
        Parse("<root><Title>  Menu\n</Title><Both>one<b>two</b>three</Both></root>");
    EXPECT_EQ(GetTagText(document, "Title"), "  Menu\n");
    EXPECT_EQ(GetTagText(document, "Both"), "onetwothree");
}

TEST_F(XmlTextTest, MissingOrDifferentlyCasedElementGivesEmptyText) {
    xercesc::DOMDocument* document = Parse("<root><Title>Demo</Title></root>");
    EXPECT_EQ(GetTagText(document, "Missing"), "");
    EXPECT_EQ(GetTagText(document, "title"), "");
    EXPECT_EQ(GetTagText(document, ""), "");
}

TEST_F(XmlTextTest, LongTagNameIsLookedUpByItsFirst99Characters) {
    const std::string name99(99, 'a');
    xercesc::DOMDocument* document = Parse("<root><" + name99 + ">found</" + name99 + "></root>");
    EXPECT_EQ(GetTagText(document, name99 + std::string(21, 'b')), "found");
    EXPECT_EQ(GetTagText(document, name99), "found");
    EXPECT_EQ(GetTagText(document, std::string(98, 'a')), "");
}

TEST_F(XmlTextTest, ChildLookupSearchesOnlyInsideTheElement) {
    xercesc::DOMDocument* document = Parse(
        "<root><Name>top</Name><state><type>MenuState</type></state>"
        "<state><inner><Name>second</Name></inner></state></root>");
    XmlTagName stateTag("state");
    auto* first =
        static_cast<xercesc::DOMElement*>(document->getElementsByTagName(stateTag.Get())->item(0));
    auto* second =
        static_cast<xercesc::DOMElement*>(document->getElementsByTagName(stateTag.Get())->item(1));
    EXPECT_EQ(GetChildTagText(first, "type"), "MenuState");
    EXPECT_EQ(GetChildTagText(first, "Name"), "");
    EXPECT_EQ(GetChildTagText(second, "Name"), "second");
}
}  // namespace
