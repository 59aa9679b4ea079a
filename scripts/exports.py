#!/usr/bin/env python3
"""The numbers under which the Windows DLL exports its functions.

    exports.py add LIST OBJECTS32 OBJECTS64      gives every public symbol that has no number the next one
    exports.py seal LIST VERSION                 a release: what is numbered now may never change its meaning
    exports.py def LIST OBJECTS OUT.def          checks the list against a build and writes the linker's definition file
    exports.py decorated OBJECTS DLL OUT.def     the names of a 32-bit DLL as its callers' objects spell them
    exports.py dll LIST FILE.dll                 checks that a DLL exports these numbers and not one name

OBJECTS is a file that names the object files, one a line. The list has one line an entry: number, tab, signature, and
for a symbol that is gone a tab and "retired": its number is never given again. A line "# sealed VERSION UP-TO DIGEST"
says which lines a release has fixed. size_t and ptrdiff_t stand for the types that differ in width, so that one list
serves both.
"""
import hashlib
import re
import struct
import subprocess
import sys
from itertools import product
from pathlib import Path

POINTER_WORDS = {
    4: {"size_t": "unsigned int", "ptrdiff_t": "int"},
    8: {"size_t": "unsigned long long", "ptrdiff_t": "long long"},
}


ALIASES = {
    "std::basic_string_view<char16_t, std::char_traits<char16_t> >": "std::u16string_view",
    "std::basic_string_view<char, std::char_traits<char> >": "std::string_view",
    "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >": "std::string",
}


class Problem(Exception):
    pass


# ---------------------------------------------------------------------------------------------------------------------
# Symbols of a build

def exported_symbols(path):
    """What an object file asks the linker to export: {mangled name: is data}. Inline functions are left out: hosts
    compile their own, and which of them an object holds depends on the optimiser."""
    content = path.read_bytes()
    machine, sections, _, symbol_table, symbols, optional = struct.unpack_from("<HHIIIH", content)
    if machine not in (0x14C, 0x8664):
        raise Problem(f"{path}: not an object of 32-bit or 64-bit Windows")
    strings = symbol_table + 18 * symbols

    def text(field):
        if field[:4] == b"\0\0\0\0":
            start = strings + struct.unpack("<I", field[4:])[0]
            return content[start:content.index(b"\0", start)].decode()
        return field.rstrip(b"\0").decode()

    names, directives = [], b""
    for i in range(sections):
        header = content[20 + optional + 40 * i:][:40]
        name = header[:8].rstrip(b"\0").decode()
        if name.startswith("/"):
            start = strings + int(name[1:])
            name = content[start:content.index(b"\0", start)].decode()
        names.append(name)
        if name == ".drectve":
            size, start = struct.unpack_from("<II", header, 16)
            directives = content[start:start + size]
    inline = set()
    i = 0
    while i < symbols:
        name, _, section, _, _, auxiliary = struct.unpack_from("<8sIhHBB", content, symbol_table + 18 * i)
        if section > 0 and names[section - 1].startswith(".text$"):
            inline.add(text(name).removeprefix("_") if machine == 0x14C else text(name))
        i += 1 + auxiliary
    found = re.findall(rb'-export:"([^"]+)"(,data)?', directives)
    return {name.decode(): bool(data) for name, data in found if name.decode() not in inline}


def width_of(path):
    return 4 if struct.unpack_from("<H", path.read_bytes())[0] == 0x14C else 8


def build_symbols(objects):
    """{signature: (mangled name, is data)} of a build, and its pointer width."""
    paths = [Path(line) for line in Path(objects).read_text().split("\n") if line.endswith((".obj", ".o"))]
    if not paths:
        raise Problem(f"{objects}: names no objects")
    mangled = {}
    for path in paths:
        mangled.update(exported_symbols(path))
    names = sorted(mangled)
    demangled = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True,
                               check=True).stdout.split("\n")
    signatures = {}
    for name, plain in zip(names, demangled):
        signature = tidy(plain) + variant(name, plain)
        if signature in signatures:
            raise Problem(f"{signature} stands for two symbols")
        signatures[signature] = (name, mangled[name])
    return signatures, width_of(paths[0])


