#include "benchmarks/SideBySide.h"
#include "platform/Events.h"
#include "platform/FileList.h"
#include "platform/Form.h"
#include "platform/Picture.h"
#include "sample/SamplePictures.h"
#include "support/TemporaryFolder.h"

#include <QImage>
#include <QImageReader>

#include <benchmark/benchmark.h>

// What large pictures and large directories cost: a picture is read to the size of the screen, a directory by its
// names.

namespace {

void LargeJpeg(benchmark::State& state)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("large.jpg");
    MakeFile(path, DrawPicture(Scene::Harbour, 6000, 4000, 1, "JPEG"));
    const Run ours = [&] { return Timed([&] { return Picture::FromFile(path).Width() == 6000; }); };
    const Run whole = [&] { return Timed([&] { return QImageReader(path.c_str()).read().width() == 6000; }); };
    for (auto _ : state)
        CompareSideBySide(state, 9, ours, {"read at its full size", whole, Aim::TimesItsTime, 0.5});
}

void LargeDirectory(benchmark::State& state)
{
    const TemporaryFolder folder;
    for (int number = 0; number < 10000; ++number)
        MakeFile(folder.File("p" + std::to_string(number) + ".jpg"), "");
    Form form("form", "", {.clientWidth = 3060, .clientHeight = 2820});
    FileList files(form, "lstFiles", {0, 0, 3060, 2820}, "*.gif;*.jpg");
    form.SetVisible(true);
    for (auto _ : state) {
        (void)files.SetPath(folder.Path());
        DoEvents();
    }
    if (files.ListCount() != 10000)
        state.SkipWithError("not all files are listed");
    state.SetLabel("10,000 files listed and painted");
}

BENCHMARK(LargeJpeg)
    ->Name("JPEG of 24 million pixels, for the screen")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LargeDirectory)->Name("directory of 10,000 pictures")->Unit(benchmark::kMillisecond);

}
