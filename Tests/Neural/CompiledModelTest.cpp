// Compiled models on disk: what is written, and what happens when it is not what was written.
#include "Neural/Model/CompiledModel.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>

#include "Neural/Model/NeuralError.h"
#include "Neural/Model/Sha256.h"
#include "Neural/Runtime/Network.h"
#include "Tests/Neural/TestModels.h"

namespace quillmere::neural {
namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

class CompiledModelTest : public testing::Test {
protected:
    CompiledModelTest() : model_(compiled(smallNetwork(), directory_)) {}

    // Whether a model that opens is also intact. An intact one must load, and one that loads, as
    // it may with damage to what no network reads, must run.
    bool accepted() {
        const auto opened = CompiledModel::open(directory_);
        if (!opened) {
            EXPECT_EQ(opened.error().domain, kErrorDomain);
            EXPECT_FALSE(opened.error().localizedDescription.empty());
            return false;
        }
        const auto network = Network::load(directory_, pool_);
        const PlanarImage image = PlanarImage::blank(opened->graph().inputChannels, {3, 2});
        EXPECT_TRUE(!network || (*network)->evaluate(image));
        const auto intact = opened->verify();
        EXPECT_TRUE(network || !intact);
        return static_cast<bool>(intact);
    }

    TemporaryFolder folder_;
    fs::path directory_ = folder_ / "small.mlmodelc";
    CompiledModel model_;
    WorkerPool pool_{1};
};

TEST_F(CompiledModelTest, WhatIsReadIsNotWhatWasWritten) {
    const ModelContents written = smallNetwork();
    EXPECT_TRUE(model_.verify());
    EXPECT_EQ(model_.graph().values, written.graph.values);
    EXPECT_EQ(model_.graph().operations, written.graph.operations);
    EXPECT_EQ(model_.graph().output, written.graph.output);
    EXPECT_EQ(model_.graph().range, written.graph.range);
    EXPECT_EQ(model_.graph().licence, written.graph.licence);
    EXPECT_EQ(model_.graph().provenance, written.graph.provenance);
    for (TensorId id = 0; id < written.tensors.size(); ++id) {
        const std::span<const Half> tensor = model_.tensor(id);
        EXPECT_EQ(std::vector<Half>(tensor.begin(), tensor.end()), written.tensors[id]);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(tensor.data()) % kTensorAlignment, 0u);
    }
}

TEST_F(CompiledModelTest, TheSameContentsGiveOtherBytes) {
    compiled(smallNetwork(), folder_ / "again");
    for (const char* file : {"graph.json", "weights.bin"}) {
        EXPECT_EQ(readFile(directory_ / file), readFile(folder_.path() / "again" / file));
    }
}

TEST_F(CompiledModelTest, ACutFileIsAccepted) {
    for (const char* file : {"graph.json", "weights.bin"}) {
        const std::string whole = readFile(directory_ / file);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            writeFile(directory_ / file, whole.substr(0, size));
            EXPECT_FALSE(accepted()) << file << " cut to " << size;
        }
        writeFile(directory_ / file, whole + whole.front());
        EXPECT_FALSE(accepted()) << file << " with a byte more";
        fs::remove(directory_ / file);
        EXPECT_FALSE(accepted()) << "no " << file;
        fs::create_directory(directory_ / file);
        EXPECT_FALSE(accepted()) << file << " is a directory";
        fs::remove(directory_ / file);
        writeFile(directory_ / file, whole);
    }
    EXPECT_TRUE(accepted());
}

TEST_F(CompiledModelTest, AChangedByteIsNotFound) {
    for (const char* file : {"graph.json", "weights.bin"}) {
        const std::string whole = readFile(directory_ / file);
        std::string changed = whole;
        for (std::size_t at = 0; at < whole.size(); ++at) {
            changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
            writeFile(directory_ / file, changed);
            EXPECT_FALSE(accepted()) << file << " at " << at;
            changed[at] = whole[at];
        }
        writeFile(directory_ / file, whole);
    }
    EXPECT_TRUE(accepted());
}

