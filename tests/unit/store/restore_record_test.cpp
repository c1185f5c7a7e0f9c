// The record of what must be restored, in a real settings.ini.
#include "store/restore_record.h"

#include "store/settings_fixture.h"

namespace {

using settings_fixture::g_log;

std::vector<std::string> g_writes;  // each call that changes the file, and each flush

std::string Narrow(const wchar_t* text) {
    if (text == nullptr) return "(null)";
    std::string narrow;
    for (; *text != L'\0'; ++text)
        narrow += *text < 128 ? static_cast<char>(*text) : '?';
    return narrow;
}

BOOL WINAPI FakeWritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
    EXPECT_EQ(path, g_app.settingsPath);
    if (std::wstring(section) == L"Restore") g_writes.push_back(Narrow(key) + "=" + Narrow(value));
    return Real(&WritePrivateProfileStringW)(section, key, value, path);
}

BOOL WINAPI FakeFlushFileBuffers(HANDLE file) {
    g_writes.push_back("flush");
    const BOOL flushed = Real(&FlushFileBuffers)(file);
    EXPECT_TRUE(flushed);
    return flushed;
}

const RestoreRow kMonitor = {40, 0, L"DXVA2:\\\\.\\DISPLAY2#0",
                             L"\\\\?\\DISPLAY#GSM5B08#5&1a2b&0&UID4352#{e6f0}"};
const RestoreRow kPanel = {70, 0, L"DISPLAY\\BOE07D8\\4&2c&0&UID8388688_0", L""};
constexpr char kOthers[] = "[Filter]\r\nIntensity=585\r\n[Settings]\r\nPWMSafeMode=1\r\n";

std::string Describe(const RestoreRow& row) {
    return std::to_string(row.percent) + " " + std::to_string(row.awaySince) + " " +
           Narrow(row.name.c_str()) + "|" + Narrow(row.path.c_str());
}

class RestoreRecord : public settings_fixture::SettingsTest {
protected:
    void SetUp() override {
        SettingsTest::SetUp();
        Stored(kOthers);
        g_app.settingsPath = path;
        g_writes.clear();
    }

    void StoredRecord(const std::string& lines) const { Stored(kOthers + ("[Restore]\r\n" + lines)); }

    // The rows, as "number: description".
    static std::vector<std::string> Rows() {
        std::vector<std::string> rows;
        for (const auto& [number, row] : ReadRestoreRows())
            rows.push_back(std::to_string(number) + ": " + Describe(row));
        return rows;
    }

    bool HasSection() const { return ReadBytes(path).find("[Restore]") != std::string::npos; }

    void ExpectOtherSectionsKept() const {
        LoadSettings();
        EXPECT_EQ(g_app.intensity, 0.585);
        EXPECT_TRUE(g_app.pwmSafe);
    }

    static void ExpectSame(const RestoreRow& read, const RestoreRow& written) {
        EXPECT_EQ(read.percent, written.percent);
        EXPECT_EQ(read.awaySince, written.awaySince);
        EXPECT_EQ(read.name, written.name);
        EXPECT_EQ(read.path, written.path);
    }
};

}  // namespace

AMBREL_SEAM(WritePrivateProfileStringW, FakeWritePrivateProfileStringW);
AMBREL_SEAM(FlushFileBuffers, FakeFlushFileBuffers);

TEST_F(RestoreRecord, AFileWithoutTheSectionHasNoRowsAndIsNotWritten) {
    EXPECT_TRUE(Rows().empty());
    EXPECT_FALSE(IsRampRecorded());
    DeleteEmptyRestoreRecord();
    DeleteRestoreRow(1);
    EXPECT_TRUE(g_writes.empty());
    EXPECT_EQ(ReadBytes(path), kOthers);
}

TEST_F(RestoreRecord, AMissingFileIsNotCreatedByReading) {
    DeleteFileW(path.c_str());
    EXPECT_TRUE(Rows().empty());
    EXPECT_FALSE(IsRampRecorded());
    DeleteEmptyRestoreRecord();
    EXPECT_FALSE(FileExists(path));
}

TEST_F(RestoreRecord, RowsAreReadBackAsTheyWereWritten) {
    AddRestoreRow(kMonitor);
    AddRestoreRow(kPanel);
    const RestoreRows rows = ReadRestoreRows();
    ASSERT_EQ(rows.size(), 2u);
    ExpectSame(rows.at(1), kMonitor);
    ExpectSame(rows.at(2), kPanel);
    ExpectOtherSectionsKept();
}

