"""Octets that are no objects, and what follows from the headers."""

import array
import re
import subprocess
from pathlib import Path

import pytest
from conftest import START, raises
from cryptography.hazmat.primitives import serialization
from cryptography.hazmat.primitives.serialization import pkcs7

import karil
from karil._native import ffi, lib

HERE = Path(__file__).resolve().parent


@pytest.fixture(scope="module")
def objects(root):
    """Of each kind one, with much in it."""
    certificate = (
        root.builder(issuer=root.certificate, subject=[("C", "CN"), ("CN", "示例")])
        .basic_constraints(ca=True, path_length=1)
        .key_usage(karil.KeyUsage.CRL_SIGN)
        .extended_key_usages("2.999.1")
        .alternative_names(dns="host", email="a@b.c")
        .crl_distribution_points("http://a")
        .sign(root.sign())
    )
    crl = karil.CertificateListBuilder(issuer=root.certificate, this_update=START, number=1)
    request = karil.CertificationRequestBuilder(subject=[("CN", "x")], public_key=root.public)
    signed = pkcs7.PKCS7SignatureBuilder().set_data(b"x").add_signer(root.other, root.key, pkcs7.hashes.SHA256())
    return {
        karil.Certificate: certificate.der,
        karil.CertificateList: crl.revoke(1, START, karil.Reason.SUPERSEDED).revoke(2, START).sign(root.sign()).der,
        karil.CertificationRequest: request.attribute(karil.oids.CHALLENGE_PASSWORD, b"x").sign(root.sign()).der,
        karil.SignedData: signed.sign(serialization.Encoding.DER, [pkcs7.PKCS7Options.Binary]),
        karil.EnvelopedData: karil.EnvelopedData.make(b"x", [root.certificate]),
    }


def read_all(thing, root):
    """Every property, entry and verdict; each is a value or karil.Error."""
    steps = [lambda name=name: getattr(thing, name) for name in dir(type(thing)) if not name.startswith("_")]
    steps += [lambda: list(thing) if hasattr(thing, "__iter__") else None, lambda: repr(thing)]
    steps += [lambda: thing.verify(), lambda: thing.verify(root.certificate), lambda: thing.verify([root.certificate])]
    steps += [lambda: thing.open(root.certificate, root.rsa.decrypt)]
    for step in steps:
        try:
            step()
        except (karil.Error, TypeError, AttributeError) as failure:
            # A call that this kind of object does not have.
            assert isinstance(failure, karil.Error) or re.search("argument|has no attribute|iterable", str(failure))


@pytest.mark.parametrize(
    "change", [lambda octet: octet ^ 1, lambda octet: octet ^ 0xFF, lambda octet: 0, lambda octet: 0x80]
)
def test_changed_octets(objects, root, change):
    refused = 0
    for kind, der in objects.items():
        for place in range(0, len(der)):
            changed = bytearray(der)
            changed[place] = change(der[place])
            try:
                thing = kind.from_der(changed)
            except karil.Error:
                refused += 1
            else:
                if place % 3 == 0:
                    read_all(thing, root)
    assert refused > 200


def test_cut_off_octets(objects):
    for kind, der in objects.items():
        for length in range(len(der)):
            with pytest.raises(karil.Error):
                kind.from_der(der[:length])


@pytest.mark.parametrize(
    "value, error",
    [
        (b"", karil.Error),
        (b"0", karil.Error),
        (b"\x30\x84\xff\xff\xff\xff", karil.Error),
        (b"\x30\x80", karil.Error),
        ("text", TypeError),
        (None, TypeError),
        (7, TypeError),
        ([48, 0], TypeError),
    ],
)
def test_what_is_no_object(objects, value, error):
    for kind in objects:
        with pytest.raises(error):
            kind.from_der(value)
    with pytest.raises(error):
        karil.Pfx.open(value, "pass")
    with pytest.raises(error):
        karil.RsaPrivateKey.from_der(value)


