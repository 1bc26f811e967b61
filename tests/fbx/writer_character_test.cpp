// The generated skinned character read back through our importer: one mesh of about the
// asked size, a cluster per bone holding the bind pose its skeleton describes, every control
// point shared out in full among at most four bones, a figure standing on the floor facing
// +z, four materials by polygon, and the "Walk" and "Wave" takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"
#include "scene_support.h"

namespace fbx {
namespace {

using scenetest::Imported;
using Matrix = std::array<double, 16>;  // column-major, acting on column vectors

constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Matrix Mul(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (int c = 0; c < 4; ++c) {
        for (int r = 0; r < 4; ++r) {
            for (int k = 0; k < 4; ++k)
                m[c * 4 + r] += a[k * 4 + r] * b[c * 4 + k];
        }
    }
    return m;
}

Matrix Translate(const desc::Vec3& t, double sign = 1) {
    Matrix m = kIdentity;
    for (int i = 0; i < 3; ++i)
        m[12 + i] = sign * t[i];
    return m;
}

// Euler angles applied in the order the letters name: "XYZ" is Rz * Ry * Rx.
Matrix Rotate(const desc::Vec3& degrees, const char* order = "XYZ") {
    Matrix m = kIdentity;
    for (const char* axis = order; *axis; ++axis) {
        const int i = *axis - 'X', a = (i + 1) % 3, b = (i + 2) % 3;
        const double c = std::cos(degrees[i] * M_PI / 180), s = std::sin(degrees[i] * M_PI / 180);
        Matrix r = kIdentity;
        r[a * 4 + a] = c;
        r[a * 4 + b] = s;
        r[b * 4 + a] = -s;
        r[b * 4 + b] = c;
        m = Mul(r, m);
    }
    return m;
}

// T * Roff * Rp * Rpre * R * Rpost^-1 * Rp^-1 * Soff * Sp * S * Sp^-1.
Matrix Local(const desc::Node& n) {
    static const char* const kOrders[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX", "XYZ"};
    const desc::Vec3 none = {0, 0, 0};
    const desc::Vec3 post = n.rotationActive ? n.postRotation : none;
    Matrix scaling = kIdentity;
    for (int i = 0; i < 3; ++i)
        scaling[i * 5] = n.scaling[i];
    const Matrix factors[] = {Translate(n.translation),
                              Translate(n.rotationOffset),
                              Translate(n.rotationPivot),
                              Rotate(n.rotationActive ? n.preRotation : none),
                              Rotate(n.rotation, kOrders[n.rotationOrder]),
                              Rotate({-post[0], -post[1], -post[2]}, "ZYX"),
                              Translate(n.rotationPivot, -1),
                              Translate(n.scalingOffset),
                              Translate(n.scalingPivot),
                              scaling,
                              Translate(n.scalingPivot, -1)};
    Matrix m = kIdentity;
    for (const Matrix& f : factors)
        m = Mul(m, f);
    return m;
}

Matrix World(const SceneDescription& scene, int node) {
    const desc::Node& n = scene.nodes[node];
    return n.parent < 0 ? Local(n) : Mul(World(scene, n.parent), Local(n));
}

int NodeNamed(const SceneDescription& scene, const std::string& name) {
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        if (scene.nodes[i].name == name)
            return static_cast<int>(i);
    }
    return -1;
}

void ExpectMatrix(const KFbxXMatrix& actual, const Matrix& expected, const std::string& what) {
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(actual.Get(i / 4, i % 4), expected[i], 1e-9) << what << " element " << i;
}

struct Case {
    int version;
    bool binary;
    std::size_t corners;
    int bones;
};

void PrintTo(const Case& c, std::ostream* os) {
    *os << c.version << (c.binary ? " binary, " : " ASCII, ") << c.corners << " corners, "
        << c.bones << " bones";
}

class CharacterReadBack : public ::testing::TestWithParam<Case> {};

TEST_P(CharacterReadBack, SkinnedAsDescribed) {
    const Case c = GetParam();
    CharacterOptions options;
    options.corners = c.corners;
    options.bones = c.bones;
    const SceneDescription scene = MakeSkinnedCharacter(options);
    const std::string path = std::string(ENGINE_BINARY_DIR) + "/writer_character_" +
                             std::to_string(c.version) + (c.binary ? "_binary.fbx" : "_ascii.fbx");
    std::string error;
    ASSERT_TRUE(WriteFile(path, scene, c.version, c.binary, &error)) << error;
    Imported file(path);
    std::remove(path.c_str());
    ASSERT_TRUE(file.imported) << file.importer->GetLastErrorString();

    KFbxNode* body = file.Find("Body");
    ASSERT_TRUE(body && body->GetMesh());
    KFbxMesh* mesh = body->GetMesh();
    int corners = 0;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p)
        corners += mesh->GetPolygonSize(p);
    EXPECT_NEAR(corners, static_cast<double>(c.corners), 0.1 * c.corners);
    KFbxLayerElementMaterial* materials = mesh->GetLayer(0)->GetMaterials();
    ASSERT_NE(materials, nullptr);
    EXPECT_EQ(materials->GetMappingMode(), KFbxLayerElement::eBY_POLYGON);
    EXPECT_EQ(materials->GetIndexArray().GetCount(), mesh->GetPolygonCount());
    std::vector<std::string> names;
    for (int m = 0; m < body->GetMaterialCount(); ++m)
        names.push_back(body->GetMaterial(m)->GetName());
    EXPECT_EQ(names, (std::vector<std::string>{"Skin", "Shirt", "Trousers", "Shoes"}));

