"""What the tests share: keys and certificates by cryptography, which is the judge, and the openssl program."""

import os
import subprocess
import time
from datetime import datetime, timedelta, timezone

os.environ["TZ"] = "UTC"  # dates on the wire are local time; others write UTC
time.tzset()

import pytest  # noqa: E402
from cryptography import x509  # noqa: E402
from cryptography.hazmat.primitives import hashes, serialization  # noqa: E402
from cryptography.hazmat.primitives.asymmetric import padding, rsa  # noqa: E402
from cryptography.x509.oid import NameOID  # noqa: E402

import karil  # noqa: E402

DER, PEM = serialization.Encoding.DER, serialization.Encoding.PEM
START = datetime(2020, 1, 1, tzinfo=timezone.utc)
END = datetime(2037, 12, 31, 23, 59, 59, tzinfo=timezone.utc)
HASHES = {"sha1": hashes.SHA1(), "sha256": hashes.SHA256(), "sha512": hashes.SHA512()}
PKCS1 = padding.PKCS1v15()


class Party:
    """A key and its certificate, by cryptography (`key`, `other`) and by karil (`rsa`, `certificate`)."""

    def __init__(self, name, serial, issuer=None, bits=2048):
        self.key = rsa.generate_private_key(65537, bits)
        self.public = self.key.public_key().public_bytes(DER, serialization.PublicFormat.PKCS1)
        plain = serialization.NoEncryption()
        self.private = self.key.private_bytes(DER, serialization.PrivateFormat.TraditionalOpenSSL, plain)
        self.pem = self.key.private_bytes(PEM, serialization.PrivateFormat.PKCS8, plain)
        subject = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, name)])
        builder = x509.CertificateBuilder().subject_name(subject).serial_number(serial)
        builder = builder.issuer_name(issuer.other.subject if issuer else subject)
        builder = builder.public_key(self.key.public_key()).not_valid_before(START).not_valid_after(END)
        builder = builder.add_extension(x509.BasicConstraints(ca=True, path_length=None), critical=True)
        builder = builder.add_extension(x509.SubjectKeyIdentifier(b"key of " + name.encode()), critical=False)
        self.other = builder.sign((issuer or self).key, hashes.SHA1())
        self.certificate = karil.Certificate.from_der(self.other.public_bytes(DER))
        self.rsa = karil.RsaPrivateKey.from_der(self.private) if bits <= 2048 else None

    def sign(self, algorithm="sha256"):
        """A callable that signs with the key of cryptography."""
        return lambda data: self.key.sign(data, PKCS1, HASHES[algorithm])

    def builder(self, **changes):
        values = dict(subject=[("CN", "built")], public_key=self.public, serial=7, not_before=START, not_after=END)
        return karil.CertificateBuilder(**{**values, **changes})

    def crl(self, **changes):
        return karil.CertificateListBuilder(**{**dict(issuer=self.certificate, this_update=START), **changes})

    def message(self, content=b"x", **changes):
        return karil.SignedData.make(content, [karil.Signer(self.certificate, self.rsa.sign_block)], **changes)


@pytest.fixture(scope="session")
def root():
    return Party("root", 1)


@pytest.fixture(scope="session")
def leaf(root):
    return Party("leaf", 2**64 + 1, root)


@pytest.fixture
def openssl(tmp_path):
    """Runs the openssl program in a folder that has `files`, and returns what it prints."""

    def run(arguments, **files):
        for name, octets in files.items():
            (tmp_path / name).write_bytes(octets if isinstance(octets, bytes) else octets.encode())
        done = subprocess.run(["openssl", *arguments.split()], cwd=tmp_path, capture_output=True)
        assert done.returncode == 0, done.stderr.decode()
        return done.stdout

    return run


def naive(moment):
    """The digits that cryptography has for a time."""
    return moment.astimezone(timezone.utc).replace(tzinfo=None) if moment else None


def raises(status):
    """Expects karil.Error with a status, by its name."""
    return pytest.raises(karil.Error, match=f"^{status} ")


def days(count):
    return START + timedelta(days=count)
