// The XML look-ups that every configuration reader goes through (the order and depth of the
// first match, and look-ups inside one element, are checked through the state table and files).
#include <gtest/gtest.h>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "scratch_dir.h"
#include "states/XmlText.h"

namespace {

TEST(XmlTextTest, LooksUpTextAsWrittenByExactNameCutAt99Characters) {
    ScratchDir dir;
    const std::string name99(99, 'a');
    xercesc::XercesDOMParser parser;
    parser.parse(
        dir.Write("doc.xml", "<root><Title>  Menu\n</Title><Both>one<b>two</b>three</Both><" +
                                 name99 + ">found</" + name99 + "></root>")
            .c_str());
    xercesc::DOMDocument* document = parser.getDocument();
    EXPECT_EQ(GetTagText(document, "Title"), "  Menu\n");
    EXPECT_EQ(GetTagText(document, "Both"), "onetwothree");
    EXPECT_EQ(
        GetTagText(document, "Missing") + GetTagText(document, "title") + GetTagText(document, ""),
        "");
    EXPECT_EQ(GetTagText(document, name99 + std::string(21, 'b')), "found");
    EXPECT_EQ(GetTagText(document, name99), "found");
    EXPECT_EQ(GetTagText(document, std::string(98, 'a')), "");
}

}  // namespace
