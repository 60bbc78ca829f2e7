#pragma once

#include "demo/sample/SampleGroups.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

// One client's place on the sample server: takes its commands and makes the replies.
class SampleSession {
public:
    using LatestGroups = std::function<std::shared_ptr<const SampleGroups>()>;

    // Without a user nobody has to log in.
    SampleSession(std::string user, std::string password, LatestGroups latestGroups);

    struct Reply {
        std::string bytes; // the status line and, behind it, the text with its terminator
        bool hangUp = false;
    };

    // `command` is in lower case; `argument` has no blanks around it.
    Reply Answer(const std::string& command, const std::string& argument);

private:
    Reply LogIn(std::string_view argument);
    Reply SelectGroup(const std::string& name);
    Reply Show(const std::string& command, const std::string& which);
    Reply Move(bool forward);
    Reply List(const std::string& argument) const;

    const std::string requiredUser;
    const std::string requiredPassword;
    const LatestGroups latestGroups;

    bool loggedIn;
    std::string user; // given by authinfo user, until the password is there
    std::shared_ptr<const SampleGroups> groups; // that `group` belongs to
    const SampleGroup* group = nullptr;
    std::int32_t currentArticle = 0; // 0 while it is invalid
};
