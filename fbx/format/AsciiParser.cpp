// The ASCII FBX parser: `Name: value, value, ... { children }` records, comments, quoted
// strings, bare words, numbers and the `*N { a: ... }` arrays of 7000+ files.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fbx/format/Parse.h"
#include "fbx/format/ParseLimits.h"

namespace fbx {

namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
// Characters that can make up a record name or a bare word.
bool IsNameChar(char c) {
    return IsAlpha(c) || IsDigit(c) || c == '_' || c == '|' || c == '-' || c == '.' ||
           static_cast<unsigned char>(c) >= 0x80;
}
// Characters that can make up a number, including "-1.#IND" style spellings.
bool IsNumberChar(char c) {
    return IsDigit(c) || IsAlpha(c) || c == '.' || c == '-' || c == '+' || c == '#';
}

// What a byte is to the scan of a run of plain numbers: 0 ends the run, 1 can be part of a
// number or the space between them, 2 is a comma.
constexpr std::array<std::uint8_t, 256> kRunBytes = [] {
    std::array<std::uint8_t, 256> kinds{};
    for (const char c : std::string_view("0123456789.-+eE \t\r\n"))
        kinds[static_cast<unsigned char>(c)] = 1;
    kinds[static_cast<unsigned char>(',')] = 2;
    return kinds;
}();

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z')
            x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = static_cast<char>(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return true;
}

// Decodes base64 text (the way ASCII files write embedded raw data); false if it is not.
bool DecodeBase64(std::string_view text, std::string& out) {
    auto sextet = [](char c) -> int {
        if (c >= 'A' && c <= 'Z')
            return c - 'A';
        if (c >= 'a' && c <= 'z')
            return c - 'a' + 26;
        if (c >= '0' && c <= '9')
            return c - '0' + 52;
        if (c == '+')
            return 62;
        if (c == '/')
            return 63;
        return -1;
    };
    out.clear();
    out.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    std::size_t i = 0;
    for (; i < text.size() && text[i] != '='; ++i) {
        const int v = sextet(text[i]);
        if (v < 0)
            return false;
        bits = (bits << 6) | static_cast<std::uint32_t>(v);
        if (++count == 4) {
            out.push_back(static_cast<char>((bits >> 16) & 0xff));
            out.push_back(static_cast<char>((bits >> 8) & 0xff));
            out.push_back(static_cast<char>(bits & 0xff));
            bits = 0;
            count = 0;
        }
    }
    for (; i < text.size(); ++i) {
        if (text[i] != '=')
            return false;
    }
    if (count == 1)
        return false;
    if (count == 2)
        out.push_back(static_cast<char>((bits >> 4) & 0xff));
    if (count == 3) {
        out.push_back(static_cast<char>((bits >> 10) & 0xff));
        out.push_back(static_cast<char>((bits >> 2) & 0xff));
    }
    return true;
}

// One parsed value before it becomes a Value: numbers stay unboxed so long lists can be
// packed into one array without a heap allocation per element.
struct Token {
    enum Kind : std::uint8_t { Int, Float, String, Word } kind = Int;
    bool hasEntity = false;  // a String holding "&quot;"
    std::int64_t i = 0;
    double d = 0.0;
    const char* text = nullptr;
    std::size_t length = 0;
};

// The numbers of an array, 8 bytes each, straight into the bytes its value will keep:
// 64-bit integers until the first decimal, which turns those before it into doubles. The
// capacity is fixed at the start; numbers past it are only counted.
class ArrayBytes {
public:
    explicit ArrayBytes(std::size_t capacity) : m_Bytes(capacity * 8) {}

    void Add(const Token& token) {
        if (m_Count * 8 >= m_Bytes.size()) {
            ++m_Count;
            return;
        }
        std::uint8_t* at = m_Bytes.data() + m_Count++ * 8;
        if (token.kind == Token::Float && !m_Float)
            ToDoubles();
        if (m_Float) {
            const double v = token.kind == Token::Float ? token.d : static_cast<double>(token.i);
            std::memcpy(at, &v, 8);
            return;
        }
        std::memcpy(at, &token.i, 8);
        m_Fits32 = m_Fits32 && token.i >= std::numeric_limits<std::int32_t>::min() &&
                   token.i <= std::numeric_limits<std::int32_t>::max();
        m_FloatBits = m_FloatBits && token.i >= std::numeric_limits<std::int32_t>::min() &&
                      token.i <= std::numeric_limits<std::uint32_t>::max();
    }
    std::size_t Count() const { return m_Count; }

