// Helpers of the layout readers: the "Class::Name" keys by which pre-7000 files name objects,
// and the small records the graph makes when it restates an older layout in the 7000+ shape.
// Internal to fbx/graph.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/format/Record.h"

namespace fbx {

// "Model::pCube1" for a name written either way ("Model::pCube1" or "pCube1\0\1Model").
std::string NormalisedKey(std::string_view written);

// A 5800/6100 Model record that holds its mesh itself.
bool IsLegacyMeshRecord(const Record& model);

// A record holding one text, one double array or one int32 array.
Record TextRecord(std::string name, std::string text);
Record DoubleRecord(std::string name, std::vector<double> values);
Record IntRecord(std::string name, std::vector<std::int32_t> values);

// A Layer's "LayerElement" entry naming the element of that type with typed index 0.
Record LayerEntry(const char* type);

}  // namespace fbx
