// The authored look's texture images into OpenGL: a texture name from glGenTextures (so it
// never meets the classic look's serial ids), mipmaps with trilinear filtering, repeat
// wrapping. An image larger than this OpenGL takes (GL_MAX_TEXTURE_SIZE) is halved until it
// fits, with a line that says so.
#pragma once

#include "model/TextureImage.h"

// Uploads the image and lets its pixels go. Does nothing when it is uploaded already, has no
// pixels, or no OpenGL context is current.
void UploadTextureImage(TextureImage& image);

// Makes the import upload every image as soon as it is decoded, and gives names back to
// OpenGL when their images go away. The engine installs it once at start-up.
void InstallTextureImageUpload();