def tidy(plain):
    """Drops what the standard library's defaults add, and the suffixes of template numbers, which differ in width."""
    for long, short in ALIASES.items():
        plain = plain.replace(long, short)
    plain = re.sub(r", (4294967295u|18446744073709551615ull)>", ">", plain)
    plain = re.sub(r"\b(\d+)u(ll)?\b", r"\1", plain)
    return re.sub(r", std::allocator<[^<>]*> >", ">", plain)


def variant(name, plain):
    """Constructors and destructors come in kinds that read the same."""
    constructor = re.search(r"(\w+)::\1\(", plain)
    if constructor:
        kind = re.search(rf"{len(constructor[1])}{constructor[1]}C([123])E", name)
        return {"1": " [complete]", "2": " [base]", "3": " [allocating]"}[kind[1]]
    kind = re.search(r"D([012])Ev$", name) if "::~" in plain else None
    return {"0": " [deleting]", "1": " [complete]", "2": " [base]"}[kind[1]] if kind else ""


def spelled(signature, width):
    for word, spelling in POINTER_WORDS[width].items():
        signature = re.sub(rf"\b{word}\b", spelling, signature)
    return signature


def shared_signatures(narrow, wide):
    """The signatures that both widths share, with size_t and ptrdiff_t where the widths differ."""
    shared = set()
    for signature in wide:
        pieces = re.split(r"(\bunsigned long long\b|\blong long\b)", signature)
        choices = [(p, {"unsigned long long": "size_t", "long long": "ptrdiff_t"}[p]) if i % 2 else (p,)
                   for i, p in enumerate(pieces)]
        matches = {candidate for candidate in map("".join, product(*choices)) if spelled(candidate, 4) in narrow}
        if len(matches) != 1:
            raise Problem(f"{signature}: {len(matches)} symbols of the 32-bit build match")
        shared |= matches
    rest = set(narrow) - {spelled(s, 4) for s in shared}
    if rest:
        raise Problem(f"only in the 32-bit build: {sorted(rest)[:5]}")
    return shared


# ---------------------------------------------------------------------------------------------------------------------
# The list

class ExportList:
    def __init__(self, path):
        self.path = Path(path)
        self.lines = self.path.read_text().split("\n") if self.path.exists() else []
        while self.lines and not self.lines[-1]:
            self.lines.pop()
        self.numbers = {}  # number: (signature, is retired)
        for line in self.lines:
            if not line.startswith("#"):
                self.read_entry(line)
        for line in self.lines:
            if line.startswith("# sealed "):
                self.check_seal(line)

    def read_entry(self, line):
        number, signature, *rest = line.split("\t")
        if not number.isdigit() or rest not in ([], ["retired"]):
            raise Problem(f"{self.path}: not a number and a signature: {line}")
        if int(number) != len(self.numbers) + 1:
            raise Problem(f"{self.path}: {number} stands where {len(self.numbers) + 1} should")
        if not rest and signature in self.current():
            raise Problem(f"{self.path}: two numbers for {signature}")
        self.numbers[int(number)] = (signature, bool(rest))

    def current(self):
        return {signature: number for number, (signature, retired) in self.numbers.items() if not retired}

    def digest(self, last):
        """Of numbers and signatures; an entry may be retired after its release."""
        entries = "".join(f"{n}\t{self.numbers[n][0]}\n" for n in range(1, last + 1))
        return hashlib.sha256(entries.encode()).hexdigest()[:16]

    def check_seal(self, line):
        _, _, version, last, digest = line.split()
        if int(last) > len(self.numbers) or self.digest(int(last)) != digest:
            raise Problem(f"{self.path}: a number up to {last} no longer means what it meant in release {version}")

    def sealed(self):
        return max([int(line.split()[3]) for line in self.lines if line.startswith("# sealed ")], default=0)

    def update(self, signatures):
        """Adds what is new. What is gone is retired, or dropped together with its number if no release had it."""
        current = self.current()
        sealed = self.sealed()
        kept = {n: (s, r or s not in signatures) for n, (s, r) in self.numbers.items() if n <= sealed or s in signatures}
        fresh = sorted(signatures - {s for s, retired in kept.values() if not retired})
        entries = [kept[n] for n in sorted(kept)] + [(s, False) for s in fresh]
        seals = [line for line in self.lines if line.startswith("#")]
        self.lines = seals + [f"{i}\t{s}" + ("\tretired" if r else "") for i, (s, r) in enumerate(entries, 1)]
        self.write()
        print(f"{self.path}: {len(entries)} numbers, {len(fresh)} new, {len(set(current) - signatures)} gone")

    def seal(self, version):
        last = len(self.numbers)
        self.lines.insert(sum(line.startswith("#") for line in self.lines),
                          f"# sealed {version} {last} {self.digest(last)}")
        self.write()

    def write(self):
        self.path.write_text("\n".join(self.lines) + "\n")


