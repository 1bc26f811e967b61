// demogen: writes every model and bitmap of the demo game.
//
//   demogen [ROOT]
//
// Writes ROOT/models/*.fbx and ROOT/textures/*.png (ROOT defaults to "Assets"): the loading
// screen, title, arena, the robot and, in character.fbx, a skinned character on the robot's
// stage. The crate and checker images are embedded in the models that show them; the others
// are PNG files the models name as a modelling tool does, relative to the model file
// ("../textures/NAME.png"). The stripes have see-through gaps (an alpha channel). The output
// is the same on every run.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "fbx/write/NodeMatrices.h"
#include "fbx/write/PngFile.h"
#include "fbx/write/SceneDescription.h"
#include "fbx/write/WriterScene.h"
#include "fbx/write/WriterSynthetic.h"

namespace {

namespace fs = std::filesystem;
using fbx::desc::Vec2;
using fbx::desc::Vec3;

constexpr double kPi = 3.14159265358979323846;
constexpr int kFbxVersion = 7500;
constexpr bool kFbxBinary = true;
// The engine steps one key frame per animation tick, 15 ticks a second.
constexpr std::int64_t kTicksPerKey = fbx::desc::kTicksPerSecond / 15;
const std::string kTextureDir = "../textures/";

// ---------------------------------------------------------------------------------------------
// Texture images

struct Rgb {
    int r = 0, g = 0, b = 0;
    int a = 255;  // opacity
};

Rgb Mix(Rgb a, Rgb b, double t) {
    return {static_cast<int>(std::lround(a.r + (b.r - a.r) * t)),
            static_cast<int>(std::lround(a.g + (b.g - a.g) * t)),
            static_cast<int>(std::lround(a.b + (b.b - a.b) * t))};
}

Rgb Scale(Rgb c, double f) {
    return Mix({0, 0, 0}, c, f);
}

// An RGBA image; row 0 is the bottom row, as in an OpenGL texture.
struct Image {
    int m_Width = 64;
    int m_Height = 64;
    std::vector<Rgb> m_Pixels = std::vector<Rgb>(64 * 64);

    void Fill(const std::function<Rgb(int x, int y)>& paint) {
        for (int y = 0; y < m_Height; ++y) {
            for (int x = 0; x < m_Width; ++x) {
                m_Pixels[static_cast<std::size_t>(y * m_Width + x)] = paint(x, y);
            }
        }
    }
};

unsigned char ToByte(int value) {
    return static_cast<unsigned char>(value < 0 ? 0 : value > 255 ? 255 : value);
}

// PNG bytes, top row first as PNG stores it; with an alpha channel only when some pixel is not
// opaque.
std::vector<std::uint8_t> EncodeImage(const Image& image) {
    std::vector<std::uint8_t> rgba;
    bool alpha = false;
    for (int y = image.m_Height - 1; y >= 0; --y) {
        for (int x = 0; x < image.m_Width; ++x) {
            const Rgb& p = image.m_Pixels[static_cast<std::size_t>(y * image.m_Width + x)];
            rgba.insert(rgba.end(), {ToByte(p.r), ToByte(p.g), ToByte(p.b), ToByte(p.a)});
            alpha = alpha || p.a < 255;
        }
    }
    return fbx::EncodePng(image.m_Width, image.m_Height, rgba, alpha);
}

Image CheckerImage() {
    Image image;
    image.Fill([](int x, int y) {
        const bool light = ((x / 16) + (y / 16)) % 2 == 0;
        Rgb c = light ? Rgb{226, 228, 236} : Rgb{62, 84, 138};
        // A thin darker seam between the tiles.
        if (x % 16 == 0 || y % 16 == 0)
            c = Scale(c, 0.8);
        return c;
    });
    return image;
}

Image CrateImage() {
    Image image;
    image.Fill([](int x, int y) {
        const Rgb wood{188, 128, 66};
        const Rgb dark{112, 70, 34};
        // Planks run across, with a grain that follows them.
        const int plank = y / 13;
        const double grain =
            0.5 + 0.5 * std::sin(x * 0.45 + plank * 1.7 + std::sin(x * 0.13) * 2.0);
        Rgb c = Mix(wood, Scale(wood, 0.82), grain);
        if (y % 13 == 0)
            c = Scale(wood, 0.6);
        // The frame around the face and one diagonal brace.
        const bool frame = x < 6 || x >= 58 || y < 6 || y >= 58;
        const bool brace = std::abs(x - y) < 5 && !frame;
        if (frame || brace)
            c = Mix(dark, wood, 0.25 + 0.15 * grain);
        // Nail heads in the corners.
        for (int cx : {3, 60}) {
            for (int cy : {3, 60}) {
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= 2)
                    c = {70, 70, 76};
            }
        }
        return c;
    });
    return image;
}

