"""DuckDB by its C interface, as far as it speaks Arrow: a program that was not written here on the other side of the columns.

Its library comes with the npm package @duckdb/node-bindings-linux-x64; there is no module of it for Python in Debian.
"""

import ctypes
from ctypes import POINTER, byref, c_char_p, c_void_p


class ArrowSchema(ctypes.Structure):
    _fields_ = [("format", c_char_p), ("name", c_char_p), ("metadata", c_void_p), ("flags", ctypes.c_int64),
                ("n_children", ctypes.c_int64), ("children", c_void_p), ("dictionary", c_void_p), ("release", c_void_p),
                ("private_data", c_void_p)]


class ArrowArray(ctypes.Structure):
    _fields_ = [("length", ctypes.c_int64), ("null_count", ctypes.c_int64), ("offset", ctypes.c_int64),
                ("n_buffers", ctypes.c_int64), ("n_children", ctypes.c_int64), ("buffers", c_void_p), ("children", c_void_p),
                ("dictionary", c_void_p), ("release", c_void_p), ("private_data", c_void_p)]


_new_capsule = ctypes.pythonapi.PyCapsule_New
_new_capsule.restype, _new_capsule.argtypes = ctypes.py_object, [c_void_p, c_char_p, c_void_p]
_pointer_of = ctypes.pythonapi.PyCapsule_GetPointer
_pointer_of.restype, _pointer_of.argtypes = c_void_p, [ctypes.py_object, c_char_p]


class Batch:
    """A chunk of a result: hands its columns over once, or any number of times by copies that nobody releases."""

    def __init__(self, schema, array):
        self.schema, self.array = schema, array

    def __arrow_c_array__(self, requested_schema=None):
        return (_new_capsule(ctypes.addressof(self.schema), b"arrow_schema", None),
                _new_capsule(ctypes.addressof(self.array), b"arrow_array", None))


class Connection:
    def __init__(self, library):
        self.duck = ctypes.CDLL(library)
        self.database, self.connection = c_void_p(), c_void_p()
        assert self.duck.duckdb_open(None, byref(self.database)) == 0
        assert self.duck.duckdb_connect(self.database, byref(self.connection)) == 0
        self.duck.duckdb_query_arrow_error.restype = c_char_p

    def register(self, name, columns):
        """Makes a table of that name from columns of Arrow, which are read where they lie."""
        capsules = columns.__arrow_c_array__()
        stream = c_void_p()
        status = self.duck.duckdb_arrow_array_scan(
            self.connection, f"{name} handed over".encode(), c_void_p(_pointer_of(capsules[0], b"arrow_schema")),
            c_void_p(_pointer_of(capsules[1], b"arrow_array")), byref(stream))
        assert status == 0
        self.query(f'CREATE TABLE {name} AS SELECT * FROM "{name} handed over"')
        self.duck.duckdb_destroy_arrow_stream(byref(stream))

    def query(self, sql):
        """The chunks of a result."""
        result = c_void_p()
        status = self.duck.duckdb_query_arrow(self.connection, sql.encode(), byref(result))
        assert status == 0, self.duck.duckdb_query_arrow_error(result)
        chunks = []
        while True:
            schema, array = ArrowSchema(), ArrowArray()
            at_schema, at_array = POINTER(ArrowSchema)(schema), POINTER(ArrowArray)(array)
            assert self.duck.duckdb_query_arrow_schema(result, byref(at_schema)) == 0
            assert self.duck.duckdb_query_arrow_array(result, byref(at_array)) == 0
            if not array.release:
                return chunks
            chunks.append(Batch(schema, array))
