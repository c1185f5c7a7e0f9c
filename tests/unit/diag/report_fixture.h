// Fixture for the tests of the support report's wording: a plain machine with known facts, and access to the
// parts of a report.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diag/support_text.h"

// A machine on which everything could be read: one display without brightness control, no log.
inline SupportFacts PlainFacts() {
    SupportFacts facts;
    facts.now.wYear = 2026;
    facts.now.wMonth = 3;
    facts.now.wDay = 7;
    facts.now.wHour = 9;
    facts.now.wMinute = 5;
    facts.now.wSecond = 2;
    facts.tick = 100000000;
    facts.machineTag = 0x0123456789ABCDEF;
    facts.os = {L"Windows 11 Pro", L"23H2", L"4037", 10, 0, 22631};
    facts.hardwareName = L"LENOVO 20XW";
    facts.cpuName = L"Imaginary CPU 3000";
    facts.architecture = PROCESSOR_ARCHITECTURE_AMD64;
    facts.processorCount = 8;
    facts.memoryBytes = 17179869184;
    facts.localeName = L"en-GB";
    facts.timeZoneName = L"GMT Standard Time";
    facts.composition = true;
    MonitorProbe monitor;
    monitor.deviceName = L"\\\\.\\DISPLAY1";
    monitor.description = L"Generic PnP Monitor";
    monitor.width = 1920;
    monitor.height = 1080;
    monitor.refresh = 60;
    monitor.bitsPerPixel = 32;
    monitor.primary = true;
    facts.monitors = {monitor};
    facts.adapters = {L"Imaginary Graphics"};
    return facts;
}

// The lines of a report, without their line ends. Checks that every line ends with CR LF.
inline std::vector<std::wstring> LinesOf(const std::wstring& report) {
    std::vector<std::wstring> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = report.find(L"\r\n", start)) != std::wstring::npos; start = end + 2)
        lines.push_back(report.substr(start, end - start));
    EXPECT_EQ(start, report.size()) << "the report ends with CR LF";
    for (const std::wstring& line : lines)
        EXPECT_EQ(line.find_first_of(L"\r\n"), std::wstring::npos) << "a CR or LF by itself";
    return lines;
}

class SupportReport : public testing::Test {
protected:
    AppState state;
    SupportFacts facts = PlainFacts();

    std::wstring Report() const { return SupportBundleText(state, facts); }

    // From the heading through the blank line after the section.
    std::wstring Section(const std::wstring& heading) const {
        const std::wstring report = Report();
        const std::size_t start = report.find(L"=== " + heading + L" ===\r\n");
        if (start == std::wstring::npos) return L"(no such section)";
        const std::size_t end = report.find(L"\r\n\r\n", start);
        return report.substr(start, end == std::wstring::npos ? end : end + 4 - start);
    }

    // The text after the label on its line. Exactly one line starts with the label.
    std::wstring After(const std::wstring& label) const {
        std::wstring value = L"(no such line)";
        int found = 0;
        for (const std::wstring& line : LinesOf(Report())) {
            if (!line.starts_with(label)) continue;
            value = line.substr(label.size());
            ++found;
        }
        EXPECT_LE(found, 1) << "several lines have the label";
        return value;
    }

    bool HasLine(const std::wstring& label) const { return After(label) != L"(no such line)"; }
};
