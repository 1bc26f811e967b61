// The takes of an object graph as KFbxTakeInfo records: name, comment and spans, for the
// importer's take list and the scene's. Internal to the library.
//
// The span a take plays (mLocalTimeSpan) is, in this order, the first of these that is
// whole, finite and does not stop before it starts:
//   7000+ files: the AnimationStack's own LocalStart/LocalStop, then ReferenceStart/
//   ReferenceStop (a missing start counts as 0; templates do not count, they hold defaults);
//   pre-7000 files: the Take record's LocalTime, then its ReferenceTime (two tick values);
// else the first and last key time over the curves of the take's layers, else 0 to 0.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <unordered_map>

#include "fbx/graph/ObjectGraph.h"
#include "fbx/sdk/Importer.h"

namespace fbx {

class TakeDescriber {
public:
    explicit TakeDescriber(const ObjectGraph& graph) : m_Graph(graph) {}

    // The take of one AnimationStack object (an index into the graph's objects).
    std::unique_ptr<KFbxTakeInfo> Describe(std::size_t stack);

private:
    std::optional<KTimeSpan> StatedSpan(std::size_t stack) const;
    std::optional<KTimeSpan> KeySpan(std::size_t stack);
    std::optional<KTimeSpan> CurveKeySpan(std::size_t curve);

    const ObjectGraph& m_Graph;
    // The key span of each curve read so far, by object index (none: no keys); a curve shared
    // by many takes is read once.
    std::unordered_map<std::size_t, std::optional<KTimeSpan>> m_CurveSpans;
};

}  // namespace fbx
