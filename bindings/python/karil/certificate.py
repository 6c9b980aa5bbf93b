"""X.509 certificates."""

from __future__ import annotations

import hashlib
import ipaddress
from dataclasses import dataclass
from datetime import datetime
from enum import Flag
from typing import Optional, Union

from . import oids
from ._der import elements, number, number_octets, oid_octets, oid_text, opened
from ._hooks import HookFunction
from ._native import BytesLike, chain, check, context, data_of, lib, octets
from ._objects import Builder, Extension, KeyHolder, moment, seconds_of, tagged_extensions
from .names import Name, NameLike, parse_name, read_name, set_name

IpAddress = Union[ipaddress.IPv4Address, ipaddress.IPv6Address]

_EXTENSIONS_TAG = 0xA3


class KeyUsage(Flag):
    """What a key is for (RFC 5280 4.2.1.3)."""

    DIGITAL_SIGNATURE = 0x8000
    NON_REPUDIATION = 0x4000
    KEY_ENCIPHERMENT = 0x2000
    DATA_ENCIPHERMENT = 0x1000
    KEY_AGREEMENT = 0x0800
    KEY_CERT_SIGN = 0x0400
    CRL_SIGN = 0x0200
    ENCIPHER_ONLY = 0x0100
    DECIPHER_ONLY = 0x0080


@dataclass(frozen=True)
class AlternativeNames:
    """General names (RFC 5280 4.2.1.6), of each kind in the order of the wire. Kinds without a field are left out."""

    email: tuple[str, ...] = ()
    dns: tuple[str, ...] = ()
    directory: tuple[Name, ...] = ()
    uri: tuple[str, ...] = ()
    ip: tuple[IpAddress, ...] = ()


@dataclass(frozen=True)
class IssuerAndSerial:
    """How messages name a certificate (RFC 2315 6.7)."""

    issuer: Name
    serial: int

    def is_of(self, certificate: Certificate) -> bool:
        return certificate.serial == self.serial and certificate.issuer == self.issuer


def _characters(octets: bytes) -> str:
    return octets.decode("ascii", "backslashreplace")


def _address(packed: bytes) -> Optional[IpAddress]:
    return ipaddress.ip_address(packed) if len(packed) in (4, 16) else None


# The kinds of general names by their tags.
_KINDS = {
    0x81: ("email", _characters),
    0x82: ("dns", _characters),
    0xA4: ("directory", parse_name),
    0x86: ("uri", _characters),
    0x87: ("ip", _address),
}


