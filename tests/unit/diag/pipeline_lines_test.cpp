// The lines about the pipeline, in every combination of Legacy Mode's results.
#include "diag/report_fixture.h"

namespace {

struct Outcome {
    bool rejected;   // the last ramp
    bool expanded;   // the gamma range
    bool restarted;  // since then
};

class PipelineLines : public SupportReport {
protected:
    void SetUp() override {
        state.rampsAccepted = 7;
        state.rampsRejected = 4;
    }

    // From the pipeline's line through the blank line after the section.
    std::wstring LinesFor(const Outcome& outcome) {
        state.lastApplyRejected = outcome.rejected;
        state.gammaRangeExpanded = outcome.expanded;
        facts.restartDoneSinceFix = outcome.restarted;
        const std::wstring section = Section(L"FILTER STATE");
        return section.substr(section.find(L"Pipeline:"));
    }
};

// Every combination, the last one varying fastest.
const Outcome kOutcomes[] = {{false, false, false}, {false, false, true}, {false, true, false},
                             {false, true, true},   {true, false, false}, {true, false, true},
                             {true, true, false},   {true, true, true}};

}  // namespace

TEST_F(PipelineLines, WithMagnificationThereIsOneLineRegardlessOfTheRamps) {
    for (const Outcome& outcome : kOutcomes)
        EXPECT_EQ(LinesFor(outcome), L"Pipeline:       Magnification API\r\n\r\n");
}

TEST_F(PipelineLines, InLegacyModeEveryResultHasItsWording) {
    state.useLegacyGamma = true;
    const std::wstring taken = L"Pipeline:       Legacy gamma (SetDeviceGammaRamp)\r\n";
    const std::wstring refused =
        L"Pipeline:       Legacy gamma (SetDeviceGammaRamp)  ** LAST APPLY REJECTED by Windows - "
        L"range-limited **\r\n";
    const std::wstring applies = L"Ramp applies:   accepted 7 / rejected 4 this session\r\n";
    const std::wstring narrow = L"Gamma range:    Windows default (strong ramps blocked until expanded)\r\n";
    const std::wstring wide = L"Gamma range:    expanded (GdiIcmGammaRange=256)\r\n";
    const std::wstring exhausted =
        L"Gamma fix:      applied + restart done, ramps STILL rejected (driver level limit?) - banner "
        L"demoted\r\n";
    const std::wstring expected[] = {
        taken + applies + narrow + L"\r\n",   taken + applies + narrow + L"\r\n",
        taken + applies + wide + L"\r\n",     taken + applies + wide + L"\r\n",
        refused + applies + narrow + L"\r\n", refused + applies + narrow + L"\r\n",
        refused + applies + wide + L"\r\n",   refused + applies + wide + exhausted + L"\r\n"};
    for (std::size_t i = 0; i < std::size(kOutcomes); ++i)
        EXPECT_EQ(LinesFor(kOutcomes[i]), expected[i]) << "combination " << i;
}

TEST_F(PipelineLines, TheCountsAreThoseOfTheSession) {
    state.useLegacyGamma = true;
    state.rampsAccepted = 0;
    state.rampsRejected = 2147483647;
    EXPECT_EQ(After(L"Ramp applies:   "), L"accepted 0 / rejected 2147483647 this session");
}
