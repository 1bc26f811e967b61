// The binary FBX parser: header, nested records, typed values and (compressed) arrays, in
// either byte order. Every offset, length and count is checked against the bytes present.
#include <libdeflate.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fbx/format/Parse.h"
#include "fbx/format/ParseLimits.h"

namespace fbx {

namespace {

constexpr char kBinaryMagic[] = "Kaydara FBX Binary  ";   // 20 characters, then the NUL
constexpr std::size_t kMagicSize = sizeof(kBinaryMagic);  // 21 bytes, NUL included
constexpr std::size_t kFileHeaderSize = 27;

inline std::uint16_t Swap(std::uint16_t v) {
    return __builtin_bswap16(v);
}
inline std::uint32_t Swap(std::uint32_t v) {
    return __builtin_bswap32(v);
}
inline std::uint64_t Swap(std::uint64_t v) {
    return __builtin_bswap64(v);
}

// Swaps every element of an array held as raw bytes.
void SwapElements(std::uint8_t* bytes, std::size_t count, std::size_t elementSize) {
    if (elementSize == 4) {
        for (std::size_t i = 0; i < count; ++i, bytes += 4) {
            std::uint32_t v;
            std::memcpy(&v, bytes, 4);
            v = Swap(v);
            std::memcpy(bytes, &v, 4);
        }
    } else if (elementSize == 8) {
        for (std::size_t i = 0; i < count; ++i, bytes += 8) {
            std::uint64_t v;
            std::memcpy(&v, bytes, 8);
            v = Swap(v);
            std::memcpy(bytes, &v, 8);
        }
    }
}

struct DecompressorDeleter {
    void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

bool IsLetterByte(std::uint8_t c) {
    return c >= 0x20 && c < 0x7f;
}

class BinaryReader {
public:
    BinaryReader(const std::uint8_t* data, std::size_t size, bool bigEndian, bool wide)
        : m_Data(data),
          m_Size(size),
          m_BigEndian(bigEndian),
          m_Wide(wide),
          m_HeaderSize(wide ? 25 : 13),
          m_InflateBudget(size * kInflateBudgetFactor + kInflateAllowance) {}

    // Reads top-level records from offset into root until a null record or the end.
    bool ParseTopLevel(std::size_t pos, Record& root);

    const std::string& Error() const { return m_Error; }

private:
    template <class T>
    T Load(std::size_t pos) const {
        T v;
        std::memcpy(&v, m_Data + pos, sizeof(T));
        if (m_BigEndian) {
            if constexpr (sizeof(T) == 2) {
                std::uint16_t u;
                std::memcpy(&u, &v, 2);
                u = Swap(u);
                std::memcpy(&v, &u, 2);
            } else if constexpr (sizeof(T) == 4) {
                std::uint32_t u;
                std::memcpy(&u, &v, 4);
                u = Swap(u);
                std::memcpy(&v, &u, 4);
            } else if constexpr (sizeof(T) == 8) {
                std::uint64_t u;
                std::memcpy(&u, &v, 8);
                u = Swap(u);
                std::memcpy(&v, &u, 8);
            }
        }
        return v;
    }

    std::uint64_t LoadField(std::size_t pos) const {
        return m_Wide ? Load<std::uint64_t>(pos) : Load<std::uint32_t>(pos);
    }

    bool IsNullRecord(std::size_t pos) const {
        for (std::size_t i = 0; i < m_HeaderSize; ++i) {
            if (m_Data[pos + i] != 0)
                return false;
        }
        return true;
    }

    bool Fail(std::string message) {
        m_Error = std::move(message);
        return false;
    }

    std::string Where(std::size_t offset, const Record& record) const {
        return "record \"" + record.name + "\" at offset " + std::to_string(offset);
    }

    bool ParseRecord(std::size_t pos, std::size_t limit, Record& out, int depth, std::size_t& end);
    bool ParseValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                     std::size_t recordOffset, Record& out);
    bool ParsePackedValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                           Record& out);
    bool ParseArray(std::size_t& q, std::size_t valuesEnd, std::uint8_t type,
                    std::size_t recordOffset, Record& out);