class Certificate(KeyHolder):
    """A decoded certificate. Dates past 19 January 2038 do not decode: see the limits in the README of karil."""

    _functions = (lib.KACert_CreateCertDecodeCtx, lib.KACert_DestroyCertDecodeCtx, lib.KACert_DecodeCert)
    _labels = ("CERTIFICATE", "X509 CERTIFICATE")

    def __repr__(self) -> str:
        return f"<karil.Certificate {self.subject.text!r}, serial {self.serial:#x}>"

    @property
    def serial(self) -> int:
        """The serial number; one that is negative on the wire is read as a positive number."""
        return number(data_of(self._ctx.serialNumber))

    @property
    def tbs_signature_algorithm(self) -> str:
        """The algorithm inside the part that is signed; nothing has compared it with the one outside."""
        return oid_text(data_of(self._ctx.innerSignatureAlgorithm.oid))

    @property
    def issuer(self) -> Name:
        """The issuer, as the certificate names it."""
        return read_name(self._ctx, self._ctx.issuer, data_of(self._ctx.issuerDer))

    @property
    def subject(self) -> Name:
        """Whose certificate it is."""
        return read_name(self._ctx, self._ctx.subject, data_of(self._ctx.subjectDer))

    @property
    def not_before(self) -> datetime:
        """In the local zone. Dates on the wire are taken for local time: run with TZ=UTC if others wrote them."""
        return moment(self._ctx.notBefore.utcValue)

    @property
    def not_after(self) -> datetime:
        """As `not_before`."""
        return moment(self._ctx.notAfter.utcValue)

    @property
    def extensions(self) -> tuple[Extension, ...]:
        """All extensions, in the order of the wire."""
        return tagged_extensions(self.tbs, _EXTENSIONS_TAG)

    def extension(self, oid: str) -> Optional[Extension]:
        """The first extension with this object identifier."""
        return next((extension for extension in self.extensions if extension.oid == oid), None)

    @property
    def key_usage(self) -> Optional[KeyUsage]:
        """What the key is for, or None if nothing tells."""
        if not self._ctx.extensions.hasKeyUsage:
            return None
        # Of a decoded usage the first octet is the number of unused bits.
        bits = data_of(self._ctx.extensions.keyUsage.bits)[1:3]
        return KeyUsage(int.from_bytes(bits.ljust(2, b"\0"), "big") & 0xFF80)

    @property
    def extended_key_usages(self) -> tuple[str, ...]:
        """The purposes as dotted text."""
        found = self.extension(oids.EXT_KEY_USAGE)
        return tuple(oid_text(opened(purpose)[1]) for purpose in elements(found.value)) if found else ()

    @property
    def is_ca(self) -> bool:
        """Whether the basic constraints say that it is an authority."""
        return bool(self._ctx.extensions.basicConstraints.isCa)

    @property
    def path_length(self) -> Optional[int]:
        """How many authorities may follow in a chain, or None if there is no limit."""
        constraints = self._ctx.extensions.basicConstraints
        return number(data_of(constraints.pathLen)) if constraints.hasPathLen else None

    @property
    def subject_key_id(self) -> Optional[bytes]:
        """The identifier of the key, or None."""
        return data_of(self._ctx.extensions.subjectKeyId.keyId) or None

    @property
    def authority_key_id(self) -> Optional[bytes]:
        """The identifier of the issuer's key, or None."""
        return data_of(self._ctx.extensions.authorityKeyId.keyId) or None

    @property
    def alternative_names(self) -> AlternativeNames:
        """The subject's alternative names."""
        return self._names(oids.SUBJECT_ALT_NAME)

    @property
    def issuer_alternative_names(self) -> AlternativeNames:
        """The issuer's alternative names."""
        return self._names(oids.ISSUER_ALT_NAME)

    def _names(self, oid: str) -> AlternativeNames:
        found = self.extension(oid)
        names: dict[str, list[object]] = {}
        for tag, content in map(opened, elements(found.value) if found else ()):
            kind, read = _KINDS.get(tag, ("", None))
            if read is not None and (value := read(content)) is not None:
                names.setdefault(kind, []).append(value)
        return AlternativeNames(**{kind: tuple(values) for kind, values in names.items()})  # type: ignore[arg-type]

    @property
    def crl_distribution_points(self) -> tuple[str, ...]:
        """The first name of each distribution point."""
        points = chain(self._ctx, self._ctx.extensions.crlDistPoints.first)
        names = (data_of(point.fullName.uniformResourceIdentifier) for point in points)
        return tuple(_characters(opened(name)[1]) for name in names if name)

    def verify(self, issuer: Certificate) -> None:
        """Verifies names, dates and signature against the issuer's certificate, in one call of the library.

        Raises Error: KACERT_DnNotEqualErr, KACERT_TimeOutRangeErr, KACERT_VerifySignatureErr, and for a signature by
        another digest than MD2, MD5 and SHA-1 KACERT_InvalidSignatureAlgErr: take `verify_signature` for those. No
        chain is built. What is not checked stands in karil/verify.h.
        """
        check(lib.KA_VerifyCert(issuer.der, len(issuer.der), self.der, len(self.der)))


