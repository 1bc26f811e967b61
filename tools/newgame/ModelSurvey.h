// What newgame needs to know of one model file before it goes into a game: whether the engine
// can read it, its takes with the game frames they play at, the room it takes up at the frame
// the game first shows, and the texture image files on disk it names.
#pragma once

#include <string>
#include <vector>

#include "model/AuthoredScene.h"
#include "tools/common/ModelBox.h"

// A texture image file a model names, and where it goes beside the model's copy.
struct TextureFile {
    std::string m_Found;   // the file on disk, as the engine finds it from the model's folder
    std::string m_Placed;  // a relative path from the copy's folder where the copy finds it
};

// One model file as the engine would read it in the authored look.
struct SurveyedModel {
    std::string m_File;                   // the path given
    std::vector<TakeSpan> m_Takes;        // file order, frames as the game numbers them
    BoxSphere m_Sphere;                   // round the model posed at its first shown frame
    std::vector<TextureFile> m_Textures;  // each distinct m_Placed once
};

// Reads the file. Returns false with the importer's reason in error (as fbxinfo prints it)
// when it cannot be read; the file is then not imported further.
bool SurveyModel(const std::string& file, SurveyedModel& model, std::string& error);

// The frame the game first shows: the first take's first frame, 0 without takes.
int FirstShownFrame(const SurveyedModel& model);