// Yellow stripes with dark, half see-through gaps between them.
Image StripesImage() {
    Image image;
    image.Fill([](int x, int y) {
        const bool yellow = ((x + y) / 8) % 2 == 0;
        return yellow ? Rgb{246, 200, 36} : Rgb{34, 34, 38, 110};
    });
    return image;
}

Image SkyImage() {
    Image image;
    image.Fill([](int x, int y) {
        // Dim enough that everything in front of it stands out.
        Rgb c = Mix({14, 18, 40}, {52, 34, 92}, y / 63.0);
        // A few faint stars, placed by a fixed hash.
        const unsigned h =
            static_cast<unsigned>(x * 73856093) ^ static_cast<unsigned>(y * 19349663);
        if (h % 97 == 0)
            c = {96, 96, 110};
        return c;
    });
    return image;
}

Image PanelImage() {
    Image image;
    image.Fill([](int x, int y) {
        const Rgb metal{200, 206, 216};
        Rgb c = Mix(metal, Scale(metal, 0.9), (y % 32) / 31.0);
        if (x % 32 == 0 || y % 32 == 0)
            c = Scale(metal, 0.55);  // seams
        const int rx = x % 32, ry = y % 32;
        for (int cx : {4, 28}) {
            for (int cy : {4, 28}) {
                if ((rx - cx) * (rx - cx) + (ry - cy) * (ry - cy) <= 2)
                    c = Scale(metal, 0.5);
            }
        }
        return c;
    });
    return image;
}

// The robot's face: a dark screen with two eyes and a mouth, in a metal frame. The frame's
// corner (u, v below 0.08) also serves as the plain metal of the head's other sides.
Image FaceImage() {
    Image image;
    image.Fill([](int x, int y) {
        const Rgb metal{200, 206, 216};
        if (x < 6 || x >= 58 || y < 6 || y >= 58)
            return metal;
        Rgb c{24, 32, 44};
        for (int ex : {21, 43}) {
            const int dx = x - ex, dy = y - 40;
            if (dx * dx + dy * dy <= 36)
                c = {90, 232, 255};
        }
        if (y >= 16 && y < 22 && x >= 18 && x < 46)
            c = ((x / 4) % 2 == 0) ? Rgb{255, 120, 60} : c;
        return c;
    });
    return image;
}

// ---------------------------------------------------------------------------------------------
// Geometry

struct Matrix3 {
    std::array<double, 9> m = {1, 0, 0, 0, 1, 0, 0, 0, 1};  // row-major

    Vec3 operator*(const Vec3& v) const {
        return {m[0] * v[0] + m[1] * v[1] + m[2] * v[2], m[3] * v[0] + m[4] * v[1] + m[5] * v[2],
                m[6] * v[0] + m[7] * v[1] + m[8] * v[2]};
    }
    Matrix3 operator*(const Matrix3& o) const {
        Matrix3 r;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                r.m[i * 3 + j] =
                    m[i * 3] * o.m[j] + m[i * 3 + 1] * o.m[3 + j] + m[i * 3 + 2] * o.m[6 + j];
            }
        }
        return r;
    }
};

Matrix3 RotationX(double degrees) {
    const double c = std::cos(degrees * kPi / 180), s = std::sin(degrees * kPi / 180);
    return {{1, 0, 0, 0, c, -s, 0, s, c}};
}

Matrix3 RotationY(double degrees) {
    const double c = std::cos(degrees * kPi / 180), s = std::sin(degrees * kPi / 180);
    return {{c, 0, s, 0, 1, 0, -s, 0, c}};
}

// The turn the engine gives a node rotation of (tilt, yaw, 0): about X first, then about Y.
// Positive tilt brings the top towards the viewer so that floors show.
Matrix3 PoseRotation(double tilt, double yaw) {
    return RotationY(yaw) * RotationX(tilt);
}

