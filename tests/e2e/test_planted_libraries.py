"""DLLs beside the program and in its working directory are not loaded.

Wine's loader looks beside the program for what a file imports, whatever the file says about it: what is loaded before
the program's first statement is checked on the file (tests/program_file), and the DLLs that Wine loads before it are
not planted here.
"""

import shutil

import pefile
import pytest

import model
from ambrel_lab.layout import SUPPORT
from desk import MENU_LEGACY_MODE, TIMEOUT, wait_until

BESIDE, WORKING = "C:\\Pl\u00e1nted  by the pr\u00f6gram\\", "C:\\w\u00f6rking \u00e9 directory \\b\\"
SWITCH = "--expand-gamma-range"
ICM_KEY, ICM_VALUE = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ICM", "GdiIcmGammaRange"
OVERRIDES = "HKCU\\Software\\Wine\\AppDefaults\\ambrel.exe\\DllOverrides"
START = (model.DEFAULT_INTENSITY, model.DEFAULT_BRIGHTNESS)
LOG = "C:\\lab\\planted.log"

# What the program loads by name, and what programs are known to look for beside themselves.
LOADED_BY_NAME = ("magnification.dll", "shcore.dll", "dwmapi.dll", "dxva2.dll", "oleacc.dll", "ntdll.dll")
SOUGHT = ("amsi.dll", "apphelp.dll", "bcrypt.dll", "comctl32.dll", "coremessaging.dll", "cryptbase.dll", "cryptsp.dll",
          "d3d9.dll", "dbghelp.dll", "edputil.dll", "fastprox.dll", "gdiplus.dll", "iphlpapi.dll", "kernel.appcore.dll",
          "ktmw32.dll", "linkinfo.dll", "mpr.dll", "msctf.dll", "msimg32.dll", "mswsock.dll", "netapi32.dll",
          "netutils.dll", "ntmarta.dll", "profapi.dll", "propsys.dll", "pdh.dll", "rsaenh.dll", "secur32.dll",
          "setupapi.dll", "srvcli.dll", "sspicli.dll", "textshaping.dll", "twinapi.appcore.dll", "urlmon.dll",
          "userenv.dll", "uxtheme.dll", "version.dll", "wbemcomn.dll", "wbemprox.dll", "wbemsvc.dll",
          "windows.storage.dll", "windowscodecs.dll", "winhttp.dll", "wininet.dll", "winmm.dll", "winsta.dll",
          "wldp.dll", "wtsapi32.dll", "xmllite.dll")


def imports(path):
    image = pefile.PE(path, fast_load=True)
    image.parse_data_directories(directories=[pefile.DIRECTORY_ENTRY[f"IMAGE_DIRECTORY_ENTRY_{kind}"]
                                              for kind in ("IMPORT", "DELAY_IMPORT")])
    return ({entry.dll.decode().lower() for entry in getattr(image, "DIRECTORY_ENTRY_IMPORT", [])},
            {entry.dll.decode().lower() for entry in getattr(image, "DIRECTORY_ENTRY_DELAY_IMPORT", [])})


def closure(desk, names):
    """({DLLs that come with the named ones}, {DLLs that any of these loads later})."""
    known, later, waiting = set(), set(), set(names)
    while waiting:
        name = waiting.pop()
        known.add(name)
        path = desk.prefix.path(f"C:\\windows\\system32\\{name}")
        if path.exists():
            now, delayed = imports(path)
            later |= delayed
            waiting |= now - known
    return known, later


def names_to_plant(desk):
    before_the_first_statement, _ = closure(desk, imports(desk.build_dir / "ambrel.exe")[0])
    together, later = closure(desk, {*LOADED_BY_NAME, *SOUGHT, *before_the_first_statement})
    afterwards, _ = closure(desk, later)
    return (together | afterwards) - before_the_first_statement


@pytest.fixture(scope="module", name="planted_desk")
def planted_desk_fixture(make_file_desk):
    desk = make_file_desk()
    desk.install_program(target=BESIDE + "ambrel.exe")
    names = names_to_plant(desk)
    assert {"magnification.dll", "dwmapi.dll", "oleacc.dll", "windowscodecs.dll", "uxtheme.dll"} <= names
    for folder in (BESIDE, WORKING):
        desk.prefix.path(folder).mkdir(parents=True, exist_ok=True)
        for name in names:
            shutil.copy(desk.build_dir / "lab" / "planted.dll", desk.prefix.path(folder + name))
    # Without this Wine would load its own DLL of the name instead of the planted file.
    for name in LOADED_BY_NAME:
        desk.registry_set(OVERRIDES, "*" + name.removesuffix(".dll"), "native,builtin")
    return desk


def loaded(desk):
    path = desk.prefix.path(LOG)
    return path.read_bytes().decode("cp1252").splitlines() if path.exists() else []


def start(desk, *arguments):
    return desk.desktop.start([desk.program_path, *arguments], cwd=desk.prefix.path(WORKING))


def test_a_planted_library_is_noticed(planted_desk):
    """The check itself: a program that does not restrict its search loads DLLs from its folder."""
    desk = planted_desk
    desk.desktop.start(["rundll32", "textshaping.dll,Entry"], cwd=desk.prefix.path(WORKING)).wait(TIMEOUT)
    assert [line.lower().rpartition("\\")[2] for line in loaded(desk)] == ["textshaping.dll"]
    desk.prefix.path(LOG).unlink()


def test_an_ordinary_run_loads_none(planted_desk):
    desk = planted_desk
    desk.clear()
    desk.program = start(desk)
    desk.wait_for_icon()
    desk.press_power()
    desk.wait_for_colour(*START)
    assert desk.accessible_popup().name == "Ambrel"
    desk.show_settings()
    desk.click_unit(*SUPPORT)
    wait_until(lambda: any(line.startswith("Support bundle") for line in desk.log()), "the report", state=desk.log)
    desk.close_settings()
    desk.menu(MENU_LEGACY_MODE)
    desk.wait_for_legacy_colour(*START)
    assert desk.quit() == 0
    assert loaded(desk) == []


def test_the_elevated_run_loads_none_and_writes_one_value_only(planted_desk):
    desk = planted_desk
    before = {path: path.lstat().st_mtime_ns for path in desk.prefix.roaming.rglob("*")}
    helper = start(desk, SWITCH)
    desk.press_button(desk.wait_for_message_box())
    assert helper.wait(TIMEOUT) == 0
    assert desk.registry_get(ICM_KEY, ICM_VALUE)
    assert {path: path.lstat().st_mtime_ns for path in desk.prefix.roaming.rglob("*")} == before
    assert loaded(desk) == []
    desk.registry_delete(ICM_KEY, ICM_VALUE)
