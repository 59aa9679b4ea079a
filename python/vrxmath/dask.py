"""Judgement, colour values and search over many files, by the processes of a Dask cluster.

A partition is a file: CSV, CGATS, CxF or JSON that :func:`vrxmath.read` knows, or a numpy array of curves (``.npy``). Each is
computed by one task, which writes its result beside a temporary name and renames it, so that a worker that dies leaves
nothing half-written and the scheduler can run its task again. Nothing depends on which worker computes what: the
results have the same bytes as those of a single process.

A task holds 65,536 samples at a time, whatever the size of its partition.

A run writes into a folder of its own, which takes the place of ``output`` once every partition is there: results of an
earlier run go away as a whole, and stay as they are where the run fails. ``manifest.json`` in it lists the partitions with
their results. A record has the ``id`` of its sample: its id, its name, or its number in the partition, from 1.

A script that starts a cluster of processes needs ``if __name__ == "__main__":`` around what it does, because each process
imports it.
"""

from __future__ import annotations

import glob
import os
import pathlib
import tempfile
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._curves import CurveArray
from ._folder import replaced, write_manifest
from ._judgement import judge as _judge
from ._reading import read_blocks as _read_blocks
from ._search import nearest as _nearest

if TYPE_CHECKING:
    from collections.abc import Callable, Iterable, Iterator, Sequence
    from typing import Union

    from ._core import Floats, Lamp, Numbers

    Paths = Union[str, os.PathLike[str], Sequence[Union[str, os.PathLike[str]]]]

__all__ = ["color", "judge", "nearest", "partitions"]


def partitions(paths: Paths) -> list[str]:
    """The files of a partitioned data set, in order.

    Parameters
    ----------
    paths : str, os.PathLike or sequence of them
        Files, or patterns such as ``"batch/part-*.csv"``, which are sorted by name.

    Returns
    -------
    list of str
    """
    given = [paths] if isinstance(paths, (str, os.PathLike)) else list(paths)
    files = []
    for path in [os.fspath(one) for one in given]:
        found = sorted(glob.glob(path)) if glob.has_magic(path) else [path]
        if not found:
            raise FileNotFoundError(f"no file matches {path!r}")
        files += found
    return files


_BLOCK = 65536  # samples that a task holds at a time


def _blocks_of(path: str) -> Iterator[tuple[Any, dict[str, Any]]]:
    """The curves of a partition and the column of their ids, block by block: those of an array are its places, from 1."""
    if path.endswith(".npy"):
        rows = len(np.load(path, mmap_mode="r", allow_pickle=False))
        digits = len(str(rows))
        for first in range(0, max(rows, 1), _BLOCK):
            # Mapped anew for each block: what was mapped before does not count as memory of the process.
            block = np.array(np.load(path, mmap_mode="r", allow_pickle=False)[first: first + _BLOCK])
            yield block, {"id": np.arange(first + 1, first + len(block) + 1).astype(f"U{digits}")}
        return
    for measured in _read_blocks(path, _BLOCK):
        if measured.curves is None:
            raise ValueError(f"{path}: it has colours and no curves")
        yield measured.curve_array, {"id": np.array(measured.ids, dtype=str)}


def _in_common(blocks: list[Any]) -> Any:
    """The record type of all blocks: their texts may be of several lengths."""
    def size(kind: Any) -> int:
        return int(kind.itemsize)

    fields = [(name, max((block[name] for block in blocks), key=size)) for name in blocks[0].names]
    return np.dtype(fields)


def _write(path: str, blocks: Iterable[dict[str, Any]]) -> int:
    """One record array of blocks of columns, in their order; the file is whole or not there. The count of its rows."""
    kinds, counts = [], []
    folder = os.path.dirname(path)
    handle, temporary = tempfile.mkstemp(dir=folder, prefix=".part-", suffix=".npy")
    try:
        with tempfile.TemporaryFile(dir=folder, prefix=".rows-") as spool, os.fdopen(handle, "wb") as file:
            for columns in blocks:
                rows = np.rec.fromarrays(list(columns.values()), names=list(columns))  # type: ignore[call-overload]
                kinds.append(np.dtype(rows.dtype.descr))
                counts.append(len(rows))
                spool.write(rows.tobytes())
            spool.seek(0)
            common = _in_common(kinds)
            descr = np.lib.format.dtype_to_descr(common)  # type: ignore[no-untyped-call]
            header = {"descr": descr, "fortran_order": False, "shape": (sum(counts),)}
            np.lib.format.write_array_header_1_0(file, header)  # type: ignore[no-untyped-call]
            for kind, count in zip(kinds, counts):
                block = np.frombuffer(spool.read(kind.itemsize * count), dtype=kind)
                file.write(block.astype(common).tobytes())
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise
    return sum(counts)


def _judge_part(source: str, target: str, standard: Floats | CurveArray, settings: dict[str, Any]) -> int:
    def judged_blocks() -> Iterator[dict[str, Any]]:
        for curves, columns in _blocks_of(source):
            judged = _judge(standard, curves, **settings)
            columns["overall"] = judged.overall
            for i, name in enumerate(judged.illuminants):
                columns[f"verdict_{name}"] = judged.verdicts[:, i]
                columns[f"dE_{name}"] = judged.differences[:, i, 6]
            yield columns

    return _write(target, judged_blocks())


