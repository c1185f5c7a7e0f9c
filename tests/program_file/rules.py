"""Rules for the program file: the Windows loader's and our own. A rule yields a description of each violation."""

import io
import re
import struct
from xml.etree import ElementTree

import pefile
from PIL import Image

from program import DEPENDENT_LOAD_FLAGS, LOAD_CONFIG_SIZE, ROOT

MAX_SIZE = 320 * 1024

# Windows 8.1 and later refuse a file of this subsystem version or a higher one unless it has a security cookie.
NEEDS_COOKIE, SUBSYSTEM_VERSION, OS_VERSION = (6, 3), (6, 2), (10, 0)
# The loader replaces the cookie only if the file holds this value.
DEFAULT_COOKIE = 0x2B992DDFA232
SYSTEM32_ONLY = 0x800

# DLLs that Windows always loads from System32 (HKLM\...\Session Manager\KnownDLLs).
KNOWN_DLLS = {"advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "shell32.dll",
              "user32.dll"}

SMI = "http://schemas.microsoft.com/SMI"
PRODUCT_FIELDS = {"CompanyName", "FileDescription", "FileVersion", "InternalName", "LegalCopyright", "OriginalFilename",
                  "ProductName", "ProductVersion"}
# Units of the popup's icon, and the scales of displays in percent.
POPUP_ICON, SCALES = 22, (100, 125, 150, 175, 200, 225, 250, 300, 350)


def windows_can_start_it(program):
    header = program.pe.OPTIONAL_HEADER
    if program.pe.FILE_HEADER.Machine != pefile.MACHINE_TYPE["IMAGE_FILE_MACHINE_AMD64"]:
        yield "it is not for x86-64"
    if header.Subsystem != pefile.SUBSYSTEM_TYPE["IMAGE_SUBSYSTEM_WINDOWS_GUI"]:
        yield "its subsystem is not the Windows GUI"
    subsystem = (header.MajorSubsystemVersion, header.MinorSubsystemVersion)
    if subsystem >= NEEDS_COOKIE and program.cookie_address() is None:
        yield f"the loader refuses subsystem version {subsystem} without a security cookie"


def it_states_the_versions_of_windows(program):
    header = program.pe.OPTIONAL_HEADER
    if (header.MajorSubsystemVersion, header.MinorSubsystemVersion) != SUBSYSTEM_VERSION:
        yield "the subsystem version differs"
    if (header.MajorOperatingSystemVersion, header.MinorOperatingSystemVersion) != OS_VERSION:
        yield "the version of Windows differs"


def the_loader_initialises_the_stack_guard(program):
    if program.load_configuration() is None:
        yield "there is no load configuration"
        return
    address = program.cookie_address()
    if address is None:
        yield "the load configuration names no security cookie"
        return
    if program.number("Q", address) != DEFAULT_COOKIE:
        yield "the cookie does not have the value that the loader replaces"
    if not program.pe.get_section_by_rva(address).IMAGE_SCN_MEM_WRITE:
        yield "the cookie is in a read-only section"


def its_dlls_come_from_system32(program):
    configuration = program.load_configuration()
    if configuration is None:
        yield "there is no load configuration"
        return
    if program.number("I", configuration) < LOAD_CONFIG_SIZE:
        yield "the load configuration is too short"
    if program.number("H", configuration + DEPENDENT_LOAD_FLAGS) != SYSTEM32_ONLY:
        yield "the flags for imported DLLs differ"


def it_imports_known_dlls_only(program):
    for dll in program.imports():
        if dll not in KNOWN_DLLS:
            yield f"{dll} is not on Windows' list of known DLLs"
    if program.directory("DELAY_IMPORT") != (0, 0):
        yield "it has delayed imports"


def its_memory_is_protected(program):
    header = program.pe.OPTIONAL_HEADER
    for flag in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT", "TERMINAL_SERVER_AWARE"):
        if not header.DllCharacteristics & pefile.DLL_CHARACTERISTICS[f"IMAGE_DLLCHARACTERISTICS_{flag}"]:
            yield f"{flag} is missing"
    if program.directory("BASERELOC") == (0, 0):
        yield "it cannot be relocated"
    for section in program.pe.sections:
        if section.IMAGE_SCN_MEM_WRITE and section.IMAGE_SCN_MEM_EXECUTE:
            yield f"{section.Name} is writable and executable"


def it_is_small(program):
    if len(program.data) > MAX_SIZE:
        yield f"it has {len(program.data)} bytes"


