"""A folder of results that is whole or not there."""

from __future__ import annotations

import contextlib
import json
import os
import pathlib
import shutil
import tempfile
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from collections.abc import Iterator

MANIFEST = "manifest.json"


def _is_ours(folder: pathlib.Path) -> bool:
    """Whether a folder holds an earlier run, or nothing."""
    return (folder / MANIFEST).is_file() or not any(folder.iterdir())


@contextlib.contextmanager
def replaced(output: str | os.PathLike[str]) -> Iterator[pathlib.Path]:
    """A new folder to write into, which takes the place of `output` at the end; after an exception all is as it was.

    Raises FileExistsError where `output` is there and holds something else than the results of a run.
    """
    target = pathlib.Path(output).resolve()
    if target.exists() and not (target.is_dir() and _is_ours(target)):
        raise FileExistsError(f"{str(target)!r} is no folder of results ({MANIFEST} is missing): name another one")
    target.parent.mkdir(parents=True, exist_ok=True)
    scratch = pathlib.Path(tempfile.mkdtemp(dir=target.parent, prefix=f".{target.name}-"))
    try:
        made = scratch / "new"
        made.mkdir()
        yield made
        if target.exists():
            os.rename(target, scratch / "old")
        try:
            os.rename(made, target)
        except OSError:
            if (scratch / "old").exists():
                os.rename(scratch / "old", target)
            raise
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


def write_manifest(folder: pathlib.Path, content: dict[str, Any]) -> None:
    with open(folder / MANIFEST, "w", encoding="utf-8") as file:
        json.dump(content, file, indent=1, ensure_ascii=False)
        file.write("\n")
