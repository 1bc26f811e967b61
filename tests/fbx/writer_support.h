// Helpers shared by the writer tests: building records, and comparing trees the way the
// parsers keep them (numbers compared by value across scalar/array packing, texts by content).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/format/Parse.h"
#include "fbx/format/Record.h"

namespace fbx::test {

inline Record MakeRecord(std::string name, std::vector<Value> values = {},
                         std::vector<Record> children = {}) {
    Record r;
    r.name = std::move(name);
    r.values = std::move(values);
    r.children = std::move(children);
    return r;
}

inline Value Str(std::string s) {
    return Value::MakeText(std::move(s));
}
inline Value I32(std::int64_t v) {
    return Value::MakeInt(v, ValueType::Int32);
}
inline Value I64(std::int64_t v) {
    return Value::MakeInt(v, ValueType::Int64);
}
inline Value F64(double v) {
    return Value::MakeFloat(v, ValueType::Float64);
}

// Texts of a record's values, in order.
inline std::vector<std::string> Texts(const Record& r) {
    std::vector<std::string> out;
    for (const Value& v : r.values) {
        if (v.IsText())
            out.push_back(v.AsText());
    }
    return out;
}

// Compares two trees record by record: names, texts, every number (bit-exact for doubles),
// children. Reports the path of the first difference.
inline ::testing::AssertionResult SameTree(const Record& a, const Record& b,
                                           const std::string& path = "") {
    const std::string here = path + "/" + a.name;
    if (a.name != b.name) {
        return ::testing::AssertionFailure() << here << ": name differs from " << b.name;
    }
    if (Texts(a) != Texts(b))
        return ::testing::AssertionFailure() << here << ": texts differ";
    std::vector<double> na = a.Doubles(), nb = b.Doubles();
    if (na.size() != nb.size()) {
        return ::testing::AssertionFailure()
               << here << ": " << na.size() << " numbers vs " << nb.size();
    }
    for (std::size_t i = 0; i < na.size(); ++i) {
        if (!(na[i] == nb[i])) {
            return ::testing::AssertionFailure()
                   << here << ": number " << i << " is " << na[i] << " vs " << nb[i];
        }
    }
    if (a.children.size() != b.children.size()) {
        return ::testing::AssertionFailure()
               << here << ": " << a.children.size() << " children vs " << b.children.size();
    }
    for (std::size_t i = 0; i < a.children.size(); ++i) {
        auto result = SameTree(a.children[i], b.children[i], here);
        if (!result)
            return result;
    }
    return ::testing::AssertionSuccess();
}

inline ParseResult ParseBytes(const std::vector<std::uint8_t>& bytes) {
    return ParseBuffer(bytes.data(), bytes.size());
}

inline ParseResult ParseText(const std::string& text) {
    return ParseBuffer(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace fbx::test