TEST_F(RestoreRecord, ARowIsOneWriteAndAFlushReachesTheDisk) {
    AddRestoreRow(kMonitor);
    FlushRestoreRecord();
    EXPECT_EQ(g_writes,
              (std::vector<std::string>{
                  "1=40 0 DXVA2:\\\\.\\DISPLAY2#0 \\\\?\\DISPLAY#GSM5B08#5&1a2b&0&UID4352#{e6f0}", "flush"}));
}

TEST_F(RestoreRecord, APanelsRowEndsWithItsName) {
    AddRestoreRow(kPanel);
    EXPECT_EQ(g_writes.front(), "1=70 0 DISPLAY\\BOE07D8\\4&2c&0&UID8388688_0");
}

TEST_F(RestoreRecord, NothingIsLogged) {
    AddRestoreRow(kMonitor);
    RecordRamp();
    DeleteRestoreRow(1);
    DeleteRampRecord();
    EXPECT_TRUE(g_log.empty());
}

TEST_F(RestoreRecord, EveryCharacterOfANameSurvives) {
    RestoreRow row = kMonitor;
    row.name.clear();
    for (wchar_t unit = 1; unit < 0x180; ++unit)
        row.name += unit;
    row.name += L"\xD83D\xDDB5\xD800\xFFFF";  // a pair, half a pair, the last code unit
    row.path = L" \"quoted\" 100% [x]=;";
    AddRestoreRow(row);
    ExpectSame(ReadRestoreRows().at(1), row);
    for (const char c : ReadBytes(path))
        EXPECT_TRUE(c == '\r' || c == '\n' || (c >= ' ' && c < 0x7F)) << static_cast<int>(c);
}

TEST_F(RestoreRecord, PercentSignsAndAllButPrintableAsciiAreEscaped) {
    AddRestoreRow({0, 0, L"a%b \u00e9\u20ac", L""});
    EXPECT_EQ(g_writes.front(), "1=0 0 a%0025b%0020%00E9%20AC");
}

TEST_F(RestoreRecord, ARowTakesTheLowestFreeNumber) {
    StoredRecord("2=10 0 two\r\n4=20 0 four\r\n");
    AddRestoreRow(kPanel);
    AddRestoreRow(kMonitor);
    const RestoreRows rows = ReadRestoreRows();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows.at(1).name, kPanel.name);
    EXPECT_EQ(rows.at(3).name, kMonitor.name);
}

TEST_F(RestoreRecord, ADamagedRowsNumberIsFree) {
    StoredRecord("1=garbage\r\n2=10 0 two\r\n");
    AddRestoreRow(kPanel);
    EXPECT_EQ(ReadRestoreRows().at(1).name, kPanel.name);
}

TEST_F(RestoreRecord, WithEveryNumberTakenTheRowThatIsAwayLongestIsReplaced) {
    std::string lines;
    for (int number = 1; number <= kMaxRestoreRows; ++number)
        lines += std::to_string(number) + "=10 " + std::to_string(number == 9 ? 0 : 1000 - number) + " n\r\n";
    StoredRecord(lines);
    AddRestoreRow(kPanel);
    const RestoreRows rows = ReadRestoreRows();
    EXPECT_EQ(rows.size(), static_cast<std::size_t>(kMaxRestoreRows));
    EXPECT_EQ(rows.at(kMaxRestoreRows).name, kPanel.name);
}

TEST_F(RestoreRecord, WithEveryNumberTakenAndNoneAwayNothingIsReplaced) {
    std::string lines;
    for (int number = 1; number <= kMaxRestoreRows; ++number)
        lines += std::to_string(number) + "=10 0 n\r\n";
    StoredRecord(lines);
    AddRestoreRow(kPanel);
    EXPECT_TRUE(g_writes.empty());
}

TEST_F(RestoreRecord, ADeletedRowLeavesTheOthers) {
    AddRestoreRow(kMonitor);
    AddRestoreRow(kPanel);
    g_writes.clear();
    DeleteRestoreRow(1);
    EXPECT_EQ(g_writes, std::vector<std::string>{"1=(null)"});
    EXPECT_EQ(Rows(), std::vector<std::string>{"2: " + Describe(kPanel)});
}

TEST_F(RestoreRecord, ADeletionLeavesNoRepetitionOfTheRow) {
    StoredRecord("1=40 0 one\r\n2=50 0 two\r\n1=60 0 hidden\r\n1=\r\n1=70 0 hidden\r\n");
    DeleteRestoreRow(1);
    EXPECT_EQ(Rows(), std::vector<std::string>{"2: 50 0 two|"});
    EXPECT_EQ(ReadBytes(path).find("hidden"), std::string::npos);
}

