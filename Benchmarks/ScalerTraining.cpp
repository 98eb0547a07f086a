// Learns the weights of Desktop/VideoToolbox/DoublingFilters.h: `quillmere-scaler-training FOLDER`
// prints Desktop/VideoToolbox/TrainedFilters.cpp. FOLDER is /usr/share/backgrounds with Debian's
// mate-backgrounds, lomiri-wallpapers-16.04, lomiri-wallpapers-20.04 and ukui-wallpapers.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <vector>

#include "Benchmarks/GreyPicture.h"
#include "Desktop/VideoToolbox/DoublingFilters.h"

namespace {

using namespace quillmere;
using namespace quillmere::benchmark;
using namespace quillmere::scaler;
using F = DoublingFilters;

// None of them is in a clip of the section scaler-quality.
const char* const kPictures[] = {"mate/nature/Dune.jpg",
                                 "mate/nature/Garden.jpg",
                                 "mate/nature/GreenMeadow.jpg",
                                 "mate/nature/LadyBird.jpg",
                                 "mate/nature/RainDrops.jpg",
                                 "mate/nature/TwoWings.jpg",
                                 "mate/nature/YellowFlower.jpg",
                                 "Bridge_by_Sander_Klootwijk.jpg",
                                 "Kleiber_by_Lukas_Baubkus.jpg",
                                 "Picture_0B_by_freespace.jpg",
                                 "Picture_1A_by_freespace.jpg",
                                 "greentock_by_Peter_Nerlich.jpg",
                                 "seeding_by_Clements_Engelhardt.jpg",
                                 "sunset_by_Aitzol_Berasategi.jpg",
                                 "umang_by_Abhishek_Mudgal.jpg",
                                 "goldfish.png",
                                 "string.jpg",
                                 "the-mouse.jpg"};

// Photographs are soft at their full size: they are learned from at about this width.
constexpr int kWidth = 1000;
// Of one class, from all pictures: flat places would outnumber all else.
constexpr long kMostPatches = 800000;
constexpr int kClasses = kStoredFilters / kStoredPhases;

/// The least-squares problem of a stored class: patches without their middle's level, and what the
/// two upper pixels have more than the middle.
struct Problem {
    std::vector<double> products = std::vector<double>(F::kTaps * F::kTaps);
    std::vector<double> targets[kStoredPhases] = {std::vector<double>(F::kTaps),
                                                  std::vector<double>(F::kTaps)};
    long patches = 0;

    void add(const double* patch, const double* truths) {
        ++patches;
        for (int i = 0; i < F::kTaps; ++i) {
            for (int j = 0; j <= i; ++j) products[i * F::kTaps + j] += patch[i] * patch[j];
            for (int p = 0; p < kStoredPhases; ++p) targets[p][i] += truths[p] * patch[i];
        }
    }

    /// A little more on the diagonal, so that rare classes stay calm.
    void calm() {
        constexpr int n = F::kTaps;
        double trace = 0;
        for (int i = 0; i < n; ++i) trace += products[i * n + i];
        for (int i = 0; i < n; ++i) products[i * n + i] += 1e-4 * trace / n + 50;
    }

    /// By Cholesky's factors.
    std::vector<double> weights(int phase) const {
        constexpr int n = F::kTaps;
        std::vector<double> a = products, x = targets[phase];
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j <= i; ++j) {
                double sum = a[i * n + j];
                for (int k = 0; k < j; ++k) sum -= a[i * n + k] * a[j * n + k];
                a[i * n + j] = i == j ? std::sqrt(sum) : sum / a[j * n + j];
            }
            for (int k = 0; k < i; ++k) x[i] -= a[i * n + k] * x[k];
            x[i] /= a[i * n + i];
        }
        for (int i = n - 1; i >= 0; --i) {
            for (int k = i + 1; k < n; ++k) x[i] -= a[k * n + i] * x[k];
            x[i] /= a[i * n + i];
        }
        return x;
    }

    /// Whole numbers of 1/kOne, each in turn the best beside the others until none changes. The
    /// middle's makes the sum 1: in a patch it counts nothing.
    std::vector<int> levels(int phase) const {
        constexpr int n = F::kTaps;
        const std::vector<double> best = weights(phase);
        std::vector<int> result(n);
        std::vector<double> error(n);  // of a level, in weights
        for (int i = 0; i < n; ++i) {
            result[i] = static_cast<int>(std::lround(best[i] * F::kOne));
            error[i] = static_cast<double>(result[i]) / F::kOne - best[i];
        }
        for (bool changed = true; changed;) {
            changed = false;
            for (int i = 0; i < n; ++i) {
                double others = 0;
                for (int j = 0; j < n; ++j) {
                    if (j != i) others += products[std::max(i, j) * n + std::min(i, j)] * error[j];
                }
                const double wanted = best[i] - others / products[i * n + i];
                const int level = static_cast<int>(std::lround(wanted * F::kOne));
                changed = changed || level != result[i];
                result[i] = level;
                error[i] = static_cast<double>(level) / F::kOne - best[i];
            }
        }
        result[n / 2] = 0;
        result[n / 2] = F::kOne - std::accumulate(result.begin(), result.end(), 0);
        return result;
    }
};

