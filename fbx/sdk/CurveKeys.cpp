// The keys of one AnimationCurve record: times, values, and how the curve runs from each key
// to the next (interpolation, constant mode, the slopes at both ends of the span).
//
// 7000+ files give one attribute per run of keys: KeyAttrFlags (0x02 constant, 0x04 linear,
// 0x08 cubic; 0x100 on a constant key holds the next key's value, on a cubic key marks an
// automatic tangent; 0x200 TCB, 0x400 user and 0x800 broken tangents), four KeyAttrDataFloat
// values (this key's right slope, the next key's left slope, then the bits of the two tangent
// weights as 16-bit ten-thousandths, 3333 for a third, and of the two velocities) and
// KeyAttrRefCount (how many consecutive keys share the attribute). The pre-7000 reader
// (Layout6100.cpp) writes its keys in the same form.
//
// Slopes are in value units per second: Maya's same scene saved as 6100 and as 7700
// (maya_anim_interpolation_*, maya_interpolation_modes_*) gives a linear key from -2 to -4
// a third of a second later the slopes -6 and -6, its cubic keys the same slopes in both
// layouts ("U,s,-44.27,-43.92" against RightSlope -44.27, NextLeftSlope -43.92), and each
// next-left slope is the left slope of the following key. What a constant key stores is left
// over from earlier edits and means nothing; it is passed on as written.
//
// Whatever is missing or damaged falls back rather than fails: a key without an attribute
// (no KeyAttrFlags, or the attributes' runs end before the keys do) is linear with zero
// slopes; without KeyAttrRefCount each attribute covers one key; runs that overrun the keys
// are cut; slopes that are missing or not finite are 0; flags naming no single
// interpolation give linear.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "fbx/sdk/SceneBuilder.h"
#include "fbx/sdk/SceneNode.h"

namespace fbx {

namespace {

std::vector<std::int64_t> ChildIntegers(const Record* record, const char* name) {
    const Record* child = record ? record->Child(name) : nullptr;
    return child ? child->Ints() : std::vector<std::int64_t>();
}

std::vector<double> ChildNumbers(const Record* record, const char* name) {
    const Record* child = record ? record->Child(name) : nullptr;
    return child ? child->Doubles() : std::vector<double>();
}

double FiniteOr0(const std::vector<double>& numbers, std::size_t i) {
    return i < numbers.size() && std::isfinite(numbers[i]) ? numbers[i] : 0.0;
}

// One attribute applied to a key.
void ApplyAttribute(std::int64_t flags, const std::vector<double>& data, std::size_t attribute,
                    KFCurve::Key& key) {
    const auto bits = static_cast<std::uint32_t>(flags);
    switch (bits & 0x0Eu) {
        case KFCURVE_INTERPOLATION_CONSTANT:
            key.interpolation = KFCURVE_INTERPOLATION_CONSTANT;
            key.constantMode =
                (bits & KFCURVE_CONSTANT_NEXT) ? KFCURVE_CONSTANT_NEXT : KFCURVE_CONSTANT_STANDARD;
            break;
        case KFCURVE_INTERPOLATION_CUBIC:
            key.interpolation = KFCURVE_INTERPOLATION_CUBIC;
            break;
        default:
            key.interpolation = KFCURVE_INTERPOLATION_LINEAR;
            break;
    }
    key.rightSlope = FiniteOr0(data, attribute * 4);
    key.nextLeftSlope = FiniteOr0(data, attribute * 4 + 1);
}

void ReadKeyAttributes(const Record* curve, std::vector<KFCurve::Key>& keys) {
    const std::vector<std::int64_t> flags = ChildIntegers(curve, "KeyAttrFlags");
    const std::vector<std::int64_t> runs = ChildIntegers(curve, "KeyAttrRefCount");
    const std::vector<double> data = ChildNumbers(curve, "KeyAttrDataFloat");
    const bool oneEach = curve && !curve->Child("KeyAttrRefCount");
    std::size_t next = 0;
    for (std::size_t a = 0; a < flags.size() && next < keys.size(); ++a) {
        const std::int64_t run = oneEach ? 1 : a < runs.size() ? runs[a] : 0;
        if (run <= 0)
            continue;
        const std::size_t left = keys.size() - next;
        const std::size_t count =
            static_cast<std::uint64_t>(run) < left ? static_cast<std::size_t>(run) : left;
        for (std::size_t k = 0; k < count; ++k)
            ApplyAttribute(flags[a], data, a, keys[next + k]);
        next += count;
    }
}

}  // namespace

// Keys are KeyTime and KeyValueFloat paired up to the shorter; the default is the curve's own
// Default record, else the curve node's value for the channel.
std::shared_ptr<KFCurve> SceneBuilder::ReadCurve(const Record* curve,
                                                 const PropertyValue* channel) {
    auto made = std::make_shared<KFCurve>();
    const std::vector<std::int64_t> times = ChildIntegers(curve, "KeyTime");
    const std::vector<double> values = ChildNumbers(curve, "KeyValueFloat");
    const std::size_t n = std::min(times.size(), values.size());
    made->m_Keys.resize(n);
    for (std::size_t k = 0; k < n; ++k) {
        made->m_Keys[k].time = KTime(times[k]);
        made->m_Keys[k].value = values[k];
    }
    ReadKeyAttributes(curve, made->m_Keys);
    if (channel && !channel->numbers.empty())
        made->m_Default = channel->numbers[0];
    if (const Record* d = curve ? curve->Child("Default") : nullptr)
        made->m_Default = d->DoubleAt(0);
    return made;
}

}  // namespace fbx
