"""The shipped program file: what Windows reads of it before it runs, and that it can be built again."""

import hashlib
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))

import pytest  # noqa: E402

from doctored import DOCTORED, of_subsystem_10, with_header  # noqa: E402
from program import PROGRAM, ROOT, Program, built_program  # noqa: E402
from rules import RULES, windows_starts_it  # noqa: E402


@pytest.fixture(scope="module", name="program")
def program_fixture():
    return built_program()


@pytest.mark.parametrize("rule", RULES, ids=lambda rule: rule.__name__)
def test_the_program_keeps_the_rule(program, rule):
    assert not list(rule(program))


@pytest.mark.parametrize("fault", DOCTORED)
def test_a_doctored_file_is_refused(program, fault):
    rule, doctor = DOCTORED[fault]
    doctored = doctor(program)
    assert doctored != program.data
    assert list(rule(Program(doctored)))


def test_a_newer_subsystem_version_is_started_when_there_is_a_cookie(program):
    assert not list(windows_starts_it(Program(with_header(of_subsystem_10)(program))))


def test_every_rule_refuses_some_doctored_file():
    assert {rule for rule, _ in DOCTORED.values()} == set(RULES)


def build_anew(folder):
    # Without a compiler cache, which would answer with the first build's objects.
    subprocess.run(["cmake", "--preset", "release", "-B", folder, "-DCMAKE_CXX_COMPILER_LAUNCHER="], cwd=ROOT,
                   check=True, capture_output=True)
    subprocess.run(["cmake", "--build", folder, "--target", "ambrel"], check=True, capture_output=True)
    return hashlib.sha256((folder / "ambrel.exe").read_bytes()).hexdigest()


def test_a_clean_build_in_another_folder_is_equal_to_the_byte():
    folder = Path(tempfile.mkdtemp(prefix="ambrel-rebuild-"))
    try:
        assert build_anew(folder / "another") == hashlib.sha256(PROGRAM.read_bytes()).hexdigest()
    finally:
        shutil.rmtree(folder)
