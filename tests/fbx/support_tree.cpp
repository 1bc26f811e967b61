#include "support_tree.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

namespace fbxtest {

namespace {

// Text that reads back as the same number (a float when `single`); no exponent when whole.
std::string Number(double v, bool single) {
    char text[40] = "nan";
    if (std::isnan(v))
        return text;
    if (std::fabs(v) < 1e15 && v == std::floor(v)) {
        std::snprintf(text, sizeof text, "%.0f", v);
        return text;
    }
    for (int digits = single ? 6 : 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, v);
        const double back = std::strtod(text, nullptr);
        if (single ? static_cast<float>(back) == static_cast<float>(v) : back == v)
            break;
    }
    return text;
}

void AppendText(const fbx::Record& r, bool typed, int depth, std::string& out) {
    out += std::string(2 * depth, ' ') + r.name + ":";
    const char* separator = " ";
    for (const fbx::Value& v : r.values) {
        const std::string letter(1, "CYILFDSRWbilfd"[static_cast<int>(v.Type())]);
        const bool integral = std::string("CYILbil").find(letter) != std::string::npos;
        const bool single = typed && (letter == "F" || letter == "f");
        auto element = [&](std::size_t i) {
            return integral ? std::to_string(v.IntAt(i)) : Number(v.DoubleAt(i), single);
        };
        if (v.IsText()) {
            out += separator + (typed ? letter : "") + "\"" + v.AsText() + "\"";
        } else if (!typed) {
            for (std::size_t i = 0; i < v.Count(); ++i, separator = ", ")
                out += separator + element(i);
        } else if (!v.IsArray()) {
            out += separator + letter +
                   (integral ? std::to_string(v.AsInt()) : Number(v.AsDouble(), single));
        } else {
            out += separator + letter + "[";
            for (std::size_t i = 0; i < v.Count(); ++i)
                out += (i ? "," : "") + element(i);
            out += "]";
        }
        separator = ", ";
    }
    out += "\n";
    for (const fbx::Record& child : r.children)
        AppendText(child, typed, depth + 1, out);
}

// Object ids of 7000+ files are chosen afresh each time a scene is saved, so two files of one
// scene agree on ids only up to a consistent renaming, kept in both directions.
using Ids = std::pair<std::map<std::int64_t, std::int64_t>, std::map<std::int64_t, std::int64_t>>;

bool SameValue(const fbx::Value& a, const fbx::Value& b, Ids& ids) {
    auto isId = [](const fbx::Value& v) {
        return v.Type() == fbx::ValueType::Int64 && std::llabs(v.AsInt()) >= (1LL << 32);
    };
    if (isId(a) && isId(b)) {
        return ids.first.emplace(a.AsInt(), b.AsInt()).first->second == b.AsInt() &&
               ids.second.emplace(b.AsInt(), a.AsInt()).first->second == a.AsInt();
    }
    if (a.IsText() != b.IsText() || a.Count() != b.Count() ||
        AsciiObjectName(a.AsText()) != AsciiObjectName(b.AsText())) {
        return false;
    }
    for (std::size_t i = 0; i < a.Count(); ++i) {
        const double x = a.DoubleAt(i), y = b.DoubleAt(i);
        if (std::isnan(x) || std::isnan(y)
                ? !std::isnan(x) || !std::isnan(y)
                : std::fabs(x - y) > 1e-5 * std::max({1.0, std::fabs(x), std::fabs(y)}))
            return false;
    }
    return true;
}

std::string Difference(const fbx::Record& a, const fbx::Record& b, const std::string& path,
                       const std::set<std::string>& skip, Ids& ids) {
    const std::string here =
        path + "/" + a.name +
        (!a.values.empty() && a.values[0].IsText() ? "[" + a.values[0].AsText() + "]" : "");
    if (a.name != b.name)
        return path + ": record \"" + a.name + "\" against \"" + b.name + "\"";
    if (a.values.size() != b.values.size()) {
        return here + ": " + std::to_string(a.values.size()) + " values against " +
               std::to_string(b.values.size());
    }
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        if (!SameValue(a.values[i], b.values[i], ids))
            return here + ": value " + std::to_string(i);
    }
    std::vector<const fbx::Record*> kept[2];
    for (int side = 0; side < 2; ++side) {
        for (const fbx::Record& child : (side ? b : a).children) {
            if (skip.count(child.name) == 0)
                kept[side].push_back(&child);
        }
    }
    for (std::size_t i = 0; i < std::min(kept[0].size(), kept[1].size()); ++i) {
        const std::string d = Difference(*kept[0][i], *kept[1][i], here, skip, ids);
        if (!d.empty())
            return d;
    }
    return kept[0].size() == kept[1].size() ? "" : here + ": other children";
}

}  // namespace

std::string TreeText(const fbx::Record& root, bool typed) {
    std::string out;
    for (const fbx::Record& child : root.children)
        AppendText(child, typed, 0, out);
    return out;
}

std::string AsciiObjectName(const std::string& text) {
    const std::size_t sep = text.find(std::string("\0\1", 2));
    if (sep == std::string::npos)
        return text;
    return text.substr(sep + 2) + "::" + text.substr(0, sep);
}

std::string TreeDifference(const fbx::Record& a, const fbx::Record& b,
                           const std::set<std::string>& skip) {
    Ids ids;
    return Difference(a, b, "", skip, ids);
}

}  // namespace fbxtest
