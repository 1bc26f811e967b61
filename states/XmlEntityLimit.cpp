#include "states/XmlEntityLimit.h"

#include <xercesc/util/SecurityManager.hpp>

void LimitEntityExpansion(xercesc::XercesDOMParser& parser) {
    // One limit serves every parser; the parsers only read it, and they outlive no process.
    static xercesc::SecurityManager limit;
    limit.setEntityExpansionLimit(kXmlEntityExpansionLimit);
    parser.setSecurityManager(&limit);
}
