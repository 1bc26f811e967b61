// The binary FBX parser: header, nested records, typed values and (compressed) arrays, in
// either byte order. Every offset, length and count is checked against the bytes present.
#include <libdeflate.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fbx/format/ArrayInflater.h"
#include "fbx/format/BinaryHeader.h"
#include "fbx/format/Parse.h"
#include "fbx/format/ParseLimits.h"

namespace fbx {

namespace {

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

std::string HexCode(std::uint8_t type) {
    static const char kHex[] = "0123456789abcdef";
    std::string code = "0x";
    code += kHex[type >> 4];
    code += kHex[type & 15];
    return code;
}

// An array type code: the size of one element in the file, and how the elements are kept.
// Character arrays ('c', one byte an element; some tools store thumbnails in them) are kept
// as Int32Array, each byte read as an unsigned number.
struct ArrayCode {
    std::size_t elementSize = 0;
    ValueType storedAs = ValueType::BoolArray;
    bool bytesAsInt32 = false;
};

bool FindArrayCode(std::uint8_t type, ArrayCode& code) {
    switch (type) {
        case 'b':
            code = {1, ValueType::BoolArray, false};
            return true;
        case 'c':
            code = {1, ValueType::Int32Array, true};
            return true;
        case 'i':
            code = {4, ValueType::Int32Array, false};
            return true;
        case 'l':
            code = {8, ValueType::Int64Array, false};
            return true;
        case 'f':
            code = {4, ValueType::Float32Array, false};
            return true;
        case 'd':
            code = {8, ValueType::Float64Array, false};
            return true;
        default:
            return false;
    }
}

// The size in the file of a numeric scalar ('C', 'Y', 'I', 'L', 'F', 'D'), else 0.
std::size_t NumericScalarSize(std::uint8_t type) {
    switch (type) {
        case 'C':
            return 1;
        case 'Y':
            return 2;
        case 'I':
        case 'F':
            return 4;
        case 'L':
        case 'D':
            return 8;
        default:
            return 0;
    }
}

ByteBuffer WidenBytesToInt32(const ByteBuffer& bytes) {
    ByteBuffer wide(bytes.size() * 4);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::int32_t v = bytes[i];
        std::memcpy(wide.data() + 4 * i, &v, 4);
    }
    return wide;
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Compressed arrays that decode to at least this many bytes are decoded beside the parse.
constexpr std::uint64_t kDecodeBeside = std::uint64_t{1} << 20;

// A record header's fields, before they are checked.
struct RecordHeader {
    std::uint64_t endOffset = 0;  // 0 in the files of some writers: the contents decide
    std::uint64_t valueCount = 0;
    std::uint64_t valueBytes = 0;
    std::size_t nameLength = 0;
};

// Where a record ends, and whether its header said so.
struct RecordExtent {
    std::size_t end = 0;
    bool stated = true;  // false for a record whose end offset was written as 0
};

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
    // Puts the arrays decoded beside the parse in their places. When one of them does not
    // decode, the tree is cut where the parse would have stopped at it, Error() says why and
    // the result is false; otherwise `parsed` (what ParseTopLevel returned) stands.
    bool FinishArrays(Record& root, bool parsed);

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

