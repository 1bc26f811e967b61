// FatalErrorReporter: the state table's parse error handler. Like HandlerBase it ignores
// warnings and errors and throws on a fatal error, but first it tells the user where the
// file is broken ("Fatal error in FILE at line L, column C: MESSAGE" on standard error),
// since nothing catches that exception and the program ends right after.
#pragma once

#include <string>

#include <xercesc/sax/HandlerBase.hpp>

class FatalErrorReporter : public xercesc::HandlerBase {
public:
    // fileName is shown when the error does not say which file it is in.
    explicit FatalErrorReporter(std::string fileName);

    void fatalError(const xercesc::SAXParseException& error) override;

private:
    std::string m_FileName;
};
