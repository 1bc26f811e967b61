#include "bench/CharacterBench.h"

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <list>

#include "bench/FrameBench.h"
#include "bench/Importers.h"
#include "import/SceneImport.h"
#include "model/Pose.h"
#include "render/AuthoredDraw.h"
#include "render/Draw.h"

namespace {
constexpr int kColumns = 4;
}  // namespace

CharacterCrowd::CharacterCrowd(const std::string& modelPath, ModelLook look, int count)
    : m_Look(look) {
    Model prototype;
    {
        QuietStdout quiet;
        ImportModelFile(modelPath, &prototype, look);
    }
    if (prototype.m_Authored) {
        for (const AuthoredMesh& mesh : prototype.m_Authored->m_Meshes) {
            m_Corners += mesh.m_CornerPoints.size();
            m_Bones += mesh.m_Clusters.size();
        }
        if (!prototype.m_Authored->m_Takes.empty()) {
            m_FirstFrame = prototype.m_Authored->m_Takes.front().m_FirstFrame;
            m_LastFrame = prototype.m_Authored->m_Takes.front().m_LastFrame;
        }
    }
    for (int i = 0; i < count; ++i) {
        Model model = prototype;
        if (prototype.m_Authored) {
            // Each character its own records, as each state's import makes them.
            model.m_Authored = std::make_shared<AuthoredScene>(*prototype.m_Authored);
        }
        model.m_Position[0] = -3.0f + 2.0f * static_cast<float>(i % kColumns);
        model.m_Position[1] = -4.4f + 2.2f * static_cast<float>(i / kColumns);
        model.m_Position[2] = -11.0f;
        model.m_Frame = m_FirstFrame + i % (m_LastFrame - m_FirstFrame + 1);
        m_Models.push_back(std::move(model));
    }
}

void CharacterCrowd::DrawFrame(int elapsedMs) {
    // The game's tick: one frame of the running action every 1000 / 15 ms.
    const int tick = static_cast<int>(1000.0 / kFramesPerSecond);
    m_GameTimeMs += elapsedMs;
    const int steps = m_GameTimeMs / tick;
    m_GameTimeMs %= tick;
    const int span = m_LastFrame - m_FirstFrame + 1;
    for (Model& model : m_Models) {
        model.m_Frame = m_FirstFrame + (model.m_Frame - m_FirstFrame + steps) % span;
        model.m_NextFrame = model.m_Frame + 1 > m_LastFrame ? m_FirstFrame : model.m_Frame + 1;
        model.m_FrameFraction = static_cast<float>(m_GameTimeMs) / static_cast<float>(tick);
    }

    BeginFrame();
    if (m_Look == ModelLook::Authored) {
        std::list<Model*> drawList;
        for (Model& model : m_Models)
            drawList.push_back(&model);
        DrawAuthoredModels(drawList);
    } else {
        for (Model& model : m_Models) {
            glPushMatrix();
            DrawModel(model);
            glPopMatrix();
        }
    }
    glutSwapBuffers();
    glFinish();
}
