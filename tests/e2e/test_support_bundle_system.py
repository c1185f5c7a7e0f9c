"""The SYSTEM section of the support report: the description of the machine and the substitutes for missing values."""

import pytest

from bundle import SUPPORT, Machine, copy, memory, processors
from desk import wait_until

TEXT, BINARY, MULTI_TEXT, LONG_NUMBER = 1, 3, 7, 11
OVERRIDE_KEY = "HKCU\\Software\\Wine\\AppDefaults\\ambrel.exe"


def wide(text):
    return text.encode("utf-16-le")


@pytest.fixture(name="start_with")
def start_with_fixture(file_desk):
    """Starts the program with a machine description, which is restored afterwards."""
    file_desk.desktop.open()
    machine = Machine(file_desk)

    def start(**values):
        machine.set(**values)
        return file_desk.start_fresh()
    yield start
    machine.restore()
    file_desk.registry_delete(OVERRIDE_KEY)


def system_after(start_with, label, **values):
    return copy(start_with(**values)).value("SYSTEM", label)


def test_the_lines_are_in_order_and_the_first_one_is_fixed(start_with):
    lines = copy(start_with(DisplayVersion="22H2")).section("SYSTEM")
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
def test_windows_11_is_identified_by_its_build(start_with, build, name, shown):
    report = copy(start_with(CurrentBuildNumber=build, ProductName=name))
    assert report.value("SYSTEM", "OS:             ") == shown
    assert report.value("SYSTEM", "Version:        ") == f"10.0.{build}"
    assert report.text.split("\r\n")[1].endswith(f", {shown} b{build})")


def test_another_major_version_keeps_its_name_regardless_of_the_registry(start_with, file_desk):
    file_desk.registry_set(OVERRIDE_KEY, "Version", "win7")
    report = copy(start_with(CurrentBuildNumber="22631", ProductName="Windows 10 Pro"))
    assert report.value("SYSTEM", "OS:             ") == "Windows 10 Pro"
    assert report.value("SYSTEM", "Version:        ") == "6.1.7601"
    # On Windows 7 desktop composition is optional.
    assert report.value("SYSTEM", "DWM composition: ") == "disabled"


@pytest.mark.parametrize("name", [
    pytest.param(None, id="missing"), pytest.param("", id="empty"), pytest.param(7, id="number"),
    pytest.param((BINARY, wide("Windows 10 Pro\0")), id="binary"),
    pytest.param((MULTI_TEXT, wide("Windows 10 Pro\0\0")), id="several texts"),
    pytest.param((TEXT, b""), id="no byte"),
])
def test_without_a_product_name_the_name_is_windows(start_with, name):
    report = copy(start_with(ProductName=name, CurrentBuildNumber="22631"))
    assert report.value("SYSTEM", "OS:             ") == "Windows"
    assert report.text.split("\r\n")[1].endswith(", Windows b22631)")


@pytest.mark.parametrize("value, name", [
    pytest.param((TEXT, wide("Windows 10 Pro")), "Windows 10 Pro", id="unterminated"),
    pytest.param((TEXT, wide("Windows 10 Pro\0more\0")), "Windows 10 Pro", id="ends at a zero"),
    pytest.param("x" * 2047, "x" * 2047, id="4 KB"),
    pytest.param("\u7a93 10 \U0001f5a5 %s%n", "\u7a93 10 \U0001f5a5 %s%n", id="other characters and formats"),
])
def test_a_product_name_is_unchanged(start_with, value, name):
    assert system_after(start_with, "OS:             ", ProductName=value) == name


@pytest.mark.parametrize("value", [
    pytest.param(None, id="missing"), pytest.param("", id="empty"), pytest.param(23, id="number"),
    pytest.param((BINARY, wide("23H2\0")), id="binary"),
])
def test_without_a_display_version_there_is_no_edition_line(start_with, value):
    report = copy(start_with(DisplayVersion=value))
    assert not [line for line in report.section("SYSTEM") if line.startswith("Edition")]
    assert len(report.section("SYSTEM")) == 10


@pytest.mark.parametrize("value, edition", [
    ("23H2", "23H2"), pytest.param((TEXT, wide("23H2")), "23H2", id="unterminated"),
    pytest.param("e" * 2047, "e" * 2047, id="4 KB"),
])
def test_the_display_version_is_the_edition(start_with, value, edition):
    assert system_after(start_with, "Edition:        ", DisplayVersion=value) == edition


@pytest.mark.parametrize("revision, shown", [
    (3007, "10.0.22631.3007"), (0, "10.0.22631.0"),
    pytest.param(0xFFFFFFFF, "10.0.22631.4294967295", id="2^32-1"),
    pytest.param(None, "10.0.22631", id="missing"), pytest.param("3007", "10.0.22631", id="text"),
    pytest.param((BINARY, b"\xbf\x0b\0\0"), "10.0.22631", id="binary"),
    pytest.param((LONG_NUMBER, b"\xbf\x0b\0\0\0\0\0\0"), "10.0.22631", id="eight bytes"),
])
def test_the_update_revision_follows_the_version_if_it_is_a_number(start_with, revision, shown):
    assert system_after(start_with, "Version:        ", CurrentBuildNumber="22631", UBR=revision) == shown


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
def test_the_hardware_is_maker_and_product(start_with, maker, product, shown):
    assert system_after(start_with, "Hardware:       ", SystemManufacturer=maker, SystemProductName=product) == shown


def test_a_control_character_in_the_registry_starts_no_line_of_the_report_or_the_log(start_with, file_desk):
    forged = "Bench\r\n[00:00:00.000] Forged\u2028Forged\u0085Forged\x7f"
    shown = "Lab Bench\ufffd\ufffd[00:00:00.000] Forged\ufffdForged\ufffdForged\ufffd"
    report = copy(start_with(SystemManufacturer="Lab", SystemProductName=forged))
    assert report.value("SYSTEM", "Hardware:       ") == shown
    assert not [line for line in report.text.splitlines() if line.startswith(("[00:00:00.000] Forged", "Forged"))]
    assert file_desk.log()[2].startswith(f"Hardware: {shown} / ")


@pytest.mark.parametrize("value, name", [
    ("Lab Processor 9000", "Lab Processor 9000"),
    pytest.param(None, "unknown", id="missing"), pytest.param("", "unknown", id="empty"),
    pytest.param(9, "unknown", id="number"), pytest.param((BINARY, wide("Lab\0")), "unknown", id="binary"),
    pytest.param((TEXT, wide("Lab Processor")), "Lab Processor", id="unterminated"),
    pytest.param("c" * 2047, "c" * 2047, id="4 KB"),
])
def test_the_processor_is_reported_with_architecture_and_number_of_cores(start_with, value, name):
    processor = system_after(start_with, "CPU:            ", ProcessorNameString=value)
    assert processor == f"{name} (x64, {processors()} cores)"


def test_the_memory_is_reported_in_gigabytes_with_one_decimal(start_with):
    assert system_after(start_with, "Memory:         ") == memory()


def test_locale_and_time_zone_are_those_of_the_lab(start_with):
    report = copy(start_with())
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


def test_desktop_composition_is_reported(start_with):
    assert system_after(start_with, "DWM composition: ") == "enabled"