    RecordHeader LoadHeader(std::size_t pos) const {
        const std::size_t fieldSize = m_Wide ? 8 : 4;
        RecordHeader header;
        header.endOffset = LoadField(pos);
        header.valueCount = LoadField(pos + fieldSize);
        header.valueBytes = LoadField(pos + 2 * fieldSize);
        header.nameLength = m_Data[pos + 3 * fieldSize];
        return header;
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

    // Records.
    bool ParseRecord(std::size_t pos, std::size_t limit, bool limitIsEnd, Record& out, int depth,
                     RecordExtent& extent);
    bool ReadName(std::size_t pos, std::size_t limit, const RecordHeader& header, Record& out);
    bool CheckStatedEnd(std::size_t pos, std::size_t limit, std::size_t valuesStart,
                        std::uint64_t endOffset, const Record& out);
    bool CheckValueSizes(std::size_t pos, std::size_t valuesStart, std::size_t valuesLimit,
                         const RecordHeader& header, const Record& out);
    std::size_t EndOfUnstatedRecord(std::size_t valuesEnd, std::size_t limit,
                                    bool limitIsEnd) const;
    bool LooksLikeRecord(std::size_t pos, std::size_t limit) const;
    bool ParseChildren(std::size_t pos, std::size_t first, std::size_t end, Record& out, int depth);
    bool FailUnstatedWithChildren(std::size_t unstatedAt, const Record& unstated);

    // Values.
    bool ParseValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                     std::size_t recordOffset, Record& out);
    bool ParseScalar(std::size_t& q, std::size_t valuesEnd, std::uint8_t type, std::uint64_t index,
                     std::size_t recordOffset, Record& out);
    bool ParseText(std::size_t& q, std::size_t valuesEnd, std::uint8_t type, std::uint64_t index,
                   std::size_t recordOffset, Record& out);
    bool ParsePackedValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                           Record& out);
    bool PackedArrayType(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                         ValueType& arrayType) const;
    void PackScalars(std::size_t pos, std::size_t count, ValueType arrayType,
                     std::uint8_t* dst) const;
    bool ParseArray(std::size_t& q, std::size_t valuesEnd, const ArrayCode& code,
                    std::size_t recordOffset, Record& out);
    bool InflateArray(std::size_t q, std::uint32_t byteLength, std::uint32_t count,
                      const ArrayCode& code, const Record& out, std::size_t recordOffset,
                      ByteBuffer& bytes);
    bool CheckInflate(std::uint32_t byteLength, std::uint32_t count, const ArrayCode& code,
                      const Record& out, std::size_t recordOffset);
    // The record at m_Path under root.
    static Record& RecordAt(Record& root, const std::vector<std::size_t>& path);
    // Cuts the tree where the parse would have stopped at value `value` of the record at
    // `path`: that value and everything after it in the file go.
    static void CutAt(Record& root, const std::vector<std::size_t>& path, std::size_t value);

    // An array decoded beside the parse: where its value is, and what it is.
    struct PendingArray {
        std::vector<std::size_t> path;  // child indices from the root to its record
        std::size_t value = 0;          // its index among the record's values
        std::size_t job = 0;            // its ArrayInflater job
        std::uint32_t count = 0;
        ArrayCode code;
        std::string where;  // the record, for messages
    };

    const std::uint8_t* m_Data;
    std::size_t m_Size;
    bool m_BigEndian;
    bool m_Wide;
    std::size_t m_HeaderSize;
    std::size_t m_InflateBudget;
    std::size_t m_Inflated = 0;
    std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> m_Decompressor;
    std::string m_Error;
    std::vector<std::size_t> m_Path;  // child indices from the root to the record being read
    std::unique_ptr<ArrayInflater> m_Inflater;
    std::vector<PendingArray> m_Pending;
};

// ---- Records -------------------------------------------------------------------------------

bool BinaryReader::ParseTopLevel(std::size_t pos, Record& root) {
    // The list ends with a null record; without one the file was cut short. The footer after
    // it never looks like a record, so a record there means the null record closed the nested
    // list of a record whose end offset was written as 0.
    std::size_t unstatedAt = 0;
    std::size_t unstated = kNone;  // index of the last record read without end offset
    while (m_Size - pos >= m_HeaderSize) {
        if (IsNullRecord(pos)) {
            if (unstated != kNone && LooksLikeRecord(pos + m_HeaderSize, m_Size))
                return FailUnstatedWithChildren(unstatedAt, root.children[unstated]);
            return true;
        }
        root.children.emplace_back();
        RecordExtent extent;
        m_Path.assign(1, root.children.size() - 1);
        if (!ParseRecord(pos, m_Size, false, root.children.back(), 1, extent))
            return false;
        if (!extent.stated) {
            unstatedAt = pos;
            unstated = root.children.size() - 1;
        }
        pos = extent.end;
    }
    return Fail("the file ends at offset " + std::to_string(m_Size) +
                " without the null record that closes the top-level records");
}

