// What the programs of FFmpeg make of movies.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace quillmere {

/// What a shell's command says; a command that fails fails the test.
inline std::string saidBy(const std::string& command) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe) {
        char buffer[4096];
        for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
            output.append(buffer, n);
        }
    }
    EXPECT_TRUE(pipe && pclose(pipe) == 0) << command;
    return output;
}

/// `arguments` as ffmpeg takes them, without the file at the end.
inline std::filesystem::path makeMovie(const std::string& arguments,
                                       const std::filesystem::path& file) {
    saidBy("ffmpeg -nostdin -v error -y " + arguments + " " + file.string());
    return file;
}

inline std::string probe(const std::filesystem::path& movie, const std::string& arguments) {
    return saidBy("ffprobe -v error -of csv=p=0 " + arguments + " " + movie.string());
}

/// Of all frames of the first video track, in seconds.
inline std::vector<double> frameTimes(const std::filesystem::path& movie) {
    std::istringstream lines(
        probe(movie, "-select_streams v:0 -show_entries frame=best_effort_timestamp_time"));
    std::vector<double> times;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == ',') continue;
        // A file may leave out its last time.
        const bool isTold = line[0] != 'N';
        times.push_back(isTold ? std::stod(line) : 2 * times.back() - times.rbegin()[1]);
    }
    return times;
}

}  // namespace quillmere
