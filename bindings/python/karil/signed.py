"""PKCS#7 SignedData: a content with the signatures of any number of signers."""

from __future__ import annotations

import hashlib
from dataclasses import dataclass
from typing import Any, Callable, Iterable, Iterator, Optional, Sequence

from . import oids
from ._der import number, number_octets, oid_octets, oid_text, opened
from ._hooks import HookFunction, Operation
from ._native import BytesLike, chain, check, context, data_of, decoded, ffi, hand_over, lib, octets, put, put_all
from ._objects import Attribute, Decoded, read_attributes
from ._tables import Status
from .certificate import Certificate, IssuerAndSerial
from .crl import CertificateList
from .errors import Error
from .keys import digest_name, digest_oid
from .names import read_name

Opener = Callable[[Certificate, bytes], BytesLike]


@dataclass(frozen=True)
class SignerInfo(IssuerAndSerial):
    """A signer of a decoded message. Algorithms are dotted text; `attributes` are those that are signed."""

    digest_algorithm: str
    signature_algorithm: str
    signature: bytes
    attributes: tuple[Attribute, ...]
    unsigned_attributes: tuple[Attribute, ...]


@dataclass(frozen=True)
class Signer:
    """Who signs a message.

    `sign`: is given a DigestInfo, whose last octets are the digest, and returns the RSA signature of it, as
    `RsaPrivateKey.sign_block` does. `digest`: md5, sha1, sha256, sha384 or sha512. `attributes`: pairs of object
    identifier and one whole element, to be signed with the content; if there are any, messageDigest and contentType are
    added.
    """

    certificate: Certificate
    sign: HookFunction
    digest: str = "sha256"
    attributes: Sequence[tuple[str, bytes]] = ()


def _read_signer(ctx: Any, node: Any) -> SignerInfo:
    return SignerInfo(
        read_name(ctx, node.issuer),
        number(data_of(node.serial)),
        oid_text(data_of(node.digestAlgorithm.oid)),
        oid_text(data_of(node.digestEncAlgorithm.oid)),
        data_of(node.encryptedDigest),
        read_attributes(ctx, node.attributes),
        read_attributes(ctx, node.unAttributes),
    )


def _open_with_rsa(certificate: Certificate, signature: bytes) -> bytes:
    try:
        return certificate.rsa_key.open_block(signature)
    except Error:
        # No block is equal to any DigestInfo.
        return b""


def _digest(algorithm: str) -> HookFunction:
    name = digest_name(algorithm)
    return lambda data: hashlib.new(name, data).digest()


