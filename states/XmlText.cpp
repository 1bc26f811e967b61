#include "states/XmlText.h"

#include <algorithm>
#include <cstring>

#include <xercesc/dom/DOMNodeList.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

using xercesc::XMLPlatformUtils;
using xercesc::XMLString;

namespace {
constexpr std::size_t kMaxTagChars = 99;

template <typename Node>
std::string FirstElementText(Node* node, const std::string& tagName) {
    std::string result;
    const XmlTagName name(tagName);
    if (node->getElementsByTagName(name.Get())->getLength() == 0) {
        return result;
    }
    xercesc::DOMNode* first = node->getElementsByTagName(name.Get())->item(0);
    result = TranscodeXmlText(first->getTextContent());
    return result;
}
}  // namespace

XmlTagName::XmlTagName(const std::string& tagName) {
    // Cut before transcoding, so the converter never sees more than fits.
    char narrow[kMaxTagChars + 1];
    const std::size_t length = std::min(tagName.size(), kMaxTagChars);
    std::memcpy(narrow, tagName.data(), length);
    narrow[length] = '\0';
    m_Text[0] = 0;
    if (!XMLString::transcode(narrow, m_Text, kMaxTagChars, XMLPlatformUtils::fgMemoryManager)) {
        m_Text[0] = 0;
    }
    m_Text[kMaxTagChars] = 0;
}

std::string TranscodeXmlText(const XMLCh* text) {
    std::string result;
    if (text == nullptr) {
        return result;
    }
    char* narrow = XMLString::transcode(text, XMLPlatformUtils::fgMemoryManager);
    if (narrow != nullptr) {
        result = narrow;
        XMLString::release(&narrow, XMLPlatformUtils::fgMemoryManager);
    }
    return result;
}

std::string GetTagText(xercesc::DOMDocument* document, std::string tagName) {
    return FirstElementText(document, tagName);
}

std::string GetChildTagText(xercesc::DOMElement* element, std::string tagName) {
    return FirstElementText(element, tagName);
}
