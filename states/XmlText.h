// XML look-ups: the text of the first element of a tag name, as a narrow string.
#pragma once

#include <string>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>

// Text content of the first element named tagName anywhere in the document, or "".
// Tag names longer than 99 characters are looked up by their first 99.
std::string GetTagText(xercesc::DOMDocument* document, std::string tagName);
// The same, searching only the descendants of element.
std::string GetChildTagText(xercesc::DOMElement* element, std::string tagName);
