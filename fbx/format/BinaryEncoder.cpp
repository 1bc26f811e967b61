// Binary encoding of the record tree: header, records with 13- or 25-byte headers, typed
// arrays (deflated when large), null records closing child lists, and the closing footer.
#include <libdeflate.h>

#include <cstring>
#include <memory>

#include "fbx/format/Encode.h"

namespace fbx {

namespace {

constexpr char kMagic[] = "Kaydara FBX Binary  ";  // 20 characters, then NUL and 0x1A
// Footer bytes as the vendor's tools write them: an id derived from the file's time stamp
// (we write a fixed one), padding, the version again and a closing magic.
constexpr std::uint8_t kFooterId[16] = {0xfa, 0xbc, 0xab, 0x09, 0xd0, 0xc8, 0xd4, 0x66,
                                        0xb1, 0x76, 0xfb, 0x83, 0x1c, 0xf7, 0x26, 0x7e};
constexpr std::uint8_t kFooterMagic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                           0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};

struct CompressorDeleter {
    void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};

class BinaryEncoder {
public:
    BinaryEncoder(std::uint32_t version, const BinaryWriteOptions& options)
        : m_Version(version), m_Options(options), m_Wide(version >= 7500) {}

    std::vector<std::uint8_t> Encode(const Record& root) {
        m_Out.assign(23, 0);
        std::memcpy(m_Out.data(), kMagic, 20);
        m_Out[21] = 0x1a;
        m_Out[22] = m_Options.bigEndian ? 1 : 0;
        Put(m_Version, 4);
        for (const Record& record : root.children)
            WriteRecord(record);
        PutNullRecord();
        if (m_Options.footer)
            WriteFooter();
        return std::move(m_Out);
    }

private:
    // Appends the low `size` bytes of v in the file's byte order.
    void Put(std::uint64_t v, int size) {
        for (int i = 0; i < size; ++i) {
            int shift = m_Options.bigEndian ? (size - 1 - i) * 8 : i * 8;
            m_Out.push_back(static_cast<std::uint8_t>(v >> shift));
        }
    }
    void PutAt(std::size_t at, std::uint64_t v, int size) {
        for (int i = 0; i < size; ++i) {
            int shift = m_Options.bigEndian ? (size - 1 - i) * 8 : i * 8;
            m_Out[at + i] = static_cast<std::uint8_t>(v >> shift);
        }
    }
    int OffsetSize() const { return m_Wide ? 8 : 4; }
    void PutNullRecord() { m_Out.insert(m_Out.end(), m_Wide ? 25 : 13, 0); }

    void CheckOffset(std::uint64_t offset) const {
        if (!m_Wide && offset > 0xffffffffu) {
            throw WriteError(
                "the file is larger than 4 GiB, which versions below 7500 cannot "
                "address; write version 7500 instead");
        }
    }

    void WriteRecord(const Record& record) {
        if (record.name.size() > 255) {
            throw WriteError("record name longer than 255 bytes: " + record.name.substr(0, 40) +
                             "...");
        }
        const std::size_t start = m_Out.size();
        m_Out.insert(m_Out.end(), 3 * OffsetSize(), 0);  // end offset, value count, value bytes
        m_Out.push_back(static_cast<std::uint8_t>(record.name.size()));
        m_Out.insert(m_Out.end(), record.name.begin(), record.name.end());
        const std::size_t valuesStart = m_Out.size();
        std::uint64_t valueCount = 0;
        for (const Value& value : record.values)
            valueCount += WriteValue(value);
        const std::uint64_t valueBytes = m_Out.size() - valuesStart;
        for (const Record& child : record.children)
            WriteRecord(child);
        // Records with children, and records with nothing at all, close with a null record,
        // as the vendor's files do for every "{ }" block.
        if (!record.children.empty() || record.values.empty())
            PutNullRecord();
        CheckOffset(m_Out.size());
        CheckOffset(valueBytes);
        CheckOffset(valueCount);
        PutAt(start, m_Out.size(), OffsetSize());
        PutAt(start + OffsetSize(), valueCount, OffsetSize());
        PutAt(start + 2 * OffsetSize(), valueBytes, OffsetSize());
    }

