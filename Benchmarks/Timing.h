// How times are taken: several runs by turns, and what they have in common.
#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <span>
#include <thread>
#include <vector>

namespace quillmere::benchmark {

/// The middle of several samples and the quartiles around it, all in one unit. One bad moment of
/// the machine moves none of them, as it would a mean or a smallest value.
struct Spread {
    double lower = 0;
    double median = 0;
    double upper = 0;
};

/// Below which value the `part` of the samples lies, 0 to 1. `samples` must not be empty. Between
/// two samples, it is interpolated.
inline double quantileOf(std::vector<double> samples, double part) {
    std::sort(samples.begin(), samples.end());
    const double at = part * static_cast<double>(samples.size() - 1);
    const auto below = static_cast<std::size_t>(at);
    const auto above = std::min(below + 1, samples.size() - 1);
    return samples[below] + (at - static_cast<double>(below)) * (samples[above] - samples[below]);
}

/// `samples` must not be empty.
inline Spread spreadOf(const std::vector<double>& samples) {
    return {quantileOf(samples, 0.25), quantileOf(samples, 0.5), quantileOf(samples, 0.75)};
}

/// The wall time of one call, in seconds.
template <class Work>
double secondsOf(const Work& work) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The time that processors spent on one call, in seconds, over all threads of this process: what
/// other work on the machine hardly changes.
template <class Work>
double processorSecondsOf(const Work& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

/// How often something is measured: until `seconds` have passed, but never less than `least` nor
/// more than `most` times.
struct Rounds {
    int least = 1;
    int most = 1;
    double seconds = 0;
};

/// Before each turn: until the threads of the one before sleep, and leave the cores alone.
inline constexpr std::chrono::milliseconds kPause{2};

/// Calls every contestant once a round, each for one sample of its own making, so that what slows
/// the machine for a while meets all of them. Every second round goes backwards: nobody always
/// finds the caches as the same neighbour left them. The result goes with `contestants`.
inline std::vector<Spread> takeTurns(const Rounds& rounds,
                                     std::span<const std::function<double()>> contestants) {
    std::vector<std::vector<double>> samples(contestants.size());
    const auto start = std::chrono::steady_clock::now();
    const auto late = [&] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() >
               rounds.seconds;
    };
    for (int round = 0; round < rounds.least || (round < rounds.most && !late()); ++round) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            const std::size_t turn = round % 2 == 0 ? i : contestants.size() - 1 - i;
            std::this_thread::sleep_for(kPause);
            samples[turn].push_back(contestants[turn]());
        }
    }
    std::vector<Spread> spreads;
    for (const std::vector<double>& taken : samples) spreads.push_back(spreadOf(taken));
    return spreads;
}

}  // namespace quillmere::benchmark