Vec3 Add(const Vec3& a, const Vec3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

// How a box's faces take the texture.
struct BoxUv {
    double m_Tile = 0;         // > 0: one texture repeat per this many units; 0: each face 0..1
    bool m_FrontOnly = false;  // the front face 0..1, the others the texture's corner
};

// Flat-shaded polygon soup: every quad has corners of its own, with per-corner UVs.
class Shape {
public:
    // Corners counter-clockwise seen from the front, with one UV each.
    void Polygon(const std::vector<Vec3>& corners, const std::vector<Vec2>& uvs) {
        std::vector<std::int32_t> polygon;
        for (std::size_t i = 0; i < corners.size() && i < uvs.size(); ++i) {
            polygon.push_back(static_cast<std::int32_t>(m_Points.size()));
            m_Points.push_back(corners[i]);
            m_Uvs.push_back(uvs[i]);
        }
        m_Polygons.push_back(polygon);
    }

    void Quad(const std::array<Vec3, 4>& corners, const std::array<Vec2, 4>& uvs) {
        Polygon({corners.begin(), corners.end()}, {uvs.begin(), uvs.end()});
    }

    // An axis-aligned box; every face winds counter-clockwise seen from outside.
    void Box(const Vec3& lo, const Vec3& hi, BoxUv uv = {}) {
        const double x0 = lo[0], y0 = lo[1], z0 = lo[2], x1 = hi[0], y1 = hi[1], z1 = hi[2];
        // Face corners, and the two in-plane coordinates of each corner for tiling.
        Face({{{x0, y0, z1}, {x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}}}, 0, 1, true, uv);
        Face({{{x1, y0, z0}, {x0, y0, z0}, {x0, y1, z0}, {x1, y1, z0}}}, 0, 1, false, uv);
        Face({{{x1, y0, z1}, {x1, y0, z0}, {x1, y1, z0}, {x1, y1, z1}}}, 2, 1, false, uv);
        Face({{{x0, y0, z0}, {x0, y0, z1}, {x0, y1, z1}, {x0, y1, z0}}}, 2, 1, false, uv);
        Face({{{x0, y1, z1}, {x1, y1, z1}, {x1, y1, z0}, {x0, y1, z0}}}, 0, 2, false, uv);
        Face({{{x0, y0, z0}, {x1, y0, z0}, {x1, y0, z1}, {x0, y0, z1}}}, 0, 2, false, uv);
    }

    void Transform(const Matrix3& rotation, const Vec3& offset = {0, 0, 0}) {
        for (Vec3& p : m_Points)
            p = Add(rotation * p, offset);
    }

    fbx::desc::Mesh ToMesh() const {
        fbx::desc::Mesh mesh;
        mesh.controlPoints = m_Points;
        mesh.polygons = m_Polygons;
        fbx::desc::LayerElement normals;
        fbx::desc::LayerElement uvs;
        uvs.name = "map1";
        for (const auto& polygon : m_Polygons) {
            const Vec3 n = FaceNormal(polygon);
            for (std::int32_t index : polygon) {
                normals.direct.insert(normals.direct.end(), n.begin(), n.end());
                const Vec2& uv = m_Uvs[static_cast<std::size_t>(index)];
                uvs.direct.insert(uvs.direct.end(), uv.begin(), uv.end());
            }
        }
        mesh.normals.push_back(normals);
        mesh.uvs.push_back(uvs);
        fbx::desc::MaterialElement material;
        material.indices = {0};
        mesh.materials.push_back(material);
        return mesh;
    }

    void Append(const Shape& other) {
        const auto base = static_cast<std::int32_t>(m_Points.size());
        m_Points.insert(m_Points.end(), other.m_Points.begin(), other.m_Points.end());
        m_Uvs.insert(m_Uvs.end(), other.m_Uvs.begin(), other.m_Uvs.end());
        for (std::vector<std::int32_t> polygon : other.m_Polygons) {
            for (std::int32_t& index : polygon)
                index += base;
            m_Polygons.push_back(std::move(polygon));
        }
    }

    std::size_t PointCount() const { return m_Points.size(); }

private:
    void Face(const std::array<Vec3, 4>& c, int u, int v, bool front, BoxUv uv) {
        std::array<Vec2, 4> uvs = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
        if (uv.m_Tile > 0) {
            for (int i = 0; i < 4; ++i) {
                const auto k = static_cast<std::size_t>(i);
                uvs[k] = {c[k][static_cast<std::size_t>(u)] / uv.m_Tile,
                          c[k][static_cast<std::size_t>(v)] / uv.m_Tile};
            }
        } else if (uv.m_FrontOnly && !front) {
            uvs = {{{0.02, 0.02}, {0.07, 0.02}, {0.07, 0.07}, {0.02, 0.07}}};
        }
        Quad(c, uvs);
    }

    Vec3 FaceNormal(const std::vector<std::int32_t>& polygon) const {
        const Vec3& p0 = m_Points[static_cast<std::size_t>(polygon[0])];
        const Vec3& p1 = m_Points[static_cast<std::size_t>(polygon[1])];
        const Vec3& p2 = m_Points[static_cast<std::size_t>(polygon[2])];
        const Vec3 a = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
        const Vec3 b = {p2[0] - p1[0], p2[1] - p1[1], p2[2] - p1[2]};
        Vec3 n = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        if (length > 0) {
            for (double& value : n)
                value /= length;
        }
        return n;
    }

    std::vector<Vec3> m_Points;
    std::vector<Vec2> m_Uvs;
    std::vector<std::vector<std::int32_t>> m_Polygons;
};

// ---------------------------------------------------------------------------------------------
// Scene building

struct Look {
    Vec3 m_Diffuse = {0.8, 0.8, 0.8};
    double m_Emissive = 0.1;  // keeps faces that turn away from the light readable
    std::string m_Texture;    // image file name without directory, or empty
};

// The demo's images by file name.
Image TextureImage(const std::string& name) {
    static const std::pair<const char*, Image (*)()> kImages[] = {
        {"checker.png", CheckerImage}, {"crate.png", CrateImage}, {"stripes.png", StripesImage},
        {"sky.png", SkyImage},         {"panel.png", PanelImage}, {"face.png", FaceImage}};
    for (const auto& [file, make] : kImages) {
        if (name == file)
            return make();
    }
    return Image();
}

// Images the models carry inside them, as exporters embed them; the others are files.
bool IsEmbedded(const std::string& name) {
    return name == "checker.png" || name == "crate.png";
}

int AddMaterial(fbx::SceneDescription& scene, const std::string& name, const Look& look) {
    fbx::desc::Material material;
    material.name = name;
    material.diffuse = look.m_Diffuse;
    material.ambient = look.m_Diffuse;
    material.emissive = {look.m_Emissive, look.m_Emissive, look.m_Emissive};
    if (!look.m_Texture.empty()) {
        fbx::desc::Texture texture;
        texture.name = name + "Texture";
        texture.fileName = kTextureDir + look.m_Texture;
        texture.relativeFileName = kTextureDir + look.m_Texture;
        if (IsEmbedded(look.m_Texture))
            texture.content = EncodeImage(TextureImage(look.m_Texture));
        scene.textures.push_back(texture);
        material.diffuseTextures.push_back(static_cast<int>(scene.textures.size()) - 1);
    }
    scene.materials.push_back(material);
    return static_cast<int>(scene.materials.size()) - 1;
}

int AddMeshNode(fbx::SceneDescription& scene, const std::string& name, const Shape& shape,
                const Look& look, int parent = -1) {
    const int node = scene.AddNode(name, fbx::desc::NodeType::Mesh, parent);
    scene.nodes[static_cast<std::size_t>(node)].mesh = shape.ToMesh();
    scene.nodes[static_cast<std::size_t>(node)].materials = {
        AddMaterial(scene, name + "Material", look)};
    return node;
}

// A wall far behind everything, facing the camera; big enough to fill the picture while the
// scene is moved or turned a fair way.
void AddBackdrop(fbx::SceneDescription& scene) {
    Shape wall;
    wall.Quad({{{-70, -50, -30}, {70, -50, -30}, {70, 50, -30}, {-70, 50, -30}}},
              {{{0, 0}, {1.4, 0}, {1.4, 1}, {0, 1}}});
    AddMeshNode(scene, "Backdrop", wall, {{1, 1, 1}, 0.05, "sky.png"});
}

Shape Crate(const Vec3& centre, double size) {
    Shape shape;
    const double h = size / 2;
    shape.Box({centre[0] - h, centre[1] - h, centre[2] - h},
              {centre[0] + h, centre[1] + h, centre[2] + h});
    return shape;
}

// The loading screen: a row of striped blocks.
fbx::SceneDescription LoadingScene() {
    fbx::SceneDescription scene;
    AddBackdrop(scene);
    Shape bar;
    for (int i = 0; i < 5; ++i) {
        bar.Box({-9.0 + i * 3.8, -1.2, -1.2}, {-6.6 + i * 3.8, 1.2, 1.2});
    }
    bar.Transform(PoseRotation(15, -20));
    AddMeshNode(scene, "LoadingBar", bar, {{1, 1, 1}, 0.2, "stripes.png"});
    return scene;
}

// 5 x 7 block letters, top row first.
const std::array<const char*, 7> kLetterF = {"#####", "#....", "#....", "####.",
                                             "#....", "#....", "#...."};
const std::array<const char*, 7> kLetterB = {"####.", "#...#", "#...#", "####.",
                                             "#...#", "#...#", "####."};
const std::array<const char*, 7> kLetterX = {"#...#", "#...#", ".#.#.", "..#..",
                                             ".#.#.", "#...#", "#...#"};

Shape Letter(const std::array<const char*, 7>& rows, double left, double bottom, double cell) {
    Shape shape;
    for (int row = 0; row < 7; ++row) {
        for (int column = 0; column < 5; ++column) {
            if (rows[static_cast<std::size_t>(row)][column] != '#')
                continue;
            const double x = left + column * cell;
            const double y = bottom + (6 - row) * cell;
            shape.Box({x, y, -0.8}, {x + cell, y + cell, 0.8});
        }
    }
    return shape;
}

// The title: "FBX" in block letters standing on a checkered platform, with two crates.
fbx::SceneDescription TitleScene() {
    fbx::SceneDescription scene;
    AddBackdrop(scene);
    const Matrix3 pose = PoseRotation(12, -18);
    const double cell = 1.1;
    struct Part {
        const char* name;
        const std::array<const char*, 7>* rows;
        Vec3 colour;
    };
    const Part letters[] = {{"LetterF", &kLetterF, {0.95, 0.25, 0.2}},
                            {"LetterB", &kLetterB, {0.95, 0.8, 0.15}},
                            {"LetterX", &kLetterX, {0.25, 0.55, 1.0}}};
    for (int i = 0; i < 3; ++i) {
        Shape letter = Letter(*letters[i].rows, -9.9 + i * 7.0, -3.7, cell);
        letter.Transform(pose);
        AddMeshNode(scene, letters[i].name, letter, {letters[i].colour, 0.12, ""});
    }
    Shape platform;
    platform.Box({-14, -5.0, -5}, {14, -3.7, 5}, {4.0, false});
    platform.Transform(pose);
    AddMeshNode(scene, "Platform", platform, {{1, 1, 1}, 0.35, "checker.png"});
    Shape crates = Crate({-12, -2.45, 2}, 2.5);
    crates.Append(Crate({12, -2.45, 1.5}, 2.5));
    crates.Transform(pose);
    AddMeshNode(scene, "Crates", crates, {{1, 1, 1}, 0.15, "crate.png"});
    return scene;
}

// The arena: a checkered floor seen from above, crates and striped posts.
fbx::SceneDescription ArenaScene() {
    fbx::SceneDescription scene;
    AddBackdrop(scene);
    const Matrix3 pose = PoseRotation(30, -30);
    Shape floor;
    floor.Box({-14, -1, -14}, {14, 0, 14}, {4.0, false});
    floor.Transform(pose);
    AddMeshNode(scene, "Floor", floor, {{1, 1, 1}, 0.4, "checker.png"});

    Shape crates;
    const Vec3 spots[] = {{-7, 1.5, -7}, {7, 1.5, -5}, {-4, 1.5, 7}, {7, 1.5, 7},
                          {7, 4.5, 7},   {0, 1.5, 0},  {0, 4.5, 0},  {3, 1.5, 0}};
    for (const Vec3& spot : spots)
        crates.Append(Crate(spot, 3.0));
    crates.Transform(pose);
    AddMeshNode(scene, "Crates", crates, {{1, 1, 1}, 0.15, "crate.png"});

    Shape posts;
    for (double x : {-12.5, 12.5}) {
        for (double z : {-12.5, 12.5})
            posts.Box({x - 0.7, 0, z - 0.7}, {x + 0.7, 6, z + 0.7}, {2.0});
    }
    posts.Transform(pose);
    AddMeshNode(scene, "Posts", posts, {{1, 1, 1}, 0.2, "stripes.png"});
    return scene;
}

// ---------------------------------------------------------------------------------------------
// The robot: a skeleton of seven bones, each with a mesh of the same name modelled around the
// bone's origin and skinned to it. The engine draws such a mesh at its bone's key-frame
// translation and scale, so the robot is animated by translation and scale keys only.

enum BoneId { kHips, kBody, kHead, kArmL, kArmR, kLegL, kLegR, kBoneCount };

const char* const kBoneNames[kBoneCount] = {"Hips", "Body", "Head", "ArmL", "ArmR", "LegL", "LegR"};

// Bone origins in the robot's own space (before its pose); every bone hangs off "Hips", which
// sits at the origin, so a bone's local translation is also its place in the model.
const Vec3 kPivots[kBoneCount] = {{0, 0, 0},      {0, 0.6, 0},    {0, 4.4, 0},    {2.6, 4.0, 0},
                                  {-2.6, 4.0, 0}, {1.0, -0.6, 0}, {-1.0, -0.6, 0}};

constexpr double kRobotTilt = 10;
constexpr double kRobotYaw = -20;

// Key counts of the takes, in file order; the frame ranges of stage.xml follow from them.
constexpr int kJumpKeys = 12;  // frames 0..11
constexpr int kWaveKeys = 16;  // frames 12..27
constexpr int kIdleKeys = 20;  // frames 28..47; the last equals the first, so the loop is seamless

struct Channel {
    Vec3 m_Offset = {0, 0, 0};
    Vec3 m_Scale = {1, 1, 1};
};
using RobotPose = std::array<Channel, kBoneCount>;

RobotPose IdlePose(int key) {
    RobotPose pose;
    const double phase = 2 * kPi * key / (kIdleKeys - 1);
    const double breathe = 0.05 * std::sin(phase);
    pose[kBody].m_Scale[1] = 1 + breathe;
    pose[kHead].m_Offset = {0.15 * std::sin(phase), 3.8 * breathe, 0};
    for (BoneId arm : {kArmL, kArmR})
        pose[arm].m_Offset[1] = 3.4 * breathe;
    pose[kArmL].m_Scale[1] = 1 - 0.06 * std::sin(phase);
    pose[kArmR].m_Scale[1] = 1 + 0.06 * std::sin(phase);
    return pose;
}

RobotPose JumpPose(int key) {
    static const double lift[kJumpKeys] = {-0.4, -0.8, -0.8, 0.6, 2.2,  3.4,
                                           3.8,  3.4,  2.2,  0.6, -0.6, 0.0};
    static const double arms[kJumpKeys] = {1, 1, 1, 0.3, -0.5, -1, -1, -1, -0.5, 0.3, 1, 1};
    RobotPose pose;
    const double y = lift[key];
    for (Channel& channel : pose)
        channel.m_Offset[1] = y;
    for (BoneId arm : {kArmL, kArmR})
        pose[arm].m_Scale[1] = arms[key];
    for (BoneId leg : {kLegL, kLegR}) {
        // Crouching squeezes the legs so the feet stay on the floor; in the air they tuck.
        pose[leg].m_Scale[1] = y < 0 ? (4.2 + y) / 4.2 : y > 0 ? 0.9 : 1.0;
    }
    return pose;
}

RobotPose WavePose(int key) {
    static const double raise[kWaveKeys] = {1,  0.4, -0.3, -0.9, -1,   -1,   -1,  -1,
                                            -1, -1,  -1,   -1,   -0.9, -0.3, 0.4, 1};
    RobotPose pose;
    pose[kArmR].m_Scale[1] = raise[key];
    if (key >= 4 && key < 12) {
        pose[kArmR].m_Offset[0] = 0.7 * std::sin(kPi * (key - 4) / 2);
        pose[kHead].m_Offset[0] = -0.25;
    }
    return pose;
}

struct RobotTake {
    const char* m_Name;
    int m_Keys;
    RobotPose (*m_Pose)(int key);
};

const RobotTake kRobotTakes[] = {
    {"Jump", kJumpKeys, JumpPose}, {"Wave", kWaveKeys, WavePose}, {"Idle", kIdleKeys, IdlePose}};

Shape BonePiece(BoneId bone) {
    Shape shape;
    const BoxUv face{0, true};
    switch (bone) {
        case kHips:
            shape.Box({-1.7, -0.7, -1.0}, {1.7, 0.6, 1.0});
            break;
        case kBody:
            shape.Box({-2.1, 0, -1.3}, {2.1, 3.8, 1.3});
            break;
        case kHead:
            shape.Box({-1.4, 0, -1.3}, {1.4, 2.6, 1.3}, face);
            shape.Box({-0.15, 2.6, -0.15}, {0.15, 3.3, 0.15}, face);  // antenna
            shape.Box({-0.35, 3.3, -0.35}, {0.35, 3.9, 0.35}, face);
            break;
        case kArmL:
        case kArmR:
            shape.Box({-0.5, -3.5, -0.55}, {0.5, 0.4, 0.55});
            shape.Box({-0.65, -4.2, -0.65}, {0.65, -3.5, 0.65});  // hand
            break;
        case kLegL:
        case kLegR:
            shape.Box({-0.6, -3.6, -0.6}, {0.6, 0, 0.6});
            shape.Box({-0.75, -4.2, -0.8}, {0.75, -3.6, 1.2});  // foot
            break;
        default:
            break;
    }
    return shape;
}

Look BoneLook(BoneId bone) {
    switch (bone) {
        case kHips:
            return {{0.55, 0.58, 0.65}, 0.12, "panel.png"};
        case kBody:
            return {{1.0, 0.55, 0.22}, 0.12, "panel.png"};
        case kHead:
            return {{1, 1, 1}, 0.12, "face.png"};
        default:
            return {{0.85, 0.88, 0.95}, 0.12, "panel.png"};
    }
}

fbx::desc::Matrix4 Placement(const Matrix3& rotation, const Vec3& translation) {
    fbx::desc::Matrix4 m = fbx::desc::kIdentity;
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            m[static_cast<std::size_t>(column * 4 + row)] =
                rotation.m[static_cast<std::size_t>(row * 3 + column)];
        }
    }
    for (int i = 0; i < 3; ++i)
        m[static_cast<std::size_t>(12 + i)] = translation[i];
    return m;
}

