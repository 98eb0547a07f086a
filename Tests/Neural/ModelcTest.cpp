// The tool quillmere-modelc, run as a user runs it.
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

struct Outcome {
    int status = -1;
    std::string said;  // on both streams
};

class ModelcTest : public testing::Test {
protected:
    ModelcTest() {
        writeFile(folder_ / "net.param",
                  "7767517\n2 2\nInput in 0 1 data\nConvolution c 1 1 data out 0=3 1=1 6=9\n");
        writeFile(folder_ / "net.bin", std::string("\x47\x6B\x30\x01", 4) + std::string(20, 0));
    }

    Outcome run(const std::string& arguments) const {
        const std::string command = "cd '" + folder_.path().string() + "' && '" +
                                    std::string(QUILLMERE_MODELC) + "' " + arguments + " 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        Outcome outcome;
        for (int c = ::fgetc(pipe); c != EOF; c = ::fgetc(pipe)) {
            outcome.said += static_cast<char>(c);
        }
        const int status = ::pclose(pipe);
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }

    std::string import(const std::string& output) const {
        return "import-param net.param net.bin --range 1 --package p --package-version 1 "
               "--integrity sha512-x --licence MIT --input-name in -o " +
               output;
    }

    TemporaryFolder folder_;
};

TEST_F(ModelcTest, AModelThatItMakesIsNotWholeOrDiffersFromRunToRun) {
    ASSERT_EQ(run(import("a.mlmodelc")).status, 0);
    ASSERT_EQ(run(import("deep/er/b.mlmodelc")).status, 0);
    EXPECT_EQ(run("--verify a.mlmodelc").status, 0);
    for (const char* file : {"graph.json", "weights.bin"}) {
        EXPECT_EQ(readFile(folder_.path() / "a.mlmodelc" / file),
                  readFile(folder_.path() / "deep/er/b.mlmodelc" / file));
    }
    ASSERT_EQ(run("mean a.mlmodelc deep/er/b.mlmodelc --input-name x -o c.mlmodelc").status, 0);
    const auto mean = CompiledModel::open(folder_ / "c.mlmodelc");
    ASSERT_TRUE(mean && mean->verify());
    EXPECT_EQ(mean->graph().values.front(), "x");
}

TEST_F(ModelcTest, AnExitStatusHidesWhatHappened) {
    struct Case {
        const char* fault;
        std::string arguments;
        int status;
        const char* says;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"no arguments", "", 2, "Usage"},
             {"help is an error", "--help", 0, "import-layers"},
             {"an unknown command", "import-dreams", 2, "import-dreams"},
             {"a missing option", "import-param net.param net.bin -o x", 2, "required"},
             {"an unknown range", import("x") + " --range 2", 2, "range"},
             {"two ranges", import("x") + " --range 255", 2, "range"},
             {"a missing file",
              "import-layers none.json --range 1 --package p --integrity i "
              "--package-version 1 --licence MIT --input-name in -o x",
              1, "none.json"},
             {"a model that is none", "--verify .", 1, "graph.json"},
             {"a mean of nothing", "mean . --input-name x -o x", 1, "graph.json"},
             {"a folder that is no model", import("."), 1, "can't be written"},
             {"a place that can't be written", import("net.bin/x"), 1, "can't be written"},
         }) {
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.fault << ": " << outcome.said;
        EXPECT_NE(outcome.said.find(c.says), std::string::npos) << c.fault << ": " << outcome.said;
    }
    EXPECT_FALSE(std::filesystem::exists(folder_ / "x")) << "something was left behind";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 2);
}

}  // namespace
}  // namespace quillmere::neural
