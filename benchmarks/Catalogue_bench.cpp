#include "base/Files.h"
#include "base/Text.h"
#include "benchmarks/SideBySide.h"
#include "catalogue/GroupFilters.h"
#include "catalogue/GroupStore.h"
#include "catalogue/SelectedGroups.h"
#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Events.h"

#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QListWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>

// What long lists of groups cost: filled, sorted, painted, filtered, moved about in, and fetched from a server.

namespace {

constexpr int fullList = 32'000;
constexpr int largeServer = 110'000;

// Names as a server has them, in no order, about as long as real ones.
std::vector<std::string> GroupNames(int count)
{
    std::vector<std::string> names;
    std::uint32_t random = 1;
    for (int i = 0; i < count; ++i) {
        random = random * 1664525 + 1013904223;
        const char* hierarchies[] = {"alt.binaries.pictures", "comp.lang", "rec.garden", "de.alt.fan", "alt.fan"};
        names.push_back(std::string(hierarchies[random >> 16 & 3]) + ".topic" + std::to_string(random >> 8) + ".part"
            + std::to_string(i));
    }
    return names;
}

// The main form with what gives its group lists their behaviour.
struct Lists {
    Lists()
    {
        Session.AppDir = folder.Path();
        SetServer("127.0.0.1");
        MainForm.SSTMain.SetTab(3);
        MainForm.SSTab1.SetTab(2);
        MainForm.SetVisible(true);
        DoEvents();
    }

    void SetServer(const std::string& name)
    {
        MainForm.cboNewsServer.AddItem(name);
        MainForm.cboNewsServer.SetListIndex(MainForm.cboNewsServer.ListCount() - 1);
    }

    void Paint() { WindowNamed("frmTamarack")->repaint(); }

    TemporaryFolder folder;
    Desktop desktop;
    frmTamarack MainForm;
    NewsSession Session{MainForm, desktop};
    GroupStore store{MainForm, Session, desktop};
    GroupFilters filters{MainForm, Session};
    SelectedGroups selectedGroups{MainForm, Session, desktop};
};

// The longest time for which no event was delivered.
class Liveness {
public:
    Liveness()
    {
        QObject::connect(&timer, &QTimer::timeout, [this] {
            longest = std::max(longest, sinceLast.nsecsElapsed());
            sinceLast.start();
        });
        sinceLast.start();
        timer.start(1); // without an interval it would be due again in each pass over the queue
    }

