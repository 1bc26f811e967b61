#include "fbx/graph/TakeKeys.h"

#include <cmath>
#include <cstddef>

namespace fbx {

namespace {

// The Key values flattened into numbers and letters.
class KeyTokens {
public:
    explicit KeyTokens(const Record& key) {
        for (const Value& v : key.values) {
            if (v.IsText()) {
                m_Items.push_back({true, v.AsText().empty() ? '\0' : v.AsText()[0], 0.0, 0});
            } else {
                for (std::size_t i = 0, n = v.Count(); i < n; ++i) {
                    m_Items.push_back({false, '\0', v.DoubleAt(i), v.IntAt(i)});
                }
            }
        }
    }

    bool Number(double& out) {
        if (m_Pos >= m_Items.size() || m_Items[m_Pos].isLetter)
            return false;
        out = m_Items[m_Pos++].number;
        return true;
    }
    bool Integer(std::int64_t& out) {
        if (m_Pos >= m_Items.size() || m_Items[m_Pos].isLetter)
            return false;
        out = m_Items[m_Pos++].integer;
        return true;
    }
    // A letter, or a number holding a printable letter's code (binary files).
    bool Letter(char& out) {
        if (m_Pos >= m_Items.size())
            return false;
        const Item& item = m_Items[m_Pos];
        if (item.isLetter) {
            out = item.letter;
        } else if (item.integer > 32 && item.integer < 127 &&
                   item.number == static_cast<double>(item.integer)) {
            out = static_cast<char>(item.integer);
        } else {
            return false;
        }
        ++m_Pos;
        return true;
    }
    bool Skip(int numbers) {
        double ignored;
        for (int i = 0; i < numbers; ++i) {
            if (!Number(ignored))
                return false;
        }
        return true;
    }

private:
    struct Item {
        bool isLetter;
        char letter;
        double number;
        std::int64_t integer;
    };
    std::vector<Item> m_Items;
    std::size_t m_Pos = 0;
};

bool SkipWeight(KeyTokens& tokens) {
    char weight;
    if (!tokens.Letter(weight))
        return false;
    switch (weight) {
        case 'n':
        case 'c':
            return true;
        case 'a':
            return tokens.Skip(2);
        case 'l':
        case 'r':
            return tokens.Skip(1);
        default:
            return false;
    }
}

bool SkipWeights(KeyTokens& tokens, int count) {
    for (int i = 0; i < count; ++i) {
        if (!SkipWeight(tokens))
            return false;
    }
    return true;
}

// Reads what follows the interpolation letter of one key into it.
bool ReadParameters(KeyTokens& tokens, char interpolation, std::int64_t keyVer, TakeKey& key) {
    switch (interpolation) {
        case 'C': {
            key.interpolation = TakeInterpolation::Constant;
            char mode;
            if (keyVer < 4004)
                return true;
            if (!tokens.Letter(mode))
                return false;
            key.constantNext = mode == 'n';
            return true;
        }
        case 'L':
            key.interpolation = TakeInterpolation::Linear;
            return true;
        case 'U': {
            key.interpolation = TakeInterpolation::Cubic;
            if (!tokens.Letter(key.tangent))
                return false;
            switch (key.tangent) {
                case 's':
                case 'b':
                    if (!tokens.Number(key.rightSlope) || !tokens.Number(key.nextLeftSlope))
                        return false;
                    return keyVer == 4003 || SkipWeight(tokens);
                case 'a':
                    return keyVer <= 4004 || SkipWeight(tokens);
                case 'p':
                case 'q':
                    if (!tokens.Skip(2))
                        return false;
                    return SkipWeights(tokens, keyVer >= 4005 ? 2 : 1);
                case 't':
                    return tokens.Skip(3);
                case 'd':
                    if (!tokens.Skip(1))
                        return false;
                    return SkipWeight(tokens);
                default:
                    return false;
            }
        }
        default:
            return false;
    }
}

double Seconds(std::int64_t from, std::int64_t to) {
    return (static_cast<double>(to) - static_cast<double>(from)) / 46186158000.0;
}

// Rise over run; 0 when the run is not forward or either is not finite.
double Slope(double rise, double seconds) {
    const double slope = seconds > 0.0 ? rise / seconds : 0.0;
    return std::isfinite(slope) ? slope : 0.0;
}

// The slope of an automatic tangent at key k (see ReadTakeKeys).
double AutomaticSlope(const std::vector<TakeKey>& keys, std::size_t k) {
    if (k == 0 || k + 1 >= keys.size())
        return 0.0;
    const double before = keys[k - 1].value;
    const double here = keys[k].value;
    const double after = keys[k + 1].value;
    const bool between = (before < here && here < after) || (before > here && here > after);
    if (!between)
        return 0.0;
    return Slope(after - before, Seconds(keys[k - 1].time, keys[k + 1].time));
}

bool WrittenTangent(const TakeKey& key) {
    return key.interpolation == TakeInterpolation::Cubic &&
           (key.tangent == 's' || key.tangent == 'b');
}

// Every key's slopes, from its letters and, where the file writes none, from its neighbours.
void FillSlopes(std::vector<TakeKey>& keys) {
    for (std::size_t k = 0; k < keys.size(); ++k) {
        TakeKey& key = keys[k];
        const bool last = k + 1 >= keys.size();
        switch (key.interpolation) {
            case TakeInterpolation::Constant:
                key.rightSlope = key.nextLeftSlope = 0.0;
                break;
            case TakeInterpolation::Linear:
                key.rightSlope = key.nextLeftSlope =
                    last
                        ? 0.0
                        : Slope(keys[k + 1].value - key.value, Seconds(key.time, keys[k + 1].time));
                break;
            case TakeInterpolation::Cubic:
                if (WrittenTangent(key)) {
                    key.rightSlope = std::isfinite(key.rightSlope) ? key.rightSlope : 0.0;
                    key.nextLeftSlope = std::isfinite(key.nextLeftSlope) ? key.nextLeftSlope : 0.0;
                    break;
                }
                key.rightSlope = AutomaticSlope(keys, k);
                key.nextLeftSlope = last                         ? 0.0
                                    : keys[k + 1].tangent == 's' ? keys[k + 1].rightSlope
                                                                 : AutomaticSlope(keys, k + 1);
                if (!std::isfinite(key.nextLeftSlope))
                    key.nextLeftSlope = 0.0;
                break;
        }
    }
}

}  // namespace

std::vector<TakeKey> ReadTakeKeys(const Record& channel, std::uint32_t fileVersion) {
    std::vector<TakeKey> keys;
    const Record* key = channel.Child("Key");
    if (!key)
        return keys;
    std::int64_t keyVer = fileVersion < 5000 ? 4003 : fileVersion < 6000 ? 4004 : 4005;
    keyVer = channel.ChildInt("KeyVer", keyVer);
    std::int64_t count = channel.ChildInt("KeyCount", -1);
    // Never trust a declared count beyond what the list can hold (3 items per key at least).
    std::size_t limit = key->NumberCount() + key->values.size();
    std::size_t wanted = count < 0 ? limit : static_cast<std::size_t>(count);
    if (wanted > limit)
        wanted = limit;
    keys.reserve(wanted / 3 + 1 < wanted ? wanted / 3 + 1 : wanted);

    KeyTokens tokens(*key);
    while (keys.size() < wanted) {
        TakeKey k;
        char interpolation;
        if (!tokens.Integer(k.time) || !tokens.Number(k.value) || !tokens.Letter(interpolation)) {
            break;
        }
        // A key whose parameters break off keeps what its letters gave so far.
        const bool whole = ReadParameters(tokens, interpolation, keyVer, k);
        keys.push_back(k);
        if (!whole)
            break;
    }
    FillSlopes(keys);
    return keys;
}

}  // namespace fbx
