#include "support_tree.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

namespace fbxtest {

std::string AsciiObjectName(const std::string& text) {
    const std::size_t sep = text.find(std::string("\0\1", 2));
    if (sep == std::string::npos)
        return text;
    return text.substr(sep + 2) + "::" + text.substr(0, sep);
}

namespace {

// Object ids of 7000+ files are chosen afresh each time a scene is saved, so two files of one
// scene agree on ids only up to a consistent renaming.
struct IdMap {
    std::map<std::int64_t, std::int64_t> forward;
    std::map<std::int64_t, std::int64_t> backward;

    bool Match(std::int64_t a, std::int64_t b) {
        auto f = forward.emplace(a, b).first;
        auto r = backward.emplace(b, a).first;
        return f->second == b && r->second == a;
    }
};

bool LooksLikeId(const fbx::Value& v) {
    return v.Type() == fbx::ValueType::Int64 &&
           (v.AsInt() >= (std::int64_t{1} << 32) || v.AsInt() <= -(std::int64_t{1} << 32));
}

bool NearlyEqual(double a, double b) {
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b);
    if (a == b)
        return true;
    const double scale = std::max({1.0, std::fabs(a), std::fabs(b)});
    return std::fabs(a - b) <= 1e-5 * scale;
}

std::string ValueDifference(const fbx::Value& a, const fbx::Value& b, IdMap& ids) {
    if (LooksLikeId(a) && LooksLikeId(b)) {
        if (ids.Match(a.AsInt(), b.AsInt()))
            return {};
        return "id " + std::to_string(a.AsInt()) + " against " + std::to_string(b.AsInt()) +
               " breaks the id correspondence";
    }
    const bool aNumeric = a.IsNumber() || a.IsArray();
    const bool bNumeric = b.IsNumber() || b.IsArray();
    if (aNumeric != bNumeric)
        return "a number against a text";
    if (!aNumeric) {
        if (AsciiObjectName(a.AsText()) != AsciiObjectName(b.AsText())) {
            return "text \"" + AsciiObjectName(a.AsText()) + "\" against \"" +
                   AsciiObjectName(b.AsText()) + "\"";
        }
        return {};
    }
    if (a.Count() != b.Count()) {
        return std::to_string(a.Count()) + " numbers against " + std::to_string(b.Count());
    }
    for (std::size_t i = 0; i < a.Count(); ++i) {
        if (!NearlyEqual(a.DoubleAt(i), b.DoubleAt(i))) {
            return "number " + std::to_string(i) + ": " + std::to_string(a.DoubleAt(i)) +
                   " against " + std::to_string(b.DoubleAt(i));
        }
    }
    return {};
}

std::vector<const fbx::Record*> Kept(const fbx::Record& r, const std::set<std::string>& skip) {
    std::vector<const fbx::Record*> kept;
    for (const fbx::Record& child : r.children) {
        if (skip.count(child.name) == 0)
            kept.push_back(&child);
    }
    return kept;
}

std::string Difference(const fbx::Record& a, const fbx::Record& b, const std::string& path,
                       const std::set<std::string>& skip, IdMap& ids) {
    std::string here = path + "/" + a.name;
    if (!a.values.empty() && a.values[0].IsText())
        here += "[" + a.values[0].AsText() + "]";
    if (a.name != b.name)
        return path + ": record \"" + a.name + "\" against \"" + b.name + "\"";
    if (a.values.size() != b.values.size()) {
        return here + ": " + std::to_string(a.values.size()) + " values against " +
               std::to_string(b.values.size());
    }
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        const std::string d = ValueDifference(a.values[i], b.values[i], ids);
        if (!d.empty())
            return here + ": value " + std::to_string(i) + ": " + d;
    }
    const auto ka = Kept(a, skip);
    const auto kb = Kept(b, skip);
    const std::size_t n = std::min(ka.size(), kb.size());
    for (std::size_t i = 0; i < n; ++i) {
        const std::string d = Difference(*ka[i], *kb[i], here, skip, ids);
        if (!d.empty())
            return d;
    }
    if (ka.size() != kb.size()) {
        const auto& longer = ka.size() > kb.size() ? ka : kb;
        return here + ": " + std::to_string(ka.size()) + " children against " +
               std::to_string(kb.size()) + ", first extra \"" + longer[n]->name + "\"";
    }
    return {};
}

}  // namespace

std::string TreeDifference(const fbx::Record& a, const fbx::Record& b,
                           const std::set<std::string>& skip) {
    IdMap ids;
    return Difference(a, b, "", skip, ids);
}

}  // namespace fbxtest
