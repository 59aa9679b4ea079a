"""Which machines a compiled module runs on, as the platform tag of its wheel (PEP 600).

`python3 wheel_platform.py MODULE` prints what the module needs, and the tag.
"""

import re
import subprocess
import sys
import sysconfig

# The newest symbols that a platform has: the C library by its own number, the C++ library and the compiler's as the distributions
# of that time had them (the profiles that Python's packagers keep for PEP 600).
PLATFORMS = [
    ("2_17", {"GLIBC": "2.17", "GLIBCXX": "3.4.19", "CXXABI": "1.3.7", "GCC": "4.8.0"}),
    ("2_24", {"GLIBC": "2.24", "GLIBCXX": "3.4.22", "CXXABI": "1.3.10", "GCC": "4.8.0"}),
    ("2_28", {"GLIBC": "2.28", "GLIBCXX": "3.4.24", "CXXABI": "1.3.11", "GCC": "7.0.0"}),
    ("2_31", {"GLIBC": "2.31", "GLIBCXX": "3.4.28", "CXXABI": "1.3.12", "GCC": "7.0.0"}),
    ("2_34", {"GLIBC": "2.34", "GLIBCXX": "3.4.29", "CXXABI": "1.3.13", "GCC": "7.0.0"}),
    ("2_35", {"GLIBC": "2.35", "GLIBCXX": "3.4.30", "CXXABI": "1.3.13", "GCC": "12.0.0"}),
    ("2_36", {"GLIBC": "2.36", "GLIBCXX": "3.4.30", "CXXABI": "1.3.13", "GCC": "12.0.0"}),
    ("2_39", {"GLIBC": "2.39", "GLIBCXX": "3.4.33", "CXXABI": "1.3.15", "GCC": "14.0.0"}),
]
# Of the libraries that every platform has, those that a module in C++ can need.
LIBRARIES = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6", "libpthread.so.0", "libdl.so.2", "librt.so.1",
             "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1", "ld-linux.so.2"}


def number(version):
    return tuple(int(part) for part in version.split("."))


def needs(module):
    """The newest version of each family of symbols that a module needs, and the libraries: ({"GLIBC": "2.34", ...}, {"libc.so.6", ...}).

    Raises OSError or CalledProcessError where readelf is missing or the file is no ELF file.
    """
    text = subprocess.run(["readelf", "--wide", "--dynamic", "--version-info", str(module)], check=True, capture_output=True,
                          text=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin:/usr/local/bin"}).stdout
    newest = {}
    for family, version in re.findall(r" Name: (\w+?)_(\S+)", text):
        known = newest.setdefault(family, version)
        if not re.fullmatch(r"[0-9.]+", version):
            newest[family] = version  # a property, not a number: no platform is known to have it
        elif re.fullmatch(r"[0-9.]+", known) and number(version) > number(known):
            newest[family] = version
    return newest, set(re.findall(r"\(NEEDED\).*\[(.*)\]", text))


def platform_of(module):
    """(tag, why): the tag of the oldest platform that has all that the module needs, with what it needs; otherwise the tag of this
    machine's kind, with the reason."""
    own = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    if not own.startswith("linux_"):
        return own, "not Linux"
    try:
        newest, libraries = needs(module)
    except (OSError, subprocess.CalledProcessError) as error:
        return own, f"what it needs is unknown: {error}"
    listed = ", ".join(f"{family}_{version}" for family, version in sorted(newest.items()))
    if libraries - LIBRARIES:
        return own, "not every machine has " + ", ".join(sorted(libraries - LIBRARIES))
    for name, has in PLATFORMS:
        if all(re.fullmatch(r"[0-9.]+", version) and family in has and number(version) <= number(has[family])
               for family, version in newest.items()):
            return own.replace("linux_", f"manylinux_{name}_", 1), f"needs {listed}"
    return own, f"no platform is known to have {listed}"


if __name__ == "__main__":
    tag, why = platform_of(sys.argv[1])
    print(f"{why}: {tag}")
