#include "demo/sample/SampleGroups.h"

SampleGroup GroupOf(std::string name, std::int32_t first, const std::vector<std::string>& bodies)
{
    // The first header line of a search's first head is lost.
    const std::string head = "Path: news.test\r\nSubject: kite.JPG (1/1)\r\n";
    SampleGroup group{std::move(name), {{first, head, "not looked at\r\n"}}};
    for (const std::string& body : bodies)
        group.articles.push_back({++first, head, body});
    return group;
}
