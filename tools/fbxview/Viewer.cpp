#include "tools/fbxview/Viewer.h"

#include <GL/gl.h>

#include <cstdio>
#include <list>

#include "import/SceneImport.h"
#include "model/Pose.h"
#include "render/AuthoredDraw.h"
#include "render/Draw.h"
#include "tools/fbxview/GroundGrid.h"
#include "tools/common/QuietStdout.h"
#include "tools/fbxview/Screenshot.h"

namespace {

// The window's background: dark, so that lit surfaces stand out, but not black, so that
// dark ones do too.
constexpr float kBackground[4] = {0.16f, 0.18f, 0.22f, 1.0f};

void DrawModelInLook(Viewer& viewer) {
    if (viewer.m_ShowClassic && viewer.m_ClassicModel) {
        // The classic drawing leaves the model's placement on the matrix.
        glPushMatrix();
        DrawModel(*viewer.m_ClassicModel);
        glPopMatrix();
        return;
    }
    DrawAuthoredModels(std::list<Model*>{&viewer.m_Model});
}

}  // namespace

const std::vector<TakeSpan>& Takes(const Viewer& viewer) {
    static const std::vector<TakeSpan> none;
    return viewer.m_Model.m_Authored ? viewer.m_Model.m_Authored->m_Takes : none;
}

void OpenModel(Viewer& viewer, const std::string& file, int width, int height) {
    viewer.m_File = file;
    const std::size_t slash = file.find_last_of('/');
    viewer.m_FileName = slash == std::string::npos ? file : file.substr(slash + 1);
    viewer.m_Width = width;
    viewer.m_Height = height;
    {
        QuietStdout quiet;
        ImportModelFile(file, &viewer.m_Model, ModelLook::Authored);
    }
    viewer.m_Playback = StartPlayback(Takes(viewer));
    FrameModel(viewer);
}

void FrameModel(Viewer& viewer) {
    viewer.m_Box = ModelBox();
    if (viewer.m_Model.m_Authored) {
        const AuthoredScene& scene = *viewer.m_Model.m_Authored;
        viewer.m_Box = PosedBox(scene, FrameTime(scene, viewer.m_Playback.m_Frame));
    }
    viewer.m_Camera = FrameSphere(SphereAround(viewer.m_Box), viewer.m_Width, viewer.m_Height);
}

void ToggleClassicLook(Viewer& viewer) {
    if (!viewer.m_ClassicModel) {
        viewer.m_ClassicModel = std::make_unique<Model>();
        QuietStdout quiet;
        ImportModelFile(viewer.m_File, viewer.m_ClassicModel.get(), ModelLook::Classic);
    }
    viewer.m_ShowClassic = !viewer.m_ShowClassic;
}

void DrawViewerFrame(Viewer& viewer, int now) {
    const float fraction = AdvancePlayback(viewer.m_Playback, Takes(viewer),
                                           static_cast<double>(now) - viewer.m_LastClock);
    viewer.m_LastClock = now;
    // The model shows the frame and the way to the next one as a game state hands them on.
    viewer.m_Model.m_Frame = viewer.m_Playback.m_Frame;
    viewer.m_Model.m_NextFrame = FollowingFrame(viewer.m_Playback, Takes(viewer));
    viewer.m_Model.m_FrameFraction = fraction;
    if (viewer.m_ClassicModel) {
        viewer.m_ClassicModel->m_Frame = viewer.m_Playback.m_Frame;
    }

    glClearColor(kBackground[0], kBackground[1], kBackground[2], kBackground[3]);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    ApplyCamera(viewer.m_Camera, viewer.m_Width, viewer.m_Height);
    DrawGroundGrid(viewer.m_Box);
    DrawModelInLook(viewer);

    if (viewer.m_ScreenshotWanted) {
        viewer.m_ScreenshotWanted = false;
        glReadBuffer(GL_BACK);
        const std::string path = SaveScreenshot(viewer.m_File, viewer.m_Width, viewer.m_Height);
        if (path.empty()) {
            std::fprintf(stderr, "fbxview: %s: the screenshot could not be written\n",
                         viewer.m_File.c_str());
        } else {
            std::printf("%s\n", path.c_str());
        }
    }
}

std::string ViewerTitle(const Viewer& viewer) {
    const std::vector<TakeSpan>& takes = Takes(viewer);
    const int take = viewer.m_Playback.m_Take;
    std::string title = "fbxview - " + viewer.m_FileName + " - ";
    if (take >= 0 && static_cast<std::size_t>(take) < takes.size()) {
        title += "take " + takes[static_cast<std::size_t>(take)].m_Name;
    } else {
        title += "no take";
    }
    title += " - frame " + std::to_string(viewer.m_Playback.m_Frame);
    if (viewer.m_ShowClassic) {
        title += " - classic look";
    }
    return title;
}
