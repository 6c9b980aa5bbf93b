"""Distinguished names."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any, Iterator, NamedTuple, Sequence, Union

from . import text as local_text
from ._der import oid_text
from ._native import chain, check, data_of, ffi, lib, put

# The attributes that can be set: the key in texts, the object identifier, the word in the C interface's ids.
_SETTABLE = {
    "C": ("2.5.4.6", "COUNTRYNAME"),
    "O": ("2.5.4.10", "ORGANIZATIONNAME"),
    "OU": ("2.5.4.11", "ORGANIZATIONALUNITNAME"),
    "CN": ("2.5.4.3", "COMMONNAME"),
    "E": ("1.2.840.113549.1.9.1", "EMAIL"),
    "S": ("2.5.4.8", "STATEORPROVINCENAME"),
    "L": ("2.5.4.7", "LOCALITYNAME"),
    "PA": ("2.5.4.16", "POSTALADDRESS"),
    "PC": ("2.5.4.17", "POSTALCODE"),
    "Phone": ("2.5.4.20", "TELEPHONE"),
}
_KEYS = {oid: key for key, (oid, _) in _SETTABLE.items()}


class NameAttribute(NamedTuple):
    """One attribute of a name. `key`: C, O, OU, CN, E, S, L, PA, PC, Phone, or the object identifier of any other."""

    key: str
    value: str


@dataclass(frozen=True)
class Name:
    """A distinguished name: its attributes in the order of the wire.

    `text`: the library's text in one line, such as "C=CN,O=Example,CN=Name": the ten attributes with a key in a fixed
    order, of an attribute that occurs twice the last one, of units all; empty above 1,023 octets. `der`: the element
    of a certificate's or a request's name, otherwise empty. Names are equal if their attributes are.
    """

    attributes: tuple[NameAttribute, ...]
    text: str = field(default="", compare=False)
    der: bytes = field(default=b"", compare=False, repr=False)

    def __str__(self) -> str:
        return self.text

    def __iter__(self) -> Iterator[NameAttribute]:
        return iter(self.attributes)

    def __len__(self) -> int:
        return len(self.attributes)

    def values(self, key: str) -> list[str]:
        """The values of a key, in order."""
        return [attribute.value for attribute in self.attributes if attribute.key == key]


NameLike = Union[Name, Sequence[tuple[str, str]]]


def read_name(owner: Any, head: Any, der: bytes = b"") -> Name:
    """The name in a list of records, which lives in the context `owner`."""
    attributes = []
    for record in chain(owner, head.next):
        oid = oid_text(data_of(record.oid))
        attributes.append(NameAttribute(_KEYS.get(oid, oid), local_text.decode(data_of(record.value))))
    line = ffi.new("Anybuf *")
    words = ""
    if lib.KI_GetDN(line, ffi.addressof(head)) == 0:
        words = local_text.decode(data_of(line))
        lib.KI_ClearAnybuf(line)
    return Name(tuple(attributes), words, der)


def parse_name(der: bytes) -> Name:
    """The name in an element."""
    head = ffi.gc(ffi.new("NameRecord *"), lambda record: lib.KI_FreeName(record.next))
    data = ffi.from_buffer("uint8_t[]", der)
    check(lib.KI_DecodeIssuerSubject(ffi.new("Anybuf *", {"data": data, "length": len(der)}), head))
    return read_name(head, head[0], der)


def set_name(function: Any, ctx: Any, prefix: str, name: NameLike) -> None:
    """Sets the attributes of a name one by one: `prefix` begins the ids, such as CERT_SUBJECT_."""
    for key, value in name:
        if key not in _SETTABLE:
            raise ValueError(f"{key!r} is no attribute that can be set; these are: {', '.join(_SETTABLE)}")
        put(function, ctx, getattr(lib, prefix + _SETTABLE[key][1]), local_text.encode(value))
