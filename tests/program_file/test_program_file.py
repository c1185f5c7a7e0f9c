"""The shipped program file: what Windows reads of it before it runs."""

import hashlib
import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest

from pe_file import DIRECTORY_DELAY_IMPORT, PeFile

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("AMBREL_BUILD_DIR", ROOT / "build" / "release"))
PROGRAM = BUILD / "ambrel.exe"
LARGEST = 512 * 1024

# DLLs that Windows loads from System32 whatever stands beside the program (HKLM\...\Session Manager\KnownDLLs).
KNOWN_DLLS = {"advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "shell32.dll",
              "user32.dll"}

X64, WINDOWS_GUI = 0x8664, 2
HIGH_ENTROPY_ASLR, ASLR, DEP, TERMINAL_SERVER_AWARE = 0x20, 0x40, 0x100, 0x8000


@pytest.fixture(scope="module")
def program():
    return PeFile(PROGRAM)


def test_it_is_a_64_bit_windows_program_for_windows_10(program):
    assert program.machine == X64
    assert program.subsystem == WINDOWS_GUI
    assert program.os_version == (10, 0)
    assert program.subsystem_version == (10, 0)


def test_its_addresses_are_random_and_its_data_is_not_executable(program):
    for flag in (HIGH_ENTROPY_ASLR, ASLR, DEP):
        assert program.dll_characteristics & flag
    assert ".reloc" in [name for name, *_ in program.sections]


def test_it_gets_no_compatibility_treatment_on_terminal_servers(program):
    assert program.dll_characteristics & TERMINAL_SERVER_AWARE


def test_it_imports_from_known_dlls_only(program):
    assert set(program.imported_dlls()) <= KNOWN_DLLS
    assert program.directory(DIRECTORY_DELAY_IMPORT) == (0, 0)


def test_it_is_at_most_512_kib():
    assert PROGRAM.stat().st_size <= LARGEST


def test_it_carries_no_time_stamp_and_no_symbols(program):
    assert program.timestamp == 0
    assert not [name for name, *_ in program.sections if name.startswith((".debug", "/"))]


def test_it_names_no_path_of_the_machine_that_built_it():
    for encoding in ("ascii", "utf-16-le"):
        assert str(ROOT).encode(encoding) not in PROGRAM.read_bytes()


def test_it_holds_the_three_icon_groups_and_the_logo():
    listed = subprocess.run(["x86_64-w64-mingw32-windres", "-i", PROGRAM, "-O", "rc"], capture_output=True,
                            check=True).stdout.decode("latin-1")
    for resource in ("101", "102", "103", "201"):
        assert re.search(rf"^{resource} ", listed, re.M), f"resource {resource} is missing"


def test_its_manifest_asks_for_no_elevation_and_leaves_dpi_to_the_program():
    data = PROGRAM.read_bytes()
    manifest = data[data.index(b"<assembly"):data.index(b"</assembly>")]
    assert b'level="asInvoker"' in manifest
    assert b"{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}" in manifest
    assert b"dpiAware" not in manifest


def test_its_version_resource_says_what_the_start_line_says():
    data = PROGRAM.read_bytes()
    version = re.search(r'AMBREL_VERSION "([^"]+)"', (ROOT / "src/res/version.h").read_text()).group(1)
    for field in ("FileVersion", "ProductVersion"):
        start = data.index(field.encode("utf-16-le"))
        assert version.encode("utf-16-le") in data[start:start + 64]


def build_anew(folder):
    subprocess.run(["cmake", "--preset", "release", "-B", folder, "-DAMBREL_BUILD_TESTS=OFF"], cwd=ROOT, check=True,
                   capture_output=True)
    subprocess.run(["cmake", "--build", folder, "--target", "ambrel"], check=True, capture_output=True)
    return hashlib.sha256((folder / "ambrel.exe").read_bytes()).hexdigest()


def test_a_clean_build_in_another_folder_is_equal_to_the_byte():
    folder = Path(tempfile.mkdtemp(prefix="ambrel-rebuild-"))
    try:
        assert build_anew(folder / "another") == hashlib.sha256(PROGRAM.read_bytes()).hexdigest()
    finally:
        shutil.rmtree(folder)
