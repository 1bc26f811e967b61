#include "states/FatalErrorReporter.h"

#include <cstdio>

#include <xercesc/sax/SAXParseException.hpp>

#include "states/XmlText.h"

FatalErrorReporter::FatalErrorReporter(std::string fileName) : m_FileName(std::move(fileName)) {}

void FatalErrorReporter::fatalError(const xercesc::SAXParseException& error) {
    std::string file = TranscodeXmlText(error.getSystemId());
    if (file.empty()) {
        file = m_FileName;
    }
    const std::string message = TranscodeXmlText(error.getMessage());
    std::fprintf(stderr, "Fatal error in %s at line %llu, column %llu: %s\n", file.c_str(),
                 static_cast<unsigned long long>(error.getLineNumber()),
                 static_cast<unsigned long long>(error.getColumnNumber()), message.c_str());
    std::fflush(stderr);
    xercesc::HandlerBase::fatalError(error);  // throws, as the plain handler does
}
