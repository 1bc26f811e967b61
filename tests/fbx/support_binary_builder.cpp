#include "support_binary_builder.h"

#include <libdeflate.h>

namespace fbxtest {

void BinaryBuilder::String(Node& n, const std::string& s, char type) const {
    Scalar(n, type, static_cast<std::uint32_t>(s.size()));
    n.values.insert(n.values.end(), s.begin(), s.end());
}

void BinaryBuilder::RawArray(Node& n, char type, std::uint32_t count, std::uint32_t encoding,
                             const std::vector<std::uint8_t>& payload) const {
    Scalar(n, type, count);
    Put(n.values, encoding);
    Put(n.values, static_cast<std::uint32_t>(payload.size()));
    n.values.insert(n.values.end(), payload.begin(), payload.end());
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
    for (std::uint64_t field : {std::uint64_t{out.size()}, std::uint64_t{node.count},
                                std::uint64_t{node.values.size()}}) {
        if (Wide())
            Put(fields, field);
        else
            Put(fields, static_cast<std::uint32_t>(field));
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
    for (int i = 0; i < 16; ++i)  // a footer the parser has no use for
        out.push_back(static_cast<std::uint8_t>(0xF0 + i));
    return out;
}

}  // namespace fbxtest
