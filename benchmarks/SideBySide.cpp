#include "benchmarks/SideBySide.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

double Median(const std::vector<double>& sorted) { return sorted[sorted.size() / 2]; }

}

double ProcessorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::optional<double> Timed(const std::function<bool()>& function)
{
    const auto start = std::chrono::steady_clock::now();
    const bool succeeded = function();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return succeeded ? std::optional(taken.count()) : std::nullopt;
}

void CompareSideBySide(benchmark::State& state, int rounds, const Run& ours, const Reference& reference)
{
    std::vector<double> ourTimes;
    std::vector<double> referenceTimes;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        // Neither is always the first.
        std::optional<double> referenceTime;
        if (round % 2 != 0)
            referenceTime = reference.run();
        const std::optional<double> ourTime = ours();
        if (round % 2 == 0)
            referenceTime = reference.run();
        if (!ourTime || !referenceTime) {
            state.SkipWithError(ourTime ? "the reference went wrong" : "the program went wrong");
            return;
        }
        ourTimes.push_back(*ourTime);
        referenceTimes.push_back(*referenceTime);
        ratios.push_back(reference.aim == Aim::TimesItsTime ? *ourTime / *referenceTime : *referenceTime / *ourTime);
    }
    for (std::vector<double>* numbers : {&ourTimes, &referenceTimes, &ratios})
        std::sort(numbers->begin(), numbers->end());

    state.SetIterationTime(Median(ourTimes));
    char label[200];
    std::snprintf(label, sizeof label, "%s %.4g s: %.2f %s (%.2f to %.2f; aim %s %.2g)", reference.name.c_str(),
        Median(referenceTimes), Median(ratios), reference.aim == Aim::TimesItsTime ? "times its time" : "of its speed",
        ratios.front(), ratios.back(), reference.aim == Aim::TimesItsTime ? "at most" : "at least", reference.limit);
    state.SetLabel(label);
}

void CompareWithATenth(benchmark::State& state, int rounds, const Run& whole, const Run& tenth)
{
    CompareSideBySide(state, rounds, whole, {"a tenth of it", tenth, Aim::TimesItsTime, 12});
}