    // Writes one value; returns how many file values it became (arrays may be expanded).
    std::uint64_t WriteValue(const Value& value) {
        switch (value.Type()) {
            case ValueType::Bool:
                m_Out.push_back('C');
                m_Out.push_back(static_cast<std::uint8_t>(value.AsInt()));
                return 1;
            case ValueType::Int16:
                m_Out.push_back('Y');
                Put(static_cast<std::uint64_t>(value.AsInt()), 2);
                return 1;
            case ValueType::Int32:
                m_Out.push_back('I');
                Put(static_cast<std::uint64_t>(value.AsInt()), 4);
                return 1;
            case ValueType::Int64:
                m_Out.push_back('L');
                Put(static_cast<std::uint64_t>(value.AsInt()), 8);
                return 1;
            case ValueType::Float32: {
                float f = static_cast<float>(value.AsDouble());
                std::uint32_t bits;
                std::memcpy(&bits, &f, 4);
                m_Out.push_back('F');
                Put(bits, 4);
                return 1;
            }
            case ValueType::Float64: {
                double d = value.AsDouble();
                std::uint64_t bits;
                std::memcpy(&bits, &d, 8);
                m_Out.push_back('D');
                Put(bits, 8);
                return 1;
            }
            case ValueType::Word:
                // Bare letters (key flags, "Shading: T") are single characters in binary files.
                if (value.AsText().size() == 1) {
                    m_Out.push_back('C');
                    m_Out.push_back(static_cast<std::uint8_t>(value.AsText()[0]));
                    return 1;
                }
                WriteText('S', value.AsText());
                return 1;
            case ValueType::String:
                WriteText('S', value.AsText());
                return 1;
            case ValueType::Raw:
                WriteText('R', value.AsText());
                return 1;
            default:
                return WriteArray(value);
        }
    }

    void WriteText(char code, const std::string& text) {
        CheckOffset(text.size());
        if (text.size() > 0xffffffffu)
            throw WriteError("a string longer than 4 GiB");
        m_Out.push_back(static_cast<std::uint8_t>(code));
        Put(text.size(), 4);
        m_Out.insert(m_Out.end(), text.begin(), text.end());
    }

    std::uint64_t WriteArray(const Value& value) {
        const std::size_t count = value.Count();
        if (m_Version < 7000 && m_Options.scalarListsBefore7000) {
            for (std::size_t i = 0; i < count; ++i)
                WriteValue(ElementAsScalar(value, i));
            return count;
        }
        char code = 'd';
        int size = 8;
        switch (value.Type()) {
            case ValueType::BoolArray:
                code = 'b';
                size = 1;
                break;
            case ValueType::Int32Array:
                code = 'i';
                size = 4;
                break;
            case ValueType::Int64Array:
                code = 'l';
                size = 8;
                break;
            case ValueType::Float32Array:
                code = 'f';
                size = 4;
                break;
            default:
                break;
        }
        if (count > 0xffffffffu / static_cast<unsigned>(size)) {
            throw WriteError("an array too large for the 32-bit length fields");
        }
        std::vector<std::uint8_t> raw;
        raw.reserve(count * size);
        const std::uint8_t* source = ArrayBytes(value);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t* element = source + i * size;
            if (m_Options.bigEndian) {
                for (int b = size - 1; b >= 0; --b)
                    raw.push_back(element[b]);
            } else {
                raw.insert(raw.end(), element, element + size);
            }
        }
        m_Out.push_back(static_cast<std::uint8_t>(code));
        Put(count, 4);
        std::vector<std::uint8_t> packed;
        if (m_Options.compress && raw.size() > m_Options.compressAboveBytes)
            packed = Deflate(raw);
        if (!packed.empty() && packed.size() < raw.size()) {
            Put(1, 4);
            Put(packed.size(), 4);
            m_Out.insert(m_Out.end(), packed.begin(), packed.end());
        } else {
            Put(0, 4);
            Put(raw.size(), 4);
            m_Out.insert(m_Out.end(), raw.begin(), raw.end());
        }
        return 1;
    }

