"""Octets that are no objects, errors, and what follows from the headers."""

import array
import re
import subprocess
from contextlib import suppress
from pathlib import Path

import pytest
from conftest import DER, HASHES, START, raises
from cryptography.hazmat.primitives.serialization.pkcs7 import PKCS7Options, PKCS7SignatureBuilder

import karil
from karil._der import oid_text
from karil._native import ffi, lib

HERE = Path(__file__).resolve().parent


@pytest.fixture(scope="module")
def objects(root):
    """Of each kind one, with much in it, and what judges or opens it."""
    builder = root.builder(issuer=root.certificate, subject=[("C", "CN"), ("CN", "示例")])
    builder.basic_constraints(ca=True, path_length=1).key_usage(karil.KeyUsage.CRL_SIGN)
    builder.extended_key_usages("2.999.1").alternative_names(dns="host", email="a@b.c")
    certificate = builder.crl_distribution_points("http://a").sign(root.sign())
    crl = root.crl(number=1).revoke(1, START, karil.Reason.SUPERSEDED).revoke(2, START).sign(root.sign())
    request = karil.CertificationRequestBuilder(subject=[("CN", "x")], public_key=root.public)
    request = request.attribute(karil.oids.CHALLENGE_PASSWORD, b"x").sign(root.sign())
    signed = PKCS7SignatureBuilder().set_data(b"x").add_signer(root.other, root.key, HASHES["sha256"])
    envelope = karil.EnvelopedData.make(b"x", [root.certificate])
    return {
        karil.Certificate: (certificate.der, lambda it: it.verify(root.certificate)),
        karil.CertificateList: (crl.der, lambda it: (list(it), it.verify(root.certificate))),
        karil.CertificationRequest: (request.der, lambda it: (it.verify_signature(it.rsa_key), it.verify())),
        karil.SignedData: (signed.sign(DER, [PKCS7Options.Binary]), lambda it: it.verify([root.certificate])),
        karil.EnvelopedData: (envelope, lambda it: it.open(root.certificate, root.rsa.decrypt)),
    }


def is_property(kind, name):
    return isinstance(getattr(kind, name), property)


@pytest.mark.parametrize("keep, flip", [(0xFF, 0x01), (0xFF, 0xFF), (0, 0), (0, 0x80)])
def test_changed_octets(objects, keep, flip):
    """Decoding, every property and every verdict: each is a value or karil.Error."""
    refused = 0
    for kind, (der, judge) in objects.items():
        steps = [judge, repr, *(getattr(kind, name).fget for name in dir(kind) if is_property(kind, name))]
        for place in range(len(der)):
            changed = bytearray(der)
            changed[place] = der[place] & keep ^ flip
            try:
                thing = kind.from_der(changed)
            except karil.Error:
                refused += 1
                continue
            for step in steps if place % 3 == 0 else ():
                with suppress(karil.Error):
                    step(thing)
    assert refused > 200


def test_cut_off_octets(objects):
    for kind, (der, _) in objects.items():
        for length in range(len(der)):
            with pytest.raises(karil.Error):
                kind.from_der(der[:length])


@pytest.mark.parametrize("value", [b"", b"0", b"\x30\x84\xff\xff\xff\xff", b"\x30\x80", "text", None, 7, [48, 0]])
def test_what_is_no_object(objects, value):
    readers = [kind.from_der for kind in objects]
    for reader in [*readers, lambda der: karil.Pfx.open(der, "pass"), karil.RsaPrivateKey.from_der]:
        with pytest.raises(karil.Error if type(value) is bytes else TypeError) as caught:
            reader(value)
        # Of no octets not even a header is looked at.
        assert value != b"" or "Length" in caught.value.name