void AddStageAndProps(fbx::SceneDescription& scene, const Matrix3& pose);

fbx::SceneDescription RobotScene() {
    fbx::SceneDescription scene;
    AddBackdrop(scene);
    const Matrix3 pose = PoseRotation(kRobotTilt, kRobotYaw);

    std::array<int, kBoneCount> bones{};
    for (int b = 0; b < kBoneCount; ++b) {
        const auto id = static_cast<BoneId>(b);
        const int parent = b == kHips ? -1 : bones[kHips];
        bones[id] = scene.AddNode(kBoneNames[b], fbx::desc::NodeType::Skeleton, parent);
        fbx::desc::Node& node = scene.nodes[static_cast<std::size_t>(bones[id])];
        node.translation = pose * kPivots[b];
        node.rotation = {kRobotTilt, kRobotYaw, 0};

        const Shape piece = BonePiece(id);
        const int mesh = AddMeshNode(scene, kBoneNames[b], piece, BoneLook(id), bones[id]);
        fbx::desc::Cluster cluster;
        cluster.linkNode = bones[id];
        for (std::size_t i = 0; i < piece.PointCount(); ++i) {
            cluster.indexes.push_back(static_cast<std::int32_t>(i));
            cluster.weights.push_back(1.0);
        }
        cluster.transform = Placement(pose, node.translation);
        cluster.transformLink = cluster.transform;
        scene.nodes[static_cast<std::size_t>(mesh)].skin.clusters.push_back(cluster);
    }

    for (const RobotTake& source : kRobotTakes) {
        fbx::desc::Take take;
        take.name = source.m_Name;
        std::vector<RobotPose> keys;
        for (int key = 0; key < source.m_Keys; ++key)
            keys.push_back(source.m_Pose(key));
        for (int b = 0; b < kBoneCount; ++b) {
            fbx::desc::NodeAnimation animation;
            animation.node = bones[static_cast<std::size_t>(b)];
            for (int key = 0; key < source.m_Keys; ++key) {
                const Channel& channel =
                    keys[static_cast<std::size_t>(key)][static_cast<std::size_t>(b)];
                const Vec3 at = pose * Add(kPivots[b], channel.m_Offset);
                for (std::size_t c = 0; c < 3; ++c) {
                    animation.translation[c].times.push_back(key * kTicksPerKey);
                    animation.translation[c].values.push_back(at[c]);
                    animation.scaling[c].times.push_back(key * kTicksPerKey);
                    animation.scaling[c].values.push_back(channel.m_Scale[c]);
                }
            }
            take.nodes.push_back(animation);
        }
        scene.takes.push_back(take);
    }

    AddStageAndProps(scene, pose);
    return scene;
}

