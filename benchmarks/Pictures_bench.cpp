#include "benchmarks/SideBySide.h"
#include "demo/sample/SamplePictures.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Bitmap.h"
#include "platform/Events.h"
#include "platform/FileList.h"
#include "platform/Form.h"

#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QScreen>

#include <algorithm>
#include <benchmark/benchmark.h>

// What large pictures, many pictures and large directories cost: a picture is read to the size of the screen, by the
// helper; a directory by its names.

namespace {

// As the program could read it itself, if the file were its own.
bool ReadHere(const std::string& path)
{
    QImageReader reader(path.c_str());
    const QSize size = reader.size();
    const QSize most = QGuiApplication::primaryScreen()->size();
    if (size.width() > most.width() || size.height() > most.height())
        reader.setScaledSize(size.scaled(most, Qt::KeepAspectRatio));
    return !reader.read().isNull();
}

bool ReadWhole(const std::string& path) { return !QImageReader(path.c_str()).read().isNull(); }

void LargeJpeg(benchmark::State& state, const char* name, bool (*read)(const std::string&), double limit)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("large.jpg");
    MakeFile(path, DrawPicture(Scene::Harbour, 6000, 4000, 1, "JPEG"));
    const Run ours = [&] { return Timed([&] { return Bitmap::FromFile(path).Width() == 6000; }); };
    const Run reference = [&] { return Timed([&] { return read(path); }); };
    for (auto _ : state)
        CompareSideBySide(state, 15, ours, {name, reference, Aim::TimesItsTime, limit});
}

void SmallPictures(benchmark::State& state)
{
    constexpr int count = 200;
    constexpr double allowance = 2e-3;
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    for (unsigned number = 0; number < count; ++number) {
        paths.push_back(folder.File(std::to_string(number)));
        MakeFile(paths.back(), DrawPicture(Scene::Kites, 320, 240, number, number % 2 == 0 ? "JPEG" : "PNG"));
    }
    const auto readAll
        = [&paths](const auto& read) { return Timed([&] { return std::all_of(paths.begin(), paths.end(), read); }); };
    const Run ours
        = [&] { return readAll([](const std::string& path) { return Bitmap::FromFile(path).Width() == 320; }); };
    const Run here = [&]() -> std::optional<double> {
        const auto taken = readAll(ReadHere);
        return taken ? std::optional(*taken + count * allowance) : std::nullopt;
    };
    for (auto _ : state)
        CompareSideBySide(state, 15, ours, {"read in this process, and 2 ms more each", here, Aim::TimesItsTime, 1});
}

void LargeDirectory(benchmark::State& state)
{
    const TemporaryFolder whole;
    const TemporaryFolder tenth;
    for (int number = 0; number < 10000; ++number) {
        const std::string name = "p" + std::to_string(number) + ".jpg";
        MakeFile(whole.File(name), "");
        if (number % 10 == 0)
            MakeFile(tenth.File(name), "");
    }
    Form form("form", "", {.clientWidth = 3060, .clientHeight = 2820});
    FileList files(form, "lstFiles", {0, 0, 3060, 2820}, {".gif", ".jpg"});
    form.SetVisible(true);
    const auto open = [&files](const TemporaryFolder& folder, int count) {
        return Timed([&] {
            (void)files.SetPath(folder.Path());
            DoEvents();
            return files.ListCount() == count;
        });
    };
    for (auto _ : state)
        CompareWithATenth(
            state, 25, [&] { return open(whole, 10000); }, [&] { return open(tenth, 1000); });
}

BENCHMARK_CAPTURE(LargeJpeg, whole, "read at its full size", ReadWhole, 0.5)
    ->Name("JPEG of 24 million pixels, for the screen")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LargeJpeg, here, "read in this process", ReadHere, 1.3)
    ->Name("the same, and what the helper costs")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(SmallPictures)
    ->Name("200 pictures of 320 by 240 in a row")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LargeDirectory)
    ->Name("directory of 10,000 pictures")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}
