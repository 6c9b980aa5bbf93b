"""Text of the local encoding, code page 936, as str."""

from __future__ import annotations

from typing import Any

from ._native import BytesLike, lib, octets, with_room
from ._tables import Status
from .errors import Error

# What one conversion takes, in octets of code page 936.
_PIECE = 1024


def _converted(function: Any, source: bytes, room: int) -> bytes:
    result = with_room(room, function, source, len(source))
    if source and not result:
        # A result that would be too long is a status of 0 without a result.
        raise Error(Status.KACERT_InvalidLengthErr)
    return result


def _pieces(data: bytes) -> list[bytes]:
    """The text in pieces, none of which ends in the first octet of a pair."""
    pieces, start = [], 0
    while start < len(data):
        end = start
        while end < len(data) and end - start < _PIECE - 1:
            end += 2 if 0x80 < data[end] < 0xFF else 1
        pieces.append(data[start:end])
        start = end
    return pieces


def decode(data: BytesLike) -> str:
    """Code page 936 to str. A pair that is not in the code page becomes "?"."""
    pieces = _pieces(octets(data))
    return "".join(_converted(lib.KI_Chinese2BmpString, piece, 2 * _PIECE).decode("utf-16-be") for piece in pieces)


def encode(text: str) -> bytes:
    """str to code page 936, at most 1,024 octets; a longer text is KACERT_InvalidLengthErr.

    The library writes "?" for a character that the code page does not have. Here that is a ValueError, so that no name
    is changed without notice.
    """
    bmp = text.encode("utf-16-be", "surrogatepass")
    if len(bmp) > 2 * _PIECE:
        raise Error(Status.KACERT_InvalidLengthErr)
    result = _converted(lib.KI_BmpString2Chinese, bmp, _PIECE)
    if result.count(b"?") != text.count("?"):
        raise ValueError(f"code page 936 does not have every character of {text!r}")
    return result
