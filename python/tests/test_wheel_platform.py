"""The platform in the name of a wheel: never an older one than that which has what the module needs."""

import pathlib
import subprocess
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "build_backend"))
import wheel_platform  # noqa: E402


# What readelf says of a module, by symbols and libraries.
def told(symbols, libraries):
    lines = [f"  0x0010:   Name: {name}  Flags: none  Version: 4" for name in symbols]
    return "\n".join(lines + [f" 0x01 (NEEDED)  Shared library: [{name}]" for name in libraries])


@pytest.mark.parametrize("symbols, libraries, expected", [
    (["GLIBC_2.9", "GLIBC_2.17"], ["libc.so.6"], "manylinux_2_17"),  # 2.17 is newer than 2.9
    (["GLIBC_2.2.5", "GLIBCXX_3.4.29"], ["libc.so.6", "libstdc++.so.6"], "manylinux_2_34"),  # the C++ library decides
    (["GLIBC_2.35", "CXXABI_1.3.13"], ["libm.so.6"], "manylinux_2_35"),
    (["GLIBC_2.99"], ["libc.so.6"], "linux"),
    (["GLIBC_2.36", "GLIBC_ABI_DT_RELR"], ["libc.so.6"], "linux"),  # no number: nobody is known to have it
    (["GLIBC_2.17"], ["libc.so.6", "libsqlite3.so.0"], "linux"),
    (["OPENSSL_3.0.0"], ["libc.so.6"], "linux"),
])
def test_platform(monkeypatch, symbols, libraries, expected):
    for order in (symbols, symbols[::-1]):
        answer = subprocess.CompletedProcess([], 0, told(order, libraries))
        monkeypatch.setattr(wheel_platform.subprocess, "run", lambda *_, **__: answer)
        monkeypatch.setattr(wheel_platform.sysconfig, "get_platform", lambda: "linux-x86_64")
        assert wheel_platform.platform_of("module.so")[0] == f"{expected}_x86_64"


def test_what_is_no_module_gets_no_promise(tmp_path):
    (tmp_path / "text").write_text("no ELF file")
    for module in (tmp_path / "text", ""):
        tag, why = wheel_platform.platform_of(module)
        assert "manylinux" not in tag and "unknown" in why
