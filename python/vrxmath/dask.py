"""Judgement, colour values and search over many files, by the processes of a Dask cluster.

A partition is a file: CSV, CGATS, CxF or JSON that :func:`vrxmath.read` knows, or a numpy array of curves (``.npy``). Each is
computed by one task, which writes its result beside a temporary name and renames it, so that a worker that dies leaves
nothing half-written and the scheduler can run its task again. Nothing depends on which worker computes what: the
results have the same bytes as those of a single process.
"""

from __future__ import annotations

import glob
import os
import pathlib
import tempfile
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._judgement import judge as _judge
from ._reading import read as _read

if TYPE_CHECKING:
    from collections.abc import Callable, Sequence
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


def _curves_of(path: str) -> Any:
    if path.endswith(".npy"):
        return np.load(path, mmap_mode="r", allow_pickle=False)
    return _read(path).curves


def _write(path: str, columns: dict[str, Any]) -> str:
    """One record array, in the order of the columns; the file is whole or not there."""
    rows = np.rec.fromarrays(list(columns.values()), names=list(columns))  # type: ignore[call-overload]
    handle, temporary = tempfile.mkstemp(dir=os.path.dirname(path), prefix=".part-", suffix=".npy")
    try:
        with os.fdopen(handle, "wb") as file:
            np.save(file, rows.view(np.ndarray), allow_pickle=False)
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise
    return path


def _judge_part(source: str, target: str, standard: Floats, settings: dict[str, Any]) -> str:
    judged = _judge(standard, _curves_of(source), **settings)
    columns = {"overall": judged.overall}
    for i, name in enumerate(judged.illuminants):
        columns[f"verdict_{name}"] = judged.verdicts[:, i]
        columns[f"dE_{name}"] = judged.differences[:, i, 6]
    return _write(target, columns)


def _color_part(source: str, target: str, illuminant: Lamp, observer: int) -> str:
    xyz = _core.tristimulus(_curves_of(source), illuminant, observer)
    lab = _core.lab(xyz, illuminant, observer, polar=True)
    columns = dict(zip("XYZ", xyz.T))
    columns.update(zip(("L", "a", "b", "C", "h"), lab.T))
    return _write(target, columns)


def _nearest_part(source: str, target: str, standards: Floats, count: int, settings: dict[str, Any]) -> str:
    index, distance = _core.nearest(_curves_of(source), standards, count, **settings)
    columns: dict[str, Any] = {f"index_{i + 1}": index[:, i] for i in range(index.shape[1])}
    columns.update({f"dE_{i + 1}": distance[:, i] for i in range(distance.shape[1])})
    return _write(target, columns)


def _map(task: Callable[..., str], paths: Paths, output: str | os.PathLike[str], arguments: dict[str, Any], client: Any,
         progress: Callable[[int, int], object] | None, retries: int) -> list[str]:
    """Runs `task` over every partition and returns the written files in the partitions' order."""
    from distributed import Client, as_completed

    sources = partitions(paths)
    folder = pathlib.Path(output).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    targets = [str(folder / f"part-{i:06d}.npy") for i in range(len(sources))]
    own = client is None
    client = client or Client(processes=True)  # type: ignore[no-untyped-call]
    try:
        futures = client.map(task, [os.path.abspath(source) for source in sources], targets, retries=retries, pure=False,
                             **{name: value for name, value in arguments.items()})
        for done, future in enumerate(as_completed(futures), 1):  # type: ignore[no-untyped-call]
            future.result()  # raises what the task raised
            if progress is not None:
                progress(done, len(futures))
    finally:
        if own:
            client.close()
    return targets


def judge(paths: Paths, standard: Numbers, *, output: str | os.PathLike[str], client: Any = None,
          progress: Callable[[int, int], object] | None = None, retries: int = 3, **settings: Any) -> list[str]:
    """Judges the curves of every partition against one standard.

    Parameters
    ----------
    paths : str, os.PathLike or sequence of them
        The partitions, see :func:`partitions`.
    standard : array_like, shape (40,)
        The standard's curve in percent.
    output : str or os.PathLike
        Folder of the results, made when it is missing: ``part-000000.npy`` ..., a record a sample with ``overall`` and,
        for each illuminant, ``verdict_...`` and ``dE_...``.
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
    arguments = {"standard": np.asarray(standard, dtype=float), "settings": settings}
    return _map(_judge_part, paths, output, arguments, client, progress, retries)


def color(paths: Paths, illuminant: Lamp = "D65", observer: int = 10, *, output: str | os.PathLike[str], client: Any = None,
          progress: Callable[[int, int], object] | None = None, retries: int = 3) -> list[str]:
    """X, Y, Z, L*, a*, b*, C*, h of the curves of every partition.

    Parameters and results as for :func:`judge`; the fields of a record are ``X Y Z L a b C h``.
    """
    return _map(_color_part, paths, output, {"illuminant": illuminant, "observer": observer}, client, progress, retries)


def nearest(paths: Paths, standards: Numbers, count: int = 10, *, output: str | os.PathLike[str], client: Any = None,
            progress: Callable[[int, int], object] | None = None, retries: int = 3, **settings: Any) -> list[str]:
    """The nearest standards of the curves of every partition, see :func:`vrxmath.nearest`.

    Parameters and results as for :func:`judge`; the fields of a record are ``index_1 ...`` and ``dE_1 ...``.
    """
    arguments = {"standards": np.asarray(standards, dtype=float), "count": count, "settings": settings}
    return _map(_nearest_part, paths, output, arguments, client, progress, retries)
