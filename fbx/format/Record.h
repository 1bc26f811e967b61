// The record tree: what both FBX parsers (binary and ASCII) produce.
//
// An FBX file is a tree of records; each record has a name, a list of values and child
// records. The tree is kept faithful to the file (names such as "pCube1\0\1Model" or
// "Model::pCube1" are left as written); the object graph above it hides the differences
// between encodings and layouts.
//
// To keep large files compact, both parsers store a record whose values are all numbers and
// that has more than kPackThreshold of them as one array value (binary 6100 files and ASCII
// files write geometry as long lists of scalars). Readers of numeric lists therefore use
// Record::Doubles() / Record::Ints(), which flatten scalars and arrays alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/format/ByteBuffer.h"

namespace fbx {

enum class ValueType : std::uint8_t {
    Bool,     // 'C'
    Int16,    // 'Y'
    Int32,    // 'I'
    Int64,    // 'L', and ASCII integers
    Float32,  // 'F'
    Float64,  // 'D', and ASCII decimals
    String,   // 'S', and ASCII quoted strings
    Raw,      // 'R'
    Word,     // ASCII bare letters (key interpolation flags, 'Y', 'T', ...)
    BoolArray,
    Int32Array,  // 'i', and 'c' character arrays with each byte read as an unsigned number
    Int64Array,
    Float32Array,
    Float64Array,
};

// Records with more than this many values, all numeric, hold them as one array value:
// Float64Array when any value is floating point; otherwise Int32Array when every value is a
// binary 'I', 'Y' or 'C' (or, in ASCII files, every integer fits in 32 bits); else Int64Array.
// A binary 'C' value holding a printable letter (the 'Y'/'T' of Shading, the key letters of
// pre-7000 animation) is stored as a Word, as ASCII files write it, so it is not a number.
constexpr std::size_t kPackThreshold = 4;

// One value of a record: a number, a text, or a typed array.
class Value {
public:
    Value() = default;
    static Value MakeBool(bool v);
    static Value MakeInt(std::int64_t v, ValueType type = ValueType::Int64);
    static Value MakeFloat(double v, ValueType type = ValueType::Float64);
    static Value MakeText(std::string text, ValueType type = ValueType::String);
    static Value MakeArray(std::vector<std::uint8_t> bools);  // BoolArray
    static Value MakeArray(std::vector<std::int32_t> ints);
    static Value MakeArray(std::vector<std::int64_t> ints);
    static Value MakeArray(std::vector<float> floats);
    static Value MakeArray(std::vector<double> doubles);
    // An array of the given array type from elements already in host byte order; the byte
    // count must be a multiple of the element size (any rest is dropped).
    static Value MakeArrayFromBytes(ValueType type, ByteBuffer bytes);

    ValueType Type() const { return m_Type; }
    bool IsNumber() const;  // scalar bool, integer or float
    bool IsText() const;    // String, Raw or Word
    bool IsArray() const;

    // Scalars convert between integer and float; texts and arrays give 0.
    std::int64_t AsInt() const;
    double AsDouble() const;
    // Texts as stored (String, Raw, Word); empty for anything else.
    const std::string& AsText() const { return m_Text; }

    // Arrays: element count and element access with conversion. Scalars count as one element;
    // texts as none.
    std::size_t Count() const;
    double DoubleAt(std::size_t i) const;
    std::int64_t IntAt(std::size_t i) const;

    // Direct access to an array's elements when the type matches, else nullptr.
    const std::uint8_t* Bools() const;
    const std::int32_t* Int32s() const;
    const std::int64_t* Int64s() const;
    const float* Float32s() const;
    const double* Float64s() const;

private:
    ValueType m_Type = ValueType::Int64;
    union {
        std::int64_t m_Int = 0;
        double m_Double;
    };
    std::string m_Text;
    ByteBuffer m_Bytes;       // array elements, host byte order
    std::size_t m_Count = 0;  // array element count
};

struct Record {
    std::string name;
    std::vector<Value> values;
    std::vector<Record> children;

    // First child of that name, or nullptr.
    const Record* Child(std::string_view childName) const;
    // All children of that name, in file order.
    std::vector<const Record*> Children(std::string_view childName) const;

    // Value i, or nullptr when the record has fewer values.
    const Value* ValueAt(std::size_t i) const;
    std::int64_t IntAt(std::size_t i, std::int64_t fallback = 0) const;
    double DoubleAt(std::size_t i, double fallback = 0.0) const;
    std::string TextAt(std::size_t i) const;  // empty when absent or not a text

    // Every numeric value and array element of this record, flattened in order.
    std::vector<double> Doubles() const;
    std::vector<std::int64_t> Ints() const;
    std::vector<std::int32_t> Int32s() const;  // values narrowed to 32 bits
    // Number of numeric elements that Doubles() would return.
    std::size_t NumberCount() const;

    // The text of the first value of the first child of that name ("" if absent), and the
    // same for numbers; handy for "Version: 232" style records.
    std::string ChildText(std::string_view childName) const;
    std::int64_t ChildInt(std::string_view childName, std::int64_t fallback = 0) const;
};

// A parsed file: its version and encoding, and its top-level records as the children of
// root (whose name is empty).
struct Document {
    std::uint32_t version = 0;  // 7400 means 7.4.0
    bool binary = false;
    bool bigEndian = false;
    Record root;
};

}  // namespace fbx