class CertificateBuilder(Builder):
    """Makes a certificate: fill it, then call `sign`. The methods return the builder.

    `public_key`: the content of the key's BIT STRING, for RSA an RSAPublicKey. `issuer`: the issuer's certificate, or
    None for a certificate that its own key signs. A decoded name is written as it was, without a change.
    """

    def __init__(
        self,
        *,
        subject: NameLike,
        public_key: BytesLike,
        serial: int,
        not_before: datetime,
        not_after: datetime,
        issuer: Optional[Certificate] = None,
        public_key_algorithm: str = oids.RSA_ENCRYPTION,
    ) -> None:
        ctx = context(lib.KACert_CreateCertEncodeCtx, lib.KACert_DestroyCertEncodeCtx)
        algorithms = "CERT_INNER_SIGNATUREALGORITHM", "CERT_OUTER_SIGNATUREALGORITHM"
        super().__init__(ctx, lib.KACert_EncodeCert, lib.KACert_SetCertAttributeChar, *algorithms)
        self._public_key = octets(public_key)
        self._issuer = issuer
        for name, value in (
            ("CERT_VERSION", 2),
            ("CERT_VALIDFROM", seconds_of(not_before)),
            ("CERT_VALIDTO", seconds_of(not_after)),
        ):
            check(lib.KACert_SetCertAttributeInt(ctx, getattr(lib, name), value))
        self._put("CERT_SERIALNUMBER", number_octets(serial))
        self._put("CERT_PUBLICKEY_ALGORITHM", oid_octets(public_key_algorithm))
        self._put("CERT_SUBJECTPUBLICKEYINFO", self._public_key)
        self._set_name("CERT_SUBJECT_", subject)
        self._set_name("CERT_ISSUER_", issuer.subject if issuer else subject)

    def _set_name(self, prefix: str, name: NameLike) -> None:
        if isinstance(name, Name) and name.der:
            self._put(prefix + "DERDN", name.der)
        else:
            set_name(lib.KACert_SetCertAttributeChar, self._ctx, prefix, name)

    def _flag(self, name: str, critical: bool) -> None:
        self._put(name + "_CRITICAL", bytes([critical]))

    def basic_constraints(
        self, *, ca: bool, path_length: Optional[int] = None, critical: bool = True
    ) -> CertificateBuilder:
        """Whether it is an authority, and how many authorities may follow in a chain."""
        self._put("CERTEX_AUTHORITY", bytes([ca]))
        if path_length is not None:
            self._put("CERTEX_PATHLENCONSTRAINT", bytes([path_length]))
        self._flag("CERTEX_BASICCONSTRAINTS", critical)
        return self

    def key_usage(self, usage: KeyUsage, *, critical: bool = True) -> CertificateBuilder:
        """What the key is for."""
        self._put("CERTEX_KEYUSAGE", usage.value.to_bytes(2, "big").rstrip(b"\0"))
        self._flag("CERTEX_KEYUSAGE", critical)
        return self

    def extended_key_usages(self, *purposes: str, critical: bool = False) -> CertificateBuilder:
        """`purposes`: dotted text."""
        for purpose in purposes:
            self._put("CERTEX_EXTKEY_USAGE_OID_DEFINE", purpose.encode("ascii", "replace"))
        self._flag("CERTEX_EXTKEY", critical)
        return self

    def key_identifiers(
        self, subject: Optional[BytesLike] = None, authority: Optional[BytesLike] = None
    ) -> CertificateBuilder:
        """Subject and authority key identifier. If they are not given: the key's SHA-1, and that of the issuer."""
        own = octets(subject) if subject is not None else hashlib.sha1(self._public_key).digest()
        if authority is None:
            authority = self._issuer.subject_key_id if self._issuer else own
        self._put("CERTEX_SUBJECTKEYIDENTIFIER", own)
        if authority is not None:
            self._put("CERTEX_AUTHORITYKEYIDENTIFIER", authority)
        return self

    def alternative_names(
        self,
        *,
        email: Optional[str] = None,
        dns: Optional[str] = None,
        uri: Optional[str] = None,
        ip: Optional[IpAddress] = None,
        critical: bool = False,
    ) -> CertificateBuilder:
        """The subject's alternative names: one of each kind, since the library writes no second one."""
        for name, value in (("RFC822NAME", email), ("DNSNAME", dns), ("URI", uri)):
            if value is not None:
                self._put("CERT_SUBJECT_ALT_" + name, value.encode("ascii"))
        if ip is not None:
            self._put("CERT_SUBJECT_ALT_IPADDRESS", ip.packed)
        self._flag("CERT_SUBJECT_ALT", critical)
        return self

    def policy(self, oid: str, *cps: str, critical: bool = False) -> CertificateBuilder:
        """The certificate policy, with the addresses of at least one statement (CPS)."""
        self._put("CERTEX_CERTPOLICYID", oid_octets(oid))
        for uri in cps:
            self._put("CERTEX_CERTPOLICY_CPS", uri.encode("ascii"))
        self._flag("CERTEX_CERTPOLICY", critical)
        return self

    def crl_distribution_points(self, *uris: str) -> CertificateBuilder:
        """Addresses of revocation lists, one distribution point each."""
        for uri in uris:
            self._put("CERTEX_CRLDIST_FULLNAME", uri.encode("ascii"))
        return self

    def authority_information(self, *, ocsp: Optional[str] = None, issuers: Optional[str] = None) -> CertificateBuilder:
        """Addresses of an OCSP responder and of the certificates of the issuer."""
        for name, uri in (("OCSP", ocsp), ("CAISSUERS", issuers)):
            if uri is not None:
                self._put("CERTEX_AUTHORITYINFO_" + name, uri.encode("ascii"))
        return self

    def extension(self, oid: str, value: BytesLike, *, critical: bool = False) -> CertificateBuilder:
        """An extension of any kind; `value` is the DER that its OCTET STRING holds."""
        name, data = oid_octets(oid), octets(value)
        check(lib.KACert_SetCertAttributePrivate(self._ctx, name, len(name), critical, data, len(data)))
        return self

    def sign(self, sign: HookFunction, algorithm: str = oids.SHA256_WITH_RSA) -> Certificate:
        """Signs, and returns the certificate. `sign` is given the part to be signed, and returns the signature, of at
        most 512 octets. An exception that it raises comes out of this call, which may be tried again then.
        """
        return Certificate(self._sign(lib.KACert_SetCertSignFunc, sign, algorithm))
