#include "diag/report_fixture.h"

namespace {

class SystemSection : public SupportReport {};

}  // namespace

TEST_F(SystemSection, TheLinesAreInOrder) {
    state.dpi = 120;
    EXPECT_EQ(Section(L"SYSTEM"),
              L"=== SYSTEM ===\r\n"
              L"Platform:       Windows\r\n"
              L"OS:             Windows 11 Pro\r\n"
              L"Edition:        23H2\r\n"
              L"Version:        10.0.22631.4037\r\n"
              L"Hardware:       LENOVO 20XW\r\n"
              L"CPU:            Imaginary CPU 3000 (x64, 8 cores)\r\n"
              L"Memory:         16.0 GB\r\n"
              L"Locale:         en-GB\r\n"
              L"Timezone:       GMT Standard Time\r\n"
              L"UI DPI:         120 dpi\r\n"
              L"DWM composition: enabled\r\n"
              L"\r\n");
}

TEST_F(SystemSection, ASystemWithoutANameIsWindows) {
    facts.os.productName.clear();
    EXPECT_EQ(After(L"OS:             "), L"Windows");
}

TEST_F(SystemSection, WithoutADisplayVersionThereIsNoEditionLine) {
    facts.os.displayVersion.clear();
    const std::wstring section = Section(L"SYSTEM");
    EXPECT_NE(section.find(L"OS:             Windows 11 Pro\r\nVersion:        10.0.22631.4037\r\n"),
              std::wstring::npos);
    EXPECT_FALSE(HasLine(L"Edition:"));
}

TEST_F(SystemSection, WithoutARevisionTheVersionHasThreeNumbers) {
    facts.os.updateRevision.clear();
    EXPECT_NE(Section(L"SYSTEM").find(L"\r\nVersion:        10.0.22631\r\n"), std::wstring::npos);
}

TEST_F(SystemSection, ARevisionOfZeroIsARevision) {
    facts.os.updateRevision = L"0";
    EXPECT_NE(Section(L"SYSTEM").find(L"\r\nVersion:        10.0.22631.0\r\n"), std::wstring::npos);
}

TEST_F(SystemSection, TheVersionsNumbersArePrintedUnsigned) {
    facts.os.major = 4294967295;
    facts.os.minor = 4294967294;
    facts.os.build = 4294967293;
    facts.os.updateRevision = L"4294967292";
    EXPECT_NE(Section(L"SYSTEM").find(L"\r\nVersion:        4294967295.4294967294.4294967293.4294967292\r\n"),
              std::wstring::npos);
}

TEST_F(SystemSection, EachArchitectureHasItsWord) {
    struct Word {
        WORD architecture;
        const wchar_t* line;
    };
    for (const Word& word : {Word{9, L"Imaginary CPU 3000 (x64, 8 cores)"},
                             {0, L"Imaginary CPU 3000 (x86, 8 cores)"},
                             {5, L"Imaginary CPU 3000 (ARM, 8 cores)"},
                             {12, L"Imaginary CPU 3000 (ARM64, 8 cores)"}}) {
        facts.architecture = word.architecture;
        EXPECT_EQ(After(L"CPU:            "), word.line);
    }
}

TEST_F(SystemSection, AnyOtherArchitectureIsUnknown) {
    for (const int architecture : {1, 6, 10, 13, 14, 0xFFFF}) {
        facts.architecture = static_cast<WORD>(architecture);
        EXPECT_EQ(After(L"CPU:            "), L"Imaginary CPU 3000 (unknown, 8 cores)") << architecture;
    }
}

TEST_F(SystemSection, TheCoresAreCounted) {
    facts.processorCount = 1;
    EXPECT_EQ(After(L"CPU:            "), L"Imaginary CPU 3000 (x64, 1 cores)");
    facts.processorCount = 4294967295;
    EXPECT_EQ(After(L"CPU:            "), L"Imaginary CPU 3000 (x64, 4294967295 cores)");
}

TEST_F(SystemSection, TheMemoryIsRoundedToATenth) {
    struct Memory {
        std::uint64_t bytes;
        const wchar_t* text;
    };
    for (const Memory& memory : {Memory{1073741824, L"1.0 GB"},
                                 {17025859584, L"15.9 GB"},
                                 {8589934591, L"8.0 GB"},
                                 {1717986918, L"1.6 GB"},
                                 {53687092, L"0.1 GB"},
                                 {53687091, L"0.0 GB"},
                                 {2199023255552, L"2048.0 GB"},
                                 {18446744073709551615u, L"17179869184.0 GB"}}) {
        facts.memoryBytes = memory.bytes;
        EXPECT_EQ(After(L"Memory:         "), memory.text) << memory.bytes;
    }
}

TEST_F(SystemSection, UnknownMemoryIsZeroGigabytes) {
    facts.memoryBytes = 0;
    EXPECT_EQ(After(L"Memory:         "), L"0.0 GB");
}

TEST_F(SystemSection, TheDpiIsThatOfTheStateAndZeroIsTreatedAs96) {
    for (const auto& [dpi, text] :
         {std::pair{96u, L"96 dpi"}, {144u, L"144 dpi"}, {192u, L"192 dpi"}, {0u, L"96 dpi"}}) {
        state.dpi = dpi;
        EXPECT_EQ(After(L"UI DPI:         "), text);
    }
}

TEST_F(SystemSection, CompositionIsEnabledOrDisabled) {
    facts.composition = true;
    EXPECT_EQ(After(L"DWM composition: "), L"enabled");
    facts.composition = false;
    EXPECT_EQ(After(L"DWM composition: "), L"disabled");
}

TEST_F(SystemSection, ACpuNameOf4KilobytesIsComplete) {
    facts.cpuName = std::wstring(2047, L'C') + L"!";
    EXPECT_EQ(After(L"CPU:            "), facts.cpuName + L" (x64, 8 cores)");
}

TEST_F(SystemSection, NamesOfAnyLengthAreComplete) {
    facts.os.displayVersion = std::wstring(2048, L'E') + L"e";
    facts.hardwareName = std::wstring(4097, L'H') + L"h";
    facts.localeName = std::wstring(84, L'l') + L"L";
    facts.timeZoneName = std::wstring(500, L'T') + L"t";
    EXPECT_EQ(After(L"Edition:        "), facts.os.displayVersion);
    EXPECT_EQ(After(L"Hardware:       "), facts.hardwareName);
    EXPECT_EQ(After(L"Locale:         "), facts.localeName);
    EXPECT_EQ(After(L"Timezone:       "), facts.timeZoneName);
}

TEST_F(SystemSection, PercentSignsAndLettersOutsideAsciiArePlainText) {
    facts.cpuName = L"100% %s%n \u65e5\u672c";
    facts.hardwareName = L"%d \u00e9\U0001F319";
    facts.timeZoneName = L"Mitteleurop\u00e4ische Zeit";
    EXPECT_EQ(After(L"CPU:            "), L"100% %s%n \u65e5\u672c (x64, 8 cores)");
    EXPECT_EQ(After(L"Hardware:       "), L"%d \u00e9\U0001F319");
    EXPECT_EQ(After(L"Timezone:       "), L"Mitteleurop\u00e4ische Zeit");
}
