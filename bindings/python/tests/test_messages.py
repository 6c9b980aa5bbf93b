"""PKCS#7 messages, against the openssl program and cryptography."""

import pytest
from conftest import HASHES, Party, raises
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import padding, rsa, utils
from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes
from cryptography.hazmat.primitives.padding import PKCS7
from cryptography.hazmat.primitives.serialization import pkcs7

import karil

TEXT = "a document, 文件".encode() * 100
TIME = (karil.oids.SIGNING_TIME, b"\x17\x0d260102030405Z")
# The certificates of the tests are not made for mail.
JUDGE = "cms -verify -inform DER -in message -binary -CAfile root -purpose any -auth_level 0".split()


def signing(party, digest):
    """A callable that signs a DigestInfo with a key of cryptography."""
    scheme = padding.PKCS1v15(), utils.Prehashed(HASHES[digest])
    return lambda info: party.key.sign(info[-HASHES[digest].digest_size :], *scheme)


def signer(party, digest="sha256", *attributes):
    return karil.Signer(party.certificate, signing(party, digest), digest, attributes)


@pytest.mark.parametrize("digest", ["sha1", "sha256", "sha512"])
@pytest.mark.parametrize("attributes", [(), (TIME,)])
def test_openssl_verifies_what_is_signed(root, leaf, openssl, digest, attributes):
    message = karil.SignedData.make(TEXT, [signer(leaf, digest, *attributes), signer(root, "sha256")])
    assert openssl(*JUDGE, message=message, root=root.certificate.to_pem()) == TEXT
    ours = karil.SignedData.from_der(message)
    assert ours.verify() == (leaf.certificate, root.certificate) == ours.certificates
    assert ours.content == TEXT and ours.content_type == karil.oids.DATA
    assert [item.digest_algorithm for item in ours.signers] == [karil.oids.__dict__[digest.upper()], karil.oids.SHA256]
    assert [item.serial for item in ours.signers] == [leaf.certificate.serial, root.certificate.serial]


@pytest.mark.parametrize("options", [[], [pkcs7.PKCS7Options.NoAttributes], [pkcs7.PKCS7Options.DetachedSignature]])
@pytest.mark.parametrize("digest", [hashes.SHA1(), hashes.SHA256()])
def test_what_cryptography_signs(leaf, root, options, digest):
    builder = pkcs7.PKCS7SignatureBuilder().set_data(TEXT).add_signer(leaf.other, leaf.key, digest)
    der = builder.add_certificate(root.other).sign(serialization.Encoding.DER, [*options, pkcs7.PKCS7Options.Binary])
    message = karil.SignedData.from_der(der)
    detached = pkcs7.PKCS7Options.DetachedSignature in options
    assert message.content == (b"" if detached else TEXT)
    assert message.verify(content=TEXT if detached else None) == (leaf.certificate,)
    if detached:
        for content in (None, TEXT + b"."):
            with pytest.raises(karil.Error):
                message.verify(content=content)
    else:
        with pytest.raises(ValueError):
            message.verify(content=TEXT)


def test_a_key_that_the_library_does_not_take(root):
    """More than 2,048 bits, opened by cryptography."""
    key = rsa.generate_private_key(65537, 2304)
    octets = key.public_key().public_bytes(serialization.Encoding.DER, serialization.PublicFormat.PKCS1)
    large = Party.__new__(Party)
    large.key, large.certificate = key, root.builder(issuer=root.certificate, public_key=octets).sign(root.sign())
    message = karil.SignedData.from_der(karil.SignedData.make(TEXT, [signer(large)]))
    with raises("KACERT_VerifySignatureErr"):
        message.verify()

    def open_signature(certificate, signature):
        assert certificate == large.certificate
        return key.public_key().recover_data_from_signature(signature, padding.PKCS1v15(), None)

    assert message.verify(open_signature=open_signature) == (large.certificate,)


