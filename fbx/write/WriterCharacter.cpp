// MakeSkinnedCharacter() of WriterSynthetic.h: a humanoid skeleton, one mesh of tubes along its
// bones skinned to it, and its walk and wave takes.
//
// The skeleton is set up in local terms (translations, pre-rotations, rotations) and its bind
// pose is composed from them; the mesh is then built in world space around the bind pose. Each
// tube follows a chain of points given in bone frames, with rings of control points whose
// weights pass from one bone to the next over a short stretch around each joint.
#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "fbx/write/NodeMatrices.h"
#include "fbx/write/WriterSynthetic.h"

namespace fbx {

namespace {

using desc::Matrix4;
using desc::Vec3;

constexpr double kPi = 3.14159265358979323846;
constexpr int kMaxBones = 1000;
constexpr std::size_t kMaxCorners = 2000000;
// Weights pass from one bone to the next over this distance on each side of a joint (less on
// short bones).
constexpr double kBlend = 0.06;

Vec3 Add(const Vec3& a, const Vec3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Vec3 Sub(const Vec3& a, const Vec3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Vec3 Scale(const Vec3& v, double f) {
    return {v[0] * f, v[1] * f, v[2] * f};
}
double Dot(const Vec3& a, const Vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Length(const Vec3& v) {
    return std::sqrt(Dot(v, v));
}
Vec3 Normalized(const Vec3& v, const Vec3& fallback) {
    const double length = Length(v);
    return length > 1e-12 ? Scale(v, 1 / length) : fallback;
}

// ---------------------------------------------------------------------------------------------
// The skeleton

enum Bone {
    kHips,
    kSpine,
    kSpine1,
    kSpine2,
    kNeck,
    kHead,
    kLeftShoulder,
    kLeftArm,
    kLeftForeArm,
    kLeftHand,
    kRightShoulder,
    kRightArm,
    kRightForeArm,
    kRightHand,
    kLeftUpLeg,
    kLeftLeg,
    kLeftFoot,
    kLeftToeBase,
    kRightUpLeg,
    kRightLeg,
    kRightFoot,
    kRightToeBase,
    kCoreBones
};

struct BoneSetup {
    const char* name;
    int parent;
    Vec3 translation;
    Vec3 rotation;
    Vec3 preRotation;
    int rotationOrder;
};

// Arms hang 8 degrees out from the body; their frames turn so that x runs down the arm, as a
// joint orient does. The thighs splay 3 degrees and turn the feet 6 degrees out.
const BoneSetup kCore[kCoreBones] = {
    {"Hips", -1, {0, 1.0, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"Spine", kHips, {0, 0.10, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"Spine1", kSpine, {0, 0.15, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"Spine2", kSpine1, {0, 0.15, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"Neck", kSpine2, {0, 0.17, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"Head", kNeck, {0, 0.10, 0}, {0, 0, 0}, {0, 0, 0}, desc::kZXY},
    {"LeftShoulder", kSpine2, {0.03, 0.10, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"LeftArm", kLeftShoulder, {0.17, 0, 0}, {0, 0, 0}, {0, 0, -82}, desc::kXYZ},
    {"LeftForeArm", kLeftArm, {0.28, 0, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"LeftHand", kLeftForeArm, {0.25, 0, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightShoulder", kSpine2, {-0.03, 0.10, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightArm", kRightShoulder, {-0.17, 0, 0}, {0, 0, 0}, {0, 0, -98}, desc::kXYZ},
    {"RightForeArm", kRightArm, {0.28, 0, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightHand", kRightForeArm, {0.25, 0, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"LeftUpLeg", kHips, {0.10, -0.06, 0}, {0, 6, 3}, {0, 0, 0}, desc::kXZY},
    {"LeftLeg", kLeftUpLeg, {0, -0.43, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"LeftFoot", kLeftLeg, {0, -0.41, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"LeftToeBase", kLeftFoot, {0, -0.07, 0.14}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightUpLeg", kHips, {-0.10, -0.06, 0}, {0, -6, -3}, {0, 0, 0}, desc::kXZY},
    {"RightLeg", kRightUpLeg, {0, -0.43, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightFoot", kRightLeg, {0, -0.41, 0}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
    {"RightToeBase", kRightFoot, {0, -0.07, 0.14}, {0, 0, 0}, {0, 0, 0}, desc::kXYZ},
};

// The chains extra bones go to, in the order they are handed out.
enum Site {
    kLeftFingers,
    kRightFingers,
    kLeftThumb,
    kRightThumb,
    kHeadTop,
    kLeftToeTip,
    kRightToeTip,
    kNose,
    kSiteCount
};

struct SiteSetup {
    const char* name;
    int parent;  // the core bone the chain hangs off
    Vec3 start;  // the first bone's place in the parent's frame
    Vec3 span;   // from the first bone to the chain's end, shared out evenly
};

constexpr double kHandLength = 0.18;  // wrist to finger tips; with fingers, half is the palm
constexpr double kToeLength = 0.08;   // toe joint to toe tip; with toe tips, half is the toe
constexpr double kHeadLength = 0.30;  // head joint to the top; head top bones take the last 0.11
const Vec3 kThumbDirection = {0.7071, 0, 0.7071};  // down the hand and forwards, in its frame

const SiteSetup kSites[kSiteCount] = {
    {"LeftFingers", kLeftHand, {kHandLength / 2, 0, 0}, {kHandLength / 2, 0, 0}},
    {"RightFingers", kRightHand, {kHandLength / 2, 0, 0}, {kHandLength / 2, 0, 0}},
    {"LeftThumb", kLeftHand, {0.02, 0, 0.02}, Scale(kThumbDirection, 0.07)},
    {"RightThumb", kRightHand, {0.02, 0, 0.02}, Scale(kThumbDirection, 0.07)},
    {"HeadTop", kHead, {0, kHeadLength - 0.11, 0}, {0, 0.11, 0}},
    {"LeftToeTip", kLeftToeBase, {0, 0, kToeLength / 2}, {0, 0, kToeLength / 2}},
    {"RightToeTip", kRightToeBase, {0, 0, kToeLength / 2}, {0, 0, kToeLength / 2}},
    {"Nose", kHead, {0, 0.12, 0.085}, {0, 0, 0.05}},
};

struct Skeleton {
    std::vector<int> nodes;                   // scene node of each core bone
    std::vector<std::vector<int>> siteBones;  // scene nodes of each site's chain
    std::vector<Matrix4> world;               // bind pose by scene node
};

Skeleton AddSkeleton(SceneDescription& scene, int bones) {
    Skeleton skeleton;
    for (const BoneSetup& setup : kCore) {
        const int parent = setup.parent < 0 ? -1 : skeleton.nodes[setup.parent];
        const int node = scene.AddNode(setup.name, desc::NodeType::Skeleton, parent);
        desc::Node& n = scene.nodes[node];
        n.translation = setup.translation;
        n.rotation = setup.rotation;
        n.preRotation = setup.preRotation;
        n.rotationOrder = setup.rotationOrder;
        skeleton.nodes.push_back(node);
    }
    const int extra = bones - kCoreBones;
    skeleton.siteBones.resize(kSiteCount);
    for (int site = 0; site < kSiteCount; ++site) {
        const int count = extra / kSiteCount + (site < extra % kSiteCount ? 1 : 0);
        const SiteSetup& setup = kSites[site];
        int parent = skeleton.nodes[setup.parent];
        for (int i = 0; i < count; ++i) {
            const int node = scene.AddNode(std::string(setup.name) + std::to_string(i + 1),
                                           desc::NodeType::Skeleton, parent);
            scene.nodes[node].translation = i == 0 ? setup.start : Scale(setup.span, 1.0 / count);
            skeleton.siteBones[site].push_back(node);
            parent = node;
        }
    }
    return skeleton;
}

void ComputeBindPose(const SceneDescription& scene, Skeleton& skeleton) {
    skeleton.world.resize(scene.nodes.size());
    for (std::size_t i = 0; i < scene.nodes.size(); ++i)
        skeleton.world[i] = desc::WorldMatrix(scene, static_cast<int>(i));
}

// ---------------------------------------------------------------------------------------------
// Tubes

enum MaterialSlot { kSkin, kShirt, kTrousers, kShoes };

// A point of a chain, given in a bone's frame, and the bone the stretch from it to the next
// point follows (unused at the last point).
struct ChainPoint {
    int frame;  // scene node
    Vec3 offset;
    int bone;  // scene node
};

struct Radii {
    double s;      // arc length along the chain as designed; scaled to the chain's real length
    double side;   // radius across
    double front;  // radius towards the chain's front direction
};

struct MaterialSpan {
    double from;  // arc length as designed, like Radii::s
    int material;
};

struct Chain {
    std::vector<ChainPoint> points;
    int parentBone = -1;  // shares the first point, half and half
    int childBone = -1;   // shares the last point, half and half
    Vec3 front = {0, 0, 1};
    double sides = 1;  // relative to the torso's
    std::vector<Radii> radii;
    std::vector<MaterialSpan> materials;
};

using Weights = std::vector<std::pair<int, double>>;  // scene node, weight

// A ring of the tube: where it sits, which way the tube runs, and the weights of its points.
struct Station {
    Vec3 centre;
    Vec3 direction;
    double s;  // arc length from the chain's start
    Weights weights;
};

double Smooth(double x) {
    x = std::clamp(x, 0.0, 1.0);
    return x * x * (3 - 2 * x);
}

Weights Blend(int from, int to, double share) {
    if (from < 0 || from == to || share <= 0)
        return {{to, 1.0}};
    return {{from, share}, {to, 1.0 - share}};
}

// The rings of one chain, ringsPerUnit along its length and one at every point.
std::vector<Station> Stations(const Chain& chain, const Skeleton& skeleton, double ringsPerUnit) {
    std::vector<Vec3> points;
    std::vector<int> bones;
    for (const ChainPoint& p : chain.points) {
        const Vec3 at = desc::TransformPoint(skeleton.world[p.frame], p.offset);
        if (!points.empty() && Length(Sub(at, points.back())) < 1e-9)
            continue;  // a stretch of no length has no ring
        points.push_back(at);
        bones.push_back(p.bone);
    }
    std::vector<Station> stations;
    if (points.size() < 2)
        return stations;
    const std::size_t segments = points.size() - 1;
    std::vector<double> lengths(segments);
    std::vector<Vec3> directions(segments);
    for (std::size_t j = 0; j < segments; ++j) {
        const Vec3 d = Sub(points[j + 1], points[j]);
        lengths[j] = Length(d);
        directions[j] = Scale(d, 1 / lengths[j]);
    }
    auto blendWidth = [&](std::size_t a, std::size_t b) {
        return std::min({kBlend, 0.35 * lengths[a], 0.35 * lengths[b]});
    };
    double s = 0;
    for (std::size_t j = 0; j < segments; ++j) {
        const double length = lengths[j];
        const int bone = bones[j];
        const int previous = j > 0 ? bones[j - 1] : chain.parentBone;
        const int next = j + 1 < segments ? bones[j + 1] : chain.childBone;
        const double startWidth = blendWidth(j, j > 0 ? j - 1 : j);
        const double endWidth = blendWidth(j, j + 1 < segments ? j + 1 : j);
        const int steps = std::max(1, static_cast<int>(std::ceil(length * ringsPerUnit)));
        const bool last = j + 1 == segments;
        for (int i = 0; i <= (last ? steps : steps - 1); ++i) {
            const double t = length * i / steps;
            Station station;
            station.centre = Add(points[j], Scale(directions[j], t));
            station.direction = directions[j];
            if (i == 0 && j > 0)
                station.direction =
                    Normalized(Add(directions[j - 1], directions[j]), directions[j]);
            station.s = s + t;
            if (t < startWidth) {
                station.weights = Blend(previous, bone, 0.5 * (1 - Smooth(t / startWidth)));
            } else if (length - t < endWidth) {
                station.weights = Blend(next, bone, 0.5 * (1 - Smooth((length - t) / endWidth)));
            } else {
                station.weights = {{bone, 1.0}};
            }
            stations.push_back(std::move(station));
        }
        s += length;
    }
    return stations;
}

// The radii at arc length s of a chain whose designed length is scaled to `length`.
std::pair<double, double> RadiiAt(const Chain& chain, double s, double length) {
    const auto& r = chain.radii;
    const double scale = r.back().s > 0 && length > 0 ? r.back().s / length : 1.0;
    const double at = s * scale;
    if (at <= r.front().s)
        return {r.front().side, r.front().front};
    for (std::size_t i = 1; i < r.size(); ++i) {
        if (at <= r[i].s) {
            const double f = (at - r[i - 1].s) / std::max(1e-12, r[i].s - r[i - 1].s);
            return {r[i - 1].side + (r[i].side - r[i - 1].side) * f,
                    r[i - 1].front + (r[i].front - r[i - 1].front) * f};
        }
    }
    return {r.back().side, r.back().front};
}

int MaterialAt(const Chain& chain, double s, double length) {
    const double scale = chain.radii.back().s > 0 && length > 0 ? chain.radii.back().s / length : 1;
    int material = chain.materials.front().material;
    for (const MaterialSpan& span : chain.materials) {
        if (s * scale >= span.from)
            material = span.material;
    }
    return material;
}

int SidesOf(const Chain& chain, int torsoSides) {
    return std::max(4, static_cast<int>(std::lround(torsoSides * chain.sides)));
}

// How finely the tubes are cut: sides of the torso, and rings per unit of length.
struct Detail {
    int torsoSides = 4;
    double ringsPerUnit = 1;
};

Detail DetailFor(double level) {
    return {std::max(4, static_cast<int>(std::lround(10 * level))), 14 * level};
}

std::size_t CornerCount(const std::vector<Chain>& chains, const Skeleton& skeleton, Detail detail) {
    std::size_t corners = 0;
    for (const Chain& chain : chains) {
        const std::size_t rings = Stations(chain, skeleton, detail.ringsPerUnit).size();
        if (rings < 2)
            continue;
        const auto sides = static_cast<std::size_t>(SidesOf(chain, detail.torsoSides));
        corners += (rings - 1) * sides * 4 + 2 * sides * 3;
    }
    return corners;
}

// The finest detail whose corner count comes closest to the wanted one.
Detail ChooseDetail(const std::vector<Chain>& chains, const Skeleton& skeleton,
                    std::size_t wanted) {
    double lo = 0.01, hi = 400;
    Detail best = DetailFor(lo);
    auto distance = [&](std::size_t count) {
        return count > wanted ? count - wanted : wanted - count;
    };
    std::size_t bestDistance = distance(CornerCount(chains, skeleton, best));
    for (int i = 0; i < 40; ++i) {
        const double mid = std::sqrt(lo * hi);
        const Detail detail = DetailFor(mid);
        const std::size_t count = CornerCount(chains, skeleton, detail);
        if (distance(count) < bestDistance) {
            best = detail;
            bestDistance = distance(count);
        }
        (count < wanted ? lo : hi) = mid;
    }
    return best;
}

class MeshBuilder {
public:
    explicit MeshBuilder(desc::Mesh& mesh) : m_Mesh(mesh) {
        m_Mesh.normals.resize(1);
        m_Mesh.uvs.resize(1);
        m_Mesh.uvs[0].name = "map1";
        m_Mesh.materials.resize(1);
        m_Mesh.materials[0].mapping = desc::Mapping::ByPolygon;
    }

    void AddTube(const Chain& chain, const std::vector<Station>& stations, int torsoSides) {
        if (stations.size() < 2)
            return;
        const int sides = SidesOf(chain, torsoSides);
        const double length = stations.back().s;
        const auto first = static_cast<std::int32_t>(m_Mesh.controlPoints.size());
        for (const Station& station : stations) {
            const Vec3& d = station.direction;
            Vec3 front = Sub(chain.front, Scale(d, Dot(chain.front, d)));
            front = Normalized(front, Normalized(Cross(d, {1, 0, 0}), {0, 1, 0}));
            const Vec3 side = Cross(front, d);  // side, front, direction: right-handed
            const auto [rs, rf] = RadiiAt(chain, station.s, length);
            for (int k = 0; k < sides; ++k) {
                const double a = 2 * kPi * k / sides;
                const Vec3 p = Add(station.centre, Add(Scale(side, rs * std::cos(a)),
                                                       Scale(front, rf * std::sin(a))));
                AddPoint(p, station.weights);
            }
        }
        auto point = [&](std::size_t ring, int k) {
            return first + static_cast<std::int32_t>(ring * sides + (k % sides));
        };
        // Sides, counter-clockwise seen from outside.
        std::vector<std::size_t> sideCorners;
        for (std::size_t r = 0; r + 1 < stations.size(); ++r) {
            const int material = MaterialAt(chain, (stations[r].s + stations[r + 1].s) / 2, length);
            for (int k = 0; k < sides; ++k) {
                sideCorners.push_back(m_Corners.size());
                AddPolygon({point(r, k), point(r, k + 1), point(r + 1, k + 1), point(r + 1, k)},
                           material,
                           {{static_cast<double>(k) / sides, stations[r].s / length},
                            {static_cast<double>(k + 1) / sides, stations[r].s / length},
                            {static_cast<double>(k + 1) / sides, stations[r + 1].s / length},
                            {static_cast<double>(k) / sides, stations[r + 1].s / length}});
            }
        }
        SmoothNormals(sideCorners);
        // The two ends, as fans around a centre point.
        for (int end = 0; end < 2; ++end) {
            const Station& station = end == 0 ? stations.front() : stations.back();
            const std::size_t ring = end == 0 ? 0 : stations.size() - 1;
            const std::int32_t centre = AddPoint(station.centre, station.weights);
            const Vec3 normal = end == 0 ? Scale(station.direction, -1) : station.direction;
            const int material = MaterialAt(chain, station.s, length);
            const double v = end;
            for (int k = 0; k < sides; ++k) {
                const std::int32_t a = point(ring, k), b = point(ring, k + 1);
                const std::size_t corner = m_Corners.size();
                AddPolygon(end == 0 ? std::vector<std::int32_t>{centre, b, a}
                                    : std::vector<std::int32_t>{centre, a, b},
                           material, {{0.5, v}, {0.5, v}, {0.5, v}});
                for (std::size_t c = corner; c < m_Corners.size(); ++c)
                    m_Corners[c].normal = normal;
            }
        }
    }

    // Writes the corners' normals and UVs into the mesh and returns the points' weights.
    std::vector<Weights> Finish() {
        desc::LayerElement& normals = m_Mesh.normals[0];
        desc::LayerElement& uvs = m_Mesh.uvs[0];
        normals.direct.reserve(m_Corners.size() * 3);
        uvs.direct.reserve(m_Corners.size() * 2);
        for (const Corner& c : m_Corners) {
            normals.direct.insert(normals.direct.end(), c.normal.begin(), c.normal.end());
            uvs.direct.insert(uvs.direct.end(), c.uv.begin(), c.uv.end());
        }
        return std::move(m_Weights);
    }

private:
    struct Corner {
        std::int32_t point;
        Vec3 normal;
        desc::Vec2 uv;
    };

    std::int32_t AddPoint(const Vec3& p, const Weights& weights) {
        m_Mesh.controlPoints.push_back(p);
        m_Weights.push_back(weights);
        return static_cast<std::int32_t>(m_Mesh.controlPoints.size()) - 1;
    }

    void AddPolygon(std::vector<std::int32_t> polygon, int material,
                    const std::vector<desc::Vec2>& uvs) {
        for (std::size_t i = 0; i < polygon.size(); ++i)
            m_Corners.push_back({polygon[i], {0, 0, 0}, uvs[i]});
        m_Mesh.polygons.push_back(std::move(polygon));
        m_Mesh.materials[0].indices.push_back(material);
    }

    // Each side corner gets the average of the normals of the side faces around its point.
    void SmoothNormals(const std::vector<std::size_t>& polygonStarts) {
        std::vector<Vec3> sums(m_Mesh.controlPoints.size(), Vec3{0, 0, 0});
        for (std::size_t start : polygonStarts) {
            const Vec3& p0 = m_Mesh.controlPoints[m_Corners[start].point];
            const Vec3& p1 = m_Mesh.controlPoints[m_Corners[start + 1].point];
            const Vec3& p2 = m_Mesh.controlPoints[m_Corners[start + 2].point];
            const Vec3& p3 = m_Mesh.controlPoints[m_Corners[start + 3].point];
            const Vec3 n = Cross(Sub(p2, p0), Sub(p3, p1));  // twice the area, outwards
            for (std::size_t c = start; c < start + 4; ++c) {
                Vec3& sum = sums[m_Corners[c].point];
                sum = Add(sum, n);
            }
        }
        for (std::size_t start : polygonStarts) {
            for (std::size_t c = start; c < start + 4; ++c)
                m_Corners[c].normal = Normalized(sums[m_Corners[c].point], {0, 1, 0});
        }
    }

    desc::Mesh& m_Mesh;
    std::vector<Corner> m_Corners;
    std::vector<Weights> m_Weights;
};

// The tubes of the body, in scene nodes.
std::vector<Chain> BodyChains(const Skeleton& skeleton) {
    const auto& core = skeleton.nodes;
    const auto& sites = skeleton.siteBones;
    std::vector<Chain> chains;
    auto along = [](Chain& chain, const std::vector<int>& bones) {
        for (int bone : bones)
            chain.points.push_back({bone, {0, 0, 0}, bone});
    };

    // Torso, neck and head, from the crotch to the top of the head; designed as heights.
    Chain torso;
    torso.points.push_back({core[kHips], {0, -0.14, 0}, core[kHips]});
    along(torso, {core[kSpine], core[kSpine1], core[kSpine2], core[kNeck], core[kHead]});
    along(torso, sites[kHeadTop]);
    torso.points.push_back({core[kHead], {0, kHeadLength, 0}, -1});
    const double heights[][3] = {{0.86, 0.10, 0.08},   {0.89, 0.15, 0.105},  {0.95, 0.165, 0.11},
                                 {1.05, 0.155, 0.105}, {1.15, 0.14, 0.098},  {1.30, 0.16, 0.108},
                                 {1.42, 0.175, 0.115}, {1.49, 0.17, 0.10},   {1.53, 0.11, 0.07},
                                 {1.57, 0.055, 0.055}, {1.64, 0.055, 0.058}, {1.68, 0.08, 0.09},
                                 {1.75, 0.10, 0.11},   {1.84, 0.10, 0.11},   {1.91, 0.08, 0.088},
                                 {1.95, 0.045, 0.05},  {1.97, 0.012, 0.012}};
    for (const auto& h : heights)
        torso.radii.push_back({h[0] - 0.86, h[1], h[2]});
    torso.materials = {{0, kTrousers}, {1.12 - 0.86, kShirt}, {1.545 - 0.86, kSkin}};
    chains.push_back(torso);

    // Arms from above the shoulder to the finger tips; the shoulder joint is 0.05 down.
    for (int side = 0; side < 2; ++side) {
        const int shoulder = core[side == 0 ? kLeftShoulder : kRightShoulder];
        const int arm = core[side == 0 ? kLeftArm : kRightArm];
        const int hand = core[side == 0 ? kLeftHand : kRightHand];
        Chain chain;
        chain.points.push_back({arm, {-0.05, 0, 0}, shoulder});
        along(chain, {arm, core[side == 0 ? kLeftForeArm : kRightForeArm], hand});
        along(chain, sites[side == 0 ? kLeftFingers : kRightFingers]);
        chain.points.push_back({hand, {kHandLength, 0, 0}, -1});
        chain.parentBone = core[kSpine2];
        chain.sides = 0.6;
        chain.radii = {{0, 0.02, 0.025},     {0.025, 0.045, 0.048}, {0.05, 0.053, 0.053},
                       {0.20, 0.048, 0.048}, {0.33, 0.04, 0.042},   {0.42, 0.043, 0.045},
                       {0.58, 0.028, 0.032}, {0.61, 0.02, 0.042},   {0.66, 0.02, 0.048},
                       {0.70, 0.018, 0.046}, {0.74, 0.016, 0.04},   {0.76, 0.01, 0.026}};
        chain.materials = {{0, kShirt}, {0.45, kSkin}};
        chains.push_back(chain);

        const auto& thumb = sites[side == 0 ? kLeftThumb : kRightThumb];
        if (!thumb.empty()) {
            Chain t;
            along(t, thumb);
            t.points.push_back({thumb.front(), Scale(kThumbDirection, 0.07), -1});
            t.parentBone = hand;
            t.front = {1, 0, 0};
            t.sides = 0.35;
            t.radii = {{0, 0.016, 0.016}, {0.05, 0.013, 0.012}, {0.07, 0.007, 0.006}};
            t.materials = {{0, kSkin}};
            chains.push_back(t);
        }
    }

    // Legs from inside the hips to the ankle, and the feet from the heel to the toe tips.
    for (int side = 0; side < 2; ++side) {
        const int upLeg = core[side == 0 ? kLeftUpLeg : kRightUpLeg];
        const int foot = core[side == 0 ? kLeftFoot : kRightFoot];
        const int toe = core[side == 0 ? kLeftToeBase : kRightToeBase];
        Chain leg;
        leg.points.push_back({upLeg, {0, 0.06, 0}, core[kHips]});
        along(leg, {upLeg, core[side == 0 ? kLeftLeg : kRightLeg]});
        leg.points.push_back({foot, {0, 0, 0}, -1});
        leg.childBone = foot;
        leg.sides = 0.75;
        leg.radii = {{0, 0.07, 0.07},      {0.06, 0.085, 0.088}, {0.25, 0.075, 0.078},
                     {0.47, 0.055, 0.058}, {0.52, 0.052, 0.055}, {0.62, 0.058, 0.062},
                     {0.85, 0.04, 0.042},  {0.90, 0.038, 0.04}};
        leg.materials = {{0, kTrousers}};
        chains.push_back(leg);

        Chain feet;
        feet.points.push_back({foot, {0, -0.055, -0.06}, foot});
        along(feet, {toe});
        along(feet, sites[side == 0 ? kLeftToeTip : kRightToeTip]);
        feet.points.push_back({toe, {0, 0, kToeLength}, -1});
        feet.front = {0, 1, 0};
        feet.sides = 0.6;
        feet.radii = {{0, 0.028, 0.025},    {0.02, 0.04, 0.04},  {0.07, 0.045, 0.048},
                      {0.14, 0.048, 0.036}, {0.20, 0.048, 0.03}, {0.25, 0.042, 0.026},
                      {0.28, 0.02, 0.015}};
        feet.materials = {{0, kShoes}};
        chains.push_back(feet);
    }

    if (!sites[kNose].empty()) {
        Chain nose;
        along(nose, sites[kNose]);
        nose.points.push_back({sites[kNose].front(), {0, 0, 0.05}, -1});
        nose.parentBone = core[kHead];
        nose.front = {0, 1, 0};
        nose.sides = 0.35;
        nose.radii = {{0, 0.018, 0.02}, {0.03, 0.014, 0.016}, {0.05, 0.006, 0.008}};
        nose.materials = {{0, kSkin}};
        chains.push_back(nose);
    }
    return chains;
}

void AddMaterials(SceneDescription& scene) {
    struct Look {
        const char* name;
        Vec3 diffuse;
        Vec3 specular;
        double shininess;
    };
    const Look looks[] = {{"Skin", {0.88, 0.66, 0.52}, {0.15, 0.15, 0.15}, 12},
                          {"Shirt", {0.18, 0.42, 0.78}, {0.3, 0.3, 0.3}, 24},
                          {"Trousers", {0.24, 0.24, 0.3}, {0.1, 0.1, 0.1}, 8},
                          {"Shoes", {0.36, 0.2, 0.1}, {0.6, 0.6, 0.6}, 60}};
    for (const Look& look : looks) {
        desc::Material m;
        m.name = look.name;
        m.shading = desc::ShadingModel::Phong;
        m.diffuse = look.diffuse;
        m.ambient = Scale(look.diffuse, 0.4);
        m.specular = look.specular;
        m.shininess = look.shininess;
        scene.materials.push_back(m);
    }
}

// ---------------------------------------------------------------------------------------------
// Takes

// Rounding noise of the sines (values like 1e-15) written as the zeros they stand for.
double Clean(double v) {
    return std::abs(v) < 1e-9 ? 0.0 : v;
}

std::int64_t Ticks(double seconds) {
    return std::llround(seconds * static_cast<double>(desc::kTicksPerSecond));
}

// bias + amplitude * sin(2 pi t / period + phase), keyed every quarter period from `from` to
// `to` as cubic keys with the sine's own slopes, which follow it closely.
desc::Curve SineCurve(double from, double to, double period, double bias, double amplitude,
                      double phase) {
    desc::Curve curve;
    const double w = 2 * kPi / period;
    const int steps = static_cast<int>(std::lround((to - from) / (period / 4)));
    for (int k = 0; k <= steps; ++k) {
        const double t = from + k * period / 4;
        curve.times.push_back(Ticks(t));
        curve.values.push_back(Clean(bias + amplitude * std::sin(w * (t - from) + phase)));
        curve.interpolation.push_back(desc::Interp::Cubic);
        curve.rightSlopes.push_back(Clean(amplitude * w * std::cos(w * (t - from) + phase)));
    }
    // The slope arriving at each key is the one leaving it: the curve has no corners.
    curve.nextLeftSlopes.assign(curve.rightSlopes.begin() + 1, curve.rightSlopes.end());
    return curve;
}

// Linear keys of f(t) every `step` seconds from `from` to `to`.
template <class F>
desc::Curve LinearCurve(double from, double to, double step, F f) {
    desc::Curve curve;
    const int steps = static_cast<int>(std::lround((to - from) / step));
    for (int k = 0; k <= steps; ++k) {
        curve.times.push_back(Ticks(from + k * step));
        curve.values.push_back(Clean(f(from + k * step)));
        curve.interpolation.push_back(desc::Interp::Linear);
    }
    return curve;
}

struct KeyAt {
    double seconds;
    double value;
    desc::Interp interp;
};

// Keys as given; cubic ones get flat slopes (easing in and out), linear ones straight lines.
desc::Curve Keys(std::initializer_list<KeyAt> keys) {
    desc::Curve curve;
    for (const KeyAt& key : keys) {
        curve.times.push_back(Ticks(key.seconds));
        curve.values.push_back(key.value);
        curve.interpolation.push_back(key.interp);
    }
    return curve;
}

// The curve a's keys followed by b's.
desc::Curve Joined(desc::Curve a, const desc::Curve& b) {
    const std::size_t n = a.times.size();
    a.rightSlopes.resize(n);
    a.nextLeftSlopes.resize(n);
    a.times.insert(a.times.end(), b.times.begin(), b.times.end());
    a.values.insert(a.values.end(), b.values.begin(), b.values.end());
    a.interpolation.insert(a.interpolation.end(), b.interpolation.begin(), b.interpolation.end());
    a.rightSlopes.insert(a.rightSlopes.end(), b.rightSlopes.begin(), b.rightSlopes.end());
    a.nextLeftSlopes.insert(a.nextLeftSlopes.end(), b.nextLeftSlopes.begin(),
                            b.nextLeftSlopes.end());
    return a;
}

desc::NodeAnimation& Animate(desc::Take& take, int node) {
    for (desc::NodeAnimation& a : take.nodes) {
        if (a.node == node)
            return a;
    }
    take.nodes.emplace_back();
    take.nodes.back().node = node;
    return take.nodes.back();
}

// Two strides of one second: thighs and arms swing as sines (cubic keys), the knees bend in
// the swing and the feet follow (linear keys), the hips bob and turn, the chest turns back.
desc::Take WalkTake(const SceneDescription& scene, const Skeleton& skeleton) {
    constexpr double kLength = 2.0, kPeriod = 1.0;
    desc::Take take;
    take.name = "Walk";
    take.start = 0;
    take.stop = Ticks(kLength);
    const auto& core = skeleton.nodes;
    const double w = 2 * kPi / kPeriod;
    for (int side = 0; side < 2; ++side) {
        const double sign = side == 0 ? 1 : -1;  // the right side runs half a stride behind
        const double phase = side == 0 ? 0 : kPi;
        // Thigh: forwards is -X; the bind splay and turn stay as they are.
        Animate(take, core[side == 0 ? kLeftUpLeg : kRightUpLeg]).rotation[0] =
            SineCurve(0, kLength, kPeriod, 0, -25 * sign, 0);
        // Knee: bent most while the leg swings forwards (cos > 0), nearly straight in stance.
        auto knee = [&](double t) {
            const double c = std::cos(w * t + phase);
            return 5 + 55 * std::pow(std::max(0.0, c), 1.5);
        };
        Animate(take, core[side == 0 ? kLeftLeg : kRightLeg]).rotation[0] =
            LinearCurve(0, kLength, kPeriod / 8, knee);
        Animate(take, core[side == 0 ? kLeftFoot : kRightFoot]).rotation[0] =
            LinearCurve(0, kLength, kPeriod / 8,
                        [&](double t) { return -0.45 * knee(t) + 8 * std::sin(w * t + phase); });
        // Arms swing against the legs (forwards is -Y in the arm's frame); elbows bend more
        // in front.
        Animate(take, core[side == 0 ? kLeftArm : kRightArm]).rotation[1] =
            SineCurve(0, kLength, kPeriod, 0, 20 * sign, 0);
        Animate(take, core[side == 0 ? kLeftForeArm : kRightForeArm]).rotation[1] =
            SineCurve(0, kLength, kPeriod, -15, 10 * sign, 0);
    }
    desc::NodeAnimation& hips = Animate(take, core[kHips]);
    const double hipHeight = scene.nodes[core[kHips]].translation[1];
    hips.translation[1] = SineCurve(0, kLength, kPeriod / 2, hipHeight - 0.02, 0.02, kPi / 2);
    hips.rotation[1] =
        LinearCurve(0, kLength, kPeriod / 8, [&](double t) { return 5 * std::sin(w * t); });
    Animate(take, core[kSpine2]).rotation[1] =
        LinearCurve(0, kLength, kPeriod / 8, [&](double t) { return -4 * std::sin(w * t); });
    Animate(take, core[kHead]).rotation[0] = SineCurve(0, kLength, kPeriod / 2, 0, 2, kPi / 2);
    return take;
}

// The right arm rises to the side, holds while the forearm waves twice, and comes down; the
// head tilts and turns towards it.
desc::Take WaveTake(const Skeleton& skeleton) {
    using I = desc::Interp;
    constexpr double kUp = 0.35, kDown = 1.15, kLength = 1.5, kWave = 0.4;
    desc::Take take;
    take.name = "Wave";
    take.start = 0;
    take.stop = Ticks(kLength);
    const auto& core = skeleton.nodes;
    // The raised arm holds its angle: a constant key.
    Animate(take, core[kRightArm]).rotation[2] = Keys({{0, 0, I::Cubic},
                                                       {kUp, -135, I::Constant},
                                                       {kDown, -135, I::Cubic},
                                                       {kLength, 0, I::Cubic}});
    // The forearm eases up, waves twice as a sine (setting off at speed), eases back down.
    desc::Curve wave = SineCurve(kUp, kDown, kWave, -35, -25, 0);
    wave.rightSlopes.back() = 0;
    desc::Curve forearm = Joined(Keys({{0, 0, I::Cubic}}), wave);
    forearm = Joined(forearm, Keys({{kLength, 0, I::Cubic}}));
    Animate(take, core[kRightForeArm]).rotation[2] = forearm;
    // The hand follows the forearm a little late.
    const double w = 2 * kPi / kWave;
    const desc::Curve hand = LinearCurve(
        kUp, kDown, kWave / 4, [&](double t) { return 12 * std::sin(w * (t - kUp) - 0.6); });
    Animate(take, core[kRightHand]).rotation[2] =
        Joined(Joined(Keys({{0, 0, I::Linear}}), hand), Keys({{kLength, 0, I::Linear}}));
    desc::NodeAnimation& head = Animate(take, core[kHead]);
    head.rotation[1] = Keys({{0, 0, I::Linear},
                             {kUp, -12, I::Linear},
                             {kDown, -12, I::Linear},
                             {kLength, 0, I::Linear}});
    head.rotation[2] = Keys(
        {{0, 0, I::Linear}, {kUp, 8, I::Linear}, {kDown, 8, I::Linear}, {kLength, 0, I::Linear}});
    return take;
}

}  // namespace

SceneDescription MakeSkinnedCharacter(const CharacterOptions& options) {
    SceneDescription scene;
    const int body = scene.AddNode("Body", desc::NodeType::Mesh);
    const int bones = std::clamp(options.bones, static_cast<int>(kCoreBones), kMaxBones);
    Skeleton skeleton = AddSkeleton(scene, bones);
    ComputeBindPose(scene, skeleton);

    const std::vector<Chain> chains = BodyChains(skeleton);
    const Detail detail = ChooseDetail(chains, skeleton, std::min(options.corners, kMaxCorners));
    std::vector<Weights> weights;
    {
        desc::Mesh& mesh = scene.nodes[body].mesh;
        MeshBuilder builder(mesh);
        for (const Chain& chain : chains)
            builder.AddTube(chain, Stations(chain, skeleton, detail.ringsPerUnit),
                            detail.torsoSides);
        weights = builder.Finish();
        // Stand on y = 0: the skeleton moves up or down with the mesh.
        double lowest = 0;
        for (std::size_t i = 0; i < mesh.controlPoints.size(); ++i)
            lowest = i == 0 ? mesh.controlPoints[i][1] : std::min(lowest, mesh.controlPoints[i][1]);
        for (Vec3& p : mesh.controlPoints)
            p[1] -= lowest;
        scene.nodes[skeleton.nodes[kHips]].translation[1] -= lowest;
    }
    ComputeBindPose(scene, skeleton);

    AddMaterials(scene);
    scene.nodes[body].materials = {kSkin, kShirt, kTrousers, kShoes};

    // One cluster per bone, in bone order.
    std::vector<int> clusterOf(scene.nodes.size(), -1);
    desc::Skin& skin = scene.nodes[body].skin;
    for (std::size_t node = 0; node < scene.nodes.size(); ++node) {
        if (scene.nodes[node].type != desc::NodeType::Skeleton)
            continue;
        clusterOf[node] = static_cast<int>(skin.clusters.size());
        desc::Cluster cluster;
        cluster.linkNode = static_cast<int>(node);
        cluster.transform = skeleton.world[body];
        cluster.transformLink = skeleton.world[node];
        skin.clusters.push_back(cluster);
    }
    for (std::size_t point = 0; point < weights.size(); ++point) {
        for (const auto& [node, weight] : weights[point]) {
            desc::Cluster& cluster = skin.clusters[clusterOf[node]];
            cluster.indexes.push_back(static_cast<std::int32_t>(point));
            cluster.weights.push_back(weight);
        }
    }

    const int takes = std::clamp(options.takes, 0, 2);
    if (takes >= 1)
        scene.takes.push_back(WalkTake(scene, skeleton));
    if (takes >= 2)
        scene.takes.push_back(WaveTake(skeleton));
    return scene;
}

}  // namespace fbx
