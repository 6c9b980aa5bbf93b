"""What the tests share: keys, certificates by cryptography, and the openssl program.

The `cryptography` package is the judge: what it makes is read here, and it reads what is made here.
"""

import os
import subprocess
import time
from datetime import datetime, timedelta, timezone

# Dates on the wire are local time; others write UTC.
os.environ["TZ"] = "UTC"
time.tzset()

import pytest  # noqa: E402
from cryptography import x509  # noqa: E402
from cryptography.hazmat.primitives import hashes, serialization  # noqa: E402
from cryptography.hazmat.primitives.asymmetric import padding, rsa  # noqa: E402
from cryptography.x509.oid import NameOID  # noqa: E402

import karil  # noqa: E402

START = datetime(2020, 1, 1, tzinfo=timezone.utc)
END = datetime(2037, 12, 31, 23, 59, 59, tzinfo=timezone.utc)
HASHES = {"sha1": hashes.SHA1(), "sha256": hashes.SHA256(), "sha512": hashes.SHA512()}


class Party:
    """A key and its certificate, by karil and by cryptography."""

    def __init__(self, name, serial, issuer=None):
        self.key = rsa.generate_private_key(65537, 2048)
        self.public = self.key.public_key().public_bytes(serialization.Encoding.DER, serialization.PublicFormat.PKCS1)
        self.private = self.key.private_bytes(
            serialization.Encoding.DER, serialization.PrivateFormat.TraditionalOpenSSL, serialization.NoEncryption()
        )
        self.pem = self.key.private_bytes(
            serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8, serialization.NoEncryption()
        )
        subject = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, name)])
        self.other = (
            x509.CertificateBuilder()
            .subject_name(subject)
            .issuer_name(issuer.other.subject if issuer else subject)
            .public_key(self.key.public_key())
            .serial_number(serial)
            .not_valid_before(START)
            .not_valid_after(END)
            .add_extension(x509.BasicConstraints(ca=True, path_length=None), critical=True)
            .add_extension(x509.SubjectKeyIdentifier(b"key of " + name.encode()), critical=False)
            .sign((issuer or self).key, hashes.SHA1())
        )
        self.certificate = karil.Certificate.from_der(self.other.public_bytes(serialization.Encoding.DER))
        self.rsa = karil.RsaPrivateKey.from_der(self.private)

    def sign(self, algorithm="sha256"):
        """A callable that signs with the key of cryptography."""
        return lambda data: self.key.sign(data, padding.PKCS1v15(), HASHES[algorithm])

    def builder(self, **changes):
        values = dict(subject=[("CN", "built")], public_key=self.public, serial=7, not_before=START, not_after=END)
        return karil.CertificateBuilder(**{**values, **changes})


@pytest.fixture(scope="session")
def root():
    return Party("root", 1)


@pytest.fixture(scope="session")
def leaf(root):
    return Party("leaf", 2**64 + 1, root)


@pytest.fixture
def openssl(tmp_path):
    """Runs the openssl program in a folder of its own, where the octets of `files` are, and returns what it prints."""

    def run(*arguments, **files):
        for name, octets in files.items():
            (tmp_path / name).write_bytes(octets if isinstance(octets, bytes) else octets.encode())
        done = subprocess.run(["openssl", *arguments], cwd=tmp_path, capture_output=True)
        assert done.returncode == 0, done.stderr.decode()
        return done.stdout

    run.folder = tmp_path
    return run


def naive(moment):
    """The digits that cryptography has for a time."""
    return moment.astimezone(timezone.utc).replace(tzinfo=None) if moment else None


def raises(status):
    """Expects karil.Error with a status, by its name."""
    return pytest.raises(karil.Error, match=f"^{status} ")


def days(count):
    return START + timedelta(days=count)
