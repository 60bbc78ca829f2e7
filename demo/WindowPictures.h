#pragma once

#include "demo/support/Camera.h"
#include "demo/support/UnattendedDesktop.h"

#include <string>

struct frmTamarack;

inline constexpr int windowPictures = 15;

// Takes a picture of each window of the program, worked as a user would, behind a search. `group` is one that has been
// searched. Encrypted connections are trusted no more behind it.
void TakePicturesOfWindows(Camera& camera, UnattendedDesktop& desktop, frmTamarack& mainForm, const std::string& group);
