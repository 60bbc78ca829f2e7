#include "scan/SearchProgress.h"

#include <algorithm>

namespace {

std::string Counted(std::int64_t count, std::string_view one, std::string_view many)
{
    return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

std::string Size(std::uint64_t bytes)
{
    constexpr std::uint64_t kilo = 1000;
    const std::uint64_t tenthsOfMegabytes = bytes / (kilo * kilo / 10);
    if (tenthsOfMegabytes < 1)
        return std::to_string(bytes / kilo) + " kB";
    return std::to_string(tenthsOfMegabytes / 10) + "." + std::to_string(tenthsOfMegabytes % 10) + " MB";
}

}

SearchProgress::SearchProgress(frmTamarack& mainForm, Desktop& newDesktop)
    : MainForm(mainForm)
    , desktop(newDesktop)
{
    MainForm.StatusBar1.Panels(3).SetLiveToolTip([this] { return wakefulness ? Text() : std::string(); });
}

void SearchProgress::Begin()
{
    wakefulness = desktop.KeepAwake(KeptAwake::Computer, "Searching news groups for attachments");
    begin = groupBegin = Clock::now();
    groups = looked = fetched = stored = 0;
    first = last = current = 0;
    bytes = 0;
}

void SearchProgress::EnterGroup(std::int32_t newFirst, std::int32_t newLast)
{
    groupBegin = Clock::now();
    storedBefore = stored;
    first = current = newFirst;
    last = newLast;
}

void SearchProgress::LookAt(std::int32_t article)
{
    ++looked;
    current = article;
    const std::int64_t range = std::int64_t{last} - first;
    const auto percent = range > 0 ? static_cast<int>((std::int64_t{current} - first) * 100 / range) : 100;
    if (percent != shownPercent)
        desktop.ShowProgress(percent / 100.0);
    shownPercent = percent;
}

void SearchProgress::Fetched(std::size_t size, std::int32_t storedByNow)
{
    ++fetched;
    bytes += size;
    if (stored == storedBefore && storedByNow > stored)
        ++groups;
    stored = storedByNow;
}

void SearchProgress::End(std::string_view obstacle)
{
    wakefulness.reset();
    if (shownPercent >= 0)
        desktop.ShowProgress(-1);
    shownPercent = -1;
    if (!desktop.IsInBackground())
        return;
    MainForm.AskForAttention();
    if (Clock::now() - begin < LongSearch)
        return;
    std::string text
        = Counted(stored, "attachment", "attachments") + " from " + Counted(groups, "group", "groups") + ".";
    if (!obstacle.empty())
        text.append(" ").append(obstacle);
    desktop.Notify(obstacle.empty() ? "The search is done" : "The search has ended", text, "Open the directory",
        [this] { (void)desktop.ShellOpen(AddressOfFile(MainForm.txtSelectDir.Text())); });
}

std::string SearchProgress::Text() const
{
    return Counted(looked, "article", "articles") + " looked at, " + std::to_string(fetched) + " fetched ("
        + Size(bytes) + "), " + std::to_string(stored) + " stored\n" + RestOfGroup();
}

// At the rate that this group has had so far.
std::string SearchProgress::RestOfGroup() const
{
    const std::int64_t done = std::int64_t{current} - first;
    if (done <= 0)
        return "The rest of this group: not known yet";
    const std::int64_t ahead = std::max<std::int64_t>(std::int64_t{last} - current, 0);
    const double seconds = std::chrono::duration<double>(Clock::now() - groupBegin).count() / static_cast<double>(done)
        * static_cast<double>(ahead);
    const auto whole = static_cast<std::int64_t>(seconds);
    return "The rest of this group: about "
        + (whole < 60          ? Counted(whole, "second", "seconds")
                : whole < 3600 ? Counted(whole / 60, "minute", "minutes")
                               : Counted(whole / 3600, "hour", "hours"));
}