TEST_F(RestoreRecord, ADeletionLeavesNoRepetitionOfTheRamp) {
    StoredRecord("Ramp=1\r\n1=40 0 one\r\nRamp=1\r\n");
    DeleteRampRecord();
    EXPECT_FALSE(IsRampRecorded());
    EXPECT_EQ(Rows(), std::vector<std::string>{"1: 40 0 one|"});
}

TEST_F(RestoreRecord, TheLastRowTakesTheSectionWithIt) {
    AddRestoreRow(kMonitor);
    g_writes.clear();
    DeleteRestoreRow(1);
    EXPECT_EQ(g_writes, std::vector<std::string>{"(null)=(null)"});
    EXPECT_FALSE(HasSection());
    ExpectOtherSectionsKept();
}

TEST_F(RestoreRecord, TheLastRowLeavesTheRamp) {
    AddRestoreRow(kMonitor);
    RecordRamp();
    DeleteRestoreRow(1);
    EXPECT_TRUE(IsRampRecorded());
    DeleteRampRecord();
    EXPECT_FALSE(HasSection());
}

TEST_F(RestoreRecord, TheRampLeavesTheRows) {
    RecordRamp();
    AddRestoreRow(kMonitor);
    DeleteRampRecord();
    EXPECT_FALSE(IsRampRecorded());
    EXPECT_EQ(Rows().size(), 1u);
    DeleteRestoreRow(1);
    EXPECT_FALSE(HasSection());
}

TEST_F(RestoreRecord, TheRampIsOneKey) {
    RecordRamp();
    EXPECT_EQ(g_writes, std::vector<std::string>{"Ramp=1"});
    EXPECT_TRUE(IsRampRecorded());
    g_writes.clear();
    DeleteRampRecord();
    EXPECT_EQ(g_writes, std::vector<std::string>{"(null)=(null)"});
    EXPECT_FALSE(HasSection());
    ExpectOtherSectionsKept();
}

TEST_F(RestoreRecord, ASaveOfTheSettingsKeepsIt) {
    AddRestoreRow(kMonitor);
    RecordRamp();
    SaveSettings();
    EXPECT_EQ(Rows().size(), 1u);
    EXPECT_TRUE(IsRampRecorded());
}

TEST_F(RestoreRecord, WithoutASettingsPathNothingIsReadOrWritten) {
    StoredRecord("Ramp=1\r\n1=40 0 n\r\n");
    g_app.settingsPath.clear();
    AddRestoreRow(kMonitor);
    WriteRestoreRow(1, kMonitor);
    FlushRestoreRecord();
    RecordRamp();
    DeleteRestoreRow(1);
    DeleteRampRecord();
    DeleteEmptyRestoreRecord();
    EXPECT_TRUE(ReadRestoreRows().empty());
    EXPECT_FALSE(IsRampRecorded());
    EXPECT_TRUE(g_writes.empty());
}

// Damaged, absurd and hand-written contents.

TEST_F(RestoreRecord, InvalidRowsAreSkipped) {
    const char* const invalid[] = {"",
                                   "101 0 n",
                                   "4294967336 0 n",
                                   "-1 0 n",
                                   "+1 0 n",
                                   "1.5 0 n",
                                   "0x10 0 n",
                                   "forty 0 n",
                                   "40",
                                   "40 0",
                                   "40  n",
                                   "40 0 ",
                                   "40 -1 n",
                                   "40 10000000000 n",
                                   "40 99999999999999999999999999 n",
                                   "40 0 n p more",
                                   "40 0 n%",
                                   "40 0 n%00",
                                   "40 0 n%00E",
                                   "40 0 n%00e9",
                                   "40 0 n%0000",
                                   "40 0 n%FFFFF%",
                                   "40 0 n\xE9",
                                   "40 0 n p\x7F",
                                   "40,0,n"};
    for (const char* row : invalid) {
        StoredRecord("1=" + std::string(row) + "\r\n2=40 0 valid\r\n");
        EXPECT_EQ(Rows(), std::vector<std::string>{"2: 40 0 valid|"}) << row;
    }
}

TEST_F(RestoreRecord, TheLargestAndSmallestValuesAreValid) {
    StoredRecord("1=0 0 n\r\n2=100 9999999999 n p\r\n3= 007  \r\n32=007 0 n\r\n");
    EXPECT_EQ(Rows(), (std::vector<std::string>{"1: 0 0 n|", "2: 100 9999999999 n|p", "32: 7 0 n|"}));
}

TEST_F(RestoreRecord, NumbersOutOfRangeAreIgnored) {
    StoredRecord("0=40 0 n\r\n65=40 0 n\r\n-1=40 0 n\r\n001=40 0 n\r\n99999999999=40 0 n\r\n5=40 0 n\r\n");
    EXPECT_EQ(Rows(), std::vector<std::string>{"5: 40 0 n|"});
}

