// XML look-ups: the text of the first element of a tag name, as a narrow string, and the
// conversions between narrow strings and the XML library's 16-bit strings.
#pragma once

#include <string>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/util/XercesDefs.hpp>

// Text content of the first element named tagName anywhere in the document, or "".
// Tag names longer than 99 characters are looked up by their first 99.
std::string GetTagText(xercesc::DOMDocument* document, std::string tagName);
// The same, searching only the descendants of element.
std::string GetChildTagText(xercesc::DOMElement* element, std::string tagName);

// A tag name as XML text in a fixed buffer: at most 99 characters, longer names are cut.
struct XmlTagName {
    explicit XmlTagName(const std::string& tagName);
    const XMLCh* Get() const { return m_Text; }

    XMLCh m_Text[100];
};

// Narrow copy of an XML string; "" for a null one.
std::string TranscodeXmlText(const XMLCh* text);