    const std::uint8_t* m_Data;
    std::size_t m_Size;
    bool m_BigEndian;
    bool m_Wide;
    std::size_t m_HeaderSize;
    std::size_t m_InflateBudget;
    std::size_t m_Inflated = 0;
    std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> m_Decompressor;
    std::string m_Error;
};

bool BinaryReader::ParseTopLevel(std::size_t pos, Record& root) {
    // The list ends with a null record; without one the file was cut short.
    while (m_Size - pos >= m_HeaderSize) {
        if (IsNullRecord(pos))
            return true;
        root.children.emplace_back();
        std::size_t end = 0;
        if (!ParseRecord(pos, m_Size, root.children.back(), 1, end))
            return false;
        pos = end;
    }
    return Fail("the file ends at offset " + std::to_string(m_Size) +
                " without the null record that closes the top-level records");
}

bool BinaryReader::ParseRecord(std::size_t pos, std::size_t limit, Record& out, int depth,
                               std::size_t& end) {
    // Messages are built only on failure: this runs once per record.
    auto at = [pos] { return "record at offset " + std::to_string(pos); };
    if (depth > kMaxNesting) {
        return Fail(at() + " is nested deeper than " + std::to_string(kMaxNesting) + " levels");
    }
    if (limit - pos < m_HeaderSize) {
        return Fail(limit == m_Size ? "the file ends inside the header of the " + at()
                                    : "the header of the " + at() + " runs past its parent's end");
    }
    const std::size_t fieldSize = m_Wide ? 8 : 4;
    const std::uint64_t endOffset = LoadField(pos);
    const std::uint64_t valueCount = LoadField(pos + fieldSize);
    const std::uint64_t valueBytes = LoadField(pos + 2 * fieldSize);
    const std::size_t nameLength = m_Data[pos + 3 * fieldSize];
    const std::size_t nameStart = pos + m_HeaderSize;

    if (nameLength > limit - nameStart) {
        return Fail("the name of the " + at() + " runs past the end of " +
                    (limit == m_Size ? "the file" : "its parent"));
    }
    out.name.assign(reinterpret_cast<const char*>(m_Data + nameStart), nameLength);
    const std::size_t valuesStart = nameStart + nameLength;
    auto where = [&] { return Where(pos, out); };

    if (endOffset > limit) {
        return Fail(where() + " ends past the end of " +
                    (limit == m_Size ? std::string("the file")
                                     : "its parent (offset " + std::to_string(limit) + ")"));
    }
    if (endOffset < valuesStart) {
        return Fail(where() + " ends (offset " + std::to_string(endOffset) +
                    ") before its own name");
    }
    end = static_cast<std::size_t>(endOffset);
    if (valueBytes > end - valuesStart) {
        return Fail(where() + " declares " + std::to_string(valueBytes) +
                    " bytes of values but only " + std::to_string(end - valuesStart) +
                    " fit inside it");
    }
    // Every value takes at least two bytes (type code and payload).
    if (valueCount > valueBytes / 2) {
        return Fail(where() + " declares " + std::to_string(valueCount) + " values in only " +
                    std::to_string(valueBytes) + " bytes");
    }
    const std::size_t valuesEnd = valuesStart + static_cast<std::size_t>(valueBytes);
    if (!ParseValues(valuesStart, valuesEnd, valueCount, pos, out))
        return false;

    std::size_t child = valuesEnd;
    while (child < end) {
        if (end - child >= m_HeaderSize && IsNullRecord(child))
            break;
        out.children.emplace_back();
        std::size_t childEnd = 0;
        if (!ParseRecord(child, end, out.children.back(), depth + 1, childEnd))
            return false;
        if (childEnd <= child)
            return Fail(where() + " holds a child that does not advance");
        child = childEnd;
    }
    return true;
}

bool BinaryReader::ParsePackedValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                                     Record& out) {
    // First pass: are all values numeric scalars, and which array type holds them?
    bool anyFloat = false;
    bool anyWide = false;
    std::size_t q = pos;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (q >= valuesEnd)
            return false;
        std::size_t size = 0;
        switch (m_Data[q]) {
            case 'C':
                size = 1;
                if (valuesEnd - q > 1 && IsLetterByte(m_Data[q + 1]))
                    return false;
                break;
            case 'Y':
                size = 2;
                break;
            case 'I':
                size = 4;
                break;
            case 'L':
                size = 8;
                anyWide = true;
                break;
            case 'F':
                size = 4;
                anyFloat = true;
                break;
            case 'D':
                size = 8;
                anyFloat = true;
                break;
            default:
                return false;
        }
        if (size >= valuesEnd - q)
            return false;
        q += 1 + size;
    }
    if (q != valuesEnd)
        return false;  // let the general path report the mismatch

    const std::size_t n = static_cast<std::size_t>(count);
    const ValueType arrayType = anyFloat  ? ValueType::Float64Array
                                : anyWide ? ValueType::Int64Array
                                          : ValueType::Int32Array;
    const std::size_t elementSize = arrayType == ValueType::Int32Array ? 4 : 8;
    std::vector<std::uint8_t> bytes(n * elementSize);
    std::uint8_t* dst = bytes.data();
    q = pos;
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint8_t type = m_Data[q++];
        std::int64_t asInt = 0;
        double asDouble = 0.0;
        bool isFloat = false;
        switch (type) {
            case 'C':
                asInt = m_Data[q] != 0 ? 1 : 0;
                q += 1;
                break;
            case 'Y':
                asInt = Load<std::int16_t>(q);
                q += 2;
                break;
            case 'I':
                asInt = Load<std::int32_t>(q);
                q += 4;
                break;
            case 'L':
                asInt = Load<std::int64_t>(q);
                q += 8;
                break;
            case 'F':
                asDouble = Load<float>(q);
                isFloat = true;
                q += 4;
                break;
            default:
                asDouble = Load<double>(q);
                isFloat = true;
                q += 8;
                break;
        }
        if (arrayType == ValueType::Float64Array) {
            const double v = isFloat ? asDouble : static_cast<double>(asInt);
            std::memcpy(dst, &v, 8);
            dst += 8;
        } else if (arrayType == ValueType::Int64Array) {
            std::memcpy(dst, &asInt, 8);
            dst += 8;
        } else {
            const auto v = static_cast<std::int32_t>(asInt);
            std::memcpy(dst, &v, 4);
            dst += 4;
        }
    }
    out.values.push_back(Value::MakeArrayFromBytes(arrayType, std::move(bytes)));
    return true;
}

