"""The shared library, and how it is called."""

from __future__ import annotations

import os
from typing import Any, Iterator, Union

from . import _cdef
from ._tables import Status
from .errors import Error

BytesLike = Union[bytes, bytearray, memoryview]

# The C interface takes lengths of 31 bits in most places.
_LONGEST = 0x7FFFFFFF


ffi: Any = _cdef.ffi


def _open() -> Any:
    name = os.environ.get("KARIL_LIBRARY", "libkaril.so.1")
    try:
        return ffi.dlopen(name)
    except OSError as failure:
        raise ImportError(
            f"karil's shared library cannot be loaded: {failure}. Install it, or set KARIL_LIBRARY to its file."
        ) from failure


lib: Any = _open()


def check(status: int) -> None:
    if status != 0:
        raise Error(status)


def octets(data: BytesLike) -> bytes:
    """The octets as an object that nobody can change during a call."""
    result = data if isinstance(data, bytes) else bytes(memoryview(data))
    if len(result) > _LONGEST:
        raise Error(Status.KACERT_InvalidLengthErr)
    return result


def context(create: Any, destroy: Any) -> Any:
    """A new context, which is destroyed with the last reference to it. Pointers into it do not keep it alive."""
    out = ffi.new(ffi.typeof(create).args[0])
    check(create(out))
    return ffi.gc(out[0], destroy)


def decoded(create: Any, destroy: Any, decode: Any, data: BytesLike) -> tuple[Any, bytes]:
    """A context that has decoded the first element of `data`, and the element. It is never changed, so that threads
    can share it."""
    der = octets(data)
    if not der:
        # A length of 0 would tell the decoder to trust a header that is not there.
        raise Error(Status.KACERT_LengthNotEqualErr)
    ctx = context(create, destroy)
    check(decode(ctx, der, len(der)))
    size = ffi.new("uint32_t *")
    check(lib.KAsn1_GetCertLength(der, size))
    return ctx, der[: size[0]]


def put(function: Any, *arguments: Any) -> None:
    """Calls a function that ends in (const uint8_t *value, int32_t length)."""
    *others, value = arguments
    data = octets(value)
    check(function(*others, data, len(data)))


def put_all(function: Any, ctx: Any, prefix: str, **values: BytesLike) -> None:
    """Sets attributes, whose ids are the names behind the prefix."""
    for name, value in values.items():
        put(function, ctx, getattr(lib, prefix + name), value)


def hand_over(function: Any, owner: Any, part: Any) -> None:
    """Calls a function that makes one context the owner of another."""
    check(function(owner, part))
    ffi.gc(part, None)


def _run(function: Any, *arguments: Any) -> None:
    check(function(*arguments))


def measured(function: Any, *arguments: Any, run: Any = _run) -> int:
    """Calls a function that ends in (uint8_t *result, uint32_t *resultLength) for the length alone."""
    length = ffi.new("uint32_t *")
    run(function, *arguments, ffi.NULL, length)
    return int(length[0])


def with_room(room: int, function: Any, *arguments: Any, run: Any = _run) -> bytes:
    """Calls such a function for the octets, with a buffer that is large enough."""
    result = ffi.new("uint8_t[]", room)
    length = ffi.new("uint32_t *")
    run(function, *arguments, result, length)
    return bytes(ffi.buffer(result, length[0]))


def filled(function: Any, *arguments: Any) -> bytes:
    """Calls such a function for the length, and then for the octets."""
    return with_room(measured(function, *arguments), function, *arguments)


def data_of(record: Any) -> bytes:
    """A copy of the octets of an Anybuf."""
    return bytes(ffi.buffer(record.data, record.length)) if record.data else b""


def chain(owner: Any, node: Any) -> Iterator[Any]:
    """The nodes of a list. The generator holds `owner`, the context that they live in."""
    while node:
        yield node
        node = node.next
