"""The shipped program file: the rules of rules.py, and a reproducible build."""

import hashlib
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = sys.pycache_prefix is None
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from modified_program import MODIFIED, of_subsystem_10, with_header  # noqa: E402
from program import BUILD, PROGRAM, ROOT, Program, built_program  # noqa: E402
from rules import RULES, windows_can_start_it  # noqa: E402


@pytest.fixture(scope="module", name="program")
def program_fixture():
    return built_program()


@pytest.mark.parametrize("rule", RULES, ids=lambda rule: rule.__name__)
def test_the_program_follows_the_rule(program, rule):
    assert not list(rule(program))


@pytest.mark.parametrize("fault", MODIFIED)
def test_a_modified_file_is_rejected(program, fault):
    rule, modify = MODIFIED[fault]
    modified = modify(program)
    assert modified != program.data
    assert list(rule(Program(modified)))


def test_windows_can_start_a_newer_subsystem_version_with_a_cookie(program):
    assert not list(windows_can_start_it(Program(with_header(of_subsystem_10)(program))))


def test_every_rule_rejects_a_modified_file():
    assert {rule for rule, _ in MODIFIED.values()} == set(RULES)


# What a build of the program depends on, besides the compilers.
INPUTS = ("CMakeLists.txt", "CMakePresets.json", "cmake", "src", "packaging/publisher.ini")
COMPILERS = ("x86_64-w64-mingw32-g++-posix", "x86_64-w64-mingw32-windres", "clang++", "ld.lld")
# The inputs of the last rebuild, and the hash of its program.
LAST_REBUILD = BUILD / "program_file" / "rebuilt.txt"


def hash_of_inputs():
    digest = hashlib.sha256()
    for name in INPUTS:
        root = ROOT / name
        for file in sorted(path for path in [root, *root.rglob("*")] if path.is_file()):
            digest.update(f"{file.relative_to(ROOT)}\0".encode() + hashlib.sha256(file.read_bytes()).digest())
    for compiler in COMPILERS:
        digest.update(subprocess.run([compiler, "--version"], check=True, capture_output=True).stdout)
    return digest.hexdigest()


def hash_of_rebuild():
    """The hash of the program built from scratch in another folder. Only changed inputs are built again."""
    inputs = hash_of_inputs()
    if LAST_REBUILD.exists():
        built_from, program = LAST_REBUILD.read_text(encoding="ascii").split()
        if built_from == inputs:
            return program
    folder = Path(tempfile.mkdtemp(prefix="ambrel-rebuild-"))
    try:
        program = rebuild(folder / "another")
    finally:
        shutil.rmtree(folder)
    if hash_of_inputs() == inputs:  # Otherwise a source was edited during the build.
        LAST_REBUILD.parent.mkdir(parents=True, exist_ok=True)
        LAST_REBUILD.write_text(f"{inputs} {program}\n", encoding="ascii")
    return program


def rebuild(folder):
    # Without a compiler cache, which would return the first build's objects.
    subprocess.run(["cmake", "--preset", "release", "-B", folder, "-DCMAKE_CXX_COMPILER_LAUNCHER="], cwd=ROOT,
                   check=True, capture_output=True)
    subprocess.run(["cmake", "--build", folder, "--target", "ambrel"], check=True, capture_output=True)
    return hashlib.sha256((folder / "ambrel.exe").read_bytes()).hexdigest()


def test_a_clean_build_in_another_folder_is_equal_to_the_byte():
    assert hash_of_rebuild() == hashlib.sha256(PROGRAM.read_bytes()).hexdigest()