    // A cluster per bone; its bind pose is the bone's world matrix, the mesh's is identity.
    auto* skin = static_cast<KFbxSkin*>(mesh->GetDeformer(0, KFbxDeformer::eSKIN));
    ASSERT_NE(skin, nullptr);
    ASSERT_EQ(skin->GetClusterCount(), c.bones);
    std::vector<double> sums(mesh->GetControlPointsCount());
    std::vector<int> counts(sums.size());
    for (int k = 0; k < skin->GetClusterCount(); ++k) {
        KFbxCluster* cluster = skin->GetCluster(k);
        ASSERT_TRUE(cluster->GetLink() && cluster->GetLink()->GetSkeleton());
        const std::string bone = cluster->GetLink()->GetName();
        EXPECT_GT(cluster->GetControlPointIndicesCount(), 0) << bone;
        KFbxXMatrix matrix;
        ExpectMatrix(cluster->GetTransformLinkMatrix(matrix), World(scene, NodeNamed(scene, bone)),
                     bone);
        ExpectMatrix(cluster->GetTransformMatrix(matrix), kIdentity, bone);
        for (int i = 0; i < cluster->GetControlPointIndicesCount(); ++i) {
            const auto point = static_cast<std::size_t>(cluster->GetControlPointIndices()[i]);
            ASSERT_LT(point, sums.size());
            sums[point] += cluster->GetControlPointWeights()[i];
            ++counts[point];
        }
    }
    for (std::size_t p = 0; p < sums.size(); ++p) {
        EXPECT_NEAR(sums[p], 1.0, 1e-9) << "point " << p;
        EXPECT_TRUE(counts[p] >= 1 && counts[p] <= 4) << "point " << p;
    }

    // About two units tall, on the floor, toes ahead of the ankles (facing +z).
    double low = 1e9, high = -1e9;
    for (int p = 0; p < mesh->GetControlPointsCount(); ++p) {
        low = std::min(low, mesh->GetControlPointAt(p)[1]);
        high = std::max(high, mesh->GetControlPointAt(p)[1]);
    }
    EXPECT_NEAR(low, 0, 1e-9);
    EXPECT_NEAR(high, 2, 0.1);
    for (const char* side : {"Left", "Right"}) {
        const std::string foot = std::string(side) + "Foot", toe = std::string(side) + "ToeBase";
        EXPECT_GT(World(scene, NodeNamed(scene, toe))[14],
                  World(scene, NodeNamed(scene, foot))[14] + 0.1);
    }

    ASSERT_EQ(file.importer->GetTakeCount(), 2);
    EXPECT_EQ(file.importer->GetTakeInfo(0)->mName, "Walk");
    EXPECT_EQ(file.importer->GetTakeInfo(0)->mLocalStop.Get(), 2 * desc::kTicksPerSecond);
    EXPECT_EQ(file.importer->GetTakeInfo(1)->mName, "Wave");
    EXPECT_EQ(file.importer->GetTakeInfo(1)->mLocalStop.Get(), 3 * desc::kTicksPerSecond / 2);
}

INSTANTIATE_TEST_SUITE_P(SizesLayoutsAndEncodings, CharacterReadBack,
                         ::testing::Values(Case{7500, true, 5000, 30}, Case{7500, false, 20000, 45},
                                           Case{6100, false, 1500, 22},
                                           Case{6100, true, 3000, 100}));

}  // namespace
}  // namespace fbx
