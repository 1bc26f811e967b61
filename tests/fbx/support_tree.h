// Test helpers on record trees: a text rendering to compare against expected text, and the
// comparison of the trees an ASCII and a binary file of one scene give.
#pragma once

#include <set>
#include <string>

#include "fbx/format/Record.h"

namespace fbxtest {

// One line per record below `root`, indented two spaces per level: "Name: v1, v2". Typed, a
// value is its type's letter ('C' 'Y' 'I' 'L' 'F' 'D' for scalars, 'S' 'R' 'W' for texts,
// 'b' 'i' 'l' 'f' 'd' for arrays) and its content: L12, S"text", d[0.5,2]. Untyped, texts are
// quoted and all numbers of a record, scalars and array elements alike, are listed plainly,
// so trees that differ only in how numbers are packed give the same text.
std::string TreeText(const fbx::Record& root, bool typed = true);

// "Name\0\1Class" (binary spelling) becomes "Class::Name" (ASCII spelling); other texts are
// returned unchanged.
std::string AsciiObjectName(const std::string& text);

// Empty when the trees agree but for records named in `skip`: same names, texts (up to the
// object-name spelling), numbers up to float32 and printing precision, ids up to a consistent
// renaming. Otherwise the path of the first difference and which value differs.
std::string TreeDifference(const fbx::Record& a, const fbx::Record& b,
                           const std::set<std::string>& skip = {});

}  // namespace fbxtest
