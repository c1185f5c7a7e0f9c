"""The C runtime in the program: its calls before the first statement, its imports, and how it ends the process."""

import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from link_map import LinkMap, link_map  # noqa: E402
from program import BUILD, ROOT, Program, built_program  # noqa: E402
from rules import DEFAULT_COOKIE  # noqa: E402

# The functions that run before wWinMain, and what they do. None of them loads a DLL or reads a file.
BEFORE_THE_FIRST_STATEMENT = {
    "crt2u.o: pre_c_init": "sets the C runtime's application type and modes",
    "crt2u.o: pre_cpp_init": "parses the command line",
    "lib64_libmingw32_a-tlssup.o: __dyn_tls_init": "runs the initialisers of thread-local variables: none",
    "lib64_libmingw32_a-tlssup.o": "runs the destructors of thread-local variables when a thread ends",
    "crtend.o": "registers the unwind tables of libgcc: empty on x86-64",
    "app_state.cpp.obj: _GLOBAL__sub_I_g_app": "creates the empty containers of AppState",
    "log_file.cpp.obj: _GLOBAL__sub_I__Z10SetLogFileRKNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE":
        "creates the empty path of events.log",
}

# Imports of mingw-w64's start-up code, printf and mathematics.
RUNTIME_IMPORTS = set("""
    DeleteCriticalSection EnterCriticalSection GetStartupInfoW InitializeCriticalSection IsDBCSLeadByteEx
    LeaveCriticalSection SetUnhandledExceptionFilter Sleep TlsGetValue VirtualProtect VirtualQuery __C_specific_handler
    ___lc_codepage_func ___mb_cur_max_func __iob_func __set_app_type __setusermatherr __wgetmainargs __winitenv
    _amsg_exit _cexit _commode _errno _filelengthi64 _fileno _fmode _initterm _nextafter _onexit _wcmdln
    abort calloc exit fflush fgetpos fprintf fputwc fsetpos fwprintf iswctype localeconv memcpy realloc signal strerror
    strlen strncmp vfprintf""".split())

STACK_BUFFER_OVERRUN = "c0000409"  # the exit code of every fast-fail
TERMINATING_ACTIONS = ("smashed-stack", "new", "new-array", "new-aligned", "new-aligned-array", "out-of-range",
                       "length", "null-text")


@pytest.fixture(scope="module", name="program")
def program_fixture():
    return built_program()


@pytest.fixture(scope="module", name="symbols")
def symbols_fixture():
    return link_map()


def addresses(program, start):
    """The addresses in a zero-terminated table of the image."""
    while word := program.number("Q", start):
        yield word - program.base
        start += 8


def initialisers(program, symbols):
    """Names of the functions that the start-up calls: the C runtime's tables, constructors and TLS callbacks."""
    found = []
    for first, last in (("__xi_a", "__xi_z"), ("__xc_a", "__xc_z")):
        table = range(symbols.symbols[first], symbols.symbols[last], 8)
        found += [word - program.base for word in (program.number("Q", address) for address in table) if word]
    # The first entry is -1 or the length of the list.
    constructors = program.number("Q", symbols.symbols[".refptr.__CTOR_LIST__"]) - program.base
    found += addresses(program, constructors + 8)
    found += addresses(program, program.pe.DIRECTORY_ENTRY_TLS.struct.AddressOfCallBacks - program.base)
    return {symbols.name_at(address) for address in found}


def unknown_imports(program):
    """Imported functions that no object file of the program refers to and that are not in RUNTIME_IMPORTS."""
    objects = sorted((BUILD / "src").rglob("*.obj"))
    listed = subprocess.run(["x86_64-w64-mingw32-nm", "--undefined-only", *objects], capture_output=True, text=True,
                            check=True).stdout
    called = {line.split()[-1].removeprefix("__imp_") for line in listed.splitlines() if line.startswith(" ")}
    return set().union(*program.imports().values()) - called - RUNTIME_IMPORTS


def test_only_known_functions_run_before_the_first_statement(program, symbols):
    assert initialisers(program, symbols) == set(BEFORE_THE_FIRST_STATEMENT)


