#include "Benchmarks/Table.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace quillmere::benchmark {
namespace {

void print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

std::string line(const std::vector<std::string>& cells) {
    std::string text = "|";
    for (const std::string& cell : cells) text += " " + cell + " |";
    return text + "\n";
}

}  // namespace

Table::Table(const std::string& title, const std::vector<std::string>& columns) {
    std::string rule = "|---|";
    for (std::size_t i = 1; i < columns.size(); ++i) rule += "--:|";
    print("\n### " + title + "\n\n" + line(columns) + rule + "\n");
}

Table::~Table() {
    for (const std::string& note : notes_) print("\n" + note + "\n");
}

void Table::row(const std::vector<std::string>& cells) { print(line(cells)); }

std::string figure(double value) {
    const double size = std::abs(value);
    const int decimals = size < 0.9995 ? 3 : size < 9.995 ? 2 : size < 99.95 ? 1 : 0;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

std::string figure(const Spread& spread, double factor) {
    return figure(spread.median * factor) + " (" + figure(spread.lower * factor) + "–" +
           figure(spread.upper * factor) + ")";
}

}  // namespace quillmere::benchmark
