// Text from outside the program cannot forge a line of the report, wherever it comes from.
#include <functional>

#include "diag/report_fixture.h"

namespace {

const std::wstring kForgedLine(L"x\r\n=== FORGED ===\n\r\x0B\x0C\x85\x2028\x2029\x1B\0y", 27);

class ControlCharactersInTheReport : public SupportReport {
protected:
    // The report must have as many lines with the forged text as with a plain one, and contain it on one
    // line.
    void ExpectOneLine(const char* source, const std::function<void(const std::wstring&)>& set) {
        SCOPED_TRACE(source);
        set(L"plain");
        const std::size_t expected = LinesOf(Report()).size();
        set(kForgedLine);
        const std::wstring report = Report();
        EXPECT_EQ(LinesOf(report).size(), expected);
        EXPECT_NE(report.find(L"x\xFFFD\xFFFD=== FORGED ===\xFFFD"), std::wstring::npos);
        EXPECT_EQ(report.find_first_of(std::wstring(L"\x0B\x0C\x85\x2028\x2029\x1B\0", 7)),
                  std::wstring::npos);
        set(L"plain");
    }
};

}  // namespace

TEST_F(ControlCharactersInTheReport, FromTheRegistryStayOnTheirLine) {
    ExpectOneLine("product name", [this](const std::wstring& text) { facts.os.productName = text; });
    ExpectOneLine("display version", [this](const std::wstring& text) { facts.os.displayVersion = text; });
    ExpectOneLine("update revision", [this](const std::wstring& text) { facts.os.updateRevision = text; });
    ExpectOneLine("hardware", [this](const std::wstring& text) { facts.hardwareName = text; });
    ExpectOneLine("processor", [this](const std::wstring& text) { facts.cpuName = text; });
    ExpectOneLine("autostart", [this](const std::wstring& text) { facts.autostart.value = text; });
}

TEST_F(ControlCharactersInTheReport, FromDisplaysStayOnTheirLine) {
    ExpectOneLine("description", [this](const std::wstring& text) { facts.monitors[0].description = text; });
    ExpectOneLine("device", [this](const std::wstring& text) { facts.monitors[0].deviceName = text; });
    ExpectOneLine("adapter", [this](const std::wstring& text) { facts.adapters = {text}; });
    ExpectOneLine("panel", [this](const std::wstring& text) { state.pwmSavedBrightness = {{text, 40}}; });
}

TEST_F(ControlCharactersInTheReport, FromWindowsStayOnTheirLine) {
    ExpectOneLine("locale", [this](const std::wstring& text) { facts.localeName = text; });
    ExpectOneLine("time zone", [this](const std::wstring& text) { facts.timeZoneName = text; });
    ExpectOneLine("settings path", [this](const std::wstring& text) { state.settingsPath = text; });
}

TEST_F(ControlCharactersInTheReport, FromTheLogStayOnTheirLine) {
    ExpectOneLine("ring", [this](const std::wstring& text) { facts.recentLines = {text}; });
    ExpectOneLine("file", [this](const std::wstring& text) { facts.persistedLines = {text}; });
}

TEST_F(ControlCharactersInTheReport, TheSubjectIsOneLine) {
    facts.os.productName = kForgedLine;
    EXPECT_EQ(SupportSubjectText(facts).find_first_of(L"\r\n"), std::wstring::npos);
}
