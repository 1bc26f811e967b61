// What the import tests share: bitmaps made byte by byte, files in a scratch folder, scenes
// written with the project's writer, and imports that capture the console report.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fbx/write/WriterScene.h"
#include "import/SceneImport.h"
#include "model/Model.h"

namespace fs = std::filesystem;

// A 24-bit bitmap: the 54-byte header (signature, sizes, data at offset 54) and the data.
inline std::string BitmapBytes(std::int32_t width, std::int32_t height, std::uint32_t imageSize,
                               const std::vector<unsigned char>& data,
                               const char* signature = "BM") {
    std::string out(signature, 2);
    // File size, reserved, data offset, info size, width, height, planes 1 and 24 bits per
    // pixel, compression, image size, resolution, colours: little-endian 32-bit fields.
    const auto size = static_cast<std::uint32_t>(data.size());
    const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
    for (std::uint32_t value :
         {54 + size, 0u, 54u, 40u, w, h, 1u | 24u << 16, 0u, imageSize, 2835u, 2835u, 0u, 0u}) {
        for (int i = 0; i < 4; ++i) {
            out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
        }
    }
    return out.append(data.begin(), data.end());
}

inline std::string ReadText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Imports a file as a state does and returns its console report.
inline std::string ImportReport(const std::string& path, Model& model) {
    ::testing::internal::CaptureStdout();
    ImportModelFile(path, &model);
    return ::testing::internal::GetCapturedStdout();
}

// A fixture with a scratch folder of its own, removed after the test.
template <class Base = ::testing::Test>
class ScratchTest : public Base {
protected:
    void SetUp() override {
        Base::SetUp();
        m_Dir = fs::temp_directory_path() /
                ("import_tests_" +
                 std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::create_directories(m_Dir);
    }
    void TearDown() override { fs::remove_all(m_Dir); }

    // Writes the bytes to a file of the scratch folder; returns its path.
    std::string Write(const std::string& name, const std::string& bytes) {
        const fs::path path = m_Dir / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

    // Writes the scene as a binary (or ASCII) 7500 file; returns its path.
    std::string WriteScene(const fbx::SceneDescription& scene, bool binary = true) {
        const std::string path = (m_Dir / "model.fbx").string();
        std::string error;
        EXPECT_TRUE(fbx::WriteFile(path, scene, 7500, binary, &error)) << error;
        return path;
    }

    fs::path m_Dir;
};
