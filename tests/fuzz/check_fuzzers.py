#!/usr/bin/env python3
"""Shows that each fuzz target finds a fault: plants one for each in a copy of the program's sources and runs all.

    tests/fuzz/check_fuzzers.py [SECONDS]    at most SECONDS (60) for each target
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FUZZ = ROOT / "tests" / "fuzz"
BUILD = ROOT / "build" / "fuzz-planted"

# Target: the file, what is there, and what is planted. No target reaches another one's fault first.
PLANTED = {
    "settings": ("store/settings.cpp", "wchar_t text[512] = {};", "wchar_t text[64] = {};"),
    "restore": ("store/restore_row.cpp", "if (encoded.size() < 5) return false;",
                "if (encoded.size() < 4) return false;"),
    "log_message": ("store/event_log.cpp", "ReplaceControlCharacters(line->text, line->length);",
                    "ReplaceControlCharacters(line->text, line->length - 1);"),
    "log_tail": ("store/log_file.cpp", "bytes.substr(firstEnd + 1)", "bytes.substr(firstEnd + 2)"),
    "registry": ("diag/system_probe.cpp", "DWORD bytes = sizeof(text);", "DWORD bytes = 2 * sizeof(text);"),
    "report": ("diag/support_text.cpp", "text->size() - start);", "value.size());"),
    "slider": ("ui/slider_text.cpp", "while (TruncatedPercent(fraction) < percent)", "while (false)"),
    "cursor": ("filter/model/cursor_pixels.cpp", "if (product <= 0.0) return 0;", ""),
}


def plant():
    sources = BUILD / "src"
    shutil.rmtree(BUILD, ignore_errors=True)
    shutil.copytree(ROOT / "src", sources)
    for name, old, new in PLANTED.values():
        path = sources / name
        text = path.read_text(encoding="utf-8")
        assert text.count(old) == 1, f"{name} does not contain {old!r} once"
        path.write_text(text.replace(old, new), encoding="utf-8")
    subprocess.run(["cmake", "-S", FUZZ, "-B", BUILD, "-G", "Ninja", "-DCMAKE_CXX_COMPILER=clang++",
                    "-DCMAKE_BUILD_TYPE=Release", f"-DAMBREL_SOURCES={sources}"],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", BUILD], check=True, stdout=subprocess.DEVNULL)


def finds(target, seconds):
    corpus = BUILD / "corpus" / target
    corpus.mkdir(parents=True)
    (BUILD / "files").mkdir(exist_ok=True)
    run = subprocess.run(["nice", BUILD / "fuzz", f"--target={target}", "-seed=1", f"-max_total_time={seconds}",
                          "-max_len=2048", "-timeout=10", "-print_final_stats=1", f"-artifact_prefix={BUILD}/{target}-",
                          corpus, FUZZ / "corpus" / target], env={**os.environ, "TMPDIR": str(BUILD / "files")},
                         stderr=subprocess.PIPE, text=True, errors="replace", check=False)
    facts = [line for line in run.stderr.splitlines() if any(word in line for word in ("not so", "runtime error", "ERROR: A", "Assertion"))]
    inputs = [line.split()[-1] for line in run.stderr.splitlines() if "number_of_executed_units" in line]
    print(f"{target:12} {'found' if run.returncode else 'MISSED':6} {inputs[0] if inputs else '?':>8} inputs  "
          f"{facts[0].strip() if facts else ''}", flush=True)
    return run.returncode != 0


def main():
    seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 60
    plant()
    return 0 if all([finds(target, seconds) for target in PLANTED]) else 1


if __name__ == "__main__":
    sys.exit(main())