// limit is where the enclosing record ends (or the file); limitIsEnd tells whether the
// enclosing list's null record sits right before it, as inside a record with an end offset.
bool BinaryReader::ParseRecord(std::size_t pos, std::size_t limit, bool limitIsEnd, Record& out,
                               int depth, RecordExtent& extent) {
    if (depth > kMaxNesting) {
        return Fail("record at offset " + std::to_string(pos) + " is nested deeper than " +
                    std::to_string(kMaxNesting) + " levels");
    }
    if (limit - pos < m_HeaderSize) {
        const std::string at = "record at offset " + std::to_string(pos);
        return Fail(limit == m_Size ? "the file ends inside the header of the " + at
                                    : "the header of the " + at + " runs past its parent's end");
    }
    const RecordHeader header = LoadHeader(pos);
    if (!ReadName(pos, limit, header, out))
        return false;
    const std::size_t valuesStart = pos + m_HeaderSize + header.nameLength;
    extent.stated = header.endOffset != 0;
    if (extent.stated && !CheckStatedEnd(pos, limit, valuesStart, header.endOffset, out))
        return false;
    const std::size_t valuesLimit =
        extent.stated ? static_cast<std::size_t>(header.endOffset) : limit;
    if (!CheckValueSizes(pos, valuesStart, valuesLimit, header, out))
        return false;
    const std::size_t valuesEnd = valuesStart + static_cast<std::size_t>(header.valueBytes);
    if (!ParseValues(valuesStart, valuesEnd, header.valueCount, pos, out))
        return false;
    extent.end = extent.stated ? valuesLimit : EndOfUnstatedRecord(valuesEnd, limit, limitIsEnd);
    return ParseChildren(pos, valuesEnd, extent.end, out, depth);
}

bool BinaryReader::ReadName(std::size_t pos, std::size_t limit, const RecordHeader& header,
                            Record& out) {
    const std::size_t nameStart = pos + m_HeaderSize;
    if (header.nameLength > limit - nameStart) {
        return Fail("the name of the record at offset " + std::to_string(pos) +
                    " runs past the end of " + (limit == m_Size ? "the file" : "its parent"));
    }
    out.name.assign(reinterpret_cast<const char*>(m_Data + nameStart), header.nameLength);
    return true;
}

bool BinaryReader::CheckStatedEnd(std::size_t pos, std::size_t limit, std::size_t valuesStart,
                                  std::uint64_t endOffset, const Record& out) {
    if (endOffset > limit) {
        return Fail(Where(pos, out) + " ends past the end of " +
                    (limit == m_Size ? std::string("the file")
                                     : "its parent (offset " + std::to_string(limit) + ")"));
    }
    if (endOffset < valuesStart) {
        return Fail(Where(pos, out) + " ends (offset " + std::to_string(endOffset) +
                    ") before its own name");
    }
    return true;
}

bool BinaryReader::CheckValueSizes(std::size_t pos, std::size_t valuesStart,
                                   std::size_t valuesLimit, const RecordHeader& header,
                                   const Record& out) {
    if (header.valueBytes > valuesLimit - valuesStart) {
        return Fail(Where(pos, out) + " declares " + std::to_string(header.valueBytes) +
                    " bytes of values but only " + std::to_string(valuesLimit - valuesStart) +
                    " fit inside it");
    }
    // Every value takes at least two bytes (type code and payload).
    if (header.valueCount > header.valueBytes / 2) {
        return Fail(Where(pos, out) + " declares " + std::to_string(header.valueCount) +
                    " values in only " + std::to_string(header.valueBytes) + " bytes");
    }
    return true;
}

// A record whose end offset was written as 0 ends where its contents end: right after its
// values, unless a null record follows them that cannot be the one closing the enclosing list
// (the enclosing list goes on after it): then that null record closes the record's own, empty,
// nested list. A record without end offset that holds records of its own is not decidable;
// its children are read as its siblings, and the enclosing list then reports the damage.
std::size_t BinaryReader::EndOfUnstatedRecord(std::size_t valuesEnd, std::size_t limit,
                                              bool limitIsEnd) const {
    if (limit - valuesEnd < m_HeaderSize || !IsNullRecord(valuesEnd))
        return valuesEnd;
    const std::size_t after = valuesEnd + m_HeaderSize;
    const bool listGoesOn = limitIsEnd ? after < limit : LooksLikeRecord(after, limit);
    return listGoesOn ? after : valuesEnd;
}

// Whether a well-formed record with an end offset starts at pos.
bool BinaryReader::LooksLikeRecord(std::size_t pos, std::size_t limit) const {
    if (pos > limit || limit - pos < m_HeaderSize || IsNullRecord(pos))
        return false;
    const RecordHeader header = LoadHeader(pos);
    const std::size_t valuesStart = pos + m_HeaderSize + header.nameLength;
    return header.nameLength > 0 && header.endOffset <= limit && header.endOffset >= valuesStart &&
           header.valueBytes <= header.endOffset - valuesStart &&
           header.valueCount <= header.valueBytes / 2;
}