// The round stage a figure stands on (its top at y = -4.8 before the pose), and two crates
// beside it; neither moves.
void AddStageAndProps(fbx::SceneDescription& scene, const Matrix3& pose) {
    Shape stage;
    constexpr int kSides = 12;
    std::vector<Vec3> rim;
    for (int i = 0; i < kSides; ++i) {
        const double a = 2 * kPi * (i + 0.5) / kSides;
        rim.push_back({7 * std::cos(a), 0, -7 * std::sin(a)});
    }
    for (int i = 0; i < kSides; ++i) {
        const Vec3& p = rim[static_cast<std::size_t>(i)];
        const Vec3& q = rim[static_cast<std::size_t>((i + 1) % kSides)];
        stage.Quad(
            {{{p[0], -5.6, p[2]}, {q[0], -5.6, q[2]}, {q[0], -4.8, q[2]}, {p[0], -4.8, p[2]}}},
            {{{0, 0}, {1, 0}, {1, 0.2}, {0, 0.2}}});
    }
    // The top: one twelve-sided polygon, which the engine draws as a fan.
    std::vector<Vec3> top;
    std::vector<Vec2> topUvs;
    for (const Vec3& p : rim) {
        top.push_back({p[0], -4.8, p[2]});
        topUvs.push_back({p[0] / 3.5, p[2] / 3.5});
    }
    stage.Polygon(top, topUvs);
    stage.Transform(pose);
    AddMeshNode(scene, "Stage", stage, {{1, 1, 1}, 0.4, "checker.png"});

    Shape props = Crate({-9.5, -3.3, -2}, 3.0);
    props.Append(Crate({9.0, -3.55, -1}, 2.5));
    props.Transform(pose);
    AddMeshNode(scene, "Props", props, {{1, 1, 1}, 0.15, "crate.png"});
}