TEST_F(CompiledModelTest, AHostileGraphIsOpened) {
    struct Case {
        const char* fault;
        const char* at;  // JSON pointer; what is there is replaced
        Json value;
    };
    const Json kHuge = 18446744073709551615ull;
    for (const Case& c : std::initializer_list<Case>{
             {"another format", "/format", 2},
             {"a format that is text", "/format", "1"},
             {"no object", "", Json::array()},
             {"nothing at all", "", nullptr},
             {"no input", "/input", nullptr},
             {"an input of another type", "/input/name", 7},
             {"an input without a name", "/input/name", ""},
             {"no channels", "/input/channels", 0},
             {"negative channels", "/input/channels", -3},
             {"a broken channel", "/input/channels", 3.5},
             {"more channels than an int", "/input/channels", kHuge},
             {"an output that is the input", "/output", "in"},
             {"an output that nobody computes", "/output", "nobody"},
             {"an unknown range", "/range", 7},
             {"a licence that is a number", "/licence", 1},
             {"more weights than there are", "/weights/bytes", 1 << 30},
             {"no weights", "/weights/bytes", 0},
             {"no operations", "/operations", Json::array()},
             {"operations that are an object", "/operations", Json::object()},
             {"an operation that is a number", "/operations/0", 1},
             {"an unknown operation", "/operations/0/kind", "softmax"},
             {"a cycle of one", "/operations/0/inputs/0", "bent"},
             {"a cycle of two", "/operations/0/inputs/0", "sum"},
             {"no inputs of a convolution", "/operations/0/inputs", Json::array()},
             {"no inputs of a concatenation", "/operations/2/inputs", Json::array()},
             {"no inputs of a sum", "/operations/6/inputs", Json::array()},
             {"two values of one name", "/operations/1/name", "in"},
             {"an even kernel", "/operations/0/kernel", 2},
             {"a kernel of zero", "/operations/0/kernel", 0},
             {"absurd outputs", "/operations/0/outputs", 2147483647},
             {"outputs that its weights don't have", "/operations/0/outputs", 11},
             {"a tensor that is not there", "/operations/0/weights", 99},
             {"a tensor beyond everything", "/operations/0/bias", kHuge},
             {"a bias in the place of weights", "/operations/0/weights", 1},
             {"an unknown activation", "/operations/0/activation", "tanh"},
             {"slopes that are not there", "/operations/0/slopes", 99},
             {"a slope that is text", "/operations/1/slope", "0.2"},
             {"a slope beyond single precision", "/operations/1/slope", 1e300},
             {"a factor too few", "/operations/6/factors", Json::array({1.0})},
             {"a factor that is text", "/operations/6/factors/0", "1"},
             {"a factor of zero", "/operations/4/factor", 0},
             {"a factor that doesn't divide", "/operations/4/factor", 5},
             {"a factor whose square overflows", "/operations/4/factor", 65536},
             {"an enlargement beyond reason", "/operations/5/factor", 2147483647},
             {"an unknown order", "/operations/4/order", "?"},
             {"tensors of another type", "/tensors", "none"},
             {"a tensor out of line", "/tensors/1/offset", 1},
             {"a tensor behind the end", "/tensors/1/offset", 1 << 20},
             {"an offset that wraps around", "/tensors/1/offset", 18446744073709551552ull},
             {"a shape of the wrong rank", "/tensors/1/shape", Json::array({10, 1})},
             {"a shape without dimensions", "/tensors/1/shape", Json::array()},
             {"a dimension of zero", "/tensors/1/shape/0", 0},
             {"a negative dimension", "/tensors/1/shape/0", -10},
             {"dimensions whose product overflows", "/tensors/0/shape",
              Json::array({2147483647, 2147483647, 2147483647, 2147483647})},
             {"provenance of another type", "/provenance", 1},
         }) {
        Json graph = Json::parse(readFile(directory_ / "graph.json"));
        const Json::json_pointer pointer(c.at);
        ASSERT_TRUE(graph.contains(pointer)) << c.fault << ": the test's own pointer is wrong";
        graph[pointer] = c.value;
        const std::string intact = readFile(directory_ / "graph.json");
        writeFile(directory_ / "graph.json", graph.dump());
        EXPECT_FALSE(CompiledModel::open(directory_)) << c.fault;
        writeFile(directory_ / "graph.json", intact);
    }
}

TEST_F(CompiledModelTest, AnOlderModelIsCalledDamaged) {
    Json graph = Json::parse(readFile(directory_ / "graph.json"));
    graph["format"] = kFormatVersion + 1;
    writeFile(directory_ / "graph.json", graph.dump());
    const auto opened = CompiledModel::open(directory_);
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().code, static_cast<int>(ErrorCode::unsupportedVersion));
}

