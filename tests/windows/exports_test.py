"""What the check of the export numbers must refuse: exports_test.py EXPORTS_PY LIST OBJECTS DLL NAMED_DLL"""
import subprocess
import sys
import tempfile
from pathlib import Path

tool, numbers, objects, dll, named_dll = sys.argv[1:]
lines = Path(numbers).read_text().splitlines()
seals = [line for line in lines if line.startswith("#")]
entries = [line for line in lines if not line.startswith("#")]
live = [i for i, line in enumerate(entries) if not line.endswith("\tretired")]
failures = 0


def changed(index, entry):
    return entries[:index] + [entry] + entries[index + 1:]


def expect(reason, command, content, *rest):
    """The command, over a list of this content, ends with this reason; with None it succeeds."""
    global failures
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder, "list.txt")
        path.write_text("\n".join(content) + "\n")
        out = [Path(folder, "out.def")] if command == "def" else []
        done = subprocess.run([sys.executable, tool, command, path, *rest, *out], capture_output=True, text=True)
    if (done.returncode == 0) != (reason is None) or (reason or "") not in done.stderr:
        print(f"{command}: expected {reason}; ended with {done.returncode}: {done.stderr[:300]}")
        failures += 1


first, last = live[0], live[-1]
number, signature = entries[first].split("\t")
again = f"{len(entries) + 1}\t{signature}"
expect(None, "def", seals + entries, objects)
expect("without a number: " + entries[last].split("\t")[1][:40], "def", changed(last, entries[last] + "\tretired"), objects)
expect("is gone: vrx::Nothing()", "def", entries + [f"{len(entries) + 1}\tvrx::Nothing()"], objects)
expect("two numbers for", "def", entries + [again], objects)
expect("stands where", "def", entries + [f"{number}\tvrx::Nothing()"], objects)
expect("no longer means what it meant", "def", seals + changed(first, f"{number}\tvrx::Nothing()"), objects)
expect("no longer means what it meant", "dll", seals + entries[:100], dll)
expect(None, "dll", seals + entries, dll)
expect("differ", "dll", seals + entries + [f"{len(entries) + 1}\tvrx::Nothing()"], dll)
expect(" names;", "dll", seals + entries, named_dll)
sys.exit(failures)