    // The value, as the binary reader would type it: doubles when any number was a decimal,
    // else 32-bit integers when all fit, else 64-bit ones. With floatBits, integers that all
    // fit 32 bits are taken as the bits of floats (how ASCII files print float32 arrays).
    Value Take(bool floatBits) {
        const std::size_t n = std::min(m_Count, m_Bytes.size() / 8);
        if (m_Float) {
            m_Bytes.resize(n * 8);
            return Value::MakeArrayFromBytes(ValueType::Float64Array, std::move(m_Bytes));
        }
        const bool asFloats = floatBits && m_FloatBits;
        if (!asFloats && !m_Fits32) {
            m_Bytes.resize(n * 8);
            return Value::MakeArrayFromBytes(ValueType::Int64Array, std::move(m_Bytes));
        }
        // Narrowed in place, front to back: each 4-byte slot lies at or before its source.
        for (std::size_t i = 0; i < n; ++i) {
            std::int64_t v;
            std::memcpy(&v, m_Bytes.data() + i * 8, 8);
            const auto bits = static_cast<std::uint32_t>(v);
            std::memcpy(m_Bytes.data() + i * 4, &bits, 4);
        }
        m_Bytes.resize(n * 4);
        m_Bytes.shrink_to_fit();
        return Value::MakeArrayFromBytes(asFloats ? ValueType::Float32Array : ValueType::Int32Array,
                                         std::move(m_Bytes));
    }

private:
    void ToDoubles() {
        for (std::size_t i = 0; i + 1 < m_Count; ++i) {
            std::int64_t v;
            std::memcpy(&v, m_Bytes.data() + i * 8, 8);
            const double d = static_cast<double>(v);
            std::memcpy(m_Bytes.data() + i * 8, &d, 8);
        }
        m_Float = true;
    }

    ByteBuffer m_Bytes;
    std::size_t m_Count = 0;
    bool m_Float = false;
    bool m_Fits32 = true;
    bool m_FloatBits = true;
};

class AsciiReader {
public:
    AsciiReader(const char* begin, const char* end) : m_Begin(begin), m_End(end), m_Cur(begin) {}

    bool ParseTopLevel(Record& root);
    const std::string& Error() const { return m_Error; }

private:
    std::size_t LineAt(const char* p) const {
        return 1 + static_cast<std::size_t>(std::count(m_Begin, p, '\n'));
    }
    std::string Line(const char* p) const { return "line " + std::to_string(LineAt(p)); }
    bool Fail(std::string message) {
        m_Error = std::move(message);
        return false;
    }
    std::string Describe(const char* p) const {
        if (p >= m_End)
            return "the end of the file";
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c >= 0x20 && c < 0x7f)
            return std::string("'") + static_cast<char>(c) + "'";
        static const char kHex[] = "0123456789abcdef";
        return std::string("byte 0x") + kHex[c >> 4] + kHex[c & 15];
    }

    void SkipSpace() {
        while (m_Cur < m_End) {
            const char c = *m_Cur;
            if (IsSpace(c)) {
                ++m_Cur;
            } else if (c == ';') {
                const void* nl = std::memchr(m_Cur, '\n', static_cast<std::size_t>(m_End - m_Cur));
                m_Cur = nl ? static_cast<const char*>(nl) + 1 : m_End;
            } else {
                break;
            }
        }
    }

    // True when the text at the cursor is `Name:` (the next record), not a bare word value.
    bool NameAhead() const {
        const char* p = m_Cur;
        while (p < m_End && IsNameChar(*p))
            ++p;
        if (p == m_Cur)
            return false;
        while (p < m_End && (*p == ' ' || *p == '\t'))
            ++p;
        return p < m_End && *p == ':';
    }

    bool ParseName(std::string& name);
    bool ParseList(Record& parent, int depth, const char* openBrace);
    bool ParseBody(Record& record, int depth);
    bool ParseToken(Token& token);
    bool ParseNumber(Token& token);
    std::string_view ScanNumber();
    void SkipNanPayload(const char* start);
    bool ReadInteger(std::string_view text, Token& token);
    bool ReadDecimal(std::string_view text, Token& token);
    bool ReadRuntimeSpecial(std::string_view text, Token& token);
    bool ParseArray(Record& record, const char* start);
    bool QuickNumber(Token& token);
    bool ParseNumberRun(Record& record);
    bool NextSlot();
    void StoreValues(Record& record);
    void StoreArray(Record& record);

