"""Every function of Windows that the program file can call has a row in the table of the fault matrix, or a reason
why it has none."""

import re
import sys
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from program import ROOT, built_program  # noqa: E402

TABLE = ROOT / "tests" / "faults" / "fault_table.cpp"

# A function's name as GetProcAddress takes it.
LOOKED_UP = re.compile(rb"(?<![A-Za-z0-9_])[A-Z]\w*[a-z]\w*[A-Z]\w{3,}(?=\0)")

WITHOUT_A_ROW = {
    "it has no failure": """
        AcquireSRWLockExclusive ReleaseSRWLockExclusive GetCommandLineW GetCurrentProcess GetCurrentThreadId GetLastError
        GetLocalTime GetNativeSystemInfo GetTickCount64
        CoUninitialize SysFreeString SysStringLen VariantInit NotifyWinEvent PostQuitMessage
        _errno _fileno _nextafter _wcsicmp free memchr memcmp memcpy memmove memset strlen strncmp wcscmp wcslen wcsstr
        wcstoul""",
    "its result is that of the program's own window procedure": "DefWindowProcW DispatchMessageW",
    "without memory the program ends, which test_crash.py tests": "malloc",
    "it is called before the session": "SetDefaultDllDirectories",
    "only the crash guard calls it, which test_crash.py tests":
        "K32GetModuleBaseNameW SetUnhandledExceptionFilter TryAcquireSRWLockExclusive VirtualQuery WriteFile",
    "only the compiler's runtime calls it, at the start, at the end or after a fault": """
        __C_specific_handler ___lc_codepage_func ___mb_cur_max_func __iob_func __set_app_type __setusermatherr
        __wgetmainargs __winitenv _amsg_exit _cexit _commode _fmode _initterm _onexit _wcmdln abort calloc exit fprintf
        fputwc fwprintf iswctype localeconv realloc signal strerror vfprintf DeleteCriticalSection EnterCriticalSection
        GetStartupInfoW InitializeCriticalSection IsDBCSLeadByteEx LeaveCriticalSection Sleep TlsGetValue VirtualProtect""",
}
EXEMPT = {name for names in WITHOUT_A_ROW.values() for name in names.split()}


@pytest.fixture(scope="module", name="called")
def called_fixture():
    return called_functions(built_program())


def called_functions(program):
    """The names of the functions that the program imports or looks up at run time."""
    read_only = next(section for section in program.pe.sections if section.Name.rstrip(b"\0") == b".rdata")
    looked_up = {name.decode() for name in LOOKED_UP.findall(read_only.get_data())}
    return set().union(looked_up, *program.imports().values())


def table_rows():
    _, _, table = TABLE.read_text(encoding="ascii").partition("Imported() {")
    return set(re.findall(r'"(\w+)"', table))


def test_every_function_has_a_row_or_a_reason(called):
    assert called - table_rows() - EXEMPT == set()


def test_a_missing_row_is_found(called):
    rows = table_rows()
    assert rows
    for row in rows:
        assert called - (rows - {row}) - EXEMPT == {row}


def test_rows_and_reasons_are_of_functions_that_the_program_calls(called):
    assert table_rows() - called == set()
    assert EXEMPT - called == set()


def test_no_function_has_both_a_row_and_a_reason():
    assert table_rows() & EXEMPT == set()