bool BinaryReader::ParseArray(std::size_t& q, std::size_t valuesEnd, std::uint8_t type,
                              std::size_t recordOffset, Record& out) {
    std::size_t elementSize = 0;
    ValueType arrayType = ValueType::BoolArray;
    switch (type) {
        case 'b':
            elementSize = 1;
            arrayType = ValueType::BoolArray;
            break;
        case 'i':
            elementSize = 4;
            arrayType = ValueType::Int32Array;
            break;
        case 'l':
            elementSize = 8;
            arrayType = ValueType::Int64Array;
            break;
        case 'f':
            elementSize = 4;
            arrayType = ValueType::Float32Array;
            break;
        default:
            elementSize = 8;
            arrayType = ValueType::Float64Array;
            break;
    }
    auto where = [&] { return Where(recordOffset, out); };
    if (valuesEnd - q < 12)
        return Fail(where() + ": an array header runs past its values");
    const std::uint32_t count = Load<std::uint32_t>(q);
    const std::uint32_t encoding = Load<std::uint32_t>(q + 4);
    const std::uint32_t byteLength = Load<std::uint32_t>(q + 8);
    q += 12;
    if (byteLength > valuesEnd - q) {
        return Fail(where() + ": an array of " + std::to_string(byteLength) +
                    " bytes runs past the record's values");
    }
    const std::uint64_t expected = std::uint64_t{count} * elementSize;
    std::vector<std::uint8_t> bytes;
    if (encoding == 0) {
        if (expected != byteLength) {
            return Fail(where() + ": an array of " + std::to_string(count) + " elements of " +
                        std::to_string(elementSize) + " bytes holds " + std::to_string(byteLength) +
                        " bytes");
        }
        bytes.assign(m_Data + q, m_Data + q + byteLength);
    } else if (encoding == 1) {
        if (expected > std::uint64_t{byteLength} * kMaxInflateRatio) {
            return Fail(where() + ": a compressed array claims " + std::to_string(count) +
                        " elements, more than its " + std::to_string(byteLength) +
                        " compressed bytes can hold");
        }
        if (expected > m_InflateBudget - m_Inflated) {
            return Fail(where() + ": compressed arrays inflate to more than " +
                        std::to_string(m_InflateBudget) + " bytes in total");
        }
        m_Inflated += static_cast<std::size_t>(expected);
        bytes.resize(static_cast<std::size_t>(expected));
        if (!m_Decompressor) {
            m_Decompressor.reset(libdeflate_alloc_decompressor());
            if (!m_Decompressor)
                return Fail("out of memory for the deflate decoder");
        }
        std::size_t actual = 0;
        const libdeflate_result result = libdeflate_zlib_decompress(
            m_Decompressor.get(), m_Data + q, byteLength, bytes.data(), bytes.size(), &actual);
        if (result == LIBDEFLATE_INSUFFICIENT_SPACE ||
            (result == LIBDEFLATE_SUCCESS && actual != bytes.size())) {
            return Fail(where() + ": a compressed array of " + std::to_string(count) +
                        " elements decodes to a different size");
        }
        if (result != LIBDEFLATE_SUCCESS) {
            return Fail(where() + ": a compressed array does not decode");
        }
    } else {
        return Fail(where() + ": an array has unknown encoding " + std::to_string(encoding));
    }
    q += byteLength;
    if (m_BigEndian)
        SwapElements(bytes.data(), count, elementSize);
    out.values.push_back(Value::MakeArrayFromBytes(arrayType, std::move(bytes)));
    return true;
}

