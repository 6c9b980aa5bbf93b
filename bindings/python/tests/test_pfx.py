"""PFX files, both ways."""

import pytest
from conftest import raises
from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.serialization import (
    BestAvailableEncryption,
    PrivateFormat,
    load_der_private_key,
    pkcs12,
)

import karil


def encryption(password, algorithm=pkcs12.PBES.PBESv1SHA1And3KeyTripleDESCBC, mac=hashes.SHA1()):
    builder = PrivateFormat.PKCS12.encryption_builder().kdf_rounds(100).key_cert_algorithm(algorithm).hmac_hash(mac)
    return builder.build(password)


def test_a_file_of_cryptography(root, leaf):
    der = pkcs12.serialize_key_and_certificates("名".encode(), leaf.key, leaf.other, [root.other], encryption(b"pass"))
    for password in ("pass", b"pass", bytearray(b"pass")):
        pfx = karil.Pfx.open(der, password)
        assert [item.der for item in pfx.certificates] == [leaf.certificate.der, root.certificate.der]
        assert pfx.certificates[0].certificate == leaf.certificate
        assert (pfx.friendly_name, pfx.certificates[0].friendly_name, pfx.certificates[1].friendly_name) == (
            "名",
            "名",
            None,
        )
        assert load_der_private_key(pfx.key, None).private_numbers() == leaf.key.private_numbers()
    for file, password, status in (
        (der, "Pass", "KACERT_VerifySignatureErr"),
        (der, "", "KACERT_VerifySignatureErr"),
        (b"", "pass", "KACERT_LengthNotEqualErr"),
        (der[:-1], "pass", "KACERT_LengthNotEqualErr"),
        (modern(leaf, BestAvailableEncryption(b"pass")), "pass", "KAPKCS7_RsaOperationErr"),
        (
            modern(leaf, encryption(b"pass", pkcs12.PBES.PBESv2SHA256AndAES256CBC)),
            "pass",
            "KACERT_AlgorithmNotSupportErr",
        ),
    ):
        with raises(status):
            karil.Pfx.open(file, password)


def modern(leaf, protection):
    return pkcs12.serialize_key_and_certificates(None, leaf.key, leaf.other, None, protection)


@pytest.mark.parametrize("password", ["pass", "", "pässword"])
def test_a_file_for_cryptography(root, leaf, password, openssl):
    chain = [leaf.certificate, root.certificate]
    der = karil.Pfx.make(leaf.private, chain, password, friendly_name="叶子")
    theirs = pkcs12.load_pkcs12(der, password.encode())
    assert theirs.key.private_numbers() == leaf.key.private_numbers()
    assert theirs.cert.certificate == leaf.other and theirs.cert.friendly_name.decode() == "叶子"
    assert [item.certificate for item in theirs.additional_certs] == [root.other]
    arguments = "pkcs12 -legacy -in file -nokeys -clcerts -passin"
    assert leaf.certificate.to_pem().encode() in openssl(*arguments.split(), f"pass:{password}", file=der)
    again = karil.Pfx.open(der, password)
    assert again.key == leaf.private and again.friendly_name == "叶子"
    assert repr(again) == "<karil.Pfx with 2 certificates>"


def test_what_is_refused(leaf):
    with raises("KACERT_InvalidItemErr"):
        karil.Pfx.make(leaf.private, [], "pass")
    with pytest.raises(ValueError):
        karil.Pfx.make(leaf.private, [leaf.certificate], "密码")