    const char* m_Begin;
    const char* m_End;
    const char* m_Cur;
    std::vector<Token> m_Tokens;
    std::string m_Error;
};

bool AsciiReader::ParseTopLevel(Record& root) {
    // A UTF-8 byte order mark is not part of the text.
    if (m_End - m_Cur >= 3 && std::memcmp(m_Cur, "\xEF\xBB\xBF", 3) == 0)
        m_Cur += 3;
    return ParseList(root, 0, nullptr);
}

bool AsciiReader::ParseName(std::string& name) {
    const char* start = m_Cur;
    while (m_Cur < m_End && IsNameChar(*m_Cur))
        ++m_Cur;
    if (m_Cur == start) {
        return Fail("expected a record name at " + Line(start) + " but found " + Describe(start));
    }
    name.assign(start, static_cast<std::size_t>(m_Cur - start));
    while (m_Cur < m_End && (*m_Cur == ' ' || *m_Cur == '\t'))
        ++m_Cur;
    if (m_Cur >= m_End || *m_Cur != ':') {
        return Fail("expected ':' after the record name \"" + name + "\" at " + Line(start) +
                    " but found " + Describe(m_Cur));
    }
    ++m_Cur;
    return true;
}

bool AsciiReader::ParseList(Record& parent, int depth, const char* openBrace) {
    for (;;) {
        SkipSpace();
        if (m_Cur >= m_End) {
            if (!openBrace)
                return true;
            return Fail("the '{' of record \"" + parent.name + "\" at " + Line(openBrace) +
                        " is never closed");
        }
        if (*m_Cur == '}') {
            if (!openBrace)
                return Fail("unexpected '}' at " + Line(m_Cur));
            ++m_Cur;
            return true;
        }
        parent.children.emplace_back();
        Record& child = parent.children.back();
        if (!ParseName(child.name))
            return false;
        if (!ParseBody(child, depth + 1))
            return false;
    }
}

bool AsciiReader::ParseBody(Record& record, int depth) {
    if (depth > kMaxNesting) {
        return Fail("records are nested deeper than " + std::to_string(kMaxNesting) +
                    " levels at " + Line(m_Cur));
    }
    SkipSpace();
    if (m_Cur >= m_End || *m_Cur == '}')
        return true;
    if (*m_Cur == '*')
        return ParseArray(record, m_Cur);
    if (*m_Cur != '{' && !NameAhead() && !ParseNumberRun(record)) {
        m_Tokens.clear();
        for (;;) {
            if (*m_Cur != ',') {  // an empty slot, as in "Content: ,", holds nothing
                m_Tokens.emplace_back();
                if (!ParseToken(m_Tokens.back()))
                    return false;
            }
            if (!NextSlot())
                break;
        }
        StoreValues(record);
    }
    if (m_Cur < m_End && *m_Cur == '{') {
        const char* brace = m_Cur++;
        return ParseList(record, depth, brace);
    }
    return true;
}

// The text of a number at the cursor: digits, signs, points, exponents and the letters of
// spellings such as "1.#INF" or "-nan(ind)".
std::string_view AsciiReader::ScanNumber() {
    const char* start = m_Cur;
    while (m_Cur < m_End && IsNumberChar(*m_Cur))
        ++m_Cur;
    SkipNanPayload(start);
    return std::string_view(start, static_cast<std::size_t>(m_Cur - start));
}

// C runtimes print some not-a-numbers as "nan(ind)" or "-nan(snan)": after a "nan", take a
// parenthesised run of letters, digits and underscores as part of it.
void AsciiReader::SkipNanPayload(const char* start) {
    if (m_Cur - start < 3 || !EqualsNoCase(std::string_view(m_Cur - 3, 3), "nan") ||
        m_Cur >= m_End || *m_Cur != '(') {
        return;
    }
    const char* p = m_Cur + 1;
    while (p < m_End && (IsAlpha(*p) || IsDigit(*p) || *p == '_'))
        ++p;
    if (p < m_End && *p == ')')
        m_Cur = p + 1;
}

bool AsciiReader::ParseNumber(Token& token) {
    if (QuickNumber(token))
        return true;
    const char* start = m_Cur;
    std::string_view text = ScanNumber();
    if (!text.empty() && text[0] == '+')
        text.remove_prefix(1);
    if (ReadInteger(text, token) || ReadDecimal(text, token) || ReadRuntimeSpecial(text, token))
        return true;
    return Fail("\"" + std::string(start, static_cast<std::size_t>(m_Cur - start)) + "\" at " +
                Line(start) + " is not a number");
}

