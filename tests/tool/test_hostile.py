"""Files that mean no good: each is refused with status 3 and one line, or shown; nothing else."""

import json
import random

import pytest
from conftest import karil, key, openssl, refused, run
from test_show import new_certificate

NESTED = b"\x30\x80" * 100_000
DEEP = b""
for _ in range(20_000):
    DEEP = b"\x30\x84" + len(DEEP).to_bytes(4, "big") + DEEP

FILES = {
    "empty": b"",
    "one octet": b"\x30",
    "huge length": b"\x30\x84\x7f\xff\xff\xff\x30",
    "length of eight octets": b"\x30\x88" + b"\xff" * 8,
    "zeros": bytes(10_000_000),
    "text": b"hello\n" * 1000,
    "indefinite": NESTED,
    "indefinite and closed": NESTED + bytes(200_000),
    "indefinite message": b"\x30\x80\x06\x09\x2a\x86\x48\x86\xf7\x0d\x01\x07\x02\xa0\x80" + bytes(4),
    "deep": DEEP,
    "empty certificate": b"-----BEGIN CERTIFICATE-----\nMAA=\n-----END CERTIFICATE-----\n",
    "empty PEM": b"-----BEGIN CERTIFICATE-----\n-----END CERTIFICATE-----\n",
    "message as a certificate": b"-----BEGIN CERTIFICATE-----\nMAsGCSqGSIb3DQEHAQ==\n-----END CERTIFICATE-----\n",
    "many small elements": b"\x30\x83\x0f\x42\x40" + b"\x05\x00" * 500_000,
}


@pytest.mark.parametrize("name", FILES)
def test_refused(folder, name):
    (folder / "file").write_bytes(FILES[name])
    for command in (["show"], ["show", "--json"], ["verify", "--issuer", "file"]):
        refused(karil(*command, "file", status=3))


def test_what_is_no_file(folder):
    (folder / "secret").write_bytes(b"x")
    (folder / "secret").chmod(0)
    names = [".", "none", "/dev/null", "-"]
    for name in names:
        refused(karil("show", name, input=b"", status=3))
    if run("id", "-u").stdout != b"0\n":
        refused(karil("show", "secret", status=3))


@pytest.fixture
def samples(folder):
    """One of each kind that openssl writes."""
    new_certificate("/C=CN/CN=a", "subjectAltName=DNS:a,IP:192.0.2.1", "certificatePolicies=1.2.3", "keyUsage=cRLSign")
    (folder / "text").write_text("content")
    (folder / "index").write_text("R\t300101000000Z\t260101120000Z,keyCompromise\t0A\tunknown\t/CN=a\n")
    (folder / "conf").write_text("[ca]\ndefault_ca=a\n[a]\ndatabase=index\ndefault_md=sha256\ndefault_crl_days=7\n")
    der, signer = ("-outform", "DER", "-out"), ("-in", "cert.pem", "-inkey", key("any"))
    openssl("x509", "-in", "cert.pem", *der, "certificate")
    openssl("req", "-new", "-key", key("any"), "-subj", "/CN=a", "-addext", "subjectAltName=DNS:a", *der, "request")
    openssl("ca", "-config", "conf", "-gencrl", "-cert", "cert.pem", "-keyfile", key("any"), "-out", "crl.pem")
    openssl("crl", "-in", "crl.pem", *der, "crl")
    openssl("rsa", "-in", key("any"), "-traditional", *der, "key")
    openssl("cms", "-sign", "-binary", "-nodetach", "-in", "text", "-signer", "cert.pem", *signer[2:], *der, "signed")
    openssl("cms", "-encrypt", "-aes128", "-in", "text", *der, "enveloped", "cert.pem")
    openssl("pkcs12", "-export", "-legacy", *signer, "-passout", "pass:", "-out", "pfx")
    names = ["certificate", "request", "crl", "key", "signed", "enveloped", "pfx"]
    return {name: (folder / name).read_bytes() for name in names}


def test_cut_short(folder, samples):
    (folder / "password").write_text("\n")
    for name, octets in samples.items():
        cuts = sorted({len(octets) * i // 40 for i in range(1, 40)} | set(range(1, 12)) | {len(octets) - 1})
        for cut in cuts:
            (folder / f"cut{cut}").write_bytes(octets[:cut])
        done = karil("show", "--password-file", "password", *(f"cut{cut}" for cut in cuts), status=3)
        assert len(done.stderr.splitlines()) == len(cuts), name


def test_changed_octets(folder, samples):
    """No crash and no endless loop, whatever octet changes; JSON stays JSON."""
    (folder / "password").write_text("\n")
    source = random.Random(7)
    for name, octets in samples.items():
        files = []
        for i in range(150):
            changed = bytearray(octets)
            for _ in range(source.choice([1, 1, 3])):
                changed[source.randrange(len(octets))] = source.choice([0, 1, 0x7F, 0x80, 0xFF, source.randrange(256)])
            files.append(f"changed{i}")
            (folder / files[-1]).write_bytes(changed)
        done = karil("show", "--json", "--secret", "--password-file", "password", *files, status=None)
        assert done.returncode in (0, 1, 3) and b"Sanitizer" not in done.stderr, done.stderr
        assert len(json.loads(done.stdout)) == len(files), name
