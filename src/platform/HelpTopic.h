#pragma once

// The property under which a widget keeps the number of its help topic.
inline constexpr const char* helpTopicProperty = "helpTopic";