PaddedPlane<std::uint8_t> planeOf(const GreyPicture& picture) {
    PaddedPlane<std::uint8_t> plane(picture.size, 8);
    for (int y = 0; y < picture.size.height; ++y) {
        std::copy_n(picture.row(y), picture.size.width, plane.row(y));
    }
    plane.extendEdges();
    return plane;
}

/// Adds each pixel as it stands and turned by half, mirrored to a direction that is stored.
void addPatches(const PaddedPlane<std::uint8_t>& small, const GreyPicture& truth,
                std::vector<Problem>& problems) {
    const PixelSize size = small.size();
    StructureClassifier classifier(size.width);
    const std::uint8_t* classes = nullptr;
    for (int y = 4; y < size.height - 4; ++y) {
        if (y % 2 == 0) classes = classifier.classify(small, y);
        for (int x = 4; x < size.width - 4; ++x) {
            const int c = classes[x / 2];
            const int kind = c / LocalStructure::kDirections;
            const int direction = c % LocalStructure::kDirections;
            const bool mirrored = direction >= kStoredDirections;
            const int stored = mirrored ? LocalStructure::kDirections - direction : direction;
            Problem& problem = problems[kind * kStoredDirections + stored];
            const bool isFlat = kind < LocalStructure::kCoherences;
            if (problem.patches >= kMostPatches || (isFlat && (x * 7 + y * 13) % 8 != 0)) continue;
            const double middle = small.row(y)[x];
            for (const int turn : {1, -1}) {
                const int across = mirrored ? -turn : turn, down = turn;
                double patch[F::kTaps], truths[kStoredPhases];
                for (int n = 0; n < F::kTaps; ++n) {
                    const int dx = n % F::kColumns - F::kColumns / 2;
                    const int dy = n / F::kColumns - F::kRows / 2;
                    patch[n] = small.row(y + down * dy)[x + across * dx] - middle;
                }
                for (int p = 0; p < kStoredPhases; ++p) {
                    const int right = across > 0 ? p : 1 - p, lower = down > 0 ? 0 : 1;
                    truths[p] = truth.row(2 * y + lower)[2 * x + right] - middle;
                }
                problem.add(patch, truths);
            }
        }
    }
}

void print(const std::vector<Problem>& problems) {
    std::printf(
        "// Written by quillmere-scaler-training; not to be edited by hand.\n"
        "#include \"Desktop/VideoToolbox/DoublingFilters.h\"\n\n"
        "namespace quillmere::scaler {\n\n// clang-format off\n"
        "const std::int8_t kTrainedFilters[kStoredFilters][DoublingFilters::kTaps] = {\n");
    for (const Problem& problem : problems) {
        for (int phase = 0; phase < kStoredPhases; ++phase) {
            const std::vector<int> levels = problem.levels(phase);
            std::printf("    {");
            for (int n = 0; n < F::kTaps; ++n) {
                std::printf("%s%d", n == 0 ? "" : n == F::kTaps / 2 ? ",\n     " : ",", levels[n]);
            }
            std::printf("},\n");
        }
    }
    std::printf("};\n// clang-format on\n\n}  // namespace quillmere::scaler\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: quillmere-scaler-training FOLDER\n");
        return 2;
    }
    std::vector<Problem> problems(kClasses);
    for (const char* name : kPictures) {
        const auto picture = loadGrey(std::filesystem::path(argv[1]) / name);
        if (!picture) {
            std::fprintf(stderr, "%s: %s\n", name, picture.error().localizedDescription.c_str());
            return 1;
        }
        const int factor = std::max(2, picture->size.width / kWidth);
        const GreyPicture truth = reduced(*picture, factor, Reduction::area);
        for (const Reduction reduction : {Reduction::area, Reduction::lanczos}) {
            addPatches(planeOf(rounded(reduced(truth, 2, reduction))), truth, problems);
        }
    }
    for (Problem& problem : problems) problem.calm();
    print(problems);
    return 0;
}