// Past the comma after a value to the next slot of a record's value list; false when the
// list ends there (no comma, or a comma before the record's braces or the end of the text).
bool AsciiReader::NextSlot() {
    SkipSpace();
    if (m_Cur >= m_End || *m_Cur != ',')
        return false;
    ++m_Cur;
    SkipSpace();
    return m_Cur < m_End && *m_Cur != '{' && *m_Cur != '}';
}

// A long run of plain numbers ("Vertices: 0,1.5,-2,...", as 6100 files write arrays) straight
// into an array value, as the token loop of ParseBody would store it. False, with the cursor
// back where it was, for anything else: short lists, words, strings, unusual spellings.
bool AsciiReader::ParseNumberRun(Record& record) {
    const char* start = m_Cur;
    const char c = *m_Cur;
    if (!IsDigit(c) && c != '-' && c != '.')
        return false;
    // The stretch only numbers can fill, and how many numbers it holds at most.
    std::size_t commas = 0;
    const char* runEnd = m_Cur;
    for (; runEnd < m_End; ++runEnd) {
        const std::uint8_t kind = kRunBytes[static_cast<unsigned char>(*runEnd)];
        if (kind == 0)
            break;
        commas += kind >> 1;
    }
    if (commas < kPackThreshold)
        return false;
    ArrayBytes numbers(commas + 1);
    for (;;) {
        if (*m_Cur != ',') {  // an empty slot holds nothing
            Token token;
            if (m_Cur >= runEnd || !QuickNumber(token) || m_Cur > runEnd) {
                m_Cur = start;
                return false;
            }
            numbers.Add(token);
        }
        if (!NextSlot())
            break;
    }
    if (numbers.Count() <= kPackThreshold) {
        m_Cur = start;
        return false;
    }
    record.values.push_back(numbers.Take(false));
    return true;
}

// The common spellings ("12", "-0.5", "1e-05") read straight from the text, in one pass: true
// when the number ends where the text's number characters end, as the careful reading below
// would take it. Anything else (a "+", an out-of-range value, "1.#INF") is left to that.
bool AsciiReader::QuickNumber(Token& token) {
    const char* first = m_Cur;
    const auto ends = [this](const char* at) { return at == m_End || !IsNumberChar(*at); };
    const auto integer = std::from_chars(first, m_End, token.i);
    if (integer.ec == std::errc() && ends(integer.ptr)) {
        token.kind = Token::Int;
        m_Cur = integer.ptr;
        return true;
    }
    const auto decimal = std::from_chars(first, m_End, token.d);
    if (decimal.ec == std::errc() && decimal.ptr > first && ends(decimal.ptr)) {
        token.kind = Token::Float;
        m_Cur = decimal.ptr;
        return true;
    }
    return false;
}

// Only digits after an optional minus sign, within 64 bits.
bool AsciiReader::ReadInteger(std::string_view text, Token& token) {
    const std::size_t digitsFrom = !text.empty() && text[0] == '-' ? 1 : 0;
    for (std::size_t i = digitsFrom; i < text.size(); ++i) {
        if (!IsDigit(text[i]))
            return false;
    }
    const char* last = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), last, token.i);
    if (ec != std::errc() || ptr != last)
        return false;
    token.kind = Token::Int;
    return true;
}

// Decimals and exponents, and "inf", "infinity", "nan", "nan(...)" in any letter case.
bool AsciiReader::ReadDecimal(std::string_view text, Token& token) {
    const char* first = text.data();
    const char* last = first + text.size();
    auto [ptr, ec] = std::from_chars(first, last, token.d);
    token.kind = Token::Float;
    if (ptr != last || (ec != std::errc() && ec != std::errc::result_out_of_range))
        return false;
    if (ec == std::errc::result_out_of_range) {
        // Too large (or too small) for a double: keep the sign and the magnitude's end.
        const bool negative = *first == '-';
        const bool tiny = text.find_first_of("eE") != std::string_view::npos &&
                          text.find("e-") != std::string_view::npos;
        token.d = tiny ? 0.0 : std::numeric_limits<double>::infinity();
        if (negative)
            token.d = -token.d;
    }
    return true;
}