def test_any_bytes_like_object(objects):
    for kind, der in objects.items():
        for view in (bytearray(der), memoryview(der), array.array("B", der), memoryview(bytes(2 * len(der)))):
            if len(view) > len(der):
                twice = bytearray(2 * len(der))
                twice[::2] = der
                view = memoryview(twice)[::2]
            assert kind.from_der(view).der == der


@pytest.mark.parametrize(
    "text",
    ["", "no PEM", "-----BEGIN CERTIFICATE-----", "-----BEGIN CERTIFICATE-----\nMAA=\n", "-----BEGIN " * 100000]
    + ["-----BEGIN X-----\nMAA=\n-----END X-----", "-----BEGIN CERTIFICATE-----\n!\n-----END CERTIFICATE-----"],
)
def test_what_is_no_pem(text):
    with raises("KACERT_InvalidParamErr"):
        karil.Certificate.from_pem(text)


def test_empty_certificates():
    """The library takes an empty SEQUENCE for a certificate: nothing is in it."""
    empty = karil.Certificate.from_der(b"\x30\x00")
    assert (empty.serial, len(empty.subject), empty.extensions, empty.public_key) == (0, 0, (), b"")
    assert empty.key_usage is None and empty.public_key_algorithm == "" and not empty.is_ca


def test_an_error_tells_what_it_is():
    with pytest.raises(karil.Error) as caught:
        karil.Certificate.from_der(b"\x04\x00")
    error = caught.value
    assert (error.status, error.name) == (
        106,
        "KACERT_InvalidTagErr",
    ) and error.status is karil.Status.KACERT_InvalidTagErr
    assert str(error) == "KACERT_InvalidTagErr (106): A DER tag is not the one that belongs there."
    assert str(karil.Error(77)) == "unknown status (77): This number is no status of karil."


def test_records_and_constants_are_those_of_the_compiler(tmp_path):
    """Sizes and offsets are cffi's own work in this mode; a wrong one would read foreign octets."""
    records = [ffi.typeof(name) for name in ffi.list_types()[0] if ffi.typeof(name).kind == "struct"]
    records = [record for record in records if record.fields]
    constants = [name for name in dir(lib) if isinstance(getattr(lib, name), int)]
    assert len(records) > 40 and len(constants) > 200
    places = [(f"sizeof({record.cname})", ffi.sizeof(record)) for record in records]
    places += [
        (f"offsetof({record.cname}, {name})", ffi.offsetof(record, name))
        for record in records
        for name, _ in record.fields
    ]
    places += [(name, getattr(lib, name)) for name in constants]
    lines = "".join(f'printf("%ld\\n", (long){expression});\n' for expression, _ in places)
    source = f"#include <karil/karil.h>\n#include <stdio.h>\nint main(void) {{\n{lines}return 0;\n}}\n"
    (tmp_path / "places.c").write_text(source)
    subprocess.run(["cc", "-I", HERE.parents[2] / "include", "places.c", "-o", "places"], cwd=tmp_path, check=True)
    printed = subprocess.run([tmp_path / "places"], capture_output=True, text=True, check=True).stdout.split()
    assert [int(number) for number in printed] == [number for _, number in places]


def test_the_readme(capsys, tmp_path, monkeypatch):
    """Its program runs, and prints what it says."""
    monkeypatch.chdir(tmp_path)
    (program,) = re.findall(r"```python\n(.*?)```", (HERE.parent / "README.md").read_text(), re.S)
    exec(compile(program, "README.md", "exec"), {})
    lines = capsys.readouterr().out.splitlines()
    assert lines[0].startswith("C=CN,CN=www.example.com ") and lines[0].endswith(" ('www.example.com',)")
    assert "www.example.com" in lines[1] and lines[2:4] == ["b'a secret'", "[2]"]
    assert lines[4].startswith("KACERT_VerifySignatureErr The password is wrong")
