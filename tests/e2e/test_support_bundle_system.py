"""The SYSTEM section of the support report: what the machine says of itself, and the words for what it does not say."""

import pytest

from bundle import SUPPORT, Machine, copy, memory, processors
from desk import wait_until

TEXT, BINARY, MULTI_TEXT, LONG_NUMBER = 1, 3, 7, 11
OVERRIDE_KEY = "HKCU\\Software\\Wine\\AppDefaults\\ambrel.exe"


def wide(text):
    return text.encode("utf-16-le")


@pytest.fixture(name="begin")
def begin_fixture(file_desk):
    """Starts the program on a machine that says this of itself; all is as it was afterwards."""
    file_desk.desktop.open()
    machine = Machine(file_desk)

    def start(**values):
        machine.set(**values)
        return file_desk.start_fresh()
    yield start
    machine.restore()
    file_desk.registry_delete(OVERRIDE_KEY)


def system_after(begin, label, **values):
    return copy(begin(**values)).value("SYSTEM", label)


def test_its_lines_come_in_their_order_and_the_first_one_is_fixed(begin):
    lines = copy(begin(DisplayVersion="22H2")).section("SYSTEM")
    labels = ["Platform:       ", "OS:             ", "Edition:        ", "Version:        ", "Hardware:       ",
              "CPU:            ", "Memory:         ", "Locale:         ", "Timezone:       ", "UI DPI:         ",
              "DWM composition: "]
    assert len(lines) == len(labels)
    for line, label in zip(lines, labels):
        assert line.startswith(label) and line[len(label)] != " "
    assert lines[0] == "Platform:       Windows"


# Name, edition and version

@pytest.mark.parametrize("build, name, shown", [
    ("22631", "Windows 10 Pro", "Windows 11 Pro"),
    ("22000", "Windows 10 Home", "Windows 11 Home"),
    ("21999", "Windows 10 Home", "Windows 10 Home"),
    ("19045", "Windows 10 Pro", "Windows 10 Pro"),
    ("26100", "Windows 11 Pro", "Windows 11 Pro"),
    ("26100", "Windows 10 as Windows 10", "Windows 11 as Windows 10"),
    ("26100", "Windows Server 2025 Standard", "Windows Server 2025 Standard"),
    ("26100", "windows 10 Pro", "windows 10 Pro"),
])
def test_windows_11_is_told_by_its_build(begin, build, name, shown):
    report = copy(begin(CurrentBuildNumber=build, ProductName=name))
    assert report.value("SYSTEM", "OS:             ") == shown
    assert report.value("SYSTEM", "Version:        ") == f"10.0.{build}"
    assert report.text.split("\r\n")[1].endswith(f", {shown} b{build})")


def test_another_major_version_keeps_its_name_whatever_the_registry_says(begin, file_desk):
    file_desk.registry_set(OVERRIDE_KEY, "Version", "win7")
    report = copy(begin(CurrentBuildNumber="22631", ProductName="Windows 10 Pro"))
    assert report.value("SYSTEM", "OS:             ") == "Windows 10 Pro"
    assert report.value("SYSTEM", "Version:        ") == "6.1.7601"
    # Windows 7 composes its desktop only when asked to.
    assert report.value("SYSTEM", "DWM composition: ") == "disabled"


@pytest.mark.parametrize("name", [
    pytest.param(None, id="missing"), pytest.param("", id="empty"), pytest.param(7, id="number"),
    pytest.param((BINARY, wide("Windows 10 Pro\0")), id="binary"),
    pytest.param((MULTI_TEXT, wide("Windows 10 Pro\0\0")), id="several texts"),
    pytest.param((TEXT, b""), id="no byte"),
])
def test_without_a_product_name_it_is_windows(begin, name):
    report = copy(begin(ProductName=name, CurrentBuildNumber="22631"))
    assert report.value("SYSTEM", "OS:             ") == "Windows"
    assert report.text.split("\r\n")[1].endswith(", Windows b22631)")


@pytest.mark.parametrize("value, name", [
    pytest.param((TEXT, wide("Windows 10 Pro")), "Windows 10 Pro", id="unterminated"),
    pytest.param((TEXT, wide("Windows 10 Pro\0more\0")), "Windows 10 Pro", id="ends at a zero"),
    pytest.param("x" * 2047, "x" * 2047, id="4 KB"),
    pytest.param("\u7a93 10 \U0001f5a5 %s%n", "\u7a93 10 \U0001f5a5 %s%n", id="other letters and formats"),
])
def test_a_product_name_is_told_as_it_is(begin, value, name):
    assert system_after(begin, "OS:             ", ProductName=value) == name


