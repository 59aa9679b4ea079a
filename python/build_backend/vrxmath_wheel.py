"""Builds the wheel: CMake makes the extension module, this file packs it (PEP 517, PEP 427).

It runs without a single package beside Python's standard library. The library's sources stand above this folder, so a
wheel is built from a checkout: `pip install ./python`, `pip wheel ./python`.
"""

import base64
import hashlib
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import sysconfig
import zipfile

import wheel_platform

PYTHON = pathlib.Path(__file__).resolve().parent.parent
ROOT = PYTHON.parent
SUMMARY = "Colour science for industrial colour matching and quality control"
REQUIRES = ["numpy>=1.20"]
EXTRAS = {"plot": ["matplotlib>=3.5"], "frames": ["pandas>=1.5"], "cluster": ["dask>=2022.1", "distributed>=2022.1"]}


def version():
    """The version of the library, which CMakeLists.txt states."""
    return re.search(r"project\(vrxmath VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)


def dist_info():
    return f"vrxmath-{version()}.dist-info"


def metadata():
    lines = ["Metadata-Version: 2.1", "Name: vrxmath", f"Version: {version()}", f"Summary: {SUMMARY}",
             "Requires-Python: >=3.9"]
    lines += [f"Requires-Dist: {name}" for name in REQUIRES]
    for extra, names in EXTRAS.items():
        lines.append(f"Provides-Extra: {extra}")
        lines += [f'Requires-Dist: {name}; extra == "{extra}"' for name in names]
    return "\n".join(lines) + "\n\n" + (ROOT / "docs" / "python.md").read_text(encoding="utf-8")


def tag(modules=()):
    """The wheel's tag; the platform is the oldest on which the compiled module runs, where that is known."""
    interpreter = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform, why = wheel_platform.platform_of(modules[0] if modules else "")
    print(f"{why}: {platform}", file=sys.stderr)
    return f"{interpreter}-{interpreter}-{platform}"


def run(*command):
    subprocess.run([str(part) for part in command], check=True, stdout=sys.stderr)


def build_extension(settings):
    """The folder with the compiled module.

    `--config-settings build-dir=FOLDER` says where to build, `--config-settings cmake-options="-DNAME=VALUE ..."` what CMake is
    told besides. `--config-settings module-dir=FOLDER` takes the module that an earlier build left there.
    """
    build = pathlib.Path(settings.get("build-dir") or ROOT / "build" / "python-wheel")
    generator = ["-G", "Ninja"] if shutil.which("ninja") else []
    launcher = shutil.which("ccache")
    run("cmake", "-S", ROOT, "-B", build, *generator, "-DCMAKE_BUILD_TYPE=Release", "-DVRX_BUILD_PYTHON=ON",
        "-DVRX_BUILD_TOOLS=OFF", "-DVRX_BUILD_TESTS=OFF", f"-DVRX_PYTHON={sys.executable}",
        *([f"-DCMAKE_CXX_COMPILER_LAUNCHER={launcher}"] if launcher else []),
        *shlex.split(settings.get("cmake-options") or ""))
    if settings.get("module-dir"):
        return pathlib.Path(settings["module-dir"])
    run("cmake", "--build", build, "--target", "vrx_python", "--parallel", os.cpu_count() or 1)
    return build / "python" / "vrxmath"


def hash_of(data):
    return "sha256=" + base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


def write_wheel(path, files):
    """Packs `files` (name in the archive to bytes) with their record."""
    record = f"{dist_info()}/RECORD"
    lines = [f"{name},{hash_of(data)},{len(data)}" for name, data in files.items()] + [f"{record},,"]
    files = {**files, record: ("\n".join(lines) + "\n").encode()}
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():
            entry = zipfile.ZipInfo(name, (1980, 1, 1, 0, 0, 0))  # equal inputs give equal wheels
            entry.external_attr = 0o644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, data)


def info_files(wheel_tag):
    wheel = f"Wheel-Version: 1.0\nGenerator: vrxmath\nRoot-Is-Purelib: false\nTag: {wheel_tag}\n"
    return {"METADATA": metadata().encode(), "WHEEL": wheel.encode(), "top_level.txt": b"vrxmath\n"}


# The hooks of PEP 517.


def get_requires_for_build_wheel(config_settings=None):
    return []


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    folder = pathlib.Path(metadata_directory) / dist_info()
    folder.mkdir(parents=True)
    for name, data in info_files(tag()).items():
        (folder / name).write_bytes(data)
    return dist_info()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    compiled = build_extension(config_settings or {})
    suffix = sysconfig.get_config_var("EXT_SUFFIX")
    sources = [path for pattern in ("*.py", "*.pyi", "py.typed") for path in (PYTHON / "vrxmath").glob(pattern)]
    modules = list(compiled.glob(f"*{suffix}"))
    sources += modules
    wheel_tag = tag(modules)
    files = {f"vrxmath/{path.name}": path.read_bytes() for path in sorted(sources)}
    files.update({f"{dist_info()}/{name}": data for name, data in info_files(wheel_tag).items()})
    name = f"vrxmath-{version()}-{wheel_tag}.whl"
    write_wheel(pathlib.Path(wheel_directory) / name, files)
    return name


def build_sdist(sdist_directory, config_settings=None):
    raise RuntimeError("the library's sources stand outside the python folder: build a wheel from a checkout")
