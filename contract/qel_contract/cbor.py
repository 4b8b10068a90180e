"""The part of CBOR (RFC 8949) that the wire protocol uses.

encode() writes None, bool, int, str, bytes, list, tuple and dict in their shortest form. decode()
reads one item of these types in definite lengths and without tags, and refuses bytes after it.
"""


class Malformed(ValueError):
    """The bytes are not one item that the protocol allows."""


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


class _Reader:
    def __init__(self, data):
        self._data = data
        self._at = 0

    def _take(self, size):
        if size > len(self._data) - self._at:
            raise Malformed(f"{size} bytes promised at {self._at}, fewer there")
        self._at += size
        return self._data[self._at - size : self._at]

    def at_end(self):
        return self._at == len(self._data)

    def item(self):
        start = self._at
        first = self._take(1)[0]
        major, info = first >> 5, first & 31
        if major == 7:
            simple = {20: False, 21: True, 22: None}
            if info not in simple:
                raise Malformed(f"{first:#x} at {start} is no item of the protocol")
            return simple[info]
        if info > 27 or major == 6:
            raise Malformed(f"{first:#x} at {start}: an indefinite length or a tag")
        value = info if info < 24 else int.from_bytes(self._take(1 << (info - 24)), "big")
        return (self._positive, self._negative, self._bytes, self._text, self._array, self._map)[
            major](value)

    def _positive(self, value):
        return value

    def _negative(self, value):
        return -1 - value

    def _bytes(self, size):
        return bytes(self._take(size))

    def _text(self, size):
        try:
            return self._bytes(size).decode()
        except UnicodeDecodeError as error:
            raise Malformed("text is not UTF-8") from error

    def _array(self, size):
        return [self.item() for _ in range(size)]

    def _map(self, size):
        pairs = {}
        for _ in range(size):
            key = self.item()
            if not isinstance(key, str):
                raise Malformed(f"key {key!r} is no text")
            if key in pairs:
                raise Malformed(f"key {key!r} twice")
            pairs[key] = self.item()
        return pairs


def decode(data):
    reader = _Reader(data)
    item = reader.item()
    if not reader.at_end():
        raise Malformed("bytes after the item")
    return item
