"""PKCS#10 certification requests."""

from __future__ import annotations

from . import oids
from ._der import elements, oid_octets
from ._hooks import HookFunction
from ._native import BytesLike, check, context, lib, octets
from ._objects import Attribute, Builder, Extension, KeyHolder, read_attributes, read_extensions
from .names import Name, NameLike, read_name, set_name


class CertificationRequest(KeyHolder):
    """A decoded request."""

    _functions = (lib.KACert_CreateCsrDecodeCtx, lib.KACert_DestroyCsrDecodeCtx, lib.KACert_DecodeCsr)
    _labels = ("CERTIFICATE REQUEST", "NEW CERTIFICATE REQUEST")

    def __repr__(self) -> str:
        return f"<karil.CertificationRequest {self.subject.text!r}>"

    @property
    def subject(self) -> Name:
        """Who asks."""
        fields = elements(self.tbs) if self.tbs else []
        return read_name(self._ctx, self._ctx.subject, fields[1] if len(fields) > 1 else b"")

    @property
    def attributes(self) -> tuple[Attribute, ...]:
        """The attributes, in the order of the wire."""
        return read_attributes(self._ctx, self._ctx.attributes)

    @property
    def requested_extensions(self) -> tuple[Extension, ...]:
        """The extensions that the request asks for (RFC 2985 5.4.2)."""
        asked = (attribute.value for attribute in self.attributes if attribute.oid == oids.EXTENSION_REQUEST)
        return tuple(extension for value in asked for extension in read_extensions(value))

    def verify(self) -> None:
        """Verifies the signature with the request's own key; digests as for `Certificate.verify`."""
        check(lib.KA_VerifyCsr_Sign(self.der, len(self.der)))


class CertificationRequestBuilder(Builder):
    """Makes a request: fill it, then call `sign`. `public_key`: as for `CertificateBuilder`."""

    def __init__(
        self, *, subject: NameLike, public_key: BytesLike, public_key_algorithm: str = oids.RSA_ENCRYPTION
    ) -> None:
        ctx = context(lib.KACert_CreateCsrEncodeCtx, lib.KACert_DestroyCsrEncodeCtx)
        super().__init__(ctx, lib.KACert_EncodeCsr, lib.KACert_SetCsrAttributeChar, "CSR_OUTER_SIGNATUREALGORITHM")
        set_name(lib.KACert_SetCsrAttributeChar, ctx, "CSR_SUBJECT_", subject)
        self._put("CSR_PUBLICKEY_ALGORITHM", oid_octets(public_key_algorithm))
        self._put("CSR_SUBJECTPUBLICKEYINFO", public_key)

    def attribute(self, oid: str, value: BytesLike) -> CertificationRequestBuilder:
        """Appends an attribute. The library writes the octets as an OCTET STRING, whatever the attribute's syntax."""
        name, data = oid_octets(oid), octets(value)
        check(lib.KACert_SetCsrAttributePrivate(self._ctx, name, len(name), data, len(data)))
        return self

    def sign(self, sign: HookFunction, algorithm: str = oids.SHA256_WITH_RSA) -> CertificationRequest:
        """Signs, and returns the request; `sign` as for `CertificateListBuilder.sign`."""
        return CertificationRequest(self._sign(lib.KACert_SetCsrSignFunc, sign, algorithm))
