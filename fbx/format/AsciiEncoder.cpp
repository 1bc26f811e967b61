// ASCII encoding of the record tree, in the vendor's layout: tab indentation,
// `Name: values {` blocks, "*N { a: ... }" arrays from 7000 on, long lists broken after a
// comma, strings with &quot; for a double quote, raw bytes (embedded images) as quoted base64
// on a line of their own after a comma: `Content: ,` then ` "iVBORw0KGgo..."`.
#include <cctype>
#include <charconv>
#include <cstdint>

#include "fbx/format/Encode.h"

namespace fbx {

namespace {

// Lines of number lists are broken after a comma once they grow past this many characters,
// as the vendor's writer does.
constexpr std::size_t kLineBreakAt = 2048;

class AsciiEncoder {
public:
    explicit AsciiEncoder(std::uint32_t version) : m_Version(version) {}

    std::string Encode(const Record& root) {
        m_Out += "; FBX " + VersionText(m_Version) + " project file\n";
        m_Out += "; ----------------------------------------------------\n\n";
        for (const Record& record : root.children)
            WriteRecord(record, 0);
        return std::move(m_Out);
    }

private:
    void Indent(int depth) { m_Out.append(static_cast<std::size_t>(depth), '\t'); }

    void WriteRecord(const Record& record, int depth) {
        Indent(depth);
        m_Out += record.name;
        m_Out += ": ";
        const bool arrayBlock =
            m_Version >= 7000 && record.values.size() == 1 && record.values[0].IsArray();
        if (arrayBlock) {
            const Value& array = record.values[0];
            m_Out += "*" + std::to_string(array.Count()) + " {\n";
            Indent(depth + 1);
            m_Out += "a: ";
            m_LineStart = m_Out.size();
            WriteArrayElements(array, false);
            m_Out += "\n";
            Indent(depth);
            m_Out += "} \n";
            return;
        }
        m_LineStart = m_Out.size();
        bool first = true;
        for (const Value& value : record.values) {
            if (value.IsArray()) {
                WriteArrayElements(value, !first);
                if (value.Count() > 0)
                    first = false;
                continue;
            }
            if (value.Type() == ValueType::Raw) {
                m_Out += ",\n \"";
                m_LineStart = m_Out.size() - 2;
                AppendBase64(value.AsText());
                m_Out += '"';
                first = false;
                continue;
            }
            if (!first) {
                m_Out += ',';
                BreakLongLine();
            }
            if (value.Type() == ValueType::String && !first)
                m_Out += ' ';
            WriteScalar(value);
            first = false;
        }
        if (!record.children.empty() || record.values.empty()) {
            m_Out += " {\n";
            for (const Record& child : record.children)
                WriteRecord(child, depth + 1);
            Indent(depth);
            m_Out += "}\n";
        } else {
            m_Out += "\n";
        }
    }

    // Called right after a comma: long lists continue on the next line.
    void BreakLongLine() {
        if (m_Out.size() - m_LineStart > kLineBreakAt) {
            m_Out += '\n';
            m_LineStart = m_Out.size();
        }
    }

    void WriteArrayElements(const Value& array, bool leadingComma) {
        const std::size_t n = array.Count();
        for (std::size_t i = 0; i < n; ++i) {
            if (i > 0 || leadingComma) {
                m_Out += ',';
                BreakLongLine();
            }
            switch (array.Type()) {
                case ValueType::Float32Array:
                case ValueType::Float64Array:
                    m_Out += FormatDouble(array.DoubleAt(i));
                    break;
                default:
                    m_Out += std::to_string(array.IntAt(i));
                    break;
            }
        }
    }

    void WriteScalar(const Value& value) {
        switch (value.Type()) {
            case ValueType::Bool: {
                // Binary files keep letters such as 'T' or 'Y' in bool slots; print them back.
                std::int64_t v = value.AsInt();
                if (v > 1 && v < 128 && std::isalpha(static_cast<int>(v))) {
                    m_Out += static_cast<char>(v);
                } else {
                    m_Out += v ? '1' : '0';
                }
                break;
            }
            case ValueType::Int16:
            case ValueType::Int32:
            case ValueType::Int64:
                m_Out += std::to_string(value.AsInt());
                break;
            // Floats too are printed as the double they widen to, so nothing is lost.
            case ValueType::Float32:
            case ValueType::Float64:
                m_Out += FormatDouble(value.AsDouble());
                break;
            case ValueType::Word:
                m_Out += value.AsText();
                break;
            default:
                WriteQuoted(value.AsText());
                break;
        }
    }

    void AppendBase64(const std::string& bytes) {
        static const char kAlphabet[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        m_Out.reserve(m_Out.size() + (bytes.size() + 2) / 3 * 4);
        std::size_t i = 0;
        auto at = [&bytes](std::size_t k) {
            return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[k]));
        };
        for (; i + 3 <= bytes.size(); i += 3) {
            const std::uint32_t bits = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
            m_Out += kAlphabet[bits >> 18 & 63];
            m_Out += kAlphabet[bits >> 12 & 63];
            m_Out += kAlphabet[bits >> 6 & 63];
            m_Out += kAlphabet[bits & 63];
        }
        const std::size_t rest = bytes.size() - i;
        if (rest > 0) {
            const std::uint32_t bits = at(i) << 16 | (rest == 2 ? at(i + 1) << 8 : 0);
            m_Out += kAlphabet[bits >> 18 & 63];
            m_Out += kAlphabet[bits >> 12 & 63];
            m_Out += rest == 2 ? kAlphabet[bits >> 6 & 63] : '=';
            m_Out += '=';
        }
    }

    void WriteQuoted(const std::string& text) {
        m_Out += '"';
        for (char c : text) {
            if (c == '"') {
                m_Out += "&quot;";
            } else {
                m_Out += c;
            }
        }
        m_Out += '"';
    }

    std::uint32_t m_Version;
    std::string m_Out;
    std::size_t m_LineStart = 0;
};

// Infinities and NaN have no portable FBX spelling (readers would take the letters for a
// word), so they are written as the nearest finite value, NaN as 0.
double Finite(double v) {
    if (v != v)
        return 0.0;
    if (v > 1.7976931348623157e308)
        return 1.7976931348623157e308;
    if (v < -1.7976931348623157e308)
        return -1.7976931348623157e308;
    return v;
}

}  // namespace

std::string FormatDouble(double value) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, Finite(value));
    return std::string(buffer, result.ptr);
}

std::string VersionText(std::uint32_t version) {
    return std::to_string(version / 1000) + "." + std::to_string(version / 100 % 10) + "." +
           std::to_string(version % 100);
}

std::string WriteAscii(const Document& document) {
    std::uint32_t version = document.version ? document.version : 7500;
    return AsciiEncoder(version).Encode(document.root);
}

}  // namespace fbx
