#pragma once

#include "demo/DemoFolder.h"
#include "demo/sample/SampleArticles.h"
#include "demo/support/Camera.h"
#include "demo/support/UnattendedDesktop.h"

// One whole search with nobody in front of the screen, on the program's own window: presses "Find Now", prints what has
// been stored, compares it with what was posted, and takes a picture on the way. True if all is as posted and nothing
// else is there.
bool SearchUnattended(
    const DemoFolder& folder, const SamplePostings& postings, UnattendedDesktop& desktop, Camera& camera);