TEST_F(RestoreRecord, OnlyRampEqualTo1CountsAsRecorded) {
    for (const char* value : {"0", "2", "-1", "", "yes", "100000000000000000001"}) {
        StoredRecord("Ramp=" + std::string(value) + "\r\n");
        EXPECT_FALSE(IsRampRecorded()) << value;
    }
}

TEST_F(RestoreRecord, OnlyTheFirst64OfTenThousandRowsAreRead) {
    std::string lines;
    for (int number = 10000; number >= 1; --number)
        lines += std::to_string(number) + "=" + std::to_string(number % 101) + " 0 display" +
                 std::to_string(number) + " path\r\n";
    StoredRecord(lines);
    const RestoreRows rows = ReadRestoreRows();
    EXPECT_EQ(rows.size(), static_cast<std::size_t>(kMaxRestoreRows));
    EXPECT_EQ(rows.at(1).name, L"display1");
    EXPECT_EQ(rows.at(64).name, L"display64");
}

TEST_F(RestoreRecord, RowsThatAreNotReadDoNotKeepTheSection) {
    std::string lines = "1=40 0 n\r\n";
    for (int number = kMaxRestoreRows + 1; number <= 10000; ++number)
        lines += std::to_string(number) + "=50 0 display path\r\n";
    StoredRecord(lines);
    DeleteRestoreRow(1);
    EXPECT_FALSE(HasSection());
    ExpectOtherSectionsKept();
}

TEST_F(RestoreRecord, ANameOfTenThousandCharactersIsNeitherReadNorWritten) {
    const std::string name(10000, 'n');
    StoredRecord("1=40 0 " + name + "\r\n2=40 0 n " + name + "\r\n3=50 0 valid\r\n");
    EXPECT_EQ(Rows(), std::vector<std::string>{"3: 50 0 valid|"});
    g_writes.clear();
    AddRestoreRow({40, 0, std::wstring(10000, L'n'), L""});
    AddRestoreRow({40, 0, std::wstring(1000, L'\u20ac'), L""});  // five characters each
    EXPECT_TRUE(g_writes.empty());
}

TEST_F(RestoreRecord, TheLongestRowThatIsWrittenIsRead) {
    const RestoreRow longest = {100, 9999999999, std::wstring(4000 - 15, L'n'), L""};
    AddRestoreRow(longest);
    ExpectSame(ReadRestoreRows().at(1), longest);
    RestoreRow longer = longest;
    longer.name += L'n';
    g_writes.clear();
    AddRestoreRow(longer);
    EXPECT_TRUE(g_writes.empty());
}

TEST_F(RestoreRecord, ASectionWithNothingValidIsDeleted) {
    const char* const sections[] = {"", "1=garbage\r\n", "65=40 0 n\r\n", "Ramp=0\r\n",
                                    "\r\n; a comment\r\nx=y\r\n"};
    for (const char* lines : sections) {
        StoredRecord(lines);
        DeleteEmptyRestoreRecord();
        EXPECT_FALSE(HasSection()) << lines;
        ExpectOtherSectionsKept();
        g_app.settingsPath = path;
    }
}

TEST_F(RestoreRecord, ASectionWithOneValidEntryIsKept) {
    for (const char* lines : {"Ramp=1\r\n1=garbage\r\n", "Ramp=7\r\n64=40 0 n\r\n"}) {
        StoredRecord(lines);
        DeleteEmptyRestoreRecord();
        EXPECT_TRUE(HasSection()) << lines;
    }
}

TEST_F(RestoreRecord, NoiseInTheFileYieldsNoRow) {
    std::string noise(1024 * 1024, '\0');
    std::uint32_t state = 54321;
    for (char& c : noise) {
        state = state * 1664525u + 1013904223u;
        c = static_cast<char>(state >> 24);
    }
    for (const std::string& bytes : {noise, "[Restore]\r\n" + noise, std::string(4096, '\0')}) {
        Stored(bytes);
        EXPECT_TRUE(Rows().empty());
        EXPECT_FALSE(IsRampRecorded());
        DeleteEmptyRestoreRecord();
        AddRestoreRow(kMonitor);
        EXPECT_EQ(Rows().size(), 1u);
    }
}

TEST_F(RestoreRecord, ALockedFileIsLeftAlone) {
    StoredRecord("1=40 0 n\r\n");
    const std::string before = ReadBytes(path);
    {
        const LockedFile lock(path, FILE_SHARE_READ);
        EXPECT_EQ(Rows().size(), 1u);
        RecordRamp();
        DeleteRestoreRow(1);
    }
    EXPECT_EQ(ReadBytes(path), before);
}
