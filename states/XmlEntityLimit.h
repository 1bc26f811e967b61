// The cap on entity expansions that every XML parser of the engine gets: a file of a few
// hundred bytes whose entities refer to each other would otherwise expand to gigabytes of
// text while it is parsed. Going past the cap is a fatal parse error like any malformed file.
#pragma once

#include <xercesc/parsers/XercesDOMParser.hpp>

// Game files have no use for entities; a few thousand expansions is already generous.
constexpr XMLSize_t kXmlEntityExpansionLimit = 4096;

// Installs the process-wide limit on the parser.
void LimitEntityExpansion(xercesc::XercesDOMParser& parser);
