"""RSA keys of at most 2,048 bits, and what the library does with them."""

from __future__ import annotations

import hashlib
from typing import Any, ClassVar, Type, TypeVar

from . import oids
from ._der import number, oid_octets
from ._native import BytesLike, check, ffi, filled, lib, octets, put, with_room
from ._tables import Status
from .errors import Error

K = TypeVar("K", bound="_RsaKey")

# Digests by the object identifiers of digests and of signatures with them.
_DIGESTS = {
    "md5": (oids.MD5, oids.MD5_WITH_RSA),
    "sha1": (oids.SHA1, oids.SHA1_WITH_RSA),
    "sha256": (oids.SHA256, oids.SHA256_WITH_RSA),
    "sha384": (oids.SHA384, oids.SHA384_WITH_RSA),
    "sha512": (oids.SHA512, oids.SHA512_WITH_RSA),
}
_NAMES = {oid: name for name, both in _DIGESTS.items() for oid in both}

# No modulus has more octets.
_BLOCK = 256


def digest_name(oid: str) -> str:
    """The name that hashlib knows for the algorithm of a digest, or of a signature with it."""
    if oid not in _NAMES:
        raise Error(Status.KACERT_AlgorithmNotSupportErr, f"{oid} names no digest that is known here.")
    return _NAMES[oid]


def digest_oid(name: str) -> str:
    """The object identifier of a digest, by the name that hashlib knows."""
    if name not in _DIGESTS:
        raise ValueError(f"{name!r} is none of {', '.join(_DIGESTS)}")
    return _DIGESTS[name][0]


def digest_info(data: BytesLike, digest: str) -> bytes:
    """The DigestInfo (RFC 8017 9.2) of the digest of `data`, which is what an RSA key signs."""
    oid = oid_octets(digest_oid(digest))
    algorithm = ffi.new("AlgorithmRecord *")
    held = ffi.from_buffer("uint8_t[]", oid)
    algorithm.oid.data, algorithm.oid.length = held, len(oid)
    value = hashlib.new(digest, octets(data)).digest()
    return with_room(512, lib.KI_MakeDigestInfo, algorithm, value, len(value))


def _wipe(record: Any) -> None:
    size = ffi.sizeof(record[0])
    ffi.memmove(record, bytes(size), size)


class _RsaKey:
    """A key as a record of numbers."""

    _type: ClassVar[str]
    _decode: ClassVar[Any]
    _encode: ClassVar[Any]

    def __init__(self) -> None:
        self._record = ffi.gc(ffi.new(self._type + " *"), _wipe)

    @classmethod
    def from_der(cls: Type[K], der: BytesLike) -> K:
        """Reads an RSAPublicKey or an RSAPrivateKey (RFC 8017 A.1)."""
        key = cls()
        put(cls._decode, key._record.modulus, der)
        return key

    def to_der(self) -> bytes:
        """The key in the form that `from_der` reads."""
        return filled(self._encode, self._record.modulus)

    def _operate(self, operation: Any, data: BytesLike) -> bytes:
        block = octets(data)
        result = ffi.new("uint8_t[]", _BLOCK)
        length = ffi.new("uint32_t *")
        check(operation(result, length, block, len(block), self._record))
        return bytes(ffi.buffer(result, length[0]))


class RsaPublicKey(_RsaKey):
    """A public key."""

    _type = "RsaPublicKeyRecord"
    _decode = lib.KA_Decode_PublicKey
    _encode = lib.KA_Encode_PublicKey

    @property
    def modulus(self) -> int:
        """The modulus n."""
        return number(bytes(self._record.modulus))

    @property
    def exponent(self) -> int:
        """The public exponent e."""
        return number(bytes(self._record.exponent))

    def encrypt(self, data: BytesLike) -> bytes:
        """PKCS#1 v1.5 encryption (RFC 8017 7.2.1), as for the key of an enveloped message."""
        return self._operate(lib.KA_PKCS7_RSAPublicEncrypt, data)

    def open_block(self, signature: BytesLike) -> bytes:
        """The DigestInfo in a signature (RFC 8017 8.2.2)."""
        return self._operate(lib.KA_PKCS7_RSAPublicDecrypt, signature)

    def verify(self, signature: BytesLike, data: BytesLike, algorithm: str = oids.SHA256_WITH_RSA) -> None:
        """Verifies a signature over `data`; a bad one is KACERT_VerifySignatureErr.

        `algorithm`: the object identifier of RSA with MD5, SHA-1, SHA-256, SHA-384 or SHA-512. The whole DigestInfo is
        compared.
        """
        wanted = digest_info(data, digest_name(algorithm))
        try:
            found = self.open_block(signature)
        except Error as failure:
            raise Error(Status.KACERT_VerifySignatureErr) from failure
        if found != wanted:
            raise Error(Status.KACERT_VerifySignatureErr)


class RsaPrivateKey(_RsaKey):
    """A private key. Its numbers are wiped when the object is freed."""

    _type = "RsaPrivateKeyRecord"
    _decode = lib.KA_Decode_PrivateKey
    _encode = lib.KA_Encode_PrivateKey

    @classmethod
    def generate(cls, bits: int = 2048) -> RsaPrivateKey:
        """Makes a key of 1,024 or 2,048 bits with the exponent 65537."""
        makers = {1024: lib.KA_PKCS7_GenRSAKeyPair, 2048: lib.KA_PKCS7_GenRSAKeyPair_2048}
        if bits not in makers:
            raise ValueError("a key has 1024 or 2048 bits")
        key = cls()
        check(makers[bits](RsaPublicKey()._record, key._record))
        return key

    @property
    def public_key(self) -> RsaPublicKey:
        """The public half."""
        key = RsaPublicKey()
        key._record.modulus, key._record.exponent = self._record.modulus, self._record.publicExponent
        return key

    def sign_block(self, digest_info: BytesLike) -> bytes:
        """Signs a DigestInfo (RFC 8017 8.2.1), as the signer of a message needs it."""
        return self._operate(lib.KA_PKCS7_RSAPrivateEncrypt, digest_info)

    def sign(self, data: BytesLike, algorithm: str = oids.SHA256_WITH_RSA) -> bytes:
        """Signs `data`, as certificates, lists and requests need it; `algorithm` as RsaPublicKey.verify takes it."""
        return self.sign_block(digest_info(data, digest_name(algorithm)))

    def decrypt(self, block: BytesLike) -> bytes:
        """Opens what `RsaPublicKey.encrypt` made."""
        return self._operate(lib.KA_PKCS7_RSAPrivateDecrypt, block)