    double LongestMilliseconds() const { return static_cast<double>(longest) / 1e6; }

private:
    QTimer timer;
    QElapsedTimer sinceLast;
    qint64 longest = 0;
};

std::optional<double> FillOurs(Lists& lists, const std::vector<std::string>& names)
{
    ListBox& list = lists.MainForm.lstAllGroups;
    list.Clear();
    lists.Paint();
    const std::optional<double> taken = Timed([&] {
        list.SetVisible(false);
        for (const std::string& name : names)
            list.AddItem(name);
        list.SetVisible(true);
        lists.Paint();
        return list.ListCount() == static_cast<int>(names.size());
    });
    for (int row = 1; row < list.ListCount(); ++row) {
        if (SortsBefore(list.List(row), list.List(row - 1)))
            return std::nullopt;
    }
    return taken;
}

void FilledSortedAndPainted(benchmark::State& state)
{
    Lists lists;
    const std::vector<std::string> names = GroupNames(fullList);
    const auto stock = [&names]() -> std::optional<double> {
        QListWidget list;
        list.setSortingEnabled(true);
        list.resize(300, 200);
        list.show();
        DoEvents();
        return Timed([&] {
            for (const std::string& name : names)
                list.addItem(QString::fromStdString(name));
            list.repaint();
            return list.count() == fullList;
        });
    };
    for (auto _ : state)
        CompareSideBySide(
            state, 5, [&] { return FillOurs(lists, names); }, {"item-based list widget", stock, Aim::OfItsSpeed, 4});
}

void FilledSortedAndPaintedAgainstAPlainSort(benchmark::State& state)
{
    Lists lists;
    const std::vector<std::string> names = GroupNames(fullList);
    const auto plain = [&names] {
        return Timed([&names] {
            std::vector<std::string> sorted = names;
            std::sort(sorted.begin(), sorted.end(), SortsBefore);
            benchmark::DoNotOptimize(sorted.data());
            return true;
        });
    };
    for (auto _ : state)
        CompareSideBySide(
            state, 7, [&] { return FillOurs(lists, names); }, {"copy and sort", plain, Aim::TimesItsTime, 3});
}

void ListGrowth(benchmark::State& state)
{
    Lists lists;
    const std::vector<std::string> names = GroupNames(fullList);
    const std::vector<std::string> tenth(names.begin(), names.begin() + fullList / 10);
    for (auto _ : state)
        CompareWithATenth(
            state, 7, [&] { return FillOurs(lists, names); }, [&] { return FillOurs(lists, tenth); });
}

void FilterGrowth(benchmark::State& state)
{
    // One main form at a time is before the user.
    const auto filter = [](int count) {
        Lists lists;
        for (const std::string& name : GroupNames(count))
            lists.MainForm.lstAllGroups.AddItem(name);
        lists.MainForm.SSTab1.SetTab(1);
        TypeInto("txtNewsGroups", "alt;pictures");
        return Timed([&lists] {
            Click("cmdAndFilter");
            return lists.MainForm.lstFilteredGroups.ListCount() > 0;
        });
    };
    for (auto _ : state)
        CompareWithATenth(
            state, 5, [&] { return filter(fullList); }, [&] { return filter(fullList / 10); });
}

void Filter(benchmark::State& state, const char* button)
{
    Lists lists;
    for (const std::string& name : GroupNames(fullList))
        lists.MainForm.lstAllGroups.AddItem(name);
    lists.MainForm.SSTab1.SetTab(1);
    TypeInto("txtNewsGroups", "alt;pictures");
    Liveness liveness;
    for (auto _ : state) {
        const double start = ProcessorTime();
        Click(button);
        state.SetIterationTime(ProcessorTime() - start);
        if (lists.MainForm.lstFilteredGroups.ListCount() == 0)
            state.SkipWithError("nothing was found");
        lists.MainForm.lstFilteredGroups.Clear();
    }
    char label[160];
    std::snprintf(label, sizeof label, "processor time, aim under 100 ms; longest time without events %.1f ms",
        liveness.LongestMilliseconds());
    state.SetLabel(label);
}

void FilterAnd(benchmark::State& state) { Filter(state, "cmdAndFilter"); }
void FilterOr(benchmark::State& state) { Filter(state, "cmdOrFilter"); }

void MovesInFiveThousandRows(benchmark::State& state)
{
    Lists lists;
    lists.MainForm.SSTab1.SetTab(0);
    for (const std::string& name : GroupNames(5000))
        lists.MainForm.lstSelectedGroups.AddItem(name);
    lists.MainForm.lstSelectedGroups.SetListIndex(2500);
    const int buttons[] = {0, 1, 2, 3};
    std::size_t next = 0;
    for (auto _ : state) {
        const int row = lists.MainForm.lstSelectedGroups.ListIndex();
        const std::string name = lists.MainForm.lstSelectedGroups.List(row);
        lists.MainForm.MyUpDown[buttons[next++ % 4]].Click();
        lists.Paint();
        if (lists.MainForm.lstSelectedGroups.List(row) == name)
            state.SkipWithError("the row stayed where it was");
    }
    state.SetLabel("a move, painted");
}

// All rows picked and moved back into nothing; each of them was highlighted by itself, or all at once.
void SavePicks(benchmark::State& state)
{
    const std::vector<std::string> names = GroupNames(fullList);
    const auto save = [&names](bool oneByOne) {
        Lists lists;
        lists.MainForm.SSTab1.SetTab(1);
        for (const std::string& name : names)
            lists.MainForm.lstFilteredGroups.AddItem(name);
        benchmark::DoNotOptimize(lists.MainForm.lstFilteredGroups.List(0)); // has it sorted
        lists.Paint();
        auto& view = Find<QAbstractItemView>("lstFilteredGroups");
        QItemSelection rows;
        for (int row = 0; oneByOne && row < fullList; ++row)
            rows.append(QItemSelectionRange(view.model()->index(row, 0)));
        if (oneByOne)
            view.selectionModel()->select(rows, QItemSelectionModel::Select);
        else
            view.selectAll();
        return Timed([&lists] {
            lists.MainForm.cmdSavePicks.Click();
            lists.Paint();
            return lists.MainForm.lstSelectedGroups.ListCount() == fullList
                && lists.MainForm.lstFilteredGroups.ListCount() == 0;
        });
    };
    for (auto _ : state)
        CompareSideBySide(state, 3, [&] { return save(true); },
            {"highlighted at once", [&] { return save(false); }, Aim::TimesItsTime, 10});
}

void RefreshFromALargeServer(benchmark::State& state)
{
    SampleGroups groups;
    for (std::string& name : GroupNames(largeServer))
        groups.push_back({std::move(name), {}});
    SampleServer server(std::move(groups));
    Lists lists;
    TypeInto("txtPort", std::to_string(server.Port()));
    Liveness liveness;
    for (auto _ : state) {
        lists.Session.TcpDisconnect();
        Click("cmdRefresh");
        lists.Paint();
    }
    if (lists.MainForm.lstAllGroups.ListCount() <= fullList
        || server.CommandCount("list") != static_cast<std::size_t>(state.iterations()))
        state.SkipWithError("the list did not arrive");
    char label[120];
    std::snprintf(label, sizeof label, "%d groups fetched, listed, written; longest time without events %.1f ms",
        largeServer, liveness.LongestMilliseconds());
    state.SetLabel(label);
}

// Its group file read, the list filled, sorted and painted.
void StartUpLoadOfALargeServer(benchmark::State& state)
{
    Lists lists;
    ProgressBar progress(lists.MainForm, "ProgressBar1", {0, 3400, 900, 300});
    Label activity(lists.MainForm, "Activity", "", {900, 3400, 900, 300});
    const auto load = [&](int count) {
        lists.SetServer(std::to_string(count));
        if (!FileExists(lists.store.FileName())) {
            std::string text;
            for (const std::string& name : GroupNames(count))
                text += (text.empty() ? "\"" : "\r\n") + name + " 0000007055 0000000001 y";
            MakeFile(lists.store.FileName(), text + "\"\r\n");
        }
        lists.MainForm.lstAllGroups.Clear();
        return Timed([&] {
            lists.store.LoadGroupsFromDisk(progress, activity);
            lists.Paint();
            return lists.MainForm.lstAllGroups.ListCount() >= std::min(count, fullList);
        });
    };
    for (auto _ : state)
        CompareWithATenth(
            state, 7, [&] { return load(largeServer); }, [&] { return load(largeServer / 10); });
}

// A quotation mark in the first name makes a field of each further line.
void StartUpLoadAfterAQuotationMark(benchmark::State& state)
{
    Lists lists;
    ProgressBar progress(lists.MainForm, "ProgressBar1", {0, 3400, 900, 300});
    Label activity(lists.MainForm, "Activity", "", {900, 3400, 900, 300});
    std::string text;
    for (int i = 0; i < 500'000; ++i)
        text += "a." + std::to_string(i) + " 1 1 y\r\n";
    lists.SetServer("sound");
    MakeFile(lists.store.FileName(), '"' + text + "\"\r\n");
    lists.SetServer("marked");
    MakeFile(lists.store.FileName(), "\"a.\"quoted 1 1 y\r\n" + text + "\"\r\n");
    const auto load = [&lists, &progress, &activity](const char* server) {
        lists.SetServer(server);
        lists.MainForm.lstAllGroups.Clear();
        return Timed([&] {
            lists.store.LoadGroupsFromDisk(progress, activity);
            lists.Paint();
            return lists.MainForm.lstAllGroups.ListCount() >= fullList;
        });
    };
    for (auto _ : state)
        CompareSideBySide(state, 5, [&] { return load("marked"); },
            {"without the mark", [&] { return load("sound"); }, Aim::TimesItsTime, 3});
}

BENCHMARK(FilledSortedAndPainted)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FilledSortedAndPaintedAgainstAPlainSort)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FilterAnd)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FilterOr)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(MovesInFiveThousandRows)->Iterations(400)->Unit(benchmark::kMicrosecond);
BENCHMARK(SavePicks)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StartUpLoadAfterAQuotationMark)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(RefreshFromALargeServer)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(StartUpLoadOfALargeServer)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ListGrowth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FilterGrowth)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}
