"""The part of CBOR (RFC 8949) that the wire protocol uses, in the standard library alone.

encode() writes None, bool, int, float, str, bytes, list, tuple and dict in their shortest form.
decode() reads any well-formed item of these types and refuses bytes after it.
"""

import struct


class Malformed(ValueError):
    """The bytes are not one well-formed item."""


def _head(major, value):
    if value < 24:
        return bytes([major << 5 | value])
    for info, size in ((24, 1), (25, 2), (26, 4), (27, 8)):
        if value < 1 << 8 * size:
            return bytes([major << 5 | info]) + value.to_bytes(size, "big")
    raise ValueError(f"{value} needs more than 64 bits")


def encode(item):
    if item is None:
        return b"\xf6"
    if isinstance(item, bool):
        return b"\xf5" if item else b"\xf4"
    if isinstance(item, int):
        return _head(0, item) if item >= 0 else _head(1, -1 - item)
    if isinstance(item, float):
        return b"\xfb" + struct.pack(">d", item)
    if isinstance(item, str):
        text = item.encode()
        return _head(3, len(text)) + text
    if isinstance(item, bytes):
        return _head(2, len(item)) + item
    if isinstance(item, (list, tuple)):
        return _head(4, len(item)) + b"".join(map(encode, item))
    if isinstance(item, dict):
        return _head(5, len(item)) + b"".join(encode(k) + encode(v) for k, v in item.items())
    raise TypeError(f"no way to write {type(item).__name__}")


_BREAK = object()


class _Reader:
    def __init__(self, data):
        self._data = data
        self._at = 0

    def take(self, size):
        if size > len(self._data) - self._at:
            raise Malformed(f"{size} bytes promised at {self._at}, fewer there")
        self._at += size
        return self._data[self._at - size : self._at]

    def at_end(self):
        return self._at == len(self._data)

    def item(self, break_allowed=False):
        start = self._at
        first = self.take(1)[0]
        major, info = first >> 5, first & 31
        if first == 0xFF and break_allowed:
            return _BREAK
        if major == 7:
            return self._simple(start, info)
        if info < 24:
            value = info
        elif info < 28:
            value = int.from_bytes(self.take(1 << (info - 24)), "big")
        elif info == 31 and major in (2, 3, 4, 5):
            value = None
        else:
            raise Malformed(f"reserved head {first:#x} at {start}")
        return (self._positive, self._negative, self._bytes, self._text,
                self._array, self._map, self._tagged)[major](value)

    def _simple(self, start, info):
        simple = {20: False, 21: True, 22: None, 23: None}
        if info in simple:
            return simple[info]
        formats = {25: (2, ">e"), 26: (4, ">f"), 27: (8, ">d")}
        if info not in formats:
            raise Malformed(f"unknown simple value {info} at {start}")
        size, layout = formats[info]
        return struct.unpack(layout, self.take(size))[0]

    def _positive(self, value):
        return value

    def _negative(self, value):
        return -1 - value

    def _chunks(self, value, kind):
        if value is not None:
            return bytes(self.take(value))
        chunks = []
        while (chunk := self.item(break_allowed=True)) is not _BREAK:
            if not isinstance(chunk, kind):
                raise Malformed("a chunk of another type inside a string")
            chunks.append(chunk if kind is bytes else chunk.encode())
        return b"".join(chunks)

    def _bytes(self, value):
        return self._chunks(value, bytes)

    def _text(self, value):
        try:
            return self._chunks(value, str).decode()
        except UnicodeDecodeError as error:
            raise Malformed("text is not UTF-8") from error

    def _array(self, value):
        if value is not None:
            return [self.item() for _ in range(value)]
        items = []
        while (item := self.item(break_allowed=True)) is not _BREAK:
            items.append(item)
        return items

    def _map(self, value):
        pairs = {}
        while value is None or value > 0:
            key = self.item(break_allowed=value is None)
            if key is _BREAK:
                break
            if key in pairs:
                raise Malformed(f"key {key!r} twice")
            pairs[key] = self.item()
            value = None if value is None else value - 1
        return pairs

    def _tagged(self, _):
        return self.item()


def decode(data):
    reader = _Reader(data)
    item = reader.item()
    if not reader.at_end():
        raise Malformed("bytes after the item")
    return item
