"""PKCS#7 messages, against the openssl program and cryptography."""

import pytest
from conftest import DER, HASHES, PKCS1, Party, raises
from cryptography.hazmat.primitives.asymmetric import utils
from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes
from cryptography.hazmat.primitives.serialization.pkcs7 import PKCS7Options, PKCS7SignatureBuilder

import karil

TEXT = "a document, 文件".encode() * 100
TIME = (karil.oids.SIGNING_TIME, b"\x17\x0d260102030405Z")
# The certificates of the tests are not made for mail.
JUDGE = "cms -verify -inform DER -in message -binary -CAfile root -purpose any -auth_level 0"


def signer(party, digest="sha256", *attributes):
    """Signs a DigestInfo, whose last octets are the digest, with the key of cryptography."""
    prehashed = utils.Prehashed(HASHES[digest])
    sign = lambda info: party.key.sign(info[-prehashed.digest_size :], PKCS1, prehashed)  # noqa: E731
    return karil.Signer(party.certificate, sign, digest, attributes)


@pytest.mark.parametrize("digest", ["sha1", "sha256", "sha512"])
@pytest.mark.parametrize("attributes", [(), (TIME,)])
def test_openssl_verifies_what_is_signed(root, leaf, openssl, digest, attributes):
    message = karil.SignedData.make(TEXT, [signer(leaf, digest, *attributes), signer(root, "sha256")])
    assert openssl(JUDGE, message=message, root=root.certificate.to_pem()) == TEXT
    ours = karil.SignedData.from_der(message)
    assert ours.verify() == (leaf.certificate, root.certificate) == ours.certificates
    assert (ours.content, ours.content_type) == (TEXT, karil.oids.DATA)
    assert [item.digest_algorithm for item in ours.signers] == [getattr(karil.oids, digest.upper()), karil.oids.SHA256]


@pytest.mark.parametrize("option", [PKCS7Options.Binary, PKCS7Options.NoAttributes, PKCS7Options.DetachedSignature])
@pytest.mark.parametrize("digest", ["sha1", "sha256"])
def test_what_cryptography_signs(leaf, root, option, digest):
    builder = PKCS7SignatureBuilder().set_data(TEXT).add_signer(leaf.other, leaf.key, HASHES[digest])
    message = karil.SignedData.from_der(builder.add_certificate(root.other).sign(DER, [option, PKCS7Options.Binary]))
    if option == PKCS7Options.DetachedSignature:
        assert message.content == b"" and message.verify(content=TEXT) == (leaf.certificate,)
        for content in (None, TEXT + b"."):
            with pytest.raises(karil.Error):
                message.verify(content=content)
    else:
        assert message.content == TEXT and message.verify() == (leaf.certificate,)
        with pytest.raises(ValueError):
            message.verify(content=TEXT)


def test_a_key_that_the_library_does_not_take(root):
    """More than 2,048 bits, opened by cryptography."""
    large = Party("large", 3, bits=2304)
    message = karil.SignedData.from_der(karil.SignedData.make(TEXT, [signer(large)]))
    with raises("KACERT_VerifySignatureErr"):
        message.verify()
    key = large.key.public_key()
    opened = message.verify(open_signature=lambda _, octets: key.recover_data_from_signature(octets, PKCS1, None))
    assert opened == (large.certificate,)


def test_bad_messages(root, leaf):
    plain = karil.SignedData.make(TEXT, [signer(leaf)])
    dressed = karil.SignedData.make(TEXT, [signer(leaf, "sha256", TIME)])
    bare = karil.SignedData.make(TEXT, [signer(leaf)], certificates=[root.certificate])
    crl = root.crl().sign(root.sign())
    unsigned = karil.SignedData.make(b"", [], certificates=[root.certificate], crls=[crl])
    assert karil.SignedData.from_der(unsigned).crls == (crl,)
    for status, der, place in (
        ("KACERT_VerifySignatureErr", plain, plain.index(TEXT)),
        ("KACERT_VerifySignatureErr", dressed, dressed.index(TEXT)),
        ("KACERT_VerifySignatureErr", dressed, dressed.index(b"260102")),
        ("KACERT_VerifySignatureErr", dressed, dressed.index(b"\x01\x07\x01") + 2),  # the content type
        ("KACERT_VerifySignatureErr", plain, len(plain) - 1),
        ("KACERT_InvalidItemErr", bare, None),
        ("KACERT_InvalidItemErr", unsigned, None),
    ):
        with raises(status):
            karil.SignedData.from_der(bytes(octet ^ (i == place) for i, octet in enumerate(der))).verify()
    assert karil.SignedData.from_der(bare).verify([leaf.certificate]) == (leaf.certificate,)
    # Of the same issuer and number, with another key; of the same number alone.
    for status, issuer in (("KACERT_VerifySignatureErr", root), ("KACERT_InvalidItemErr", leaf)):
        with raises(status):
            karil.SignedData.from_der(bare).verify([Party("x", leaf.certificate.serial, issuer).certificate])


def test_openssl_opens_what_is_enveloped(root, leaf, openssl):
    recipients = [
        root.certificate,
        karil.Recipient(leaf.certificate, lambda key: leaf.key.public_key().encrypt(key, PKCS1)),
    ]
    aes = Cipher(algorithms.AES(b"k" * 32), modes.CBC(b"i" * 16))
    padded = TEXT + bytes([16 - len(TEXT) % 16]) * (16 - len(TEXT) % 16)
    own = karil.ContentCipher(
        karil.oids.AES256_CBC, b"\x04\x10" + b"i" * 16, b"k" * 32, lambda _: aes.encryptor().update(padded)
    )
    for cipher, decrypt in ((None, None), (own, lambda key, text: aes.decryptor().update(text)[: len(TEXT)])):
        message = karil.EnvelopedData.make(TEXT, recipients, cipher)
        ours = karil.EnvelopedData.from_der(message)
        for party in (root, leaf):
            files = dict(message=message, cert=party.certificate.to_pem(), key=party.pem)
            assert openssl("cms -decrypt -inform DER -in message -binary -recip cert -inkey key", **files) == TEXT
            assert ours.open(party.certificate, party.rsa.decrypt, decrypt) == TEXT
    with raises("KACERT_AlgorithmNotSupportErr"):
        ours.open(leaf.certificate, leaf.rsa.decrypt)
    with raises("KACERT_InvalidItemErr"):
        ours.open(Party("other", 9).certificate, leaf.rsa.decrypt)
    with raises("KACERT_InvalidLengthErr"):
        karil.EnvelopedData.make(b"x" * 11000, [leaf.certificate])


@pytest.mark.parametrize("cipher, oid", [("des3", karil.oids.DES_EDE3_CBC), ("aes128", karil.oids.AES128_CBC)])
def test_what_openssl_envelops(leaf, openssl, cipher, oid):
    files = dict(text=TEXT * 1000, cert=leaf.certificate.to_pem())
    message = karil.EnvelopedData.from_der(
        openssl(f"cms -encrypt -{cipher} -in text -binary -outform DER cert", **files)
    )
    assert (message.algorithm, message.content_type) == (oid, karil.oids.DATA)
    assert [item.is_of(leaf.certificate) for item in message.recipients] == [True]
    assert message.open(leaf.certificate, lambda key: leaf.key.decrypt(key, PKCS1)) == TEXT * 1000