bool BinaryReader::ParseChildren(std::size_t pos, std::size_t first, std::size_t end, Record& out,
                                 int depth) {
    std::size_t unstatedAt = 0;
    std::size_t unstated = kNone;  // index of the last child read without end offset
    std::size_t child = first;
    while (child < end) {
        if (end - child >= m_HeaderSize && IsNullRecord(child)) {
            // The null record closing this list sits right before the end; one earlier
            // closed the nested list of a record without end offset.
            if (unstated != kNone && end - child > m_HeaderSize)
                return FailUnstatedWithChildren(unstatedAt, out.children[unstated]);
            break;
        }
        out.children.emplace_back();
        RecordExtent extent;
        m_Path.push_back(out.children.size() - 1);
        if (!ParseRecord(child, end, true, out.children.back(), depth + 1, extent))
            return false;
        m_Path.pop_back();
        if (extent.end <= child)
            return Fail(Where(pos, out) + " holds a child that does not advance");
        if (!extent.stated) {
            unstatedAt = child;
            unstated = out.children.size() - 1;
        }
        child = extent.end;
    }
    return true;
}

bool BinaryReader::FailUnstatedWithChildren(std::size_t unstatedAt, const Record& unstated) {
    return Fail(Where(unstatedAt, unstated) +
                " has no end offset, and the records after it do not fit in the list that holds"
                " it (it seems to hold records of its own)");
}

// ---- Values --------------------------------------------------------------------------------

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
        ArrayCode array;
        const bool ok = FindArrayCode(type, array)
                            ? ParseArray(q, valuesEnd, array, recordOffset, out)
                            : ParseScalar(q, valuesEnd, type, i, recordOffset, out);
        if (!ok)
            return false;
    }
    if (q != valuesEnd) {
        return Fail(Where(recordOffset, out) + ": its values take " + std::to_string(q - pos) +
                    " bytes, not the " + std::to_string(valuesEnd - pos) + " it declares");
    }
    return true;
}

// One scalar or text value after its type code at q; q moves past it.
bool BinaryReader::ParseScalar(std::size_t& q, std::size_t valuesEnd, std::uint8_t type,
                               std::uint64_t index, std::size_t recordOffset, Record& out) {
    if (type == 'S' || type == 'R')
        return ParseText(q, valuesEnd, type, index, recordOffset, out);
    const std::size_t size = NumericScalarSize(type);
    if (size == 0) {
        return Fail(Where(recordOffset, out) + ": value " + std::to_string(index) +
                    " has unknown type code " + HexCode(type));
    }
    if (size > valuesEnd - q) {
        return Fail(Where(recordOffset, out) + ": value " + std::to_string(index) + " of type '" +
                    static_cast<char>(type) + "' is cut off");
    }
    switch (type) {
        case 'C': {
            const std::uint8_t c = m_Data[q];
            if (IsLetterByte(c)) {
                out.values.push_back(
                    Value::MakeText(std::string(1, static_cast<char>(c)), ValueType::Word));
            } else {
                out.values.push_back(Value::MakeBool(c != 0));
            }
            break;
        }
        case 'Y':
            out.values.push_back(Value::MakeInt(Load<std::int16_t>(q), ValueType::Int16));
            break;
        case 'I':
            out.values.push_back(Value::MakeInt(Load<std::int32_t>(q), ValueType::Int32));
            break;
        case 'L':
            out.values.push_back(Value::MakeInt(Load<std::int64_t>(q), ValueType::Int64));
            break;
        case 'F':
            out.values.push_back(Value::MakeFloat(Load<float>(q), ValueType::Float32));
            break;
        default:  // 'D'
            out.values.push_back(Value::MakeFloat(Load<double>(q), ValueType::Float64));
            break;
    }
    q += size;
    return true;
}

// A string ('S') or raw bytes ('R'): a 32-bit length, then the bytes.
bool BinaryReader::ParseText(std::size_t& q, std::size_t valuesEnd, std::uint8_t type,
                             std::uint64_t index, std::size_t recordOffset, Record& out) {
    if (valuesEnd - q < 4) {
        return Fail(Where(recordOffset, out) + ": value " + std::to_string(index) + " of type '" +
                    static_cast<char>(type) + "' is cut off");
    }
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
    return true;
}

