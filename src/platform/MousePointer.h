#pragma once

enum class MousePointer {
    Default = 0,
    Hourglass = 11,
    ArrowHourglass = 13,
};
