// Test helper: builds binary FBX files byte by byte, so tests can state exactly what a file
// holds (either byte order, 32- or 64-bit record headers, raw or compressed arrays, and
// damage no encoder would write).
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace fbxtest {

class BinaryBuilder {
public:
    struct Node {
        Node() = default;
        explicit Node(std::string n) : name(std::move(n)) {}
        std::string name;
        std::vector<std::uint8_t> values;  // encoded values
        std::uint32_t count = 0;           // number of encoded values
        std::vector<Node> children;
    };

    explicit BinaryBuilder(std::uint32_t version, bool bigEndian = false)
        : m_Version(version), m_BigEndian(bigEndian) {}

    // One scalar of type code 'C' (a bool or a letter), 'Y', 'I', 'L', 'F' or 'D'; the C++
    // type of v gives the width.
    template <class T>
    void Scalar(Node& n, char type, T v) const {
        n.values.push_back(static_cast<std::uint8_t>(type));
        Put(n.values, v);
        ++n.count;
    }
    // A text ('S') or raw bytes ('R').
    void String(Node& n, const std::string& s, char type = 'S') const;
    // An array of type code 'b', 'c', 'i', 'l', 'f' or 'd', raw or as a zlib stream.
    template <class T>
    void Array(Node& n, char type, const std::vector<T>& v, bool compress = false) const {
        std::vector<std::uint8_t> payload;
        for (const T& x : v)
            Put(payload, x);
        RawArray(n, type, static_cast<std::uint32_t>(v.size()), compress ? 1 : 0,
                 compress ? Compress(payload) : payload);
    }
    // An array header with any count, encoding and payload, for damaged files.
    void RawArray(Node& n, char type, std::uint32_t count, std::uint32_t encoding,
                  const std::vector<std::uint8_t>& payload) const;

    // The whole file: header, the records, the closing null record and a short footer.
    std::vector<std::uint8_t> Build(const std::vector<Node>& top) const;

    // zlib stream of the bytes.
    static std::vector<std::uint8_t> Compress(const std::vector<std::uint8_t>& bytes);

private:
    template <class T>
    void Put(std::vector<std::uint8_t>& out, T v) const {
        std::uint8_t bytes[sizeof(T)];
        std::memcpy(bytes, &v, sizeof(T));
        if (m_BigEndian)
            std::reverse(bytes, bytes + sizeof(T));
        out.insert(out.end(), bytes, bytes + sizeof(T));
    }
    void Write(std::vector<std::uint8_t>& out, const Node& node) const;
    bool Wide() const { return m_Version >= 7500; }

    std::uint32_t m_Version;
    bool m_BigEndian;
};

}  // namespace fbxtest
