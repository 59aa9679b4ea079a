"""What the check of the C interface must refuse: c_interface_test.py C_INTERFACE_PY HEADER LIST"""
import subprocess
import sys
import tempfile
from pathlib import Path

tool, header_path, list_path = sys.argv[1:]
header, lines = Path(header_path).read_text(), Path(list_path).read_text()
failures = 0


def expect(reason, header, lines=lines, command="check"):
    """The command, over a header and a list of this content, ends with this reason; with None it succeeds."""
    global failures
    with tempfile.TemporaryDirectory() as folder:
        paths = Path(folder, "c_api.h"), Path(folder, "list.txt")
        paths[0].write_text(header)
        paths[1].write_text(lines)
        done = subprocess.run([sys.executable, tool, command, *paths], capture_output=True, text=True)
        if (done.returncode == 0) != (reason is None) or (reason or "") not in done.stderr:
            print(f"{command}: expected {reason}; ended with {done.returncode}: {done.stderr[:300]}")
            failures += 1
        return paths[1].read_text()


def changed(before, after):
    assert before in header, before
    return header.replace(before, after, 1)


grown = "typedef struct vrx_grown { int32_t size; double a; } vrx_grown;\n"
function = "VRX_C_API vrx_status VRX_CALL vrx_new(int32_t a);\n"
expect(None, header)
expect("vrx_close(vrx_handle handle)\n  is gone", changed("vrx_close(vrx_handle handle)", "vrx_shut(vrx_handle handle)"))
expect("is now vrx_status vrx_set_threads(int64_t threads)", changed("vrx_set_threads(int32_t", "vrx_set_threads(int64_t"))
expect("VRX_BAD_COUNT = 2\n  is now VRX_BAD_COUNT = 3", changed("VRX_BAD_COUNT = 2", "VRX_BAD_COUNT = 3"))
expect("struct vrx_system", changed("double angle;", "double angle; double more;"))
expect("struct vrx_system", changed("int32_t own_formula;", "int64_t own_formula;"))
expect("VRX_UNSET 1e-5\n  is now", changed("VRX_UNSET 1e-5", "VRX_UNSET 1e-6"))
expect("has no line for vrx_status vrx_new(int32_t a)", header + function)
longer = expect(None, header + function + grown, command="add")
expect(None, header + function + grown, longer)
wider = header + function + grown.replace("double a;", "double a; double b;")
expect("has no line for struct vrx_grown", wider, longer)
expect(None, wider, expect(None, wider, longer, "add"))
expect("struct vrx_grown", header + function + grown.replace("double a;", "double b; double a;"), longer)
expect("is gone", changed("vrx_set_threads(", "vrx_threads("), command="add")
sys.exit(failures)