class SignedData(Decoded):
    """A decoded message."""

    _functions = (
        lib.KA_PKCS7_CreateSignedDataDecodeCtx,
        lib.KA_PKCS7_DestroySignedDataDecodeCtx,
        lib.KA_PKCS7_DecodeSignedData,
    )
    _labels = ("PKCS7", "CMS")

    def __repr__(self) -> str:
        return f"<karil.SignedData of {len(self.signers)} signers>"

    @property
    def content_type(self) -> str:
        """What the content is, as dotted text."""
        return oid_text(data_of(self._ctx.contentType.oid))

    @property
    def content(self) -> bytes:
        """The octets of content type data, of any other type one whole element; empty if there is no content."""
        return data_of(self._ctx.content)

    @property
    def raw_certificates(self) -> tuple[bytes, ...]:
        """The certificates in the message, as octets."""
        return tuple(map(data_of, chain(self._ctx, self._ctx.certificates)))

    @property
    def raw_crls(self) -> tuple[bytes, ...]:
        """The revocation lists in the message, as octets."""
        return tuple(map(data_of, chain(self._ctx, self._ctx.crls)))

    @property
    def certificates(self) -> tuple[Certificate, ...]:
        """The certificates, decoded; one that does not decode raises Error, see `raw_certificates`."""
        return tuple(map(Certificate.from_der, self.raw_certificates))

    @property
    def crls(self) -> tuple[CertificateList, ...]:
        """The lists, as `certificates`."""
        return tuple(map(CertificateList.from_der, self.raw_crls))

    @property
    def signers(self) -> tuple[SignerInfo, ...]:
        """Who signed; nothing is verified yet."""
        return tuple(_read_signer(self._ctx, node) for node in chain(self._ctx, self._ctx.signerInfos))

    def verify(
        self,
        certificates: Iterable[Certificate] = (),
        *,
        content: Optional[BytesLike] = None,
        open_signature: Opener = _open_with_rsa,
    ) -> tuple[Certificate, ...]:
        """Verifies every signer, and returns the signers' certificates. Whom to trust is the caller's to decide.

        `certificates`: where a signer's certificate is looked for, besides those in the message. `content`: what was
        signed, if the message does not have it. `open_signature`: returns the DigestInfo in a signature; the library's
        own RSA takes keys of at most 2,048 bits.

        Raises Error: KACERT_VerifySignatureErr for a signature that is bad, or whose attributes are not those of the
        content; KACERT_InvalidItemErr without signers, or for a signer without certificate.
        """
        if content is not None and self.content:
            raise ValueError("the message has a content of its own")
        # Verification changes the context that it works on.
        ctx, _ = decoded(*self._functions, self.der)
        known = [*certificates, *self._readable_certificates()]
        found = []
        for node in chain(ctx, ctx.signerInfos):
            signer = _read_signer(ctx, node)
            certificate = next(filter(signer.is_of, known), None)
            if certificate is None:
                raise Error(Status.KACERT_InvalidItemErr, "There is no certificate for a signer.")
            if content is not None:
                put(lib.KA_PKCS7_SetSignerInfoAttributeChar, node, lib.PKCS7_SIGNER_CONTENT, content)
            _verify_signer(node, signer, certificate, open_signature)
            self._check_attributes(signer, octets(content) if content is not None else self.content)
            found.append(certificate)
        if not found:
            raise Error(Status.KACERT_InvalidItemErr, "The message has no signers.")
        return tuple(found)

    def _readable_certificates(self) -> Iterator[Certificate]:
        for der in self.raw_certificates:
            try:
                yield Certificate.from_der(der)
            except Error:
                continue

    def _check_attributes(self, signer: SignerInfo, content: bytes) -> None:
        """Attributes are signed in the place of the content, so that they have to agree with it (RFC 2315 9.3)."""
        if not signer.attributes:
            return
        if content and self.content_type != oids.DATA:
            content = opened(content)[1]
        values = {oid: opened(value)[1] for oid, value in signer.attributes}
        digest = _digest(signer.digest_algorithm)(content)
        if values.get(oids.MESSAGE_DIGEST) != digest or values.get(oids.CONTENT_TYPE) != oid_octets(self.content_type):
            raise Error(Status.KACERT_VerifySignatureErr, "The signed attributes are not those of the content.")

    @staticmethod
    def make(
        content: BytesLike,
        signers: Sequence[Signer],
        *,
        certificates: Optional[Iterable[Certificate]] = None,
        crls: Iterable[CertificateList] = (),
        content_type: str = oids.DATA,
    ) -> bytes:
        """Signs, and returns the message.

        `certificates`: those that the message carries; if none are given, the signers'. `content_type`: of any other
        than data the content is one whole element. Each signer's `sign` is called once; an exception that it raises
        comes out of this call. An empty content cannot be signed.
        """
        ctx = context(lib.KA_PKCS7_CreateSignedDataEncodeCtx, lib.KA_PKCS7_DestroySignedDataEncodeCtx)
        operation = Operation()
        check(lib.KA_PKCS7_SetSignedDataAttributeInt(ctx, lib.PKCS7_SIGNEDDATA_VERSION, 1))
        if certificates is None:
            certificates = (signer.certificate for signer in signers)
        values: list[tuple[str, BytesLike]] = [("CONTENTTYPE", oid_octets(content_type)), ("CONTENT", content)]
        values += [("DIGEST_ALGO", oid_octets(oid)) for oid in {digest_oid(signer.digest): None for signer in signers}]
        values += [("CERTIFICATE", der) for der in {certificate.der: None for certificate in certificates}]
        values += [("CRL", crl.der) for crl in crls]
        for name, value in values:
            put(lib.KA_PKCS7_SetSignedDataAttributeChar, ctx, getattr(lib, "PKCS7_SIGNEDDATA_" + name), value)
        for signer in signers:
            hand_over(lib.KA_PKCS7_SetSignedData_SignerInfo, ctx, _make_signer(operation, signer))
        return operation.filled(lib.KA_PKCS7_EncodePKCS7SignedData, ctx)


def _verify_signer(node: Any, signer: SignerInfo, certificate: Certificate, open_signature: Opener) -> None:
    operation = Operation()
    digest = operation.hook(_digest(signer.digest_algorithm))
    check(lib.KA_PKCS7_SetSignerInfoDigestFunc(node, *digest))
    opener = operation.hook(lambda signature: open_signature(certificate, signature))
    check(lib.KA_PKCS7_SetSignerInfoDecSignFunc(node, *opener))
    verdict = ffi.new("int32_t *")
    operation.run(lib.KA_PKCS7_VerifySignerSignature, node, verdict)
    if verdict[0] != lib.PKCS7_VERDICT_GOOD:
        raise Error(Status.KACERT_VerifySignatureErr)


def _make_signer(operation: Operation, signer: Signer) -> Any:
    node = context(lib.KA_PKCS7_CreateEncodeSignerInfo, lib.KA_PKCS7_DestoryEncodeSignerInfo)
    oid = digest_oid(signer.digest)
    put_all(
        lib.KA_PKCS7_SetSignerInfoAttributeChar,
        node,
        "PKCS7_SIGNER_",
        DN=signer.certificate.issuer.der,
        SERIAL=number_octets(signer.certificate.serial),
        DIGEST_ALGO=oid_octets(oid),
        DIGEST_ENC_ALG=oid_octets(oids.RSA_ENCRYPTION),
    )
    for dotted, element in signer.attributes:
        kind = oid_octets(dotted)
        check(lib.KA_PKCS7_SetSignerAttribute(node, kind, len(kind), element, len(element)))
    check(lib.KA_PKCS7_SetSignerInfoDigestFunc(node, *operation.hook(_digest(oid))))
    check(lib.KA_PKCS7_SetSignerInfoEncSignFunc(node, *operation.hook(signer.sign)))
    return node
