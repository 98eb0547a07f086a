// The one form of all results: Markdown, ready to be put on a page.
#pragma once

#include <string>
#include <vector>

#include "Benchmarks/Timing.h"

namespace quillmere::benchmark {

/// Prints each row as soon as it is known, since the next may take minutes, and at its end what is
/// to be said below it. The first column holds names, the others figures.
class Table {
public:
    Table(const std::string& title, const std::vector<std::string>& columns);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    void row(const std::vector<std::string>& cells);
    void note(const std::string& sentences) { notes_.push_back(sentences); }
    /// Why `name` has no row.
    void missing(const std::string& name, const std::string& reason) {
        notes_.push_back("Left out: " + name + ". " + reason);
    }

private:
    std::vector<std::string> notes_;
};

/// "0.123", "1.23", "12.3", "123", "1234".
std::string figure(double value);
/// "12.3 (12.1–12.9)": the median and the quartiles, each times `factor`.
std::string figure(const Spread& spread, double factor);

inline constexpr double kMilliseconds = 1000;
inline constexpr double kSeconds = 1;

}  // namespace quillmere::benchmark
