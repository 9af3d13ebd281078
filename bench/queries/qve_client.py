"""A session with qveserver through the C functions of libqveclient, for benchmarks: launches a private server."""
import ctypes
import datetime
import os
import struct

NULL = 0x100


class Value(ctypes.Structure):
    _fields_ = [("type", ctypes.c_uint32), ("size", ctypes.c_uint32), ("data", ctypes.c_void_p)]


class Options(ctypes.Structure):
    _fields_ = [(name, ctypes.c_char_p) for name in ("path", "listen", "log", "config", "temp_directory")]
    _fields_.append(("desktop", ctypes.c_int))


class Error(Exception):
    def __init__(self, status, text):
        super().__init__("%d: %s" % (status, text))


SCALARS = {1: "b", 2: "B", 3: "h", 4: "H", 5: "i", 6: "I", 7: "q", 8: "Q", 9: "f", 10: "d"}


def decode(value):
    """The Python value of a wire value; dates are ISO texts."""
    if value.type & NULL:
        return None
    kind = value.type & 0xFF
    data = ctypes.string_at(value.data, value.size) if value.size else b""
    if kind in SCALARS:
        return struct.unpack("<" + SCALARS[kind], data)[0]
    if kind == 11:
        return bool(data[0])
    if kind == 12:
        return "%04d-%02d-%02d" % struct.unpack("<iBB", data[:6])
    if kind == 13:
        year, month, day, hour, minute, second = struct.unpack("<iBBBBB", data[:9])
        return datetime.datetime(year, month, day, hour, minute, second).isoformat(" ")
    if kind == 15:
        return data.decode("utf-8")
    if kind == 16:
        return data.decode("utf-16-le")
    return data


class Engine:
    """A private server and one session on it; ends with close()."""

    def __init__(self, build, config=None, log="/dev/null"):
        self.lib = ctypes.CDLL(os.path.join(build, "lib", "libqveclient.so"))
        self.process = ctypes.c_void_p()
        self.connection = ctypes.c_void_p()
        self._call("ServerProcessOpen", ctypes.byref(self.process))
        options = Options(os.path.join(build, "bin", "qveserver").encode(), None, log.encode(),
                          config.encode() if config else None, None, 0)
        self._call("ServerProcessStart", self.process, ctypes.byref(options))
        descriptor = ctypes.c_char_p()
        self._call("ServerProcessGetConnectionDescriptor", self.process, ctypes.byref(descriptor))
        self._call("ConnectionOpen", ctypes.byref(self.connection))
        self._call("ConnectionConnect", self.connection, descriptor)
        number = ctypes.c_int()
        self._call("ServerProcessGetProcessId", self.process, ctypes.byref(number))
        self.pid = number.value

    def close(self):
        self.lib.QVE_ConnectionDisconnect(self.connection)
        self.lib.QVE_ServerProcessClose(self.process)

    def _call(self, name, *args):
        status = getattr(self.lib, "QVE_" + name)(*args)
        if status:
            raise Error(status, self._error_text())

    def _error_text(self):
        info, count, status, text = ctypes.c_void_p(), ctypes.c_uint32(), ctypes.c_int32(), ctypes.c_char_p()
        if not self.connection or self.lib.QVE_GetErrorInfo(self.connection, ctypes.byref(info)):
            return "no connection"
        self.lib.QVE_ErrorInfoGetCount(info, ctypes.byref(count))
        texts = []
        for i in range(count.value):
            self.lib.QVE_ErrorInfoGetError(info, i, ctypes.byref(status), ctypes.byref(text))
            texts.append(text.value.decode())
        self.lib.QVE_ErrorInfoClose(info)
        return "; ".join(texts)

    def run(self, statement, rows=True):
        """The rows of a statement, or, without `rows`, the number of its values, fetched but not decoded."""
        rowset = ctypes.c_void_p()
        self._call("QueryExecute", self.connection, statement.encode(), ctypes.byref(rowset))
        if not rowset:
            return []
        columns = ctypes.c_uint32()
        self._call("RowsetGetColumnCount", rowset, ctypes.byref(columns))
        width = max(1, columns.value)
        values = (Value * (width * 4096))()
        count = ctypes.c_size_t()
        result, total = [], 0
        while True:
            self._call("RowsetGetValues", rowset, len(values), values, ctypes.byref(count))
            if not count.value:
                break
            total += count.value
            if rows:
                cells = [decode(values[i]) for i in range(count.value)]
                result += [cells[i:i + width] for i in range(0, len(cells), width)]
        self._call("RowsetClose", rowset)
        return result if rows else total
