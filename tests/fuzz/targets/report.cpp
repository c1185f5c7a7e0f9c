// The support report: no text from outside adds a line, ends one or hides the rest.
#include <algorithm>

#include "diag/support_text.h"
#include "target.h"

namespace {

struct Texts {
    std::wstring os, edition, revision, hardware, cpu, locale, zone, device, description, adapter, autostart,
        display, path, recent, persisted;
};

Texts ReadTexts(Input* input) {
    Texts texts;
    for (std::wstring* text :
         {&texts.os, &texts.edition, &texts.revision, &texts.hardware, &texts.cpu, &texts.locale, &texts.zone,
          &texts.device, &texts.description, &texts.adapter, &texts.autostart, &texts.display, &texts.path,
          &texts.recent, &texts.persisted})
        *text = input->Line();
    return texts;
}

// The same texts as one letter each, where they are not empty.
Texts Short(Texts texts) {
    for (std::wstring* text :
         {&texts.os, &texts.edition, &texts.revision, &texts.hardware, &texts.cpu, &texts.locale, &texts.zone,
          &texts.device, &texts.description, &texts.adapter, &texts.autostart, &texts.display, &texts.path,
          &texts.recent, &texts.persisted})
        if (!text->empty()) *text = L"x";
    return texts;
}

SupportFacts FactsWith(const Texts& texts, Input input) {
    SupportFacts facts;
    facts.now = {2026, 11, 0, 22, 9, 5, 7, 42};
    facts.tick = input.Number();
    facts.machineTag = input.Number();
    facts.os = {texts.os, texts.edition, texts.revision, 10, 0, input.Number()};
    facts.hardwareName = texts.hardware;
    facts.cpuName = texts.cpu;
    facts.architecture = static_cast<WORD>(input.Byte());
    facts.memoryBytes = std::uint64_t{input.Number()} << input.Byte() % 32;
    facts.localeName = texts.locale;
    facts.timeZoneName = texts.zone;
    MonitorProbe monitor;
    monitor.deviceName = texts.device;
    monitor.description = texts.description;
    monitor.brightnessCapable = input.Flag();
    monitor.current = input.Number();
    facts.monitors.assign(input.Byte() % 4U, monitor);
    facts.adapters.assign(input.Byte() % 3U, texts.adapter);
    facts.restartDoneSinceFix = input.Flag();
    facts.autostart.value = texts.autostart;
    facts.recentLines.assign(input.Byte() % 4U, texts.recent);
    facts.persistedLines.assign(input.Byte() % 4U, texts.persisted);
    return facts;
}

AppState StateWith(const Texts& texts, Input input) {
    AppState state;
    state.startTick = input.Number();
    state.dpi = input.Number();
    state.intensity = input.Byte() / 255.0;
    state.brightness = input.Byte() / 255.0;
    state.useLegacyGamma = input.Flag();
    state.lastApplyRejected = input.Flag();
    state.gammaRangeExpanded = input.Flag();
    state.pwmTargetsPresent = input.Flag();
    state.pwmRetrySlowed = input.Flag();
    state.rampsAccepted = static_cast<std::int32_t>(input.Number());
    state.settingsPath = texts.path;
    if (input.Flag()) state.pwmSavedBrightness[texts.display] = input.Number();
    return state;
}

std::size_t Lines(const std::wstring& report) {
    return static_cast<std::size_t>(std::count(report.begin(), report.end(), L'\n'));
}

}  // namespace

void FuzzReport(Input input) {
    const Texts texts = ReadTexts(&input);
    const AppState state = StateWith(texts, input);
    const SupportFacts facts = FactsWith(texts, input);
    const std::wstring report = SupportBundleText(state, facts);
    const Texts shortened = Short(texts);
    const std::wstring shortReport =
        SupportBundleText(StateWith(shortened, input), FactsWith(shortened, input));

    CHECK(Lines(report) == Lines(shortReport));
    for (std::size_t i = 0; i < report.size(); ++i) {
        if (report[i] == L'\r') CHECK(i + 1 < report.size() && report[i + 1] == L'\n');
        if (report[i] == L'\n') CHECK(i > 0 && report[i - 1] == L'\r');
        CHECK(report[i] == L'\r' || report[i] == L'\n' || !IsControl(report[i]));
    }
    CHECK(report.ends_with(L"=== END DIAGNOSTICS ===\r\n"));
    CHECK(!HasControl(SupportSubjectText(facts)) && !HasControl(UptimeText(facts.tick)));
}