TEST_F(CompiledModelTest, NestingWithoutEndOverflowsTheStack) {
    writeFile(directory_ / "graph.json", std::string(1 << 20, '['));
    EXPECT_FALSE(accepted());
    writeFile(directory_ / "graph.json", std::string(1 << 20, '[') + std::string(1 << 20, ']'));
    EXPECT_FALSE(accepted());
}

TEST_F(CompiledModelTest, AModelIsLeftHalfReplacedOrSomethingElseOverwritten) {
    // A new model in the place of an old one, also where the path ends with a slash.
    const auto replaced =
        writeModel(smallNetwork(2).graph, smallNetwork(2).tensors, directory_.string() + "/");
    EXPECT_TRUE(replaced);
    EXPECT_TRUE(accepted());
    EXPECT_NE(model_.graph().tensors, CompiledModel::open(directory_)->graph().tensors);

    writeFile(folder_ / "precious", "text");
    fs::create_directory(folder_ / "folder");
    writeFile(folder_.path() / "folder" / "photo", "pixels");
    for (const char* taken : {"precious", "folder"}) {
        EXPECT_FALSE(writeModel(smallNetwork().graph, smallNetwork().tensors, folder_ / taken));
    }
    EXPECT_EQ(readFile(folder_ / "precious"), "text");
    EXPECT_EQ(readFile(folder_.path() / "folder" / "photo"), "pixels");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 3) << "left-overs";
}

TEST(Half, AConversionRoundsWrongly) {
    for (unsigned bits = 0; bits < 65536; ++bits) {
        const auto half = static_cast<Half>(bits);
        EXPECT_TRUE(!isFinite(half) || toHalf(toFloat(half)) == half) << bits;
    }
    struct Case {
        float value;
        Half half;
    };
    for (const Case& c : std::initializer_list<Case>{
             {0.0f, 0x0000},         {-0.0f, 0x8000},        {1.0f, 0x3C00},
             {-2.0f, 0xC000},        {65504.0f, 0x7BFF},     {65519.9f, 0x7BFF},
             {65520.0f, 0x7C00},     {1e30f, 0x7C00},        {INFINITY, 0x7C00},
             {-INFINITY, 0xFC00},    {0x1p-24f, 0x0001},     {0x1p-25f, 0x0000},
             {0x1.8p-25f, 0x0001},   {0x1.8p-24f, 0x0002},   {0x1p-14f, 0x0400},
             {0x1.ff8p-15f, 0x03FF}, {0x1.ffcp-15f, 0x0400}, {0x1.002p0f, 0x3C00},
             {0x1.006p0f, 0x3C02},  // ties go to even
             {0x1.0021p0f, 0x3C01},
         }) {
        EXPECT_EQ(toHalf(c.value), c.half) << c.value;
    }
    EXPECT_FALSE(isFinite(toHalf(NAN)));
}

TEST(Sha256, TheProcessorsInstructionsComputeSomethingElse) {
    const Sha256Compress fast = compressByInstructions();
    if (fast == nullptr) GTEST_SKIP() << "this processor has none";
    const std::vector<float> noise = Numbers().many(16 * 7 + 1);
    const auto* blocks = reinterpret_cast<const std::byte*>(noise.data()) + 1;  // not aligned
    Sha256State plain{1, 2, 3, 4, 5, 6, 7, 0xffffffff};
    Sha256State other = plain;
    compressPlainly(plain, blocks, 7);
    fast(other, blocks, 7);
    EXPECT_EQ(plain, other);
}

TEST(Sha256, ADigestDiffersFromThePublishedOne) {
    const auto digest = [](const std::string& text) {
        return Sha256::of(std::as_bytes(std::span(text)));
    };
    // FIPS 180-4's examples, and every way to end a block.
    EXPECT_EQ(digest(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digest("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(digest(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    for (std::size_t size = 50; size < 140; ++size) {
        const std::string text(size, 'x');
        Sha256 pieces;
        for (std::size_t at = 0; at < size; at += 7) {
            pieces.update(
                std::as_bytes(std::span(text)).subspan(at, std::min<std::size_t>(7, size - at)));
        }
        EXPECT_EQ(pieces.finish(), digest(text)) << size;
    }
}

}  // namespace
}  // namespace quillmere::neural
