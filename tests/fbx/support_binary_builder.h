// Test helper: builds binary FBX files byte by byte, so tests can state exactly what a file
// holds (either byte order, 32- or 64-bit record headers, raw or compressed arrays).
#pragma once

#include <cstdint>
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

    BinaryBuilder(std::uint32_t version, bool bigEndian = false)
        : m_Version(version), m_BigEndian(bigEndian) {}

    // Value encoders: each appends one value to a node.
    void Bool(Node& n, bool v) const;
    void Char(Node& n, char c) const;  // a 'C' value holding a letter
    void Int16(Node& n, std::int16_t v) const;
    void Int32(Node& n, std::int32_t v) const;
    void Int64(Node& n, std::int64_t v) const;
    void Float32(Node& n, float v) const;
    void Float64(Node& n, double v) const;
    void String(Node& n, const std::string& s, char type = 'S') const;
    // Arrays; `compress` stores them as a zlib stream.
    void Int32Array(Node& n, const std::vector<std::int32_t>& v, bool compress = false) const;
    void Int64Array(Node& n, const std::vector<std::int64_t>& v, bool compress = false) const;
    void Float32Array(Node& n, const std::vector<float>& v, bool compress = false) const;
    void Float64Array(Node& n, const std::vector<double>& v, bool compress = false) const;
    void BoolArray(Node& n, const std::vector<std::uint8_t>& v, bool compress = false) const;
    // An array header with any count, encoding and payload, for damaged files.
    void RawArray(Node& n, char type, std::uint32_t count, std::uint32_t encoding,
                  const std::vector<std::uint8_t>& payload) const;

    // The whole file: header, the records, the closing null record and a short footer.
    std::vector<std::uint8_t> Build(const std::vector<Node>& top) const;

    // zlib stream of the bytes.
    static std::vector<std::uint8_t> Compress(const std::vector<std::uint8_t>& bytes);

    bool Wide() const { return m_Version >= 7500; }

private:
    template <class T>
    void Put(std::vector<std::uint8_t>& out, T v) const;
    template <class T>
    void Array(Node& n, char type, const std::vector<T>& v, bool compress) const;
    void Write(std::vector<std::uint8_t>& out, const Node& node) const;

    std::uint32_t m_Version;
    bool m_BigEndian;
};

}  // namespace fbxtest