def test_an_unknown_initialiser_is_detected(program, symbols):
    address = symbols.symbols["__xc_a"] + 8
    unknown = (symbols.symbols["wWinMain"] + program.base).to_bytes(8, "little")
    offset = program.pe.get_offset_from_rva(address)
    modified = Program(program.data[:offset] + unknown + program.data[offset + 8:])
    assert initialisers(modified, symbols) - set(BEFORE_THE_FIRST_STATEMENT) == {"main.cpp.obj: wWinMain"}


def test_it_imports_only_functions_that_it_calls(program):
    assert not unknown_imports(program)


@pytest.mark.parametrize("name", ["SuspendThread", "CryptGenRandom"])
def test_an_import_that_it_does_not_call_is_detected(program, name):
    replaced = b"GetUserDefaultLocaleName"
    assert program.data.count(replaced) == 1
    modified = Program(program.data.replace(replaced, name.encode().ljust(len(replaced), b"\0")))
    assert unknown_imports(modified) == {name}


def test_no_static_variable_needs_a_guard(symbols):
    # lld demangles "_ZGV..." to "guard variable".
    assert not [name for name in symbols.symbols if name.startswith(("guard variable", "_ZGV", "__cxa_guard"))]


def test_functions_with_local_arrays_check_their_stack():
    checked = {path.name for path in (BUILD / "src").rglob("*.obj")
               if b"__stack_chk_fail" in path.read_bytes()}
    assert {"event_log.cpp.obj", "format_text.cpp.obj", "settings.cpp.obj", "tinted_cursor.cpp.obj"} <= checked


def test_a_guard_is_detected():
    line = "00001000 00000000     0                 guard variable for Answer()::answer"
    assert LinkMap(line).symbols == {"guard variable for Answer()::answer": 0x1000}


def test_neither_threads_nor_exceptions_nor_a_second_printf_are_linked(symbols):
    linked = {name for _, _, name in symbols.sections}
    unwanted = ("winpthread", "libssp", "ssp.o", "emutls", "eh_", "cp-demangle", "pformat.o", "functexcept")
    assert not [name for name in linked for part in unwanted if part in name]
    assert [name for name in linked if "pformat" in name] == ["lib64_libmingwex_a-mingw_pformatw.o"]


@pytest.fixture(scope="module", name="processes")
def processes_fixture():
    """{action: (cookie, output, exit code)} of runtime_probe, which runs each action in a process of its own."""
    probe = BUILD / "program_file" / "runtime_probe.exe"
    printed = subprocess.run([ROOT / "lab" / "run-in-lab", "--test", probe], stdout=subprocess.PIPE, text=True,
                             check=True).stdout
    found = {}
    for line in printed.splitlines():
        output, _, code = line.rpartition(" = ")
        action, cookie, text = output.split(" ", 2)
        found[action] = (int(cookie, 16), text.strip(), code)
    return found


@pytest.fixture(name="actions")
def actions_fixture(processes):
    """{action: (output, exit code)}"""
    return {action: (text, code) for action, (_, text, code) in processes.items()}


@pytest.mark.parametrize("action", TERMINATING_ACTIONS)
def test_a_runtime_error_ends_the_process_immediately(actions, action):
    assert actions[action] == ("started", STACK_BUFFER_OVERRUN)


def test_the_handler_runs_before_a_runtime_error_ends_the_process(actions):
    assert actions["new-handled"] == ("started handled", STACK_BUFFER_OVERRUN)


def test_an_intact_stack_is_accepted(actions):
    assert actions["intact-stack"] == ("started returned", "00000000")


def test_the_nothrow_forms_return_null(actions):
    assert actions["new-nothrow"] == ("started null null null null", "00000000")


def test_memory_is_allocated_with_the_requested_size_and_alignment(actions):
    assert actions["memory"] == ("started aligned block", "00000000")


def test_the_loader_replaces_the_cookie_in_each_process(processes):
    cookies = {cookie for cookie, _, _ in processes.values()}
    assert not cookies & {0, DEFAULT_COOKIE}
    # Wine computes it from the time and the process, so it may be the same in two of them.
    assert len(cookies) > len(processes) / 2


def test_every_action_is_checked(actions):
    assert set(actions) == {*TERMINATING_ACTIONS, "new-handled", "intact-stack", "new-nothrow", "memory"}