// Long lists of numeric scalars (6100-era geometry) are kept as one array value.
bool BinaryReader::ParsePackedValues(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                                     Record& out) {
    ValueType arrayType = ValueType::Int32Array;
    if (!PackedArrayType(pos, valuesEnd, count, arrayType))
        return false;
    const std::size_t n = static_cast<std::size_t>(count);
    const std::size_t elementSize = arrayType == ValueType::Int32Array ? 4 : 8;
    ByteBuffer bytes(n * elementSize);
    PackScalars(pos, n, arrayType, bytes.data());
    out.values.push_back(Value::MakeArrayFromBytes(arrayType, std::move(bytes)));
    return true;
}

// Are all values numeric scalars that exactly fill the values, and which array type holds
// them? A 'C' holding a letter is a word, not a number.
bool BinaryReader::PackedArrayType(std::size_t pos, std::size_t valuesEnd, std::uint64_t count,
                                   ValueType& arrayType) const {
    bool anyFloat = false;
    bool anyWide = false;
    std::size_t q = pos;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (q >= valuesEnd)
            return false;
        const std::uint8_t type = m_Data[q];
        const std::size_t size = NumericScalarSize(type);
        if (size == 0)
            return false;
        if (type == 'C' && valuesEnd - q > 1 && IsLetterByte(m_Data[q + 1]))
            return false;
        anyWide = anyWide || type == 'L';
        anyFloat = anyFloat || type == 'F' || type == 'D';
        if (size >= valuesEnd - q)
            return false;
        q += 1 + size;
    }
    if (q != valuesEnd)
        return false;  // let the general path report the mismatch
    arrayType = anyFloat  ? ValueType::Float64Array
                : anyWide ? ValueType::Int64Array
                          : ValueType::Int32Array;
    return true;
}

void BinaryReader::PackScalars(std::size_t pos, std::size_t count, ValueType arrayType,
                               std::uint8_t* dst) const {
    std::size_t q = pos;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t type = m_Data[q++];
        std::int64_t asInt = 0;
        double asDouble = 0.0;
        bool isFloat = false;
        switch (type) {
            case 'C':
                asInt = m_Data[q] != 0 ? 1 : 0;
                break;
            case 'Y':
                asInt = Load<std::int16_t>(q);
                break;
            case 'I':
                asInt = Load<std::int32_t>(q);
                break;
            case 'L':
                asInt = Load<std::int64_t>(q);
                break;
            case 'F':
                asDouble = Load<float>(q);
                isFloat = true;
                break;
            default:
                asDouble = Load<double>(q);
                isFloat = true;
                break;
        }
        q += NumericScalarSize(type);
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
}

// An array after its type code at q: count, encoding and byte length (32-bit each), then the
// elements, raw or as a zlib stream; q moves past it.
bool BinaryReader::ParseArray(std::size_t& q, std::size_t valuesEnd, const ArrayCode& code,
                              std::size_t recordOffset, Record& out) {
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
    const std::uint64_t expected = std::uint64_t{count} * code.elementSize;
    ByteBuffer bytes;
    if (encoding == 0) {
        if (expected != byteLength) {
            return Fail(where() + ": an array of " + std::to_string(count) + " elements of " +
                        std::to_string(code.elementSize) + " bytes holds " +
                        std::to_string(byteLength) + " bytes");
        }
        bytes.assign(m_Data + q, m_Data + q + byteLength);
    } else if (encoding == 1 && expected >= kDecodeBeside) {
        if (!CheckInflate(byteLength, count, code, out, recordOffset))
            return false;
        if (!m_Inflater)
            m_Inflater = std::make_unique<ArrayInflater>();
        PendingArray pending;
        pending.path = m_Path;
        pending.value = out.values.size();
        pending.job = m_Inflater->Add(m_Data + q, byteLength, static_cast<std::size_t>(expected));
        pending.count = count;
        pending.code = code;
        pending.where = where();
        m_Pending.push_back(std::move(pending));
        q += byteLength;
        out.values.push_back(Value::MakeArrayFromBytes(code.storedAs, {}));
        return true;
    } else if (encoding == 1) {
        if (!InflateArray(q, byteLength, count, code, out, recordOffset, bytes))
            return false;
    } else {
        return Fail(where() + ": an array has unknown encoding " + std::to_string(encoding));
    }
    q += byteLength;
    if (m_BigEndian)
        SwapElements(bytes.data(), count, code.elementSize);
    if (code.bytesAsInt32)
        bytes = WidenBytesToInt32(bytes);
    out.values.push_back(Value::MakeArrayFromBytes(code.storedAs, std::move(bytes)));
    return true;
}

