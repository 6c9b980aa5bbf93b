"""Single DER elements, by the library's own readers and writers."""

from __future__ import annotations

from typing import Any

from ._native import BytesLike, check, chain, data_of, ffi, filled, lib, octets
from ._tables import Status
from .errors import Error

# An arc of more octets is no number that anybody registered.
_LONGEST_ARC = 20


def _record(der: bytes) -> tuple[Any, Any]:
    data = ffi.from_buffer("uint8_t[]", der)
    return ffi.new("Anybuf *", {"data": data, "length": len(der)}), data


def elements(sequence: bytes) -> list[bytes]:
    """The elements in a SEQUENCE, each as a whole."""
    source, data = _record(sequence)
    out = ffi.new("Anybuf **")
    check(lib.KAsn1_ReadSequence(source, out))
    first = ffi.gc(out[0], lib.KI_FreeAnybuf) if out[0] else None
    return [data_of(node) for node in chain(first, first)]


def opened(element: bytes) -> tuple[int, bytes]:
    """The tag and the content of an element."""
    source, data = _record(element)
    out, tag = ffi.new("Anybuf **"), ffi.new("uint32_t *")
    check(lib.KAsn1_ReadExplicit(source, out, tag))
    return tag[0], data_of(ffi.gc(out[0], lib.KI_FreeAnybuf))


def written(writer: Any, content: bytes) -> bytes:
    """The element that one of the library's writers makes around content octets."""
    source, data = _record(content)
    out = ffi.new("Anybuf **")
    check(writer(source, out))
    return data_of(ffi.gc(out[0], lib.KI_FreeAnybuf))


def oid_octets(dotted: str) -> bytes:
    """The content octets of an object identifier."""
    text = dotted.encode("ascii", "replace")
    result = filled(lib.KACert_GetOIDValue, text, len(text))
    if oid_text(result) != dotted:
        raise Error(
            Status.KACERT_AlgorithmNotSupportErr, f"{dotted!r} is no object identifier, or has an arc above 32 bits."
        )
    return result


def oid_text(content: bytes) -> str:
    """Dotted text of the content octets of an object identifier (X.690 8.19); empty for none."""
    arcs, arc, size = [], 0, 0
    for octet in content:
        arc, size = arc << 7 | octet & 0x7F, size + 1
        if size > _LONGEST_ARC:
            break
        if octet < 0x80:
            arcs.append(arc)
            arc, size = 0, 0
    if size > 0:
        raise Error(Status.KACERT_AlgorithmNotSupportErr, "An arc of an object identifier is cut off or too long.")
    if arcs:
        root = min(arcs[0] // 40, 2)
        arcs[:1] = [root, arcs[0] - 40 * root]
    return ".".join(map(str, arcs))


def number_octets(value: int) -> bytes:
    """A serial number or another INTEGER as a magnitude."""
    if value < 0:
        raise ValueError("the number must not be negative")
    return value.to_bytes(max(1, (value.bit_length() + 7) // 8), "big")


def number(magnitude: BytesLike) -> int:
    return int.from_bytes(octets(magnitude), "big")
