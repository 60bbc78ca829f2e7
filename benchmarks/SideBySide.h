#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <optional>
#include <string>

// The seconds that one run took; nothing if it went wrong.
using Run = std::function<std::optional<double>()>;

// The seconds that the function takes; nothing if its result is false.
std::optional<double> Timed(const std::function<bool()>& function);

// The seconds that the processors have given this process.
double ProcessorTime();

// How the comparison reads in the table, and what is aimed at.
enum class Aim {
    TimesItsTime, // ours takes at most so many times the reference's time
    OfItsSpeed, // ours reaches at least this share of the reference's speed
};

struct Reference {
    std::string name;
    Run run;
    Aim aim;
    double limit;
};

// Lets ours and the reference run in turn, so many rounds, and compares the two runs of each round with each other:
// what else the machine does meanwhile meets both. The benchmark's time is the median of ours; its label gives the
// reference's median, the median of the ratios, and the lowest and highest of them. To be called in the one iteration
// of a benchmark with manual time.
void CompareSideBySide(benchmark::State& state, int rounds, const Run& ours, const Reference& reference);

// The same for a work and a tenth of it: does its time grow with it, or worse?
void CompareWithATenth(benchmark::State& state, int rounds, const Run& whole, const Run& tenth);