// The older Windows runtime's spellings, any letter case: "1.#INF", "-1.#INF", "1.#IND",
// "-1.#IND", "1.#QNAN", "1.#SNAN", with whatever digits it printed after them ("1.#INF00").
bool AsciiReader::ReadRuntimeSpecial(std::string_view text, Token& token) {
    const std::size_t hash = text.find('#');
    if (hash == std::string_view::npos)
        return false;
    const std::string_view tag = text.substr(hash + 1);
    auto startsWith = [&tag](std::string_view prefix) {
        return tag.size() >= prefix.size() && EqualsNoCase(tag.substr(0, prefix.size()), prefix);
    };
    const bool negative = text[0] == '-';
    token.kind = Token::Float;
    if (startsWith("INF")) {
        token.d = negative ? -std::numeric_limits<double>::infinity()
                           : std::numeric_limits<double>::infinity();
        return true;
    }
    if (startsWith("IND") || startsWith("QNAN") || startsWith("SNAN") || startsWith("NAN")) {
        token.d = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    return false;
}

bool AsciiReader::ParseToken(Token& token) {
    const char c = *m_Cur;
    if (c == '"') {
        const char* open = m_Cur;
        const char* body = m_Cur + 1;
        const void* close = std::memchr(body, '"', static_cast<std::size_t>(m_End - body));
        if (!close)
            return Fail("the string opened at " + Line(open) + " is never closed");
        token.kind = Token::String;
        token.text = body;
        token.length = static_cast<std::size_t>(static_cast<const char*>(close) - body);
        token.hasEntity = std::memchr(body, '&', token.length) != nullptr;
        m_Cur = static_cast<const char*>(close) + 1;
        return true;
    }
    if (IsDigit(c) || c == '-' || c == '+' || c == '.')
        return ParseNumber(token);
    if (IsNameChar(c)) {
        const char* start = m_Cur;
        while (m_Cur < m_End && IsNameChar(*m_Cur))
            ++m_Cur;
        const std::string_view word(start, static_cast<std::size_t>(m_Cur - start));
        if (EqualsNoCase(word, "nan") || EqualsNoCase(word, "inf") ||
            EqualsNoCase(word, "infinity")) {
            SkipNanPayload(start);
            token.kind = Token::Float;
            token.d = word[0] == 'n' || word[0] == 'N' ? std::numeric_limits<double>::quiet_NaN()
                                                       : std::numeric_limits<double>::infinity();
            return true;
        }
        token.kind = Token::Word;
        token.text = start;
        token.length = word.size();
        return true;
    }
    return Fail("unexpected " + Describe(m_Cur) + " at " + Line(m_Cur));
}

void AsciiReader::StoreArray(Record& record) {
    ArrayBytes numbers(m_Tokens.size());
    for (const Token& t : m_Tokens)
        numbers.Add(t);
    record.values.push_back(numbers.Take(false));
}

void AsciiReader::StoreValues(Record& record) {
    const bool allNumbers = std::all_of(m_Tokens.begin(), m_Tokens.end(), [](const Token& t) {
        return t.kind == Token::Int || t.kind == Token::Float;
    });
    if (allNumbers && m_Tokens.size() > kPackThreshold) {
        StoreArray(record);
        return;
    }
    // Embedded files ("Content") are written as base64 text; binary files hold the bytes.
    if (record.name == "Content" && !m_Tokens.empty() &&
        std::all_of(m_Tokens.begin(), m_Tokens.end(),
                    [](const Token& t) { return t.kind == Token::String; })) {
        std::string joined;
        for (const Token& t : m_Tokens)
            joined.append(t.text, t.length);
        std::string decoded;
        if (DecodeBase64(joined, decoded)) {
            record.values.push_back(Value::MakeText(std::move(decoded), ValueType::Raw));
            return;
        }
    }
    record.values.reserve(record.values.size() + m_Tokens.size());
    for (const Token& t : m_Tokens) {
        switch (t.kind) {
            case Token::Int:
                record.values.push_back(Value::MakeInt(t.i));
                break;
            case Token::Float:
                record.values.push_back(Value::MakeFloat(t.d));
                break;
            case Token::Word:
                record.values.push_back(
                    Value::MakeText(std::string(t.text, t.length), ValueType::Word));
                break;
            case Token::String: {
                std::string text(t.text, t.length);
                if (t.hasEntity) {
                    std::string decoded;
                    decoded.reserve(text.size());
                    for (std::size_t i = 0; i < text.size(); ++i) {
                        if (text.compare(i, 6, "&quot;") == 0) {
                            decoded.push_back('"');
                            i += 5;
                        } else {
                            decoded.push_back(text[i]);
                        }
                    }
                    text = std::move(decoded);
                }
                record.values.push_back(Value::MakeText(std::move(text)));
                break;
            }
        }
    }
}

bool AsciiReader::ParseArray(Record& record, const char* start) {
    ++m_Cur;  // '*'
    std::uint64_t declared = 0;
    const char* digits = m_Cur;
    auto [ptr, ec] = std::from_chars(m_Cur, m_End, declared);
    if (ptr == digits || ec != std::errc()) {
        return Fail("the array \"" + record.name + "\" at " + Line(start) +
                    " has no valid element count");
    }
    m_Cur = ptr;
    SkipSpace();
    if (m_Cur >= m_End || *m_Cur != '{') {
        return Fail("expected '{' after the count of array \"" + record.name + "\" at " +
                    Line(start) + " but found " + Describe(m_Cur));
    }
    ++m_Cur;
    SkipSpace();
    // Never trust the declared count further than the text could hold (two bytes a value).
    ArrayBytes numbers(static_cast<std::size_t>(
        std::min<std::uint64_t>(declared, static_cast<std::uint64_t>(m_End - m_Cur) / 2 + 1)));
    if (m_Cur < m_End && *m_Cur != '}') {
        std::string elementName;
        if (!ParseName(elementName))
            return false;
        for (;;) {
            SkipSpace();
            if (m_Cur >= m_End)
                break;
            const char c = *m_Cur;
            if (c == '}')
                break;
            if (c == ',') {
                ++m_Cur;
                continue;
            }
            Token token;
            if (IsDigit(c) || c == '-' || c == '+' || c == '.') {
                if (!ParseNumber(token))
                    return false;
            } else if (!ParseToken(token) || token.kind != Token::Float) {
                if (m_Error.empty()) {
                    m_Error = "the array \"" + record.name + "\" at " + Line(start) +
                              " holds something that is not a number";
                }
                return false;
            }
            numbers.Add(token);
        }
    }
    if (m_Cur >= m_End) {
        return Fail("the array \"" + record.name + "\" at " + Line(start) + " is never closed");
    }
    ++m_Cur;  // '}'
    if (numbers.Count() != declared) {
        return Fail("the array \"" + record.name + "\" at " + Line(start) + " declares " +
                    std::to_string(declared) + " values but holds " +
                    std::to_string(numbers.Count()));
    }
    // ASCII files print the float32 key attributes as the integers sharing their bits; binary
    // files hold the floats themselves.
    record.values.push_back(numbers.Take(record.name == "KeyAttrDataFloat"));
    return true;
}

// The version printed in the leading comment, "; FBX 6.1.0 project file", as 6100.
std::uint32_t VersionFromComment(const char* begin, const char* end) {
    const std::string_view head(
        begin, static_cast<std::size_t>(std::min<std::ptrdiff_t>(end - begin, 512)));
    const std::size_t at = head.find("FBX ");
    if (at == std::string_view::npos)
        return 0;
    const char* p = begin + at + 4;
    const char* limit = begin + head.size();
    unsigned parts[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        auto [ptr, ec] = std::from_chars(p, limit, parts[i]);
        if (ec != std::errc() || parts[i] > 99)
            return 0;
        p = ptr;
        if (i < 2) {
            if (p >= limit || *p != '.')
                return 0;
            ++p;
        }
    }
    return parts[0] * 1000 + parts[1] * 100 + parts[2];
}

}  // namespace

ParseResult ParseAscii(const std::uint8_t* data, std::size_t size) {
    ParseResult result;
    result.document.binary = false;
    if (data == nullptr || size == 0) {
        result.error = "the file is empty";
        return result;
    }
    const char* begin = reinterpret_cast<const char*>(data);
    const char* end = begin + size;
    AsciiReader reader(begin, end);
    result.ok = reader.ParseTopLevel(result.document.root);
    if (!result.ok)
        result.error = reader.Error();

    std::int64_t version = 0;
    if (const Record* header = result.document.root.Child("FBXHeaderExtension")) {
        version = header->ChildInt("FBXVersion", 0);
    }
    if (version <= 0 || version > std::numeric_limits<std::uint32_t>::max()) {
        version = VersionFromComment(begin, end);
    }
    result.document.version = static_cast<std::uint32_t>(version);
    return result;
}

}  // namespace fbx