@pytest.mark.parametrize("value", [
    pytest.param(None, id="missing"), pytest.param("", id="empty"), pytest.param(23, id="number"),
    pytest.param((BINARY, wide("23H2\0")), id="binary"),
])
def test_without_a_display_version_there_is_no_edition_line(begin, value):
    report = copy(begin(DisplayVersion=value))
    assert not [line for line in report.section("SYSTEM") if line.startswith("Edition")]
    assert len(report.section("SYSTEM")) == 10


@pytest.mark.parametrize("value, edition", [
    ("23H2", "23H2"), pytest.param((TEXT, wide("23H2")), "23H2", id="unterminated"),
    pytest.param("e" * 2047, "e" * 2047, id="4 KB"),
])
def test_the_display_version_is_the_edition(begin, value, edition):
    assert system_after(begin, "Edition:        ", DisplayVersion=value) == edition


@pytest.mark.parametrize("revision, shown", [
    (3007, "10.0.22631.3007"), (0, "10.0.22631.0"),
    pytest.param(0xFFFFFFFF, "10.0.22631.4294967295", id="2^32-1"),
    pytest.param(None, "10.0.22631", id="missing"), pytest.param("3007", "10.0.22631", id="text"),
    pytest.param((BINARY, b"\xbf\x0b\0\0"), "10.0.22631", id="binary"),
    pytest.param((LONG_NUMBER, b"\xbf\x0b\0\0\0\0\0\0"), "10.0.22631", id="eight bytes"),
])
def test_the_update_revision_follows_the_version_when_it_is_a_number(begin, revision, shown):
    assert system_after(begin, "Version:        ", CurrentBuildNumber="22631", UBR=revision) == shown


# Hardware

@pytest.mark.parametrize("maker, product, shown", [
    ("Lab Works", "Bench 7", "Lab Works Bench 7"),
    ("Lab Works", "", "Lab Works"), ("Lab Works", None, "Lab Works"), ("Lab Works", 7, "Lab Works"),
    ("", "Bench 7", "Bench 7"), (None, "Bench 7", "Bench 7"), (7, "Bench 7", "Bench 7"),
    ("", "", "unknown"), (None, None, "unknown"), (7, 7, "unknown"),
    ("M\u00f6bel & S\u00f6hne", "\u6a5f\u68b0 \U0001f5a5", "M\u00f6bel & S\u00f6hne \u6a5f\u68b0 \U0001f5a5"),
    pytest.param((TEXT, wide("Lab")), (TEXT, wide("Bench")), "Lab Bench", id="unterminated"),
    pytest.param("m" * 2047, "p" * 2047, "m" * 2047 + " " + "p" * 2047, id="4 KB each"),
])
def test_the_hardware_is_maker_and_product(begin, maker, product, shown):
    assert system_after(begin, "Hardware:       ", SystemManufacturer=maker, SystemProductName=product) == shown


@pytest.mark.parametrize("value, name", [
    ("Lab Processor 9000", "Lab Processor 9000"),
    pytest.param(None, "unknown", id="missing"), pytest.param("", "unknown", id="empty"),
    pytest.param(9, "unknown", id="number"), pytest.param((BINARY, wide("Lab\0")), "unknown", id="binary"),
    pytest.param((TEXT, wide("Lab Processor")), "Lab Processor", id="unterminated"),
    pytest.param("c" * 2047, "c" * 2047, id="4 KB"),
])
def test_the_processor_is_told_with_its_kind_and_the_number_of_its_cores(begin, value, name):
    assert system_after(begin, "CPU:            ", ProcessorNameString=value) == f"{name} (x64, {processors()} cores)"


def test_the_memory_is_told_in_gigabytes_with_one_digit(begin):
    assert system_after(begin, "Memory:         ") == memory()


def test_locale_and_time_zone_are_those_of_the_lab(begin):
    report = copy(begin())
    assert report.value("SYSTEM", "Locale:         ") == "en-US"
    assert report.value("SYSTEM", "Timezone:       ") == "Greenwich Standard Time"


# The screen

@pytest.mark.parametrize("dpi", [120, 192])
def test_the_dpi_is_that_of_the_popups_monitor(make_desk, dpi):
    desk = make_desk(dpi=dpi, size=(1920, 1200))
    desk.start_fresh()
    desk.show_settings()
    desk.click_unit(*SUPPORT)
    wait_until(lambda: any("copied to clipboard" in line for line in desk.log()), "the copy")
    assert f"\r\nUI DPI:         {dpi} dpi\r\n" in desk.clipboard_text()


def test_a_composed_desktop_is_told(begin):
    assert system_after(begin, "DWM composition: ") == "enabled"
