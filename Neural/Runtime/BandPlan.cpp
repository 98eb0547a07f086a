#include "Neural/Runtime/BandPlan.h"

#include <algorithm>

namespace quillmere::neural {
namespace {

int ceilDivide(int a, int b) { return (a + b - 1) / b; }

class Planner {
public:
    Planner(const Schedule& schedule, std::span<const Step> steps, std::span<const int> heights)
        : steps_(steps), heights_(heights), done_(steps.size()), madeBy_(heights.size(), -1) {
        for (std::size_t s = 0; s < steps.size(); ++s) {
            madeBy_[steps[s].output] = static_cast<int>(s);
            needs_.push_back(schedule.rowNeeds(steps[s]));
            units_.push_back(schedule.rowUnit(steps[s]));
        }
    }

    BandPlan plan(int bandRows) {
        BandPlan plan;
        plan.mostRows.resize(steps_.size());
        const int height = heightOf(steps_.size() - 1);
        for (int end = bandRows; done_.back() < height; end += bandRows) {
            const Band& band = plan.bands.emplace_back(nextBand(std::min(end, height), height));
            for (std::size_t s = 0; s < steps_.size(); ++s) {
                plan.mostRows[s] = std::max(plan.mostRows[s], band.made[s].end - band.kept[s]);
            }
        }
        return plan;
    }

private:
    int heightOf(std::size_t step) const { return heights_[steps_[step].output]; }

    // Backwards, what each step must have made at the end of the band; then, of what was there
    // before, what is still read.
    Band nextBand(int end, int height) {
        std::vector<int> ends(steps_.size());
        for (std::size_t s = 0; s < steps_.size(); ++s) {
            // What the last step doesn't need still has to be made.
            ends[s] = static_cast<int>(static_cast<long>(heightOf(s)) * end / height);
        }
        Band band;
        band.made.resize(steps_.size());
        band.kept.resize(steps_.size());
        for (std::size_t s = steps_.size(); s-- > 0;) {
            ends[s] = std::min(ceilDivide(ends[s], units_[s]) * units_[s], heightOf(s));
            ends[s] = std::max(ends[s], done_[s]);
            band.made[s] = {done_[s], ends[s]};
            band.kept[s] = done_[s];
            for (const RowNeed& need : needs_[s]) {
                const int maker = madeBy_[need.value];
                if (maker < 0 || band.made[s].first == band.made[s].end) continue;
                const int needed = ceilDivide(ends[s], need.divisor) + need.reach;
                ends[maker] = std::max(ends[maker], std::min(needed, heights_[need.value]));
            }
        }
        for (std::size_t s = 0; s < steps_.size(); ++s) {
            for (const RowNeed& need : needs_[s]) {
                const int maker = madeBy_[need.value];
                if (maker < 0 || done_[s] == heightOf(s)) continue;
                const int first = std::max(0, done_[s] / need.divisor - need.reach);
                band.kept[maker] = std::min(band.kept[maker], first);
            }
        }
        done_ = ends;
        return band;
    }

    std::span<const Step> steps_;
    std::span<const int> heights_;
    std::vector<int> done_;    // by step: rows made so far
    std::vector<int> madeBy_;  // by ValueId: the step of this group, or -1
    std::vector<std::vector<RowNeed>> needs_;
    std::vector<int> units_;
};

}  // namespace

BandPlan BandPlan::of(const Schedule& schedule, std::span<const Step> steps,
                      std::span<const int> heights, int bandRows) {
    return Planner(schedule, steps, heights).plan(bandRows);
}

}  // namespace quillmere::neural
