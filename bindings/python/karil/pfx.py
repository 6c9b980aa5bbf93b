"""PFX files (PKCS#12): one private key with its certificates, under a password."""

from __future__ import annotations

import hashlib
from dataclasses import dataclass
from typing import Any, Optional, Sequence, Union

from . import oids
from ._der import oid_octets, opened, written
from ._native import BytesLike, check, chain, context, data_of, ffi, filled, lib, octets, put
from ._objects import Attribute, read_attributes
from ._tables import Status
from .certificate import Certificate
from .errors import Error

Password = Union[str, BytesLike]


def _password(password: Password) -> bytes:
    # Each octet becomes one character of 16 bits, which is what Latin-1 text needs. No other text can be said.
    return password.encode("latin-1") if isinstance(password, str) else octets(password)


def _friendly_name(attributes: Sequence[Attribute]) -> Optional[str]:
    values = (opened(item.value)[1] for item in attributes if item.oid == oids.FRIENDLY_NAME)
    return next((value.decode("utf-16-be", "replace") for value in values), None)


@dataclass(frozen=True)
class PfxCertificate:
    """A certificate in a file, with the attributes of its bag."""

    der: bytes
    attributes: tuple[Attribute, ...]

    @property
    def certificate(self) -> Certificate:
        """The certificate, decoded."""
        return Certificate.from_der(self.der)

    @property
    def friendly_name(self) -> Optional[str]:
        """The name of the certificate, or None."""
        return _friendly_name(self.attributes)


@dataclass(frozen=True)
class Pfx:
    """What a file holds. `key`: the octets of the private key, for RSA an RSAPrivateKey; empty without a key.
    `attributes`: those of the key's bag.
    """

    key: bytes
    attributes: tuple[Attribute, ...]
    certificates: tuple[PfxCertificate, ...]

    def __repr__(self) -> str:
        return f"<karil.Pfx with {len(self.certificates)} certificates>"

    @property
    def friendly_name(self) -> Optional[str]:
        """The name of the key, or None."""
        return _friendly_name(self.attributes)

    @classmethod
    def open(cls, der: BytesLike, password: Password) -> Pfx:
        """Reads a file, and checks its MAC first.

        `password`: a str becomes Latin-1 octets, since the library makes a character of each octet. Files under other
        ciphers than RC4, RC2 and triple DES, or with a MAC by SHA-256, are refused.
        """
        data, secret = octets(der), _password(password)
        if not data:
            raise Error(Status.KACERT_LengthNotEqualErr)
        ctx = context(lib.KA_PKCS12_CreateDecodePfx, lib.KA_PKCS12_DestroyDecodePFX)
        verdict = ffi.new("int32_t *")
        status = lib.KA_PKCS12_DecodePFX(ctx, secret, len(secret), data, len(data), verdict)
        if verdict[0] == lib.PKCS7_VERDICT_BAD:
            # Whatever the status: octets were deciphered with a wrong key.
            raise Error(Status.KACERT_VerifySignatureErr, "The password is wrong, or the file was changed.")
        check(status)
        certificates = tuple(
            PfxCertificate(data_of(node.certificate), read_attributes(ctx, node.attributes.next))
            for node in chain(ctx, ctx.firstCertificate)
        )
        return cls(data_of(ctx.privateKey), read_attributes(ctx, ctx.bagAttributes.next), certificates)

    @staticmethod
    def make(
        key: BytesLike, certificates: Sequence[Certificate], password: Password, *, friendly_name: Optional[str] = None
    ) -> bytes:
        """Writes a file.

        `key`: an RSAPrivateKey (RFC 8017 A.1.2). `certificates`: that of the key first, then its chain. The key and its
        certificate get the same localKeyID, and `friendly_name` if it is given. Certificates are enciphered by RC2 with
        40 bits and the key by triple DES, which current programs call legacy.
        """
        ctx = context(lib.KA_PKCS12_CreateEncodePfx, lib.KA_PKCS12_DestroyEncodePFX)
        put(lib.KA_PKCS12_SetPrivateKey, ctx, key)
        for certificate in certificates:
            put(lib.KA_PKCS12_SetCertificate, ctx, certificate.der)
        for oid, value in _key_attributes(certificates, friendly_name):
            arguments: list[Any] = [ctx, oid, len(oid), value, len(value)]
            check(lib.KA_PKCS12_SetPrivateKeyBag_Attribute(*arguments))
            check(lib.KA_PKCS12_SetCertificateBag_Attribute(*arguments, 1))
        secret = _password(password)
        return filled(lib.KA_PKCS12_EncodePFX, ctx, secret, len(secret))


def _key_attributes(certificates: Sequence[Certificate], friendly_name: Optional[str]) -> list[tuple[bytes, bytes]]:
    if not certificates:
        return []
    identifier = written(lib.KAsn1_WriteOctetString, hashlib.sha1(certificates[0].der).digest())
    attributes = [(oid_octets(oids.LOCAL_KEY_ID), identifier)]
    if friendly_name is not None:
        name = written(lib.KAsn1_WriteBmpString, friendly_name.encode("utf-16-be"))
        attributes.append((oid_octets(oids.FRIENDLY_NAME), name))
    return attributes