def write_definition(exports, objects, out):
    symbols, width = build_symbols(objects)
    current = {spelled(signature, width): number for signature, number in exports.current().items()}
    missing = sorted(set(symbols) - set(current))
    gone = sorted(set(current) - set(symbols))
    if missing or gone:
        raise Problem("\n  ".join(
            [f"{exports.path} does not fit the build; see HACKING.md, \"Export numbers\""]
            + [f"without a number: {s}" for s in missing] + [f"{current[s]} is gone: {s}" for s in gone]))
    lines = [f"  {symbols[s][0]} @{number} NONAME{' DATA' if symbols[s][1] else ''}"
             for s, number in sorted(current.items(), key=lambda item: item[1])]
    Path(out).write_text("EXPORTS\n" + "\n".join(lines) + "\n")


def write_decorated(objects, dll, out):
    names = sorted({name for line in Path(objects).read_text().split("\n") if line
                    for name in exported_symbols(Path(line))})
    Path(out).write_text(f"LIBRARY {dll}\nEXPORTS\n" + "".join(f"  {name}\n" for name in names))


def check_dll(exports, path):
    content = Path(path).read_bytes()
    pe = struct.unpack_from("<I", content, 60)[0]
    sections, optional = struct.unpack_from("<H", content, pe + 6)[0], struct.unpack_from("<H", content, pe + 20)[0]
    wide = struct.unpack_from("<H", content, pe + 24)[0] == 0x20B
    address = struct.unpack_from("<I", content, pe + 24 + (112 if wide else 96))[0]

    def at(rva):
        for i in range(sections):
            size, start, _, place = struct.unpack_from("<IIII", content, pe + 24 + optional + 40 * i + 8)
            if start <= rva < start + size:
                return place + rva - start
        raise Problem(f"{path}: nothing at {rva:x}")

    base, functions, names, table = struct.unpack_from("<IIII", content, at(address) + 16)
    targets = struct.unpack_from(f"<{functions}I", content, at(table))
    found = {base + i for i, target in enumerate(targets) if target}
    if names or found != set(exports.current().values()):
        raise Problem(f"{path}: {names} names; numbers {sorted(found ^ set(exports.current().values()))[:9]} differ")
    print(f"{path}: {len(found)} numbers, no name")


def main(command, path, *rest):
    if command == "decorated":
        write_decorated(path, *rest)
        return
    exports = ExportList(path)
    if command == "add":
        narrow, wide = (build_symbols(objects)[0] for objects in rest)
        exports.update(shared_signatures(narrow, wide))
    elif command == "seal":
        exports.seal(*rest)
    elif command == "def":
        write_definition(exports, *rest)
    elif command == "dll":
        check_dll(exports, *rest)
    else:
        raise Problem(__doc__)


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except (Problem, TypeError, OSError) as problem:
        sys.exit(f"exports.py: {problem}")
