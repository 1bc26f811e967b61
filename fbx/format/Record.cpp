#include "fbx/format/Record.h"

#include <cstring>
#include <utility>

namespace fbx {

namespace {

std::size_t ElementSize(ValueType type) {
    switch (type) {
        case ValueType::BoolArray: return 1;
        case ValueType::Int32Array: return 4;
        case ValueType::Int64Array: return 8;
        case ValueType::Float32Array: return 4;
        case ValueType::Float64Array: return 8;
        default: return 0;
    }
}

template <class T>
void CopyElements(const std::vector<T>& elements, ByteBuffer& bytes, std::size_t& count) {
    bytes.resize(elements.size() * sizeof(T));
    if (!elements.empty()) {
        std::memcpy(bytes.data(), elements.data(), bytes.size());
    }
    count = elements.size();
}

}  // namespace

Value Value::MakeBool(bool v) {
    Value value;
    value.m_Type = ValueType::Bool;
    value.m_Int = v ? 1 : 0;
    return value;
}

Value Value::MakeInt(std::int64_t v, ValueType type) {
    Value value;
    value.m_Type = type;
    value.m_Int = v;
    return value;
}

Value Value::MakeFloat(double v, ValueType type) {
    Value value;
    value.m_Type = type;
    value.m_Double = v;
    return value;
}

Value Value::MakeText(std::string text, ValueType type) {
    Value value;
    value.m_Type = type;
    value.m_Text = std::move(text);
    return value;
}

#define FBX_MAKE_ARRAY(ElementType, TypeCode)                              \
    Value Value::MakeArray(std::vector<ElementType> elements) {            \
        Value value;                                                       \
        value.m_Type = TypeCode;                                           \
        CopyElements(elements, value.m_Bytes, value.m_Count);          \
        return value;                                                      \
    }
FBX_MAKE_ARRAY(std::uint8_t, ValueType::BoolArray)
FBX_MAKE_ARRAY(std::int32_t, ValueType::Int32Array)
FBX_MAKE_ARRAY(std::int64_t, ValueType::Int64Array)
FBX_MAKE_ARRAY(float, ValueType::Float32Array)
FBX_MAKE_ARRAY(double, ValueType::Float64Array)
#undef FBX_MAKE_ARRAY

Value Value::MakeArrayFromBytes(ValueType type, ByteBuffer bytes) {
    Value value;
    const std::size_t size = ElementSize(type);
    if (size == 0) return value;
    value.m_Type = type;
    value.m_Count = bytes.size() / size;
    bytes.resize(value.m_Count * size);
    value.m_Bytes = std::move(bytes);
    return value;
}

bool Value::IsNumber() const {
    switch (m_Type) {
        case ValueType::Bool:
        case ValueType::Int16:
        case ValueType::Int32:
        case ValueType::Int64:
        case ValueType::Float32:
        case ValueType::Float64: return true;
        default: return false;
    }
}

bool Value::IsText() const {
    return m_Type == ValueType::String || m_Type == ValueType::Raw || m_Type == ValueType::Word;
}

bool Value::IsArray() const { return ElementSize(m_Type) != 0; }

std::int64_t Value::AsInt() const {
    switch (m_Type) {
        case ValueType::Bool:
        case ValueType::Int16:
        case ValueType::Int32:
        case ValueType::Int64: return m_Int;
        case ValueType::Float32:
        case ValueType::Float64:
            // Out-of-range doubles would be undefined to convert; clamp them.
            if (!(m_Double == m_Double)) return 0;
            if (m_Double >= 9.2e18) return INT64_MAX;
            if (m_Double <= -9.2e18) return INT64_MIN;
            return static_cast<std::int64_t>(m_Double);
        default: return 0;
    }
}

double Value::AsDouble() const {
    switch (m_Type) {
        case ValueType::Bool:
        case ValueType::Int16:
        case ValueType::Int32:
        case ValueType::Int64: return static_cast<double>(m_Int);
        case ValueType::Float32:
        case ValueType::Float64: return m_Double;
        default: return 0.0;
    }
}

std::size_t Value::Count() const {
    if (IsArray()) return m_Count;
    return IsNumber() ? 1 : 0;
}

double Value::DoubleAt(std::size_t i) const {
    if (!IsArray()) return i == 0 ? AsDouble() : 0.0;
    if (i >= m_Count) return 0.0;
    const std::uint8_t* p = m_Bytes.data() + i * ElementSize(m_Type);
    switch (m_Type) {
        case ValueType::BoolArray: return *p ? 1.0 : 0.0;
        case ValueType::Int32Array: { std::int32_t v; std::memcpy(&v, p, 4); return v; }
        case ValueType::Int64Array: { std::int64_t v; std::memcpy(&v, p, 8); return static_cast<double>(v); }
        case ValueType::Float32Array: { float v; std::memcpy(&v, p, 4); return v; }
        case ValueType::Float64Array: { double v; std::memcpy(&v, p, 8); return v; }
        default: return 0.0;
    }
}

std::int64_t Value::IntAt(std::size_t i) const {
    if (!IsArray()) return i == 0 ? AsInt() : 0;
    if (i >= m_Count) return 0;
    switch (m_Type) {
        case ValueType::Float32Array:
        case ValueType::Float64Array: return Value::MakeFloat(DoubleAt(i)).AsInt();
        default: break;
    }
    const std::uint8_t* p = m_Bytes.data() + i * ElementSize(m_Type);
    switch (m_Type) {
        case ValueType::BoolArray: return *p ? 1 : 0;
        case ValueType::Int32Array: { std::int32_t v; std::memcpy(&v, p, 4); return v; }
        case ValueType::Int64Array: { std::int64_t v; std::memcpy(&v, p, 8); return v; }
        default: return 0;
    }
}

const std::uint8_t* Value::Bools() const {
    return m_Type == ValueType::BoolArray ? m_Bytes.data() : nullptr;
}
const std::int32_t* Value::Int32s() const {
    return m_Type == ValueType::Int32Array ? reinterpret_cast<const std::int32_t*>(m_Bytes.data()) : nullptr;
}
const std::int64_t* Value::Int64s() const {
    return m_Type == ValueType::Int64Array ? reinterpret_cast<const std::int64_t*>(m_Bytes.data()) : nullptr;
}
const float* Value::Float32s() const {
    return m_Type == ValueType::Float32Array ? reinterpret_cast<const float*>(m_Bytes.data()) : nullptr;
}
const double* Value::Float64s() const {
    return m_Type == ValueType::Float64Array ? reinterpret_cast<const double*>(m_Bytes.data()) : nullptr;
}

const Record* Record::Child(std::string_view childName) const {
    for (const Record& child : children) {
        if (child.name == childName) return &child;
    }
    return nullptr;
}

std::vector<const Record*> Record::Children(std::string_view childName) const {
    std::vector<const Record*> found;
    for (const Record& child : children) {
        if (child.name == childName) found.push_back(&child);
    }
    return found;
}

const Value* Record::ValueAt(std::size_t i) const { return i < values.size() ? &values[i] : nullptr; }

std::int64_t Record::IntAt(std::size_t i, std::int64_t fallback) const {
    const Value* v = ValueAt(i);
    return v && v->IsNumber() ? v->AsInt() : fallback;
}

double Record::DoubleAt(std::size_t i, double fallback) const {
    const Value* v = ValueAt(i);
    return v && v->IsNumber() ? v->AsDouble() : fallback;
}

std::string Record::TextAt(std::size_t i) const {
    const Value* v = ValueAt(i);
    return v ? v->AsText() : std::string();
}

std::size_t Record::NumberCount() const {
    std::size_t n = 0;
    for (const Value& v : values) n += v.Count();
    return n;
}

std::vector<double> Record::Doubles() const {
    std::vector<double> out;
    out.reserve(NumberCount());
    for (const Value& v : values) {
        if (const double* d = v.Float64s()) {
            out.insert(out.end(), d, d + v.Count());
        } else {
            for (std::size_t i = 0, n = v.Count(); i < n; ++i) out.push_back(v.DoubleAt(i));
        }
    }
    return out;
}

std::vector<std::int64_t> Record::Ints() const {
    std::vector<std::int64_t> out;
    out.reserve(NumberCount());
    for (const Value& v : values) {
        // Index lists are integer arrays: copy those without a per-element type switch.
        if (const std::int32_t* p = v.Int32s()) {
            out.insert(out.end(), p, p + v.Count());
        } else if (const std::int64_t* q = v.Int64s()) {
            out.insert(out.end(), q, q + v.Count());
        } else {
            for (std::size_t i = 0, n = v.Count(); i < n; ++i) out.push_back(v.IntAt(i));
        }
    }
    return out;
}

std::vector<std::int32_t> Record::Int32s() const {
    std::vector<std::int32_t> out;
    out.reserve(NumberCount());
    for (const Value& v : values) {
        if (const std::int32_t* p = v.Int32s()) {
            out.insert(out.end(), p, p + v.Count());
        } else {
            for (std::size_t i = 0, n = v.Count(); i < n; ++i) {
                out.push_back(static_cast<std::int32_t>(v.IntAt(i)));
            }
        }
    }
    return out;
}

std::string Record::ChildText(std::string_view childName) const {
    const Record* child = Child(childName);
    return child ? child->TextAt(0) : std::string();
}

std::int64_t Record::ChildInt(std::string_view childName, std::int64_t fallback) const {
    const Record* child = Child(childName);
    return child ? child->IntAt(0, fallback) : fallback;
}

}  // namespace fbx