def test_bad_messages(root, leaf):
    plain = karil.SignedData.make(TEXT, [signer(leaf)])
    dressed = karil.SignedData.make(TEXT, [signer(leaf, "sha256", TIME)])
    bare = karil.SignedData.make(TEXT, [signer(leaf)], certificates=[root.certificate])
    crl = karil.CertificateListBuilder(issuer=root.certificate, this_update=root.certificate.not_before)
    crl = crl.sign(root.sign())
    unsigned = karil.SignedData.make(b"", [], certificates=[root.certificate], crls=[crl])
    assert karil.SignedData.from_der(unsigned).crls == (crl,)
    stranger = Party("root", leaf.certificate.serial)
    for status, der, place in (
        ("KACERT_VerifySignatureErr", plain, plain.index(TEXT)),
        ("KACERT_VerifySignatureErr", dressed, dressed.index(TEXT)),
        ("KACERT_VerifySignatureErr", dressed, dressed.index(b"260102")),
        ("KACERT_VerifySignatureErr", plain, -1),
        ("KACERT_InvalidItemErr", bare, None),
        ("KACERT_InvalidItemErr", unsigned, None),
    ):
        changed = bytearray(der)
        if place is not None:
            changed[place] ^= 1
        with raises(status):
            karil.SignedData.from_der(changed).verify()
    assert karil.SignedData.from_der(bare).verify([leaf.certificate]) == (leaf.certificate,)
    with raises("KACERT_VerifySignatureErr"):
        karil.SignedData.from_der(bare).verify([stranger.certificate])


def cipher_of(algorithm, key, iv):
    """A cipher of cryptography that pads, for both directions."""
    cipher, size = Cipher(algorithm(key), modes.CBC(iv)), algorithm.block_size

    def encrypt(content):
        padder, worker = PKCS7(size).padder(), cipher.encryptor()
        return worker.update(padder.update(content) + padder.finalize()) + worker.finalize()

    def decrypt(_, text):
        worker, unpadder = cipher.decryptor(), PKCS7(size).unpadder()
        return unpadder.update(worker.update(text) + worker.finalize()) + unpadder.finalize()

    return encrypt, decrypt


def test_openssl_opens_what_is_enveloped(root, leaf, openssl):
    recipients = [
        root.certificate,
        karil.Recipient(leaf.certificate, lambda key: leaf.key.public_key().encrypt(key, padding.PKCS1v15())),
    ]
    encrypt, decrypt = cipher_of(algorithms.AES, b"k" * 32, b"i" * 16)
    own = karil.ContentCipher(karil.oids.AES256_CBC, b"\x04\x10" + b"i" * 16, b"k" * 32, encrypt)
    for cipher in (None, own):
        message = karil.EnvelopedData.make(TEXT, recipients, cipher)
        ours = karil.EnvelopedData.from_der(message)
        for party in (root, leaf):
            files = dict(message=message, cert=party.certificate.to_pem(), key=party.pem)
            arguments = "cms -decrypt -inform DER -in message -binary -recip cert -inkey key".split()
            assert openssl(*arguments, **files) == TEXT
            assert ours.open(party.certificate, party.rsa.decrypt, decrypt if cipher else None) == TEXT
    with raises("KACERT_AlgorithmNotSupportErr"):
        ours.open(leaf.certificate, leaf.rsa.decrypt)
    with raises("KACERT_InvalidItemErr"):
        ours.open(Party("other", 9).certificate, leaf.rsa.decrypt)
    with raises("KACERT_InvalidLengthErr"):
        karil.EnvelopedData.make(b"x" * 11000, [leaf.certificate])


@pytest.mark.parametrize("cipher, oid", [("-des3", "DES_EDE3_CBC"), ("-aes128", "AES128_CBC")])
def test_what_openssl_envelops(leaf, openssl, cipher, oid):
    large = TEXT * 1000
    arguments = ["cms", "-encrypt", cipher, "-in", "text", "-binary", "-outform", "DER", "cert"]
    message = karil.EnvelopedData.from_der(openssl(*arguments, text=large, cert=leaf.certificate.to_pem()))
    assert message.algorithm == getattr(karil.oids, oid) and message.content_type == karil.oids.DATA
    assert [item.is_of(leaf.certificate) for item in message.recipients] == [True]
    open_key = lambda key: leaf.key.decrypt(key, padding.PKCS1v15())  # noqa: E731
    assert message.open(leaf.certificate, open_key) == large
