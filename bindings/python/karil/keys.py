"""RSA keys of at most 2,048 bits, and what the library does with them."""

from __future__ import annotations

import hashlib
from typing import Any

from . import oids
from ._der import number, oid_octets
from ._native import BytesLike, check, ffi, filled, lib, octets, with_room
from ._tables import Status
from .errors import Error

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


def _read(type_name: str, decode: Any, der: BytesLike) -> Any:
    data = octets(der)
    record = _record(type_name)
    check(decode(record.modulus, data, len(data)))
    return record


def _record(type_name: str) -> Any:
    """An empty key record, which is wiped before its memory is freed."""
    return ffi.gc(ffi.new(type_name + " *"), _wipe)


def _wipe(record: Any) -> None:
    size = ffi.sizeof(record[0])
    ffi.memmove(record, bytes(size), size)


def _operate(operation: Any, record: Any, data: BytesLike) -> bytes:
    block = octets(data)
    result = ffi.new("uint8_t[]", _BLOCK)
    length = ffi.new("uint32_t *")
    check(operation(result, length, block, len(block), record))
    return bytes(ffi.buffer(result, length[0]))


class RsaPublicKey:
    """A public key."""

    def __init__(self, record: Any) -> None:
        self._record = record

    @classmethod
    def from_der(cls, der: BytesLike) -> RsaPublicKey:
        """Reads an RSAPublicKey (RFC 8017 A.1.1)."""
        return cls(_read("RsaPublicKeyRecord", lib.KA_Decode_PublicKey, der))

    def to_der(self) -> bytes:
        return filled(lib.KA_Encode_PublicKey, self._record.modulus)

    @property
    def modulus(self) -> int:
        return number(bytes(self._record.modulus))

    @property
    def exponent(self) -> int:
        return number(bytes(self._record.exponent))

    def encrypt(self, data: BytesLike) -> bytes:
        """PKCS#1 v1.5 encryption (RFC 8017 7.2.1), as for the key of an enveloped message."""
        return _operate(lib.KA_PKCS7_RSAPublicEncrypt, self._record, data)

    def open_block(self, signature: BytesLike) -> bytes:
        """The DigestInfo in a signature (RFC 8017 8.2.2)."""
        return _operate(lib.KA_PKCS7_RSAPublicDecrypt, self._record, signature)

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


class RsaPrivateKey:
    """A private key. Its numbers are wiped when the object is freed."""

    def __init__(self, record: Any) -> None:
        self._record = record

    @classmethod
    def generate(cls, bits: int = 2048) -> RsaPrivateKey:
        """Makes a key of 1,024 or 2,048 bits with the exponent 65537."""
        makers = {1024: lib.KA_PKCS7_GenRSAKeyPair, 2048: lib.KA_PKCS7_GenRSAKeyPair_2048}
        if bits not in makers:
            raise ValueError("a key has 1024 or 2048 bits")
        key = cls(_record("RsaPrivateKeyRecord"))
        check(makers[bits](_record("RsaPublicKeyRecord"), key._record))
        return key

    @classmethod
    def from_der(cls, der: BytesLike) -> RsaPrivateKey:
        """Reads an RSAPrivateKey (RFC 8017 A.1.2)."""
        return cls(_read("RsaPrivateKeyRecord", lib.KA_Decode_PrivateKey, der))

    def to_der(self) -> bytes:
        return filled(lib.KA_Encode_PrivateKey, self._record.modulus)

    @property
    def public_key(self) -> RsaPublicKey:
        record = _record("RsaPublicKeyRecord")
        record.modulus, record.exponent = self._record.modulus, self._record.publicExponent
        return RsaPublicKey(record)

    def sign_block(self, digest_info: BytesLike) -> bytes:
        """Signs a DigestInfo (RFC 8017 8.2.1), as the signer of a message needs it."""
        return _operate(lib.KA_PKCS7_RSAPrivateEncrypt, self._record, digest_info)

    def sign(self, data: BytesLike, algorithm: str = oids.SHA256_WITH_RSA) -> bytes:
        """Signs `data`, as certificates, lists and requests need it; `algorithm` as RsaPublicKey.verify takes it."""
        return self.sign_block(digest_info(data, digest_name(algorithm)))

    def decrypt(self, block: BytesLike) -> bytes:
        """Opens what `RsaPublicKey.encrypt` made."""
        return _operate(lib.KA_PKCS7_RSAPrivateDecrypt, self._record, block)
