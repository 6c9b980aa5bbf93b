"""PKCS#7 EnvelopedData: a content enciphered for recipients."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Callable, Optional, Sequence, Union

from . import oids
from ._der import number, number_octets, oid_octets, oid_text, opened, written
from ._hooks import HookFunction, Operation
from ._native import BytesLike, chain, check, context, data_of, decoded, hand_over, lib, put_all, with_room
from ._objects import Decoded
from ._tables import Status
from .certificate import Certificate, IssuerAndSerial
from .errors import Error
from .names import read_name

# The room that a content needs at most when it is deciphered (karil/pkcs7_encrypted_content.h).
_SMALLEST_AREA = 10240
_MORE = 1024

# What a cipher adds at most.
_BLOCK = 16


@dataclass(frozen=True)
class RecipientInfo(IssuerAndSerial):
    """A recipient of a decoded message."""

    algorithm: str
    encrypted_key: bytes


@dataclass(frozen=True)
class Recipient:
    """For whom a message is made. `encrypt`: is given the content's key, and returns it enciphered for the recipient,
    by PKCS#1 v1.5."""

    certificate: Certificate
    encrypt: HookFunction


@dataclass(frozen=True)
class ContentCipher:
    """How a content is enciphered. `parameters`: of the algorithm, one whole element. `encrypt`: is given the content,
    and returns the cipher text."""

    algorithm: str
    parameters: bytes
    key: bytes
    encrypt: HookFunction


def _aes(function: Any, key: bytes, iv: bytes, data: bytes) -> bytes:
    return with_room(len(data) + _BLOCK, function, 2, key, len(key), iv, len(iv), data, len(data))


def _triple_des(function: Any, key: bytes, iv: bytes, data: bytes) -> bytes:
    oid = oid_octets(oids.PBE_SHA1_3DES)
    return with_room(len(data) + _BLOCK, function, oid, len(oid), key, len(key), iv, len(iv), data, len(data))


# The ciphers of the library that messages use, with the functions that decipher.
_CIPHERS = {
    oids.AES128_CBC: (_aes, lib.KA_PKCS12_AESDecrypt),
    oids.DES_EDE3_CBC: (_triple_des, lib.KA_PKCS12_DESDecrypt),
}


def aes_128() -> ContentCipher:
    """AES-128 in CBC mode, by the library, with a fresh key and IV."""
    key, iv = os.urandom(16), os.urandom(16)
    parameters = written(lib.KAsn1_WriteOctetString, iv)
    return ContentCipher(oids.AES128_CBC, parameters, key, lambda data: _aes(lib.KA_PKCS12_AESEncrypt, key, iv, data))


