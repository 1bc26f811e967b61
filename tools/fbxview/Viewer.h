// The model viewer: one model file shown in the engine's authored look (and, on request, its
// classic look), framed by an orbiting camera over a ground grid, its takes played at the
// game's frame rate.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/Model.h"
#include "tools/common/ModelBox.h"
#include "tools/fbxview/OrbitCamera.h"
#include "tools/fbxview/TakePlayback.h"

// Which mouse drag is under way.
enum class MouseDrag { None, Orbit, Pan };

struct Viewer {
    std::string m_File;      // the model file as given on the command line
    std::string m_FileName;  // its name without folders, for the title
    Model m_Model;           // imported in the authored look
    // Imported in the classic look the first time it is asked for; null until then.
    std::unique_ptr<Model> m_ClassicModel;
    bool m_ShowClassic = false;  // draw the classic look instead of the authored one
    ModelBox m_Box;              // the framed box: the camera's and the grid's
    OrbitCamera m_Camera;
    TakePlayback m_Playback;
    int m_Width = 1;  // window client size, pixels
    int m_Height = 1;
    int m_LastClock = 0;  // milliseconds: the last frame drawn, or the start of playing
    // The mouse drag and where the pointer was at its last move.
    MouseDrag m_Drag = MouseDrag::None;
    int m_DragX = 0;
    int m_DragY = 0;
    bool m_ScreenshotWanted = false;  // write the next drawn frame to a PNG
};

// The model's takes; empty for a model without authored records.
const std::vector<TakeSpan>& Takes(const Viewer& viewer);

// Imports the file in the authored look (its console report kept off standard output),
// starts at the first take's first frame and frames the model in a window of that size.
void OpenModel(Viewer& viewer, const std::string& file, int width, int height);

// Frames the model as it is posed at the frame shown: the box round it, the camera looking
// at all of it from the starting angle.
void FrameModel(Viewer& viewer);

// Switches between the authored and the classic look, importing the classic one the first
// time (quietly, as OpenModel).
void ToggleClassicLook(Viewer& viewer);

// One frame: moves the playing take on by the time since the last frame, then clears the
// window, sets the camera and draws the grid and the model with the engine's drawing. When a
// screenshot is wanted, writes the picture beside the model file and prints its path.
void DrawViewerFrame(Viewer& viewer, int now);

// "fbxview - NAME - take TAKE - frame N" ("no take" for a model without takes), with
// " - classic look" added while the classic look shows.
std::string ViewerTitle(const Viewer& viewer);