bool BinaryReader::ParseValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                               std::size_t recordOffset, Record& out) {
    if (count > kPackThreshold && ParsePackedValues(pos, valuesEnd, count, out))
        return true;

    out.values.reserve(static_cast<std::size_t>(count));
    std::size_t q = pos;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (q >= valuesEnd) {
            return Fail(Where(recordOffset, out) + ": value " + std::to_string(i) +
                        " lies past the declared size of its values");
        }
        const std::uint8_t type = m_Data[q++];
        const std::size_t left = valuesEnd - q;
        auto need = [&](std::size_t n) {
            if (n <= left)
                return true;
            return Fail(Where(recordOffset, out) + ": value " + std::to_string(i) + " of type '" +
                        static_cast<char>(type) + "' is cut off");
        };
        switch (type) {
            case 'C': {
                if (!need(1))
                    return false;
                const std::uint8_t c = m_Data[q++];
                if (IsLetterByte(c)) {
                    out.values.push_back(
                        Value::MakeText(std::string(1, static_cast<char>(c)), ValueType::Word));
                } else {
                    out.values.push_back(Value::MakeBool(c != 0));
                }
                break;
            }
            case 'Y':
                if (!need(2))
                    return false;
                out.values.push_back(Value::MakeInt(Load<std::int16_t>(q), ValueType::Int16));
                q += 2;
                break;
            case 'I':
                if (!need(4))
                    return false;
                out.values.push_back(Value::MakeInt(Load<std::int32_t>(q), ValueType::Int32));
                q += 4;
                break;
            case 'L':
                if (!need(8))
                    return false;
                out.values.push_back(Value::MakeInt(Load<std::int64_t>(q), ValueType::Int64));
                q += 8;
                break;
            case 'F':
                if (!need(4))
                    return false;
                out.values.push_back(Value::MakeFloat(Load<float>(q), ValueType::Float32));
                q += 4;
                break;
            case 'D':
                if (!need(8))
                    return false;
                out.values.push_back(Value::MakeFloat(Load<double>(q), ValueType::Float64));
                q += 8;
                break;
            case 'S':
            case 'R': {
                if (!need(4))
                    return false;
                const std::uint32_t length = Load<std::uint32_t>(q);
                q += 4;
                if (length > valuesEnd - q) {
                    return Fail(Where(recordOffset, out) + ": a text of " + std::to_string(length) +
                                " bytes runs past the record's values");
                }
                out.values.push_back(
                    Value::MakeText(std::string(reinterpret_cast<const char*>(m_Data + q), length),
                                    type == 'S' ? ValueType::String : ValueType::Raw));
                q += length;
                break;
            }
            case 'b':
            case 'i':
            case 'l':
            case 'f':
            case 'd':
                if (!ParseArray(q, valuesEnd, type, recordOffset, out))
                    return false;
                break;
            default: {
                static const char kHex[] = "0123456789abcdef";
                std::string code = "0x";
                code += kHex[type >> 4];
                code += kHex[type & 15];
                return Fail(Where(recordOffset, out) + ": value " + std::to_string(i) +
                            " has unknown type code " + code);
            }
        }
    }
    if (q != valuesEnd) {
        return Fail(Where(recordOffset, out) + ": its values take " + std::to_string(q - pos) +
                    " bytes, not the " + std::to_string(valuesEnd - pos) + " it declares");
    }
    return true;
}

}  // namespace

bool IsBinaryFbx(const std::uint8_t* data, std::size_t size) {
    return data != nullptr && size >= kMagicSize &&
           std::memcmp(data, kBinaryMagic, kMagicSize) == 0;
}

ParseResult ParseBinary(const std::uint8_t* data, std::size_t size) {
    ParseResult result;
    result.document.binary = true;
    if (!IsBinaryFbx(data, size)) {
        result.error = "not a binary FBX file (the \"Kaydara FBX Binary\" signature is missing)";
        return result;
    }
    if (size < kFileHeaderSize) {
        result.error = "the file ends inside the binary FBX header";
        return result;
    }
    const bool bigEndian = data[22] != 0;
    std::uint32_t version;
    std::memcpy(&version, data + 23, 4);
    if (bigEndian)
        version = Swap(version);
    result.document.bigEndian = bigEndian;
    result.document.version = version;

    BinaryReader reader(data, size, bigEndian, version >= 7500);
    result.ok = reader.ParseTopLevel(kFileHeaderSize, result.document.root);
    if (!result.ok)
        result.error = reader.Error();
    // 5800 files say 3000 in the header; the header record knows the real version.
    if (const Record* header = result.document.root.Child("FBXHeaderExtension")) {
        const std::int64_t recorded = header->ChildInt("FBXVersion", 0);
        if (recorded > 0 && recorded <= 0xffffffffLL) {
            result.document.version = static_cast<std::uint32_t>(recorded);
        }
    }
    return result;
}

}  // namespace fbx
