"""PFX files, both ways."""

import pytest
from conftest import raises
from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.serialization import BestAvailableEncryption, PrivateFormat, load_der_private_key
from cryptography.hazmat.primitives.serialization.pkcs12 import PBES, load_pkcs12, serialize_key_and_certificates

import karil


def protection(algorithm):
    builder = PrivateFormat.PKCS12.encryption_builder().kdf_rounds(100).hmac_hash(hashes.SHA1())
    return builder.key_cert_algorithm(algorithm).build(b"pass")


def test_a_file_of_cryptography(root, leaf):
    parts = "名".encode(), leaf.key, leaf.other, [root.other]
    der = serialize_key_and_certificates(*parts, protection(PBES.PBESv1SHA1And3KeyTripleDESCBC))
    for password in ("pass", b"pass", bytearray(b"pass")):
        pfx = karil.Pfx.open(der, password)
        assert [item.certificate for item in pfx.certificates] == [leaf.certificate, root.certificate]
        assert (pfx.friendly_name, *(item.friendly_name for item in pfx.certificates)) == ("名", "名", None)
        assert load_der_private_key(pfx.key, None).private_numbers() == leaf.key.private_numbers()
    modern_mac = serialize_key_and_certificates(*parts, BestAvailableEncryption(b"pass"))
    modern_cipher = serialize_key_and_certificates(*parts, protection(PBES.PBESv2SHA256AndAES256CBC))
    for file, password, status in (
        (der, "Pass", "KACERT_VerifySignatureErr"),
        (der, "", "KACERT_VerifySignatureErr"),
        (der[:-1], "pass", "KACERT_LengthNotEqualErr"),
        (modern_mac, "pass", "KAPKCS7_RsaOperationErr"),
        (modern_cipher, "pass", "KACERT_AlgorithmNotSupportErr"),
    ):
        with raises(status):
            karil.Pfx.open(file, password)


@pytest.mark.parametrize("password", ["pass", "", "pässword"])
def test_a_file_for_cryptography(root, leaf, password, openssl):
    der = karil.Pfx.make(leaf.private, [leaf.certificate, root.certificate], password, friendly_name="叶子")
    theirs = load_pkcs12(der, password.encode())
    assert theirs.key.private_numbers() == leaf.key.private_numbers()
    assert theirs.cert.certificate == leaf.other and theirs.cert.friendly_name.decode() == "叶子"
    assert [item.certificate for item in theirs.additional_certs] == [root.other]
    printed = openssl(f"pkcs12 -legacy -in file -nokeys -clcerts -passin pass:{password}", file=der)
    assert leaf.certificate.to_pem().encode() in printed and root.certificate.to_pem().encode() not in printed
    again = karil.Pfx.open(der, password)
    assert (again.key, again.friendly_name) == (leaf.private, "叶子") and len(again.certificates) == 2


def test_what_is_refused(leaf):
    with raises("KACERT_InvalidItemErr"):
        karil.Pfx.make(leaf.private, [], "pass")
    with pytest.raises(ValueError):
        karil.Pfx.make(leaf.private, [leaf.certificate], "密码")
