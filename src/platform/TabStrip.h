#pragma once

#include "platform/Control.h"

#include <initializer_list>
#include <memory>
#include <vector>

// Pages behind tabs. Beyond the widget, the tabs share its width evenly, and a caption too long for its tab goes on in
// a second line, so that none is cut off. In captions "&&" stands for "&".
class TabStrip : public Control {
public:
    TabStrip(Container& container, std::string_view name, const Place& place,
        std::initializer_list<std::string_view> captions);
    ~TabStrip();

    // Where the controls of a page lie; counted from 0. Their places count from the corner of the page.
    Container& Page(int index);

    void SetTab(int index);

private:
    class PageContent;

    std::vector<std::unique_ptr<PageContent>> pages;
};