def _color_part(source: str, target: str, illuminant: Lamp, observer: int) -> int:
    def color_blocks() -> Iterator[dict[str, Any]]:
        for curves, columns in _blocks_of(source):
            xyz = _core.tristimulus(curves, illuminant, observer)
            lab = _core.lab(xyz, illuminant, observer, polar=True)
            columns.update(zip("XYZ", xyz.T))
            columns.update(zip(("L", "a", "b", "C", "h"), lab.T))
            yield columns

    return _write(target, color_blocks())


def _nearest_part(source: str, target: str, standards: Floats | CurveArray, count: int, settings: dict[str, Any]) -> int:
    def nearest_blocks() -> Iterator[dict[str, Any]]:
        for curves, columns in _blocks_of(source):
            index, distance = _nearest(curves, standards, count, **settings)
            columns.update({f"index_{i + 1}": index[:, i] for i in range(index.shape[1])})
            columns.update({f"dE_{i + 1}": distance[:, i] for i in range(distance.shape[1])})
            yield columns

    return _write(target, nearest_blocks())


def _compute(task: Callable[..., int], sources: list[str], targets: list[str], arguments: dict[str, Any], client: Any,
             progress: Callable[[int, int], object] | None, retries: int) -> list[int]:
    """Runs `task` over every partition; the rows of each result."""
    from distributed import Client, as_completed

    own = client is None
    client = client or Client(processes=True)  # type: ignore[no-untyped-call]
    try:
        futures = client.map(task, sources, targets, retries=retries, pure=False, **arguments)
        for done, future in enumerate(as_completed(futures), 1):  # type: ignore[no-untyped-call]
            future.result()  # raises what the task raised
            if progress is not None:
                progress(done, len(futures))
        rows: list[int] = client.gather(futures)
        return rows
    finally:
        if own:
            client.close()


def _map(name: str, task: Callable[..., int], paths: Paths, output: str | os.PathLike[str], arguments: dict[str, Any],
         client: Any, progress: Callable[[int, int], object] | None, retries: int) -> list[str]:
    """Runs `task` over every partition and returns the written files in the partitions' order."""
    sources = [os.path.abspath(source) for source in partitions(paths)]
    names = [f"part-{i:06d}.npy" for i in range(len(sources))]
    with replaced(output) as folder:
        rows = _compute(task, sources, [str(folder / one) for one in names], arguments, client, progress, retries)
        parts = [{"source": source, "file": file, "rows": count} for source, file, count in zip(sources, names, rows)]
        write_manifest(folder, {"vrxmath": _core.__version__, "function": name, "partitions": parts})
    return [str(pathlib.Path(output).resolve() / one) for one in names]


def judge(paths: Paths, standard: Numbers, *, output: str | os.PathLike[str], client: Any = None,
          progress: Callable[[int, int], object] | None = None, retries: int = 3, **settings: Any) -> list[str]:
    """Judges the curves of every partition against one standard.

    Parameters
    ----------
    paths : str, os.PathLike or sequence of them
        The partitions, see :func:`partitions`.
    standard : array_like, shape (40,)
        The standard's curve in percent. A :class:`vrxmath.CurveArray` says its geometry, too, and samples of another are refused.
    output : str or os.PathLike
        Folder of the results, which takes the place of an earlier run's: ``part-000000.npy`` ..., a record a sample with
        ``id``, ``overall`` and, for each illuminant, ``verdict_...`` and ``dE_...``; and ``manifest.json``.
    client : distributed.Client, optional
        The cluster; a local one of its own when not given.
    progress : callable, optional
        Called with the numbers of finished and of all partitions.
    retries : int
        How often a task is run again when its worker dies.
    **settings
        As for :func:`vrxmath.judge`.

    Returns
    -------
    list of str
        The written files, in the order of the partitions.
    """
    if not isinstance(standard, CurveArray):
        standard = _core.curves(standard, name="standard")
    _judge(standard, standard, **settings)  # what cannot be used is refused here, and what is doubtful said, not by a worker
    return _map("judge", _judge_part, paths, output, {"standard": standard, "settings": settings}, client, progress, retries)


def color(paths: Paths, illuminant: Lamp = "D65", observer: int = 10, *, output: str | os.PathLike[str], client: Any = None,
          progress: Callable[[int, int], object] | None = None, retries: int = 3) -> list[str]:
    """X, Y, Z, L*, a*, b*, C*, h of the curves of every partition.

    Parameters and results as for :func:`judge`; the fields of a record are ``id X Y Z L a b C h``.
    """
    return _map("color", _color_part, paths, output, {"illuminant": illuminant, "observer": observer}, client, progress, retries)


def nearest(paths: Paths, standards: Numbers, count: int = 10, *, output: str | os.PathLike[str], client: Any = None,
            progress: Callable[[int, int], object] | None = None, retries: int = 3, **settings: Any) -> list[str]:
    """The nearest standards of the curves of every partition, see :func:`vrxmath.nearest`.

    Parameters and results as for :func:`judge`; the fields of a record are ``id``, ``index_1 ...`` and ``dE_1 ...``. Standards that
    are a :class:`vrxmath.CurveArray` say their geometries, too.
    """
    if not isinstance(standards, CurveArray):
        standards = _core.curves(standards, name="standards")
    arguments = {"standards": standards, "count": count, "settings": settings}
    return _map("nearest", _nearest_part, paths, output, arguments, client, progress, retries)
