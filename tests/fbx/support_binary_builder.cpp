#include "support_binary_builder.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>

namespace fbxtest {

template <class T>
void BinaryBuilder::Put(std::vector<std::uint8_t>& out, T v) const {
    std::uint8_t bytes[sizeof(T)];
    std::memcpy(bytes, &v, sizeof(T));
    if (m_BigEndian)
        std::reverse(bytes, bytes + sizeof(T));
    out.insert(out.end(), bytes, bytes + sizeof(T));
}

void BinaryBuilder::Bool(Node& n, bool v) const {
    n.values.push_back('C');
    n.values.push_back(v ? 1 : 0);
    ++n.count;
}
void BinaryBuilder::Char(Node& n, char c) const {
    n.values.push_back('C');
    n.values.push_back(static_cast<std::uint8_t>(c));
    ++n.count;
}
void BinaryBuilder::Int16(Node& n, std::int16_t v) const {
    n.values.push_back('Y');
    Put(n.values, v);
    ++n.count;
}
void BinaryBuilder::Int32(Node& n, std::int32_t v) const {
    n.values.push_back('I');
    Put(n.values, v);
    ++n.count;
}
void BinaryBuilder::Int64(Node& n, std::int64_t v) const {
    n.values.push_back('L');
    Put(n.values, v);
    ++n.count;
}
void BinaryBuilder::Float32(Node& n, float v) const {
    n.values.push_back('F');
    Put(n.values, v);
    ++n.count;
}
void BinaryBuilder::Float64(Node& n, double v) const {
    n.values.push_back('D');
    Put(n.values, v);
    ++n.count;
}
void BinaryBuilder::String(Node& n, const std::string& s, char type) const {
    n.values.push_back(static_cast<std::uint8_t>(type));
    Put(n.values, static_cast<std::uint32_t>(s.size()));
    n.values.insert(n.values.end(), s.begin(), s.end());
    ++n.count;
}

template <class T>
void BinaryBuilder::Array(Node& n, char type, const std::vector<T>& v, bool compress) const {
    std::vector<std::uint8_t> payload;
    for (const T& x : v)
        Put(payload, x);
    if (compress)
        payload = Compress(payload);
    RawArray(n, type, static_cast<std::uint32_t>(v.size()), compress ? 1 : 0, payload);
}

void BinaryBuilder::Int32Array(Node& n, const std::vector<std::int32_t>& v, bool c) const {
    Array(n, 'i', v, c);
}
void BinaryBuilder::Int64Array(Node& n, const std::vector<std::int64_t>& v, bool c) const {
    Array(n, 'l', v, c);
}
void BinaryBuilder::Float32Array(Node& n, const std::vector<float>& v, bool c) const {
    Array(n, 'f', v, c);
}
void BinaryBuilder::Float64Array(Node& n, const std::vector<double>& v, bool c) const {
    Array(n, 'd', v, c);
}
void BinaryBuilder::BoolArray(Node& n, const std::vector<std::uint8_t>& v, bool c) const {
    Array(n, 'b', v, c);
}

void BinaryBuilder::RawArray(Node& n, char type, std::uint32_t count, std::uint32_t encoding,
                             const std::vector<std::uint8_t>& payload) const {
    n.values.push_back(static_cast<std::uint8_t>(type));
    Put(n.values, count);
    Put(n.values, encoding);
    Put(n.values, static_cast<std::uint32_t>(payload.size()));
    n.values.insert(n.values.end(), payload.begin(), payload.end());
    ++n.count;
}

std::vector<std::uint8_t> BinaryBuilder::Compress(const std::vector<std::uint8_t>& bytes) {
    libdeflate_compressor* c = libdeflate_alloc_compressor(6);
    std::vector<std::uint8_t> out(libdeflate_zlib_compress_bound(c, bytes.size()));
    out.resize(libdeflate_zlib_compress(c, bytes.data(), bytes.size(), out.data(), out.size()));
    libdeflate_free_compressor(c);
    return out;
}

void BinaryBuilder::Write(std::vector<std::uint8_t>& out, const Node& node) const {
    const std::size_t start = out.size();
    const std::size_t fieldSize = Wide() ? 8 : 4;
    out.resize(out.size() + 3 * fieldSize);  // filled in below
    out.push_back(static_cast<std::uint8_t>(node.name.size()));
    out.insert(out.end(), node.name.begin(), node.name.end());
    out.insert(out.end(), node.values.begin(), node.values.end());
    for (const Node& child : node.children)
        Write(out, child);
    if (!node.children.empty())
        out.resize(out.size() + 3 * fieldSize + 1, 0);
    std::vector<std::uint8_t> fields;
    if (Wide()) {
        Put(fields, static_cast<std::uint64_t>(out.size()));
        Put(fields, static_cast<std::uint64_t>(node.count));
        Put(fields, static_cast<std::uint64_t>(node.values.size()));
    } else {
        Put(fields, static_cast<std::uint32_t>(out.size()));
        Put(fields, node.count);
        Put(fields, static_cast<std::uint32_t>(node.values.size()));
    }
    std::copy(fields.begin(), fields.end(), out.begin() + static_cast<std::ptrdiff_t>(start));
}

std::vector<std::uint8_t> BinaryBuilder::Build(const std::vector<Node>& top) const {
    static const char kMagic[] = "Kaydara FBX Binary  ";
    std::vector<std::uint8_t> out(kMagic, kMagic + sizeof(kMagic));  // with its NUL
    out.push_back(0x1A);
    out.push_back(m_BigEndian ? 1 : 0);
    Put(out, m_Version);
    for (const Node& node : top)
        Write(out, node);
    out.resize(out.size() + (Wide() ? 25 : 13), 0);
    // A footer the parser has no use for.
    for (int i = 0; i < 16; ++i)
        out.push_back(static_cast<std::uint8_t>(0xF0 + i));
    return out;
}

}  // namespace fbxtest
