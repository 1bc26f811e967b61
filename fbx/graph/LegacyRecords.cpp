// Name keys and made records for the readers of older layouts.
#include "fbx/graph/LegacyRecords.h"

#include <utility>

#include "fbx/graph/ObjectGraph.h"

namespace fbx {

std::string NormalisedKey(std::string_view written) {
    std::string className;
    std::string name;
    SplitObjectName(written, className, name);
    return className + "::" + name;
}

bool IsLegacyMeshRecord(const Record& model) {
    return model.Child("Vertices") != nullptr;
}

Record TextRecord(std::string name, std::string text) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeText(std::move(text)));
    return r;
}

Record DoubleRecord(std::string name, std::vector<double> values) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeArray(std::move(values)));
    return r;
}

Record IntRecord(std::string name, std::vector<std::int32_t> values) {
    Record r;
    r.name = std::move(name);
    r.values.push_back(Value::MakeArray(std::move(values)));
    return r;
}

Record LayerEntry(const char* type) {
    Record entry;
    entry.name = "LayerElement";
    entry.children.push_back(TextRecord("Type", type));
    Record index;
    index.name = "TypedIndex";
    index.values.push_back(Value::MakeInt(0));
    entry.children.push_back(std::move(index));
    return entry;
}

}  // namespace fbx
