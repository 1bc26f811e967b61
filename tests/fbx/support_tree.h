// Test helper: compares two record trees the way ASCII and binary files of one scene agree.
#pragma once

#include <set>
#include <string>

#include "fbx/format/Record.h"

namespace fbxtest {

// "Name\0\1Class" (binary spelling) becomes "Class::Name" (ASCII spelling); other texts are
// returned unchanged.
std::string AsciiObjectName(const std::string& text);

// Empty when the trees agree: same record names and order, same texts (up to the object-name
// spelling), same numbers up to float32 and printing precision. Otherwise the path of the
// first difference and what differs.
// Records named in `skip` are left out on both sides (things only one encoding writes).
std::string TreeDifference(const fbx::Record& a, const fbx::Record& b,
                           const std::set<std::string>& skip = {});

}  // namespace fbxtest