class EnvelopedData(Decoded):
    """A decoded message."""

    _functions = (
        lib.KA_PKCS7_CreateEnvelopedDataDecodeCtx,
        lib.KA_PKCS7_DestroyEnvelopedDataDecodeCtx,
        lib.KA_PKCS7_DecodePKCS7EnvelopedData,
    )
    _labels = ("PKCS7", "CMS")

    def __init__(self, der: BytesLike) -> None:
        super().__init__(der)
        # The decoder has a status of 0 for a content that is not there, and for want of memory.
        content = self._ctx.encryptedContent
        if not self._ctx.recipientsSet or not content or not content.decoded:
            raise Error(Status.KACERT_InvalidItemErr)

    def __repr__(self) -> str:
        return f"<karil.EnvelopedData for {len(self.recipients)} recipients>"

    @property
    def content_type(self) -> str:
        """What the content is, as dotted text."""
        return oid_text(data_of(self._ctx.encryptedContent.contentType.oid))

    @property
    def algorithm(self) -> str:
        """The cipher of the content, as dotted text."""
        return oid_text(data_of(self._ctx.encryptedContent.encryptionAlgorithm.oid))

    @property
    def parameters(self) -> bytes:
        """Of the cipher: one whole element, or none."""
        return data_of(self._ctx.encryptedContent.encryptionAlgorithm.parameters)

    @property
    def ciphertext(self) -> bytes:
        """The enciphered content."""
        return data_of(self._ctx.encryptedContent.encryptedContent)

    @property
    def recipients(self) -> tuple[RecipientInfo, ...]:
        """Who can open the message."""
        return tuple(_read_recipient(self._ctx, node) for node in chain(self._ctx, self._ctx.recipients))

    def open(
        self,
        certificate: Certificate,
        decrypt_key: HookFunction,
        decrypt: Optional[Callable[[bytes, bytes], BytesLike]] = None,
    ) -> bytes:
        """Opens the message as the recipient with this certificate, and returns the content.

        `decrypt_key`: is given the enciphered key, and returns the key, as `RsaPrivateKey.decrypt` does. `decrypt`: is
        given key and cipher text, and returns the content; AES-128 and triple DES in CBC mode need none. Exceptions of
        both come out of this call. Nothing tells whether the content was changed.
        """
        # Opening keeps key and content in the context that it works on.
        ctx, _ = decoded(*self._functions, self.der)
        nodes = chain(ctx, ctx.recipients)
        node = next((node for node in nodes if _read_recipient(ctx, node).is_of(certificate)), None)
        if node is None:
            raise Error(Status.KACERT_InvalidItemErr, "The message is not for this recipient.")
        operation = Operation()
        check(lib.KA_PKCS7_SetRecipientInfoKeyDecFunc(node, *operation.hook(decrypt_key)))
        key = operation.with_room(node.encryptedKey.length, lib.KA_PKCS7_DecryptDesKey, node)
        content = ctx.encryptedContent
        work = decrypt or self._decrypt
        check(lib.KA_PKCS7_SetEncryptContentDecFunc(content, *operation.hook(lambda data: work(key, data))))
        room = max(_SMALLEST_AREA, content.encryptedContent.length + _MORE)
        return operation.with_room(room, lib.KA_PKCS7_GetEncryptedContentInformation, content)

    def _decrypt(self, key: bytes, ciphertext: bytes) -> bytes:
        if self.algorithm not in _CIPHERS:
            raise Error(Status.KACERT_AlgorithmNotSupportErr)
        cipher, function = _CIPHERS[self.algorithm]
        return cipher(function, key, opened(self.parameters)[1], ciphertext)

    @staticmethod
    def make(
        content: BytesLike, recipients: Sequence[Union[Certificate, Recipient]], cipher: Optional[ContentCipher] = None
    ) -> bytes:
        """Enciphers the content, and returns the message.

        `recipients`: certificates with an RSA key of at most 2,048 bits, or `Recipient` with a callable of its own.
        `cipher`: AES-128 if there is none. The library makes no message with an enciphered content above some 10,000
        octets (KACERT_InvalidLengthErr); it opens larger ones. Each callable is called once; exceptions come out.
        """
        used = cipher or aes_128()
        operation = Operation()
        ctx = context(lib.KA_PKCS7_CreateEnvelopedDataEncodeCtx, lib.KA_PKCS7_DestroyEnvelopedDataEncodeCtx)
        check(lib.KA_PKCS7_SetEnvelopedDataAttributeInt(ctx, lib.PKCS7_ENVELOPED_VERSION, 0))
        put_all(
            lib.KA_PKCS7_SetEnvelopedDataAttributeChar,
            ctx,
            "PKCS7_ENVELOPED_",
            ENCRYPTED_CONTENT=content,
            CONTENTTYPE=oid_octets(oids.DATA),
            RECIPIENT_KEY=used.key,
        )
        for recipient in recipients:
            if isinstance(recipient, Certificate):
                recipient = Recipient(recipient, recipient.rsa_key.encrypt)
            hand_over(lib.KA_PKCS7_SetEnvelopedData_RecipientInfo, ctx, _make_recipient(operation, recipient))
        hand_over(lib.KA_PKCS7_SetEnvelopedData_EncryptedContent, ctx, _make_content(operation, used))
        return operation.filled(lib.KA_PKCS7_EncodePKCS7EnvelopedData, ctx)


def _read_recipient(ctx: Any, node: Any) -> RecipientInfo:
    return RecipientInfo(
        read_name(ctx, node.issuer),
        number(data_of(node.serial)),
        oid_text(data_of(node.keyEncryptionAlgorithm.oid)),
        data_of(node.encryptedKey),
    )


def _make_recipient(operation: Operation, recipient: Recipient) -> Any:
    node = context(lib.KA_PKCS7_CreateEncodeRecipientInfo, lib.KA_PKCS7_DestoryEncodeRecipientInfo)
    put_all(
        lib.KA_PKCS7_SetRecipientInfoAttributeChar,
        node,
        "PKCS7_RECIPIENT_",
        DN=recipient.certificate.issuer.der,
        SERIAL=number_octets(recipient.certificate.serial),
        KEYENCRYPTION_ALGO=oid_octets(oids.RSA_ENCRYPTION),
    )
    check(lib.KA_PKCS7_SetRecipientInfoKeyEncFunc(node, *operation.hook(recipient.encrypt)))
    return node


def _make_content(operation: Operation, cipher: ContentCipher) -> Any:
    part = context(lib.KA_PKCS7_CreateEnocdeEncryptedContent, lib.KA_PKCS7_DestoryEncodeEncryptedContent)
    put_all(
        lib.KA_PKCS7_SetEncryptedContentAttributeChar,
        part,
        "PKCS7_ENCRYPT_",
        CONTENT_TYPE=oid_octets(oids.DATA),
        ALGO=oid_octets(cipher.algorithm),
        PARAMETER=cipher.parameters,
    )
    check(lib.KA_PKCS7_SetEncryptContentEncFunc(part, *operation.hook(cipher.encrypt)))
    return part