// ---------------------------------------------------------------------------------------------
// The skinned character: the robot's stage, props and backdrop with a MakeSkinnedCharacter()
// figure in the robot's place, hung from a root node that scales it to the robot's size and
// turns it like the robot. Its takes are "Walk" (2 s) and "Wave" (1.5 s).

constexpr double kCharacterScale = 6.0;  // two units tall; the robot is about thirteen

fbx::SceneDescription CharacterScene() {
    fbx::SceneDescription scene;
    AddBackdrop(scene);
    const Matrix3 pose = PoseRotation(kRobotTilt, kRobotYaw);
    const int root = scene.AddNode("Character", fbx::desc::NodeType::Null);
    {
        fbx::desc::Node& node = scene.nodes[static_cast<std::size_t>(root)];
        node.translation = pose * Vec3{0, -4.8, 0};  // feet on the stage
        node.rotation = {kRobotTilt, kRobotYaw, 0};
        node.scaling = {kCharacterScale, kCharacterScale, kCharacterScale};
    }

    // The character's nodes, materials and takes, their indices moved past what is there.
    const fbx::SceneDescription character = fbx::MakeSkinnedCharacter();
    const int nodeBase = static_cast<int>(scene.nodes.size());
    const int materialBase = static_cast<int>(scene.materials.size());
    for (fbx::desc::Node node : character.nodes) {
        node.parent = node.parent < 0 ? root : node.parent + nodeBase;
        for (int& material : node.materials)
            material += materialBase;
        for (fbx::desc::Cluster& cluster : node.skin.clusters)
            cluster.linkNode += nodeBase;
        scene.nodes.push_back(std::move(node));
    }
    for (fbx::desc::Material material : character.materials) {
        // Lit like the rest of the demo: ambient as diffuse, and a little glow.
        material.ambient = material.diffuse;
        material.emissive = {0.12, 0.12, 0.12};
        scene.materials.push_back(material);
    }
    for (fbx::desc::Take take : character.takes) {
        for (fbx::desc::NodeAnimation& animation : take.nodes)
            animation.node += nodeBase;
        scene.takes.push_back(std::move(take));
    }
    // The bind pose now includes the root's placement.
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        for (fbx::desc::Cluster& cluster : scene.nodes[i].skin.clusters) {
            cluster.transform = fbx::desc::WorldMatrix(scene, static_cast<int>(i));
            cluster.transformLink = fbx::desc::WorldMatrix(scene, cluster.linkNode);
        }
    }

    AddStageAndProps(scene, pose);
    return scene;
}

