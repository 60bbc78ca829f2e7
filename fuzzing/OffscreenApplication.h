#pragma once

#include "platform/Application.h"

#include <cstdlib>

// Made by the first input and never destroyed: the end of the process is not what is tried here.
inline Application* offscreenApplication = nullptr;

inline void NeedApplication()
{
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    if (offscreenApplication != nullptr)
        return;
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    offscreenApplication = new Application(argumentCount, arguments);
}
