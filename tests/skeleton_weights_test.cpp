// The weight-positions files: the two keys searched as plain text, the number rules, and the
// files that are refused as a whole.
#include <climits>

#include "service_fixture.h"

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

void PrintTo(const WeightsCase& c, std::ostream* os) {
    *os << c.name;
}

class SkeletonWeightsTest : public ServiceTest,
                            public ::testing::WithParamInterface<std::tuple<WeightsCase, bool>> {};

TEST_P(SkeletonWeightsTest, FileIsReadAtConstruction) {
    const WeightsCase& c = std::get<0>(GetParam());
    const bool sec = std::get<1>(GetParam());
    const std::string path = sec ? Device::kWeightsSecondary : Device::kWeightsMain;
    const std::string other = sec ? Device::kWeightsMain : Device::kWeightsSecondary;
    if (c.text != nullptr) device->writeWeights(sec ? PanelId::Secondary : PanelId::Main, c.text);
    boot();

    EXPECT_EQ(c.count, peer->weightsCount(sec));
    EXPECT_EQ(c.weights, peer->weights(sec));
    EXPECT_EQ(0, peer->weightsCount(!sec));
    EXPECT_TRUE(peer->weights(!sec).empty());

    EXPECT_EQ(1u, logCount(ANDROID_LOG_ERROR, "GetCwbWeightsPos fail to open " + other));
    EXPECT_EQ(c.text == nullptr ? 1u : 0u,
              logCount(ANDROID_LOG_ERROR, "GetCwbWeightsPos fail to open " + path));
    const size_t read = c.text == nullptr ? 0u : 1u;
    EXPECT_EQ(read,
              logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos Count: " + std::to_string(c.count)));
    EXPECT_EQ(read, logCount(ANDROID_LOG_INFO,
                             "GetCwbWeightsPos Weights.size: " + std::to_string(c.weights.size())));
    EXPECT_EQ(read, host::log::countContaining("GetCwbWeightsPos Count: "));
    // Debug logging is off while the service is constructed.
    EXPECT_EQ(0u, host::log::countContaining("GetCwbWeightsPos weight: "));
    size_t refusals = 0;
    for (const host::log::Line& line : host::log::lines()) {
        if (line.priority == ANDROID_LOG_ERROR &&
            line.text.rfind("GetCwbWeightsPos " + path + ": ", 0) == 0) {
            ++refusals;
        }
    }
    EXPECT_EQ(c.refused ? 1u : 0u, refusals);
}

INSTANTIATE_TEST_SUITE_P(
        Files, SkeletonWeightsTest,
        ::testing::Combine(
                ::testing::Values(
                        WeightsCase{"Example",
                                    R"({"count": 6, "Weights": [1, 2, 1, 2, 4, 2]})",
                                    6,
                                    {1, 2, 1, 2, 4, 2},
                                    false},
                        WeightsCase{"Missing", nullptr, 0, {}, false},
                        WeightsCase{"Empty", "", 0, {}, false},
                        WeightsCase{"NoKeys", R"({"size": 3, "list": [1, 2, 3]})", 0, {}, false},
                        WeightsCase{"CapitalCount",
                                    R"({"Count": 6, "Weights": [1, 2, 1, 2, 4, 2]})",
                                    0,
                                    {1, 2, 1, 2, 4, 2},
                                    false},
                        WeightsCase{"SpaceBeforeColon",
                                    R"({"count" : 2, "Weights": [1, 2]})",
                                    0,
                                    {1, 2},
                                    false},
                        WeightsCase{"LowerCaseWeights",
                                    R"({"count": 2, "weights": [1, 2]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"CountLastWithoutComma",
                                    R"({"Weights": [1,2], "count": 2})",
                                    0,
                                    {1, 2},
                                    false},
                        WeightsCase{"LineBreaksAndSpaces",
                                    "{\n  \"count\":\n 4 ,\n  \"Weights\": [\n    1,\n\t-2 ,"
                                    "\n  3,\r\n 4\n  ]\n}\n",
                                    4,
                                    {1, -2, 3, 4},
                                    false},
                        WeightsCase{"NegativeAndExtremes",
                                    R"({"count": 3, "Weights": [-1, -2147483648, 2147483647]})",
                                    3,
                                    {-1, INT32_MIN, INT32_MAX},
                                    false},
                        WeightsCase{"TrailingCharactersIgnored",
                                    R"({"count": 3x, "Weights": [1a, +2b, 3 c]})",
                                    3,
                                    {1, 2, 3},
                                    false},
                        WeightsCase{"LongerListKept",
                                    R"({"count": 2, "Weights": [5, 6, 7]})",
                                    2,
                                    {5, 6, 7},
                                    false},
                        WeightsCase{"CloseBeforeOpenReadsToTheEnd",
                                    R"({"count": 2, "Weights": ] [7, 8)",
                                    2,
                                    {7, 8},
                                    false},
                        WeightsCase{"ShorterListRefused",
                                    R"({"count": 6, "Weights": [1, 2, 3]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"NoBracketsRefused",
                                    R"({"count": 2, "Weights": 1, 2})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"CountNotANumber",
                                    R"({"count": six, "Weights": [1]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"CountOutOfRange",
                                    R"({"count": 2147483648, "Weights": [1]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"WeightNotANumber",
                                    R"({"count": 2, "Weights": [1, x]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"WeightOutOfRange",
                                    R"({"count": 1, "Weights": [-2147483649]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{
                                "EmptyPiece", R"({"count": 2, "Weights": [1,,2]})", 0, {}, true},
                        WeightsCase{"TrailingComma",
                                    R"({"count": 2, "Weights": [1, 2,]})",
                                    0,
                                    {},
                                    true},
                        WeightsCase{"EmptyList", R"({"count": 0, "Weights": [ ]})", 0, {}, true}),
                ::testing::Bool()),
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
    service->GetCwbWeightsPos(path, &count, weights);  // no file
    EXPECT_EQ(5, count);
    EXPECT_EQ(std::vector<int>{9}, weights);
    EXPECT_EQ(1u,
              logCount(ANDROID_LOG_ERROR, std::string("GetCwbWeightsPos fail to open ") + path));
    EXPECT_EQ(0u, host::log::countContaining("GetCwbWeightsPos Count: "));

    device->writeWeights(PanelId::Main, R"({"count": 2, "Weights": [-3, 4]})");
    service->GetCwbWeightsPos(path, &count, weights);
    EXPECT_EQ(2, count);
    EXPECT_EQ((std::vector<int>{9, -3, 4}), weights);  // appended
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos Count: 2"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos Weights.size: 3"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos weight: 9"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos weight: -3"));
    EXPECT_EQ(1u, logCount(ANDROID_LOG_INFO, "GetCwbWeightsPos weight: 4"));
}

}  // namespace
}  // namespace cwbtest