// Whether a compressed array may be decoded: not more elements than its bytes can hold, and
// within the file's inflate budget, which it then takes its share of.
bool BinaryReader::CheckInflate(std::uint32_t byteLength, std::uint32_t count,
                                const ArrayCode& code, const Record& out,
                                std::size_t recordOffset) {
    auto where = [&] { return Where(recordOffset, out); };
    const std::uint64_t expected = std::uint64_t{count} * code.elementSize;
    // What the array takes once kept (character arrays grow to four bytes an element).
    const std::uint64_t kept = code.bytesAsInt32 ? expected * 4 : expected;
    if (expected > std::uint64_t{byteLength} * kMaxInflateRatio) {
        return Fail(where() + ": a compressed array claims " + std::to_string(count) +
                    " elements, more than its " + std::to_string(byteLength) +
                    " compressed bytes can hold");
    }
    if (kept > m_InflateBudget - m_Inflated) {
        return Fail(where() + ": compressed arrays inflate to more than " +
                    std::to_string(m_InflateBudget) + " bytes in total");
    }
    m_Inflated += static_cast<std::size_t>(kept);
    return true;
}

Record& BinaryReader::RecordAt(Record& root, const std::vector<std::size_t>& path) {
    Record* record = &root;
    for (std::size_t index : path)
        record = &record->children[index];
    return *record;
}

void BinaryReader::CutAt(Record& root, const std::vector<std::size_t>& path, std::size_t value) {
    Record* record = &root;
    for (std::size_t index : path) {
        record->children.resize(index + 1);
        record = &record->children[index];
    }
    record->values.resize(value);
    record->children.clear();
}

bool BinaryReader::FinishArrays(Record& root, bool parsed) {
    if (!m_Inflater)
        return parsed;
    m_Inflater->Finish();
    for (const PendingArray& pending : m_Pending) {
        ArrayInflater::Job& job = m_Inflater->At(pending.job);
        switch (job.outcome) {
            case ArrayInflater::Outcome::Decoded:
                break;
            case ArrayInflater::Outcome::WrongSize:
                CutAt(root, pending.path, pending.value);
                return Fail(pending.where + ": a compressed array of " +
                            std::to_string(pending.count) +
                            " elements decodes to a different size");
            case ArrayInflater::Outcome::NoDecoder:
                CutAt(root, pending.path, pending.value);
                return Fail("out of memory for the deflate decoder");
            default:
                CutAt(root, pending.path, pending.value);
                return Fail(pending.where + ": a compressed array does not decode");
        }
        ByteBuffer bytes = std::move(job.bytes);
        if (m_BigEndian)
            SwapElements(bytes.data(), pending.count, pending.code.elementSize);
        if (pending.code.bytesAsInt32)
            bytes = WidenBytesToInt32(bytes);
        RecordAt(root, pending.path).values[pending.value] =
            Value::MakeArrayFromBytes(pending.code.storedAs, std::move(bytes));
    }
    return parsed;
}

// Decodes a compressed array into bytes, within the ratio and the file's inflate budget.
bool BinaryReader::InflateArray(std::size_t q, std::uint32_t byteLength, std::uint32_t count,
                                const ArrayCode& code, const Record& out, std::size_t recordOffset,
                                ByteBuffer& bytes) {
    auto where = [&] { return Where(recordOffset, out); };
    const std::uint64_t expected = std::uint64_t{count} * code.elementSize;
    if (!CheckInflate(byteLength, count, code, out, recordOffset))
        return false;
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
    if (result != LIBDEFLATE_SUCCESS)
        return Fail(where() + ": a compressed array does not decode");
    return true;
}

}  // namespace

ParseResult ParseBinary(const std::uint8_t* data, std::size_t size) {
    ParseResult result;
    result.document.binary = true;
    if (!IsBinaryFbx(data, size)) {
        result.error = "not a binary FBX file (the \"Kaydara FBX Binary\" signature is missing)";
        return result;
    }
    const BinaryHeader fileHeader = ReadBinaryHeader(data, size);
    if (!fileHeader.complete) {
        result.error = "the file ends inside the binary FBX header";
        return result;
    }
    result.document.bigEndian = fileHeader.bigEndian;
    result.document.version = fileHeader.version;

    BinaryReader reader(data, size, fileHeader.bigEndian, fileHeader.version >= 7500);
    result.ok = reader.ParseTopLevel(kBinaryHeaderSize, result.document.root);
    result.ok = reader.FinishArrays(result.document.root, result.ok);
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
