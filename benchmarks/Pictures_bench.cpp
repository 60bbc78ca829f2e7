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
    const TemporaryFolder whole;
    const TemporaryFolder tenth;
    for (int number = 0; number < 10000; ++number) {
        const std::string name = "p" + std::to_string(number) + ".jpg";
        MakeFile(whole.File(name), "");
        if (number % 10 == 0)
            MakeFile(tenth.File(name), "");
    }
    Form form("form", "", {.clientWidth = 3060, .clientHeight = 2820});
    FileList files(form, "lstFiles", {0, 0, 3060, 2820}, "*.gif;*.jpg");
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

BENCHMARK(LargeJpeg)
    ->Name("JPEG of 24 million pixels, for the screen")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LargeDirectory)
    ->Name("directory of 10,000 pictures")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}