def it_contains_no_build_paths_or_time_stamps(program):
    if program.pe.FILE_HEADER.TimeDateStamp:
        yield "it contains a time stamp"
    if program.pe.FILE_HEADER.NumberOfSymbols:
        yield "it contains symbols"
    for section in program.pe.sections:
        if section.Name.startswith((b".debug", b"/")):
            yield f"it contains {section.Name}"
    for encoding in ("ascii", "utf-16-le"):
        if str(ROOT).encode(encoding) in program.data:
            yield "it names a folder of the machine that built it"


def its_manifest_is_complete(program):
    manifest = program.resources(pefile.RESOURCE_TYPE["RT_MANIFEST"]).get(1)
    if manifest is None:
        yield "there is no manifest"
        return
    tree = ElementTree.fromstring(manifest)

    def attributes(name):
        return [element.attrib for element in tree.iter() if element.tag.endswith("}" + name)]

    controls = [found for found in attributes("assemblyIdentity")
                if found.get("name") == "Microsoft.Windows.Common-Controls" and found["version"] == "6.0.0.0"
                and found["publicKeyToken"] == "6595b64144ccf1df" and found["processorArchitecture"] == "amd64"]
    if not controls:
        yield "message boxes have no theme"
    if [found["level"] for found in attributes("requestedExecutionLevel")] != ["asInvoker"]:
        yield "it does not run as invoker"
    if {"Id": "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"} not in attributes("supportedOS"):
        yield "Windows 10 is not named"
    if tree.findtext(f".//{{{SMI}/2016/WindowsSettings}}dpiAwareness") != "PerMonitorV2, PerMonitor":
        yield "menus and boxes do not scale on each monitor"
    if tree.findtext(f".//{{{SMI}/2005/WindowsSettings}}dpiAware") != "true/pm":
        yield "older versions of Windows stretch it"


def its_version_resource_is_complete(program):
    texts = program.version_texts()
    for field in sorted(PRODUCT_FIELDS):
        if not texts.get(field):
            yield f"{field} is missing"
    version = re.search(r'AMBREL_VERSION "([^"]+)"', (ROOT / "src/res/version.h").read_text()).group(1)
    for field in ("FileVersion", "ProductVersion"):
        if texts.get(field) != version:
            yield f"{field} is not the version that the program logs"
    if texts.get("OriginalFilename") != "ambrel.exe":
        yield "OriginalFilename differs"


def icon_sizes(program, group):
    """The sizes of a group's pictures whose actual size and length match the group's entry."""
    directory = program.resources(pefile.RESOURCE_TYPE["RT_GROUP_ICON"])[group]
    pictures = program.resources(pefile.RESOURCE_TYPE["RT_ICON"])
    sizes = set()
    for offset in range(6, len(directory), 14):
        width, height, _, _, _, depth, length, number = struct.unpack_from("<BBBBHHIH", directory, offset)
        picture = pictures[number]
        if picture.startswith(b"\x89PNG"):
            shown = Image.open(io.BytesIO(picture)).size
        else:
            wide, both_masks_high = struct.unpack_from("<ii", picture, 4)
            shown = wide, both_masks_high // 2
        if (shown, depth, length) == ((width or 256, height or 256), 32, len(picture)):
            sizes.add(shown[0])
    return sizes


def it_contains_its_pictures(program):
    groups = set(program.resources(pefile.RESOURCE_TYPE["RT_GROUP_ICON"]))
    if groups != {101, 102, 103}:
        yield f"the icon groups are {groups}"
        return
    for group in groups:
        if missing := {16, 20, 24, 32, 40, 48, 64, 256} - icon_sizes(program, group):
            yield f"icon {group} lacks the sizes {missing}"
    popup = {(2 * POPUP_ICON * scale + 100) // 200 for scale in SCALES}
    if missing := popup - icon_sizes(program, 103):
        yield f"the popup's icon lacks the sizes {missing}"
    logo = program.resources(pefile.RESOURCE_TYPE["RT_RCDATA"]).get(201, b"")
    if not logo or Image.open(io.BytesIO(logo)).size != (256, 256):
        yield "there is no logo"


RULES = [windows_can_start_it, it_states_the_versions_of_windows, the_loader_initialises_the_stack_guard,
         its_dlls_come_from_system32, it_imports_known_dlls_only, its_memory_is_protected, it_is_small,
         it_contains_no_build_paths_or_time_stamps, its_manifest_is_complete, its_version_resource_is_complete,
         it_contains_its_pictures]
