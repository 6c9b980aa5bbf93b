"""What certificates, lists, requests and messages have in common."""

from __future__ import annotations

from datetime import datetime, timezone
from typing import Any, ClassVar, NamedTuple, Type, TypeVar

from . import pem
from ._der import elements, oid_octets, oid_text, opened
from ._hooks import HookFunction, Operation
from ._native import BytesLike, chain, check, data_of, decoded, lib, put
from ._tables import Status
from .errors import Error
from .keys import RsaPublicKey

T = TypeVar("T", bound="Decoded")


class Decoded:
    """An object that was decoded. It does not change, so that threads can share it."""

    _functions: ClassVar[tuple[Any, Any, Any]]
    _labels: ClassVar[tuple[str, ...]]

    def __init__(self, der: BytesLike) -> None:
        self._ctx, self._der = decoded(*self._functions, der)

    @classmethod
    def from_der(cls: Type[T], der: BytesLike) -> T:
        """Decodes the first element of `der`. Only the structure is looked at: no signature is checked."""
        return cls(der)

    @classmethod
    def from_pem(cls: Type[T], text: pem.PemText) -> T:
        """Decodes the first PEM block with the right label."""
        return cls(pem.first(text, *cls._labels))

    @classmethod
    def all_from_pem(cls: Type[T], text: pem.PemText) -> list[T]:
        """Decodes all PEM blocks with the right label."""
        return [cls(der) for der in pem.blocks(text, *cls._labels)]

    def to_pem(self) -> str:
        return pem.write(self.der, self._labels[0])

    @property
    def der(self) -> bytes:
        """The octets that were decoded."""
        return self._der

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Decoded) or type(other) is not type(self):
            return NotImplemented
        return self.der == other.der

    def __hash__(self) -> int:
        return hash(self.der)


class Signed(Decoded):
    """A certificate, a list or a request: a part that is signed, an algorithm and a signature."""

    @property
    def tbs(self) -> bytes:
        """The part that is signed."""
        return data_of(self._ctx.tbs)

    @property
    def version(self) -> int:
        """As on the wire: one less than in its name, so that 2 is v3."""
        return int(self._ctx.version)

    @property
    def signature_algorithm(self) -> str:
        """The algorithm beside the signature, as dotted text."""
        return oid_text(data_of(self._ctx.outerSignatureAlgorithm.oid))

    @property
    def signature(self) -> bytes:
        return data_of(self._ctx.signature)

    def verify_signature(self, key: RsaPublicKey) -> None:
        """Verifies the signature alone; a bad one is KACERT_VerifySignatureErr.

        SHA-256 and its larger relatives are known here, and the whole DigestInfo is compared. No name and no date is
        looked at.
        """
        key.verify(self.signature, self.tbs, self.signature_algorithm)


class KeyHolder(Signed):
    """A certificate or a request."""

    @property
    def public_key_algorithm(self) -> str:
        element = data_of(self._ctx.publicKeyAlgorithm.oid)
        return oid_text(opened(element)[1]) if element else ""

    @property
    def public_key(self) -> bytes:
        """The content of the key's BIT STRING: of an RSA key an RSAPublicKey, of an EC key the point."""
        return data_of(self._ctx.publicKey)

    @property
    def rsa_key(self) -> RsaPublicKey:
        """The key, if it is an RSA key of at most 2,048 bits."""
        return RsaPublicKey.from_der(self.public_key)


class Extension(NamedTuple):
    """One extension. `value`: the DER in its OCTET STRING."""

    oid: str
    critical: bool
    value: bytes


def tagged_extensions(tbs: bytes, tag: int) -> tuple[Extension, ...]:
    """The extensions of a part that is signed, which stand last in it under their tag."""
    fields = elements(tbs) if tbs else []
    return read_extensions(opened(fields[-1])[1]) if fields and fields[-1][0] == tag else ()


def read_extensions(sequence: bytes) -> tuple[Extension, ...]:
    found = []
    for element in elements(sequence):
        parts = elements(element)
        if len(parts) < 2:
            raise Error(Status.KACERT_CertNotEndErr)
        critical = len(parts) > 2 and opened(parts[1])[1] not in (b"", b"\0")
        found.append(Extension(oid_text(opened(parts[0])[1]), critical, opened(parts[-1])[1]))
    return tuple(found)


class Attribute(NamedTuple):
    """An attribute of a request, a signer or a bag. `value`: the first value, as a whole element."""

    oid: str
    value: bytes


def read_attributes(owner: Any, first: Any) -> tuple[Attribute, ...]:
    """The attributes in a list, which lives in the context `owner`."""
    return tuple(Attribute(oid_text(data_of(node.oid)), data_of(node.value)) for node in chain(owner, first))


def moment(seconds: int) -> datetime:
    """A time in the local zone: the digits on the wire are local time."""
    return datetime.fromtimestamp(seconds, timezone.utc).astimezone()


def seconds_of(time: datetime) -> int:
    """Seconds since 1970 of an aware datetime."""
    if time.tzinfo is None:
        raise ValueError("the time has no zone; give an aware datetime, such as datetime.now(timezone.utc)")
    seconds = int(time.timestamp())
    if not 0 <= seconds <= 0x7FFFFFFF:
        raise Error(Status.KACERT_InvalidTimeErr, "The time is outside 1970 to 2038.")
    return seconds


class Builder:
    """A context that is filled and then signed once."""

    def __init__(self, ctx: Any, encode: Any, put_char: Any, *algorithms: str) -> None:
        self._ctx = ctx
        self._encode = encode
        self._put_char = put_char
        self._algorithms = algorithms
        self._signed = False

    def _put(self, name: str, value: BytesLike) -> None:
        """Sets the attribute of this name."""
        put(self._put_char, self._ctx, getattr(lib, name), value)

    def _sign(self, store: Any, sign: HookFunction, algorithm: str) -> bytes:
        """Signs once. After a failure a later call starts again."""
        if self._signed:
            raise ValueError("this was signed before: a builder makes one object")
        for name in self._algorithms:
            self._put(name, oid_octets(algorithm))
        operation = Operation()
        check(store(self._ctx, *operation.hook(sign)))
        encoded = operation.filled(self._encode, self._ctx)
        self._signed = True
        return encoded