bool WriteModel(const fs::path& path, const fbx::SceneDescription& scene) {
    std::string error;
    if (!fbx::WriteFile(path.string(), scene, kFbxVersion, kFbxBinary, &error)) {
        std::fprintf(stderr, "demogen: cannot write %s: %s\n", path.string().c_str(),
                     error.c_str());
        return false;
    }
    std::printf("demogen: wrote %s\n", path.string().c_str());
    return true;
}

bool WriteTexture(const fs::path& path, const Image& image) {
    const std::vector<std::uint8_t> png = EncodeImage(image);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    if (png.empty() || !file) {
        std::fprintf(stderr, "demogen: cannot write %s\n", path.string().c_str());
        return false;
    }
    std::printf("demogen: wrote %s\n", path.string().c_str());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr const char* kUsage =
        "usage: demogen [ROOT]   (writes ROOT/models and ROOT/textures)\n"
        "       demogen --help | --version\n"
        "Writes the demo game's models and textures, by default into ./Assets.\n";
    if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::printf("demogen %s\n", TOOL_VERSION);
        return 0;
    }
    if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const fs::path root = argc == 2 ? fs::path(argv[1]) : fs::path("Assets");
    std::error_code error;
    fs::create_directories(root / "models", error);
    fs::create_directories(root / "textures", error);
    if (error) {
        std::fprintf(stderr, "demogen: cannot create %s: %s\n", root.string().c_str(),
                     error.message().c_str());
        return 1;
    }

    bool ok = true;
    const fs::path textures = root / "textures";
    for (const char* name : {"stripes.png", "sky.png", "panel.png", "face.png"})
        ok = WriteTexture(textures / name, TextureImage(name)) && ok;

    const fs::path models = root / "models";
    ok = WriteModel(models / "loading.fbx", LoadingScene()) && ok;
    ok = WriteModel(models / "title.fbx", TitleScene()) && ok;
    ok = WriteModel(models / "arena.fbx", ArenaScene()) && ok;
    ok = WriteModel(models / "robot.fbx", RobotScene()) && ok;
    ok = WriteModel(models / "character.fbx", CharacterScene()) && ok;
    return ok ? 0 : 1;
}
