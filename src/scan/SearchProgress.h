#pragma once

#include "session/NewsSession.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

// How far a search is, and who is told of it beyond the windows: the tool tip behind the caption's place in the status
// bar, the program's icon, and at the end a person who has gone to another program. As long as a search goes on, the
// computer does not fall asleep.
class SearchProgress {
public:
    SearchProgress(frmTamarack& mainForm, Desktop& desktop);

    void Begin();

    // A group's articles, from the one that the search goes on from.
    void EnterGroup(std::int32_t first, std::int32_t last);
    void LookAt(std::int32_t article);
    // A body of so many bytes; `stored` attachments have come from all of them.
    void Fetched(std::size_t size, std::int32_t stored);

    // `obstacle` is a sentence that tells why the search ended early, empty if it did not.
    void End(std::string_view obstacle);

    // One that is over sooner has not been walked away from.
    std::chrono::seconds LongSearch{60};

private:
    using Clock = std::chrono::steady_clock;

    std::string Text() const;
    std::string RestOfGroup() const;

    frmTamarack& MainForm;
    Desktop& desktop;
    std::shared_ptr<void> wakefulness; // as long as a search goes on
    Clock::time_point begin;
    Clock::time_point groupBegin;
    std::int32_t groups = 0; // that brought any
    std::int32_t looked = 0;
    std::int32_t fetched = 0;
    std::int32_t stored = 0;
    std::int32_t storedBefore = 0; // this group
    std::uint64_t bytes = 0;
    std::int32_t first = 0; // of the group
    std::int32_t last = 0;
    std::int32_t current = 0;
    int shownPercent = -1; // in the program's icon
};
