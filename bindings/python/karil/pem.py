"""PEM text (RFC 7468)."""

from __future__ import annotations

from typing import Iterator, Union

from ._native import BytesLike, check, ffi, lib, octets, with_room
from ._tables import Status
from .errors import Error

PemText = Union[str, BytesLike]


def blocks(text: PemText, *labels: str) -> Iterator[bytes]:
    """The octets of the blocks with one of these labels, such as "CERTIFICATE"; others are skipped."""
    data = text.encode("utf-8") if isinstance(text, str) else octets(text)
    start = data.find(b"-----BEGIN ")
    while start >= 0:
        end = data.find(b"-----END ", start)
        label_end = data.find(b"-----", start + 11)
        if not 0 <= label_end < end:
            return
        if data[start + 11 : label_end].decode("ascii", "replace") in labels:
            yield _read(data[start : end + 9])
        start = data.find(b"-----BEGIN ", end)


def _read(block: bytes) -> bytes:
    try:
        return with_room(len(block), lib.PEM2DER_data_format, block, len(block))
    except Error as failure:
        raise Error(Status.KACERT_InvalidParamErr, "The PEM text cannot be read.") from failure


def first(text: PemText, *labels: str) -> bytes:
    """The octets of the first such block."""
    for block in blocks(text, *labels):
        return block
    raise Error(Status.KACERT_InvalidParamErr, f"There is no PEM block with the label {' or '.join(labels)}.")


def write(der: BytesLike, label: str) -> str:
    """One block, with "\\n" at the ends of its lines."""
    data = octets(der)
    header, footer = f"-----BEGIN {label}-----".encode(), f"-----END {label}-----".encode()
    room = len(header) + len(footer) + 4 + (len(data) + 2) // 3 * 4 + (len(data) + 47) // 48 * 2
    result = ffi.new("uint8_t[]", room)
    length = ffi.new("uint32_t *")
    check(lib.DER2PEM_data_format(data, len(data), result, length, header, footer))
    return bytes(ffi.buffer(result, length[0])).decode("ascii").replace("\r\n", "\n")
