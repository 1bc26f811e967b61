#include "fbx/sdk/TakeDescriber.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace fbx {

namespace {

// Tick values beyond this are nonsense (about 6 years); converting them could also overflow.
constexpr double kMaxTicks = 9.0e18;

// A number as ticks; none when it is not finite or out of range.
std::optional<kLongLong> Ticks(double value) {
    if (!std::isfinite(value) || std::fabs(value) > kMaxTicks)
        return std::nullopt;
    return static_cast<kLongLong>(value);
}

// A span from a start and a stop; none when either is missing or the stop comes first.
std::optional<KTimeSpan> Span(std::optional<kLongLong> start, std::optional<kLongLong> stop) {
    if (!start || !stop || *stop < *start)
        return std::nullopt;
    return KTimeSpan(KTime(*start), KTime(*stop));
}

// The two tick values of a LocalTime / ReferenceTime record.
std::optional<KTimeSpan> RecordSpan(const Record* record) {
    if (!record)
        return std::nullopt;
    const std::vector<double> numbers = record->Doubles();
    if (numbers.size() < 2 || !Ticks(numbers[0]) || !Ticks(numbers[1]))
        return std::nullopt;
    const std::vector<std::int64_t> ticks = record->Ints();  // exact beyond 2^53
    return Span(ticks[0], ticks[1]);
}

// The object's own property of that name (not its template's), or nullptr.
const PropertyValue* OwnProperty(const Object& object, std::string_view name) {
    for (const PropertyValue& p : object.properties) {
        if (p.name == name)
            return &p;
    }
    return nullptr;
}

std::optional<kLongLong> PropertyTicks(const PropertyValue* p) {
    if (!p || p->numbers.empty())
        return std::nullopt;
    return Ticks(p->numbers[0]);
}

// A stack's pair of span properties; a missing start counts as 0, a missing stop as none.
std::optional<KTimeSpan> PropertySpan(const Object& stack, const char* start, const char* stop) {
    const PropertyValue* first = OwnProperty(stack, start);
    return Span(first ? PropertyTicks(first) : std::optional<kLongLong>(0),
                PropertyTicks(OwnProperty(stack, stop)));
}

// The smallest span holding both.
KTimeSpan Union(const std::optional<KTimeSpan>& a, const KTimeSpan& b) {
    if (!a)
        return b;
    return KTimeSpan(KTime(std::min(a->GetStart().Get(), b.GetStart().Get())),
                     KTime(std::max(a->GetStop().Get(), b.GetStop().Get())));
}

}  // namespace

std::unique_ptr<KFbxTakeInfo> TakeDescriber::Describe(std::size_t stack) {
    auto info = std::make_unique<KFbxTakeInfo>();
    const Object& object = m_Graph.At(stack);
    info->mName = object.name;
    info->mImportName = object.name;
    info->mSelect = true;
    // The span as written: a pre-7000 take keeps its comment and span in the Take record, a
    // 7000+ stack in properties.
    if (object.record && object.record->name == "Take") {
        info->mDescription = object.record->ChildText("Comments");
        if (const Record* t = object.record->Child("LocalTime")) {
            info->mLocalStart = KTime(t->IntAt(0));
            info->mLocalStop = KTime(t->IntAt(1));
        }
    } else {
        if (const PropertyValue* p = m_Graph.FindProperty(stack, "Description"))
            info->mDescription = p->text;
        info->mLocalStart =
            KTime(PropertyTicks(m_Graph.FindProperty(stack, "LocalStart")).value_or(0));
        info->mLocalStop =
            KTime(PropertyTicks(m_Graph.FindProperty(stack, "LocalStop")).value_or(0));
    }
    std::optional<KTimeSpan> span = StatedSpan(stack);
    if (!span)
        span = KeySpan(stack);
    info->mLocalTimeSpan = span.value_or(KTimeSpan());
    return info;
}

std::optional<KTimeSpan> TakeDescriber::StatedSpan(std::size_t stack) const {
    const Object& object = m_Graph.At(stack);
    if (object.record && object.record->name == "Take") {
        if (auto local = RecordSpan(object.record->Child("LocalTime")))
            return local;
        return RecordSpan(object.record->Child("ReferenceTime"));
    }
    if (auto local = PropertySpan(object, "LocalStart", "LocalStop"))
        return local;
    return PropertySpan(object, "ReferenceStart", "ReferenceStop");
}

// Over the curves connected (on any channel) to the curve nodes of the stack's layers.
std::optional<KTimeSpan> TakeDescriber::KeySpan(std::size_t stack) {
    std::optional<KTimeSpan> span;
    for (std::size_t layer : m_Graph.Sources(stack, "AnimationLayer")) {
        for (std::size_t curveNode : m_Graph.Sources(layer, "AnimationCurveNode")) {
            for (std::size_t c : m_Graph.At(curveNode).sources) {
                const std::size_t curve = m_Graph.Link(c).child;
                if (m_Graph.At(curve).kind != "AnimationCurve")
                    continue;
                if (const std::optional<KTimeSpan> keys = CurveKeySpan(curve))
                    span = Union(span, *keys);
            }
        }
    }
    return span;
}

// The keys of a curve are its KeyTime values paired with KeyValueFloat, as the scene reads
// them.
std::optional<KTimeSpan> TakeDescriber::CurveKeySpan(std::size_t curve) {
    auto cached = m_CurveSpans.find(curve);
    if (cached != m_CurveSpans.end())
        return cached->second;
    std::optional<KTimeSpan> span;
    const Record* record = m_Graph.At(curve).record;
    const Record* times = record ? record->Child("KeyTime") : nullptr;
    const Record* values = record ? record->Child("KeyValueFloat") : nullptr;
    std::size_t keys = times && values ? std::min(times->NumberCount(), values->NumberCount()) : 0;
    for (std::size_t v = 0; times && v < times->values.size() && keys > 0; ++v) {
        const Value& value = times->values[v];
        for (std::size_t i = 0, n = value.Count(); i < n && keys > 0; ++i, --keys) {
            const KTime t(value.IntAt(i));
            span = Union(span, KTimeSpan(t, t));
        }
    }
    m_CurveSpans.emplace(curve, span);
    return span;
}

}  // namespace fbx
