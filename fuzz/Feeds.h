// The entry points that the fuzz targets and the fuzz regression test share: each takes one
// input as raw bytes and sends it through a public reader of the engine, the way a damaged
// file would reach it, then touches everything the reader handed back. Each returns what a
// user would notice, so the regression test can check it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

class Game;

namespace fuzzing {

// fbx::ParseBuffer (and the ASCII parser on text that is not binary FBX).
struct ParseOutcome {
    bool ok = false;
    std::string error;
    std::size_t records = 0;  // records in the tree, whole or partial
};
ParseOutcome FeedParser(const std::uint8_t* data, std::size_t size);

// KFbxImporter Initialize + Import of the bytes as a file, then a walk over the scene.
struct ImportOutcome {
    bool initialized = false;
    bool imported = false;
    std::string error;  // the importer's last error text
    int nodes = 0;
    int polygons = 0;
    int materials = 0;
    int textures = 0;
    int curveKeys = 0;
};
ImportOutcome FeedImporter(const std::uint8_t* data, std::size_t size);

// The engine's whole import of the bytes as a model file (ImportModelFile), then a check of
// what it built: every skin influence must name one of its mesh's bones, since drawing
// indexes the bone list with it. A broken promise aborts, so the fuzzer reports it.
struct ModelOutcome {
    std::size_t meshes = 0;
    std::size_t polygons = 0;
    std::size_t nodes = 0;
    std::size_t keyFrames = 0;
};
ModelOutcome FeedModelImport(const std::uint8_t* data, std::size_t size);

// ReadBitmap on the bytes as a file.
struct BitmapOutcome {
    bool read = false;
    std::uint32_t imageSize = 0;  // LastImageSize after a successful read
};
BitmapOutcome FeedBitmap(const std::uint8_t* data, std::size_t size);

// DecodeImage on the bytes with small limits (2048 pixels a side, 16 MB of pixels), then a
// walk over every decoded pixel.
struct ImageOutcome {
    bool decoded = false;
    std::string error;  // the decoder's reason when it refused
    int width = 0;
    int height = 0;
    bool hasAlpha = false;
};
ImageOutcome FeedImage(const std::uint8_t* data, std::size_t size);

// The bytes as a state file loaded by a GameState of that game.
struct StateOutcome {
    std::string name;
    std::size_t models = 0;
    std::size_t actions = 0;
};
StateOutcome FeedStateFile(Game& game, const std::uint8_t* data, std::size_t size);
// A game read from an empty state table, kept for the life of the process, for the state
// files to belong to (initialises Xerces first).
Game& SharedGame();

// The bytes as a state table read by a Game (through LoadStates, as its constructor and the
// reload key do). A malformed table throws on purpose (the program ends there); that
// exception (a Xerces parse, XML or DOM exception) is caught and reported.
struct TableOutcome {
    bool rejected = false;  // the table was malformed and the Game threw
    std::string title;
    std::size_t states = 0;
};
TableOutcome FeedStateTable(const std::uint8_t* data, std::size_t size);

// Xerces must be initialised once per process before the state feeds; safe to call again.
void InitialiseXml();

}  // namespace fuzzing