    static const std::uint8_t* ArrayBytes(const Value& value) {
        switch (value.Type()) {
            case ValueType::BoolArray:
                return value.Bools();
            case ValueType::Int32Array:
                return reinterpret_cast<const std::uint8_t*>(value.Int32s());
            case ValueType::Int64Array:
                return reinterpret_cast<const std::uint8_t*>(value.Int64s());
            case ValueType::Float32Array:
                return reinterpret_cast<const std::uint8_t*>(value.Float32s());
            default:
                return reinterpret_cast<const std::uint8_t*>(value.Float64s());
        }
    }

    static Value ElementAsScalar(const Value& value, std::size_t i) {
        switch (value.Type()) {
            case ValueType::BoolArray:
                return Value::MakeBool(value.IntAt(i) != 0);
            case ValueType::Int32Array:
                return Value::MakeInt(value.IntAt(i), ValueType::Int32);
            case ValueType::Int64Array:
                return Value::MakeInt(value.IntAt(i), ValueType::Int64);
            case ValueType::Float32Array:
                return Value::MakeFloat(value.DoubleAt(i), ValueType::Float32);
            default:
                return Value::MakeFloat(value.DoubleAt(i), ValueType::Float64);
        }
    }

    std::vector<std::uint8_t> Deflate(const std::vector<std::uint8_t>& raw) {
        if (!m_Compressor) {
            int level = m_Options.compressionLevel;
            if (level < 1)
                level = 1;
            if (level > 12)
                level = 12;
            m_Compressor.reset(libdeflate_alloc_compressor(level));
            if (!m_Compressor)
                return {};
        }
        std::vector<std::uint8_t> packed(
            libdeflate_zlib_compress_bound(m_Compressor.get(), raw.size()));
        std::size_t n = libdeflate_zlib_compress(m_Compressor.get(), raw.data(), raw.size(),
                                                 packed.data(), packed.size());
        packed.resize(n);  // 0 when it did not fit: the caller then writes the array raw
        return packed;
    }

    void WriteFooter() {
        m_Out.insert(m_Out.end(), kFooterId, kFooterId + 16);
        // Pad to a 16-byte boundary; a full 16 bytes when already aligned.
        std::size_t pad = 16 - (m_Out.size() % 16);
        m_Out.insert(m_Out.end(), pad, 0);
        Put(0, 4);
        Put(m_Version, 4);
        m_Out.insert(m_Out.end(), 120, 0);
        m_Out.insert(m_Out.end(), kFooterMagic, kFooterMagic + 16);
    }

    std::uint32_t m_Version;
    BinaryWriteOptions m_Options;
    bool m_Wide;
    std::vector<std::uint8_t> m_Out;
    std::unique_ptr<libdeflate_compressor, CompressorDeleter> m_Compressor;
};

}  // namespace

std::vector<std::uint8_t> WriteBinary(const Document& document, const BinaryWriteOptions& options) {
    std::uint32_t version = document.version ? document.version : 7500;
    return BinaryEncoder(version, options).Encode(document.root);
}

std::string ObjectName(std::string_view objectClass, std::string_view name, bool binary) {
    std::string out;
    if (binary) {
        out.append(name);
        out.push_back('\0');
        out.push_back('\x01');
        out.append(objectClass);
    } else {
        out.append(objectClass);
        out.append("::");
        out.append(name);
    }
    return out;
}

}  // namespace fbx