def test_any_bytes_like_object(objects):
    for kind, (der, _) in objects.items():
        spread = bytes(octet for pair in zip(der, der) for octet in pair)
        for view in (bytearray(der), memoryview(der), array.array("B", der), memoryview(spread)[::2]):
            assert kind.from_der(view).der == der
        again = kind.from_der(der + b"ignored")
        assert (
            kind.from_pem(again.to_pem()) == again == kind.from_der(der) != der
            and len({again, kind.from_der(der)}) == 1
        )


BEGIN, END = "-----BEGIN CERTIFICATE-----\n", "-----END CERTIFICATE-----\n"


@pytest.mark.parametrize("text", ["", "no", BEGIN, BEGIN + "MAA=", BEGIN * 99999, BEGIN + "!" + END, BEGIN[:11] + END])
def test_what_is_no_pem(text):
    with raises("KACERT_InvalidParamErr"):
        karil.Certificate.from_pem(text)


def test_what_is_missing():
    """An enveloped message without content, whose decoder has a status of 0, and object identifiers that do not end."""
    with raises("KACERT_InvalidItemErr"):
        karil.EnvelopedData.from_der(bytes.fromhex("301606092A864886F70D010703A00930070201003100 3000"))
    for octets in (b"\x2a\x86", b"\x2a" + b"\xff" * 30 + b"\x01"):
        with raises("KACERT_AlgorithmNotSupportErr"):
            oid_text(octets)


def test_empty_certificates():
    """The library takes an empty SEQUENCE for a certificate: nothing is in it."""
    empty = karil.Certificate.from_der(b"\x30\x00")
    assert (empty.serial, len(empty.subject), empty.extensions, empty.public_key) == (0, 0, (), b"")
    assert (empty.key_usage, empty.public_key_algorithm, empty.is_ca) == (None, "", False)


def test_an_error_tells_what_it_is():
    with raises("KACERT_InvalidTagErr") as caught:
        karil.Certificate.from_der(b"\x04\x00")
    assert caught.value.status is karil.Status.KACERT_InvalidTagErr and caught.value.status == 106
    assert str(caught.value) == "KACERT_InvalidTagErr (106): A DER tag is not the one that belongs there."
    assert str(karil.Error(77)) == "unknown status (77): This number is no status of karil."


def test_records_and_constants_are_those_of_the_compiler(tmp_path):
    """Sizes and offsets are cffi's own work in this mode; a wrong one would read foreign octets."""
    types = [ffi.typeof(name) for name in ffi.list_types()[0]]
    records = [record for record in types if record.kind == "struct" and record.fields]
    places = {f"sizeof({record.cname})": ffi.sizeof(record) for record in records}
    for record in records:
        places.update({f"offsetof({record.cname}, {name})": field.offset for name, field in record.fields})
    places.update({name: getattr(lib, name) for name in dir(lib) if isinstance(getattr(lib, name), int)})
    assert len(places) > 700
    lines = "".join(f'printf("%ld\\n", (long){place});\n' for place in places)
    source = f"#include <karil/karil.h>\n#include <stdio.h>\nint main(void) {{\n{lines}return 0;\n}}\n"
    (tmp_path / "places.c").write_text(source)
    subprocess.run(["cc", "-I", HERE.parents[2] / "include", "places.c", "-o", "places"], cwd=tmp_path, check=True)
    printed = subprocess.run([tmp_path / "places"], capture_output=True, check=True).stdout.split()
    assert dict(zip(places, map(int, printed))) == places


def test_the_readme(capsys):
    """Its program runs, and prints what it says."""
    (program,) = re.findall(r"```python\n(.*?)```", (HERE.parent / "README.md").read_text(), re.S)
    exec(compile(program, "README.md", "exec"), {})
    lines = capsys.readouterr().out.splitlines()
    assert lines[0].startswith("C=CN,CN=www.example.com ") and lines[0].endswith(" ('www.example.com',)")
    assert "www.example.com" in lines[1] and lines[2:4] == ["b'a secret'", "[2]"]
    assert lines[4].startswith("KACERT_VerifySignatureErr The password is wrong")
