"""What runs in the program besides its own code: what the C start-up calls before the first statement, what the
runtime imports, and how the runtime ends the process."""

import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from link_map import LinkMap, link_map  # noqa: E402
from program import BUILD, ROOT, Program, built_program  # noqa: E402
from rules import DEFAULT_COOKIE  # noqa: E402

# What runs before wWinMain, and why it is harmless: none of it loads a DLL or reads a file.
BEFORE_THE_FIRST_STATEMENT = {
    "crt2u.o: pre_c_init": "tells the C runtime the kind of program and its modes",
    "crt2u.o: pre_cpp_init": "takes the command line apart",
    "lib64_libmingw32_a-tlssup.o: __dyn_tls_init": "runs the initialisers of thread-local variables: none",
    "lib64_libmingw32_a-tlssup.o": "runs the destructors of thread-local variables at a thread's end",
    "crtend.o": "registers the unwind tables of libgcc: empty on x86-64",
    "app_state.cpp.obj: _GLOBAL__sub_I_g_app": "makes the empty containers of AppState",
    "event_log.cpp.obj: _GLOBAL__sub_I__Z13AppendLogLinePKw": "makes the log's empty ring",
}

# Imports that no source of ours names: what mingw-w64's start-up, printf and mathematics call.
RUNTIME_IMPORTS = set("""
    DeleteCriticalSection EnterCriticalSection GetStartupInfoW InitializeCriticalSection IsDBCSLeadByteEx
    LeaveCriticalSection SetUnhandledExceptionFilter Sleep TlsGetValue VirtualProtect VirtualQuery __C_specific_handler
    ___lc_codepage_func ___mb_cur_max_func __iob_func __set_app_type __setusermatherr __wgetmainargs __winitenv
    _amsg_exit _cexit _commode _errno _filelengthi64 _fileno _fmode _initterm _onexit _wcmdln
    abort calloc exit fflush fgetpos fprintf fputwc fsetpos fwprintf iswctype localeconv memcpy realloc signal strerror
    strlen strncmp vfprintf""".split())

STACK_BUFFER_OVERRUN = "c0000409"  # what Windows reports of every fast-fail
ENDS_THE_PROCESS = ("smashed-stack", "new", "new-array", "new-aligned", "new-aligned-array", "out-of-range", "length",
                    "null-text")


@pytest.fixture(scope="module", name="program")
def program_fixture():
    return built_program()


@pytest.fixture(scope="module", name="symbols")
def symbols_fixture():
    return link_map()


def addresses(program, start):
    """The words from an address of the image's on, up to a zero."""
    while word := program.number("Q", start):
        yield word - program.base
        start += 8


def initialisers(program, symbols):
    """Names of what the start-up calls: the C runtime's tables, constructors and callbacks of thread-local storage."""
    found = []
    for first, last in (("__xi_a", "__xi_z"), ("__xc_a", "__xc_z")):
        table = range(symbols.symbols[first], symbols.symbols[last], 8)
        found += [word - program.base for word in (program.number("Q", place) for place in table) if word]
    # The list begins with -1, where its length may stand.
    constructors = program.number("Q", symbols.symbols[".refptr.__CTOR_LIST__"]) - program.base
    found += addresses(program, constructors + 8)
    found += addresses(program, program.pe.DIRECTORY_ENTRY_TLS.struct.AddressOfCallBacks - program.base)
    return {symbols.name_at(address) for address in found}


def unknown_imports(program):
    """Functions that neither an object file of ours refers to nor the runtime is known to need."""
    objects = sorted((BUILD / "src").rglob("*.obj"))
    listed = subprocess.run(["x86_64-w64-mingw32-nm", "--undefined-only", *objects], capture_output=True, text=True,
                            check=True).stdout
    called = {line.split()[-1].removeprefix("__imp_") for line in listed.splitlines() if line.startswith(" ")}
    return set().union(*program.imports().values()) - called - RUNTIME_IMPORTS


def test_what_runs_before_the_first_statement_is_known(program, symbols):
    assert initialisers(program, symbols) == set(BEFORE_THE_FIRST_STATEMENT)


def test_an_initialiser_that_is_not_known_is_seen(program, symbols):
    place = symbols.symbols["__xc_a"] + 8
    stranger = (symbols.symbols["wWinMain"] + program.base).to_bytes(8, "little")
    offset = program.pe.get_offset_from_rva(place)
    doctored = Program(program.data[:offset] + stranger + program.data[offset + 8:])
    assert initialisers(doctored, symbols) - set(BEFORE_THE_FIRST_STATEMENT) == {"main.cpp.obj: wWinMain"}


def test_it_imports_only_what_it_calls(program):
    assert not unknown_imports(program)


@pytest.mark.parametrize("name", ["SuspendThread", "CryptGenRandom"])
def test_an_import_that_it_does_not_call_is_seen(program, name):
    replaced = b"GetUserDefaultLocaleName"
    assert program.data.count(replaced) == 1
    doctored = Program(program.data.replace(replaced, name.encode().ljust(len(replaced), b"\0")))
    assert unknown_imports(doctored) == {name}


def test_no_static_variable_needs_a_guard(symbols):
    # lld writes the mangled "_ZGV..." out.
    assert not [name for name in symbols.symbols if name.startswith(("guard variable", "_ZGV", "__cxa_guard"))]


def test_a_guard_would_be_seen():
    line = "00001000 00000000     0                 guard variable for Answer()::answer"
    assert LinkMap(line).symbols == {"guard variable for Answer()::answer": 0x1000}


def test_neither_threads_nor_exceptions_nor_a_second_printf_are_linked(symbols):
    linked = {name for _, _, name in symbols.sections}
    unwanted = ("winpthread", "libssp", "ssp.o", "emutls", "eh_", "cp-demangle", "pformat.o", "functexcept")
    assert not [name for name in linked for part in unwanted if part in name]
    assert [name for name in linked if "pformat" in name] == ["lib64_libmingwex_a-mingw_pformatw.o"]


@pytest.fixture(scope="module", name="deeds")
def deeds_fixture():
    """{deed: (what it printed, exit code)} of the program that misuses the runtime."""
    probe = BUILD / "program_file" / "runtime_probe.exe"
    printed = subprocess.run([ROOT / "lab" / "run-in-lab", probe], capture_output=True, text=True, check=True).stdout
    return {line.split(" ")[0]: (line.partition(" ")[2].partition(" = ")[0].strip(), line.rpartition(" = ")[2])
            for line in printed.splitlines()}


@pytest.mark.parametrize("deed", ENDS_THE_PROCESS)
def test_the_process_ends_at_once(deeds, deed):
    assert deeds[deed] == ("begun", STACK_BUFFER_OVERRUN)


def test_a_stack_that_is_whole_is_left_alone(deeds):
    assert deeds["whole-stack"] == ("begun returned", "00000000")


def test_the_nothrow_forms_answer_null(deeds):
    assert deeds["new-nothrow"] == ("begun null null null null", "00000000")


def test_memory_is_given_as_it_is_asked_for(deeds):
    assert deeds["memory"] == ("begun aligned block", "00000000")


def test_the_loader_replaces_the_cookie_in_each_process(deeds):
    cookies = {int(deeds[deed][0].split()[1], 16) for deed in ("cookie", "cookie-again")}
    assert len(cookies) == 2
    assert not cookies & {0, DEFAULT_COOKIE}


def test_every_deed_is_judged(deeds):
    assert set(deeds) == {*ENDS_THE_PROCESS, "whole-stack", "new-nothrow", "memory", "cookie", "cookie-again"}
