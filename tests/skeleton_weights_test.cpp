// The weight-positions files: the two keys searched as plain text, the number rules, and the
// files that are refused as a whole.
#include <climits>

#include "skeleton_helpers.h"

namespace cwbtest {
namespace {

using host::device::Device;

struct WeightsCase {
    const char* name;
    const char* text;  // nullptr: no file
    int32_t count;
    std::vector<int32_t> weights;
    bool refused;  // logged as unusable and loaded as count 0 with no weights
};

const WeightsCase kFiles[] = {
        {"Example", R"({"count": 6, "Weights": [1, 2, 1, 2, 4, 2]})", 6, {1, 2, 1, 2, 4, 2}, false},
        {"Missing", nullptr, 0, {}, false},
        {"Empty", "", 0, {}, false},
        {"NoKeys", R"({"size": 3, "list": [1, 2, 3]})", 0, {}, false},
        {"CapitalCount", R"({"Count": 2, "Weights": [1, 2]})", 0, {1, 2}, false},
        {"SpaceBeforeColon", R"({"count" : 2, "Weights": [1, 2]})", 0, {1, 2}, false},
        {"LowerCaseWeights", R"({"count": 2, "weights": [1, 2]})", 0, {}, true},
        {"CountLastWithoutComma", R"({"Weights": [1,2], "count": 2})", 0, {1, 2}, false},
        {"LineBreaksAndSpaces",
         "{\n  \"count\":\n 4 ,\n  \"Weights\": [\n    1,\n\t-2 ,\n  3,\r\n 4\n  ]\n}\n",
         4,
         {1, -2, 3, 4},
         false},
        {"Extremes",
         R"({"count": 2, "Weights": [-2147483648, 2147483647]})",
         2,
         {INT32_MIN, INT32_MAX},
         false},
        {"TrailingChars", R"({"count": 3x, "Weights": [1a, +2b, 3 c]})", 3, {1, 2, 3}, false},
        {"LongerListKept", R"({"count": 2, "Weights": [5, 6, 7]})", 2, {5, 6, 7}, false},
        {"CloseBeforeOpenReadsToTheEnd", R"({"count": 2, "Weights": ] [7, 8)", 2, {7, 8}, false},
        {"ShorterListRefused", R"({"count": 6, "Weights": [1, 2, 3]})", 0, {}, true},
        {"NoBracketsRefused", R"({"count": 2, "Weights": 1, 2})", 0, {}, true},
        {"CountNotANumber", R"({"count": six, "Weights": [1]})", 0, {}, true},
        {"CountOutOfRange", R"({"count": 2147483648, "Weights": [1]})", 0, {}, true},
        {"WeightNotANumber", R"({"count": 2, "Weights": [1, x]})", 0, {}, true},
        {"WeightOutOfRange", R"({"count": 1, "Weights": [-2147483649]})", 0, {}, true},
        {"EmptyPiece", R"({"count": 2, "Weights": [1,,2]})", 0, {}, true},
        {"TrailingComma", R"({"count": 2, "Weights": [1, 2,]})", 0, {}, true},
        {"EmptyList", R"({"count": 0, "Weights": [ ]})", 0, {}, true},
};

class SkeletonWeightsTest : public ServiceTest,
                            public ::testing::WithParamInterface<std::tuple<WeightsCase, bool>> {};

TEST_P(SkeletonWeightsTest, FileIsReadAtConstruction) {
    const auto& [c, sec] = GetParam();
    const std::string path = sec ? Device::kWeightsSecondary : Device::kWeightsMain;
    if (c.text != nullptr) device->writeWeights(sec ? PanelId::Secondary : PanelId::Main, c.text);
    boot();

    EXPECT_EQ(c.count, peer->weightsCount(sec));
    EXPECT_EQ(c.weights, peer->weights(sec));
    EXPECT_TRUE(peer->weightsCount(!sec) == 0 && peer->weights(!sec).empty());

    const size_t read = c.text == nullptr ? 0u : 1u;
    EXPECT_EQ(1 - read, logCount(ANDROID_LOG_ERROR, "GetCwbWeightsPos fail to open " + path));
    const std::string size = std::to_string(c.weights.size());
    EXPECT_EQ(read,
              logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos Count: " + std::to_string(c.count)));
    EXPECT_EQ(read, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos Weights.size: " + size));
    // Debug logging is off while the service is constructed.
    EXPECT_EQ(0u, host::log::countContaining("GetCwbWeightsPos weight: "));
    const std::vector<host::log::Line> lines = host::log::lines();
    EXPECT_EQ(c.refused ? 1 : 0, std::count_if(lines.begin(), lines.end(), [&](const auto& l) {
                  return l.priority == ANDROID_LOG_ERROR &&
                         l.text.rfind("GetCwbWeightsPos " + path + ": ", 0) == 0;
              }));
}

INSTANTIATE_TEST_SUITE_P(Files, SkeletonWeightsTest,
                         ::testing::Combine(::testing::ValuesIn(kFiles), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<WeightsCase, bool>>& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "Secondary" : "Main");
                         });

using SkeletonWeightsReaderTest = ServiceTest;

TEST_F(SkeletonWeightsReaderTest, DebugLogsEveryWeightAndFailuresKeepTheCallersValues) {
    boot();
    Error result = Error::FAILED;
    ASSERT_TRUE(service->setDebug({1}, &result).isOk());
    host::log::clear();

    char path[] = "/odm/etc/display/cwb_weightspos.json";
    int count = 5;
    std::vector<int> weights{9};
    peer->GetCwbWeightsPos(path, &count, weights);  // no file
    EXPECT_EQ(5, count);
    EXPECT_EQ(std::vector<int>{9}, weights);
    device->writeWeights(PanelId::Main, R"({"count": 2, "Weights": [-3, 4]})");
    peer->GetCwbWeightsPos(path, &count, weights);
    EXPECT_EQ(2, count);
    EXPECT_EQ((std::vector<int>{9, -3, 4}), weights);  // appended
    for (const char* line :
         {"Count: 2", "Weights.size: 3", "weight: 9", "weight: -3", "weight: 4"}) {
        EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, std::string("GetCwbWeightsPos ") + line)) << line;
    }
}

}  // namespace
}  // namespace cwbtest
