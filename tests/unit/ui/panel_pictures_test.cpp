// The panel in every state against golden pictures, pixel by pixel.
//
// A missing picture is a failure. A picture that differs is a failure and is written to pictures/ in the
// build folder. After an intended change, regenerate the golden pictures, review them and commit them:
//     lab/run-in-lab build/release/unit/ui.exe --write-golden
#include <gtest/gtest.h>

#include <objbase.h>

#include <cwchar>
#include <string>

#include "app/state/app_state.h"
#include "ui/panel_rendering.h"
#include "ui/picture.h"
#include "ui/print.h"
#include "win32/platform.h"

namespace {

struct Case {
    std::size_t state;
    std::uint32_t dpi;
};

bool IsWritingGolden() {
    return std::wcsstr(GetCommandLineW(), L"--write-golden") != nullptr;
}

std::string NameOf(const Case& picture) {
    return Print("%s_%u", kPanelStates[picture.state].name, static_cast<unsigned>(picture.dpi));
}

std::vector<Case> AllCases() {
    std::vector<Case> cases;
    for (std::size_t state = 0; state < kPanelStateCount; ++state) {
        for (std::uint32_t dpi : kPictureDpis)
            cases.push_back({state, dpi});
    }
    return cases;
}

class PanelPictures : public testing::TestWithParam<Case> {
protected:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override { CoUninitialize(); }
};

}  // namespace

TEST_P(PanelPictures, LooksLikeItsGoldenPicture) {
    const std::string name = NameOf(GetParam());
    const Rendering rendering = RenderPanel(kPanelStates[GetParam().state], GetParam().dpi);
    const std::string goldenPath = std::string(AMBREL_GOLDEN_FOLDER) + "/" + name + ".png";
    if (IsWritingGolden()) {
        ASSERT_TRUE(WritePng(goldenPath, rendering.picture)) << goldenPath;
    }

    Picture golden;
    const bool read = ReadPng(goldenPath, &golden);
    const std::string difference =
        read ? Difference(rendering.picture, golden) : "there is no golden picture";
    if (difference.empty()) return;
    const std::string actualPath = std::string(AMBREL_PICTURE_FOLDER) + "/" + name + ".png";
    EXPECT_TRUE(WritePng(actualPath, rendering.picture)) << "the folder of " << actualPath << " is missing";
    ADD_FAILURE() << name << ": " << difference << "\n  golden " << goldenPath << "\n  actual " << actualPath;
}

INSTANTIATE_TEST_SUITE_P(EveryStateAndDpi, PanelPictures, testing::ValuesIn(AllCases()),
                         [](const testing::TestParamInfo<Case>& parameter) {
                             return NameOf(parameter.param);
                         });

TEST(PictureComparison, OnePixelIsADifference) {
    const Picture golden = {2, 2, {1, 2, 3, 4}};
    Picture actual = golden;
    EXPECT_EQ(Difference(actual, golden), "");
    actual.pixels[3] = 0x00FF10;
    EXPECT_EQ(Difference(actual, golden),
              "1 pixels differ within (1,1)-(2,2), first at (1,1): #00FF10 instead of #000004");
    EXPECT_EQ(Difference({1, 1, {1}}, golden), "1x1 instead of 2x2 pixels");
}

TEST(PictureComparison, AMissingFileIsNotRead) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Picture picture;
    EXPECT_FALSE(ReadPng(std::string(AMBREL_GOLDEN_FOLDER) + "/no_such_state_96.png", &picture));
    CoUninitialize();
}
