"""Modified copies of the program file with one fault each, and the rule that must reject it."""

import struct

import pefile

import rules
from program import DEPENDENT_LOAD_FLAGS, SECURITY_COOKIE, Program


def patched(program, address, kind, value):
    offset = program.pe.get_offset_from_rva(address)
    new = struct.pack("<" + kind, value)
    return program.data[:offset] + new + program.data[offset + len(new):]


def replaced(old, new):
    """The file with one text replaced by another. A shorter text is padded with spaces, which XML ignores."""
    def change(program):
        assert program.data.count(old) == 1 and len(new) <= len(old)
        return program.data.replace(old, new.ljust(len(old)))
    return change


def with_header(change):
    """The file with changed headers; `change` receives pefile's view of a copy."""
    def make(program):
        pe = pefile.PE(data=program.data)
        change(pe)
        return bytes(pe.write())
    return make


def without_directory(name):
    def change(pe):
        entry = pe.OPTIONAL_HEADER.DATA_DIRECTORY[pefile.DIRECTORY_ENTRY[f"IMAGE_DIRECTORY_ENTRY_{name}"]]
        entry.VirtualAddress = entry.Size = 0
    return with_header(change)


def of_subsystem_10(pe):
    pe.OPTIONAL_HEADER.MajorSubsystemVersion, pe.OPTIONAL_HEADER.MinorSubsystemVersion = 10, 0


def without_cookie(program):
    return patched(program, program.load_configuration() + SECURITY_COOKIE, "Q", 0)


def with_read_only_cookie(pe):
    configuration = pe.DIRECTORY_ENTRY_LOAD_CONFIG.struct
    section = pe.get_section_by_rva(configuration.SecurityCookie - pe.OPTIONAL_HEADER.ImageBase)
    section.Characteristics &= ~pefile.SECTION_CHARACTERISTICS["IMAGE_SCN_MEM_WRITE"]


def without_flag(name):
    def change(pe):
        pe.OPTIONAL_HEADER.DllCharacteristics &= ~pefile.DLL_CHARACTERISTICS[f"IMAGE_DLLCHARACTERISTICS_{name}"]
    return with_header(change)


def stamped(pe):
    pe.FILE_HEADER.TimeDateStamp = 1


def with_renamed_field(name):
    def change(program):
        old, new = name.encode("utf-16-le"), ("X" + name[1:]).encode("utf-16-le")
        assert program.data.count(old) == 1
        return program.data.replace(old, new)
    return change


def of_subsystem_10_after(change):
    return lambda program: with_header(of_subsystem_10)(Program(change(program)))


# A picture of 77 pixels in an icon group: width, height, no palette, one plane of 32 bits.
PICTURE_77 = struct.pack("<BBBBHH", 77, 77, 0, 0, 1, 32)

MODIFIED = {
    "subsystem 10.0 without a load configuration":
        (rules.windows_can_start_it, of_subsystem_10_after(without_directory("LOAD_CONFIG"))),
    "subsystem 10.0 without a cookie": (rules.windows_can_start_it, of_subsystem_10_after(without_cookie)),
    "subsystem 10.0": (rules.it_states_the_versions_of_windows, with_header(of_subsystem_10)),
    "no load configuration": (rules.the_loader_initialises_the_stack_guard, without_directory("LOAD_CONFIG")),
    "no cookie": (rules.the_loader_initialises_the_stack_guard, without_cookie),
    "a cookie of another value":
        (rules.the_loader_initialises_the_stack_guard,
         lambda program: patched(program, program.cookie_address(), "Q", rules.DEFAULT_COOKIE + 1)),
    "a cookie that cannot be written":
        (rules.the_loader_initialises_the_stack_guard, with_header(with_read_only_cookie)),
    "no flags for imported DLLs":
        (rules.its_dlls_come_from_system32,
         lambda program: patched(program, program.load_configuration() + DEPENDENT_LOAD_FLAGS, "H", 0)),
    "a load configuration that is too short":
        (rules.its_dlls_come_from_system32,
         lambda program: patched(program, program.load_configuration(), "I", DEPENDENT_LOAD_FLAGS)),
    "an import of an unknown DLL": (rules.it_imports_known_dlls_only, replaced(b"OLEAUT32.dll", b"bcrypt.dll\0\0")),
    "no random addresses": (rules.its_memory_is_protected, without_flag("DYNAMIC_BASE")),
    "executable data": (rules.its_memory_is_protected, without_flag("NX_COMPAT")),
    "no relocations": (rules.its_memory_is_protected, without_directory("BASERELOC")),
    "too large": (rules.it_is_small, lambda program: program.data.ljust(rules.MAX_SIZE + 1, b"\0")),
    "a time stamp": (rules.it_contains_no_build_paths_or_time_stamps, with_header(stamped)),
    "no common controls": (rules.its_manifest_is_complete, replaced(b"Microsoft.Windows.Common-Controls", b"Other")),
    "older common controls": (rules.its_manifest_is_complete, replaced(b'version="6.0.0.0"', b'version="5.0.0.0"')),
    "an administrator's rights":
        (rules.its_manifest_is_complete, replaced(b'level="asInvoker"', b'level="other"')),
    "no support of Windows 10":
        (rules.its_manifest_is_complete, replaced(b"8e0f7a12-bfb3-4fe8", b"35138b9a-5d96-4fbd")),
    "one scale for all monitors":
        (rules.its_manifest_is_complete, replaced(b"PerMonitorV2, PerMonitor", b"system")),
    "no scale for an older Windows": (rules.its_manifest_is_complete, replaced(b"true/pm", b"false")),
    "no manifest": (rules.its_manifest_is_complete, without_directory("RESOURCE")),
    "no company": (rules.its_version_resource_is_complete, with_renamed_field("CompanyName")),
    "no copyright": (rules.its_version_resource_is_complete, with_renamed_field("LegalCopyright")),
    "no original file name": (rules.its_version_resource_is_complete, with_renamed_field("OriginalFilename")),
    "no picture of 77 pixels":
        (rules.it_contains_its_pictures, replaced(PICTURE_77, struct.pack("<BBBBHH", 78, 78, 0, 0, 1, 32))),
    "no resources": (rules.it_contains_its_pictures, without_directory("RESOURCE")),
}
