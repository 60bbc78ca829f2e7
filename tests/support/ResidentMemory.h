#pragma once

#include <fstream>
#include <unistd.h>

// What this process has in memory just now.
inline long ResidentKilobytes()
{
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}
