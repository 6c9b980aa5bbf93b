"""Certificates: what cryptography reads or writes, property by property."""

import re
import time
from datetime import datetime, timezone
from hashlib import sha256
from ipaddress import ip_address
from pathlib import Path

import pytest
from conftest import DER, END, HASHES, PEM, PKCS1, START, naive, raises
from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec
from cryptography.x509.oid import ExtensionOID, NameOID

import karil

BUNDLE = Path("/etc/ssl/certs/ca-certificates.crt").read_bytes()
SYSTEM = [
    x509.load_pem_x509_certificate(block) for block in re.findall(rb"-----BEGIN.+?-----END[^\n]+\n", BUNDLE, re.S)
]
USAGES = "digital_signature content_commitment key_encipherment data_encipherment key_agreement key_cert_sign crl_sign"
KINDS = {"email": x509.RFC822Name, "dns": x509.DNSName, "directory": x509.DirectoryName}
KINDS.update(uri=x509.UniformResourceIdentifier, ip=x509.IPAddress)
KEYS = {"2.5.4.6": "C", "2.5.4.10": "O", "2.5.4.11": "OU", "2.5.4.3": "CN", "2.5.4.7": "L", "2.5.4.8": "S"}
KEYS["1.2.840.113549.1.9.1"] = "E"


def names(name):
    """The attributes of a name of cryptography, of each RDN the first, as karil takes it."""
    firsts = [next(iter(rdn)) for rdn in name.rdns]
    return [(KEYS.get(item.oid.dotted_string, item.oid.dotted_string), local(item.value)) for item in firsts]


def local(text):
    """Characters that code page 936 does not have become "?"; Python's own codec lacks the euro sign alone."""
    return "€".join(part.encode("gbk", "replace").decode("gbk") for part in text.split("€"))


def key_octets(key):
    if isinstance(key, ec.EllipticCurvePublicKey):
        return key.public_bytes(serialization.Encoding.X962, serialization.PublicFormat.UncompressedPoint)
    return key.public_bytes(DER, serialization.PublicFormat.PKCS1)


def usage_word(usage):
    """The bits of RFC 5280 4.2.1.3 from the top of 16."""
    word = sum(0x8000 >> bit for bit, name in enumerate(USAGES.split()) if getattr(usage, name))
    return word | (0x0100 * usage.encipher_only | 0x0080 * usage.decipher_only if usage.key_agreement else 0)


def same_names(found, wanted):
    values = {kind: wanted.get_values_for_type(form) for kind, form in KINDS.items()}
    values["directory"] = [names(name) for name in values["directory"]]
    found = {kind: list(getattr(found, kind)) for kind in KINDS}
    return {**found, "directory": [list(map(tuple, name)) for name in found["directory"]]} == values


def compare(ours, theirs):
    assert (ours.der, ours.tbs) == (theirs.public_bytes(DER), theirs.tbs_certificate_bytes)
    assert (ours.version, ours.serial, ours.signature) == (theirs.version.value, theirs.serial_number, theirs.signature)
    assert ours.signature_algorithm == ours.tbs_signature_algorithm == theirs.signature_algorithm_oid.dotted_string
    assert (naive(ours.not_before), naive(ours.not_after)) == (theirs.not_valid_before, theirs.not_valid_after)
    assert ours.public_key == key_octets(theirs.public_key())
    for name, other in ((ours.issuer, theirs.issuer), (ours.subject, theirs.subject)):
        assert (list(map(tuple, name)), name.der) == (names(other), other.public_bytes())
    assert [item[:2] for item in ours.extensions] == [(e.oid.dotted_string, e.critical) for e in theirs.extensions]
    for item, extension in zip(ours.extensions, theirs.extensions):
        # cryptography writes the texts of policies anew, in another string type.
        policies = extension.oid == ExtensionOID.CERTIFICATE_POLICIES
        assert policies or item.value == extension.value.public_bytes()
        matches = MATCHES.get(extension.oid)
        assert matches is None or matches(ours, extension.value), extension.oid


MATCHES = {
    ExtensionOID.KEY_USAGE: lambda ours, v: ours.key_usage.value == usage_word(v),
    ExtensionOID.BASIC_CONSTRAINTS: lambda ours, v: (ours.is_ca, ours.path_length) == (v.ca, v.path_length),
    ExtensionOID.SUBJECT_KEY_IDENTIFIER: lambda ours, v: ours.subject_key_id == v.digest,
    ExtensionOID.AUTHORITY_KEY_IDENTIFIER: lambda ours, v: ours.authority_key_id == v.key_identifier,
    ExtensionOID.EXTENDED_KEY_USAGE: lambda ours, v: list(ours.extended_key_usages) == [o.dotted_string for o in v],
    ExtensionOID.SUBJECT_ALTERNATIVE_NAME: lambda ours, v: same_names(ours.alternative_names, v),
    ExtensionOID.ISSUER_ALTERNATIVE_NAME: lambda ours, v: same_names(ours.issuer_alternative_names, v),
    ExtensionOID.CRL_DISTRIBUTION_POINTS: lambda ours, v: list(ours.crl_distribution_points)
    == [point.full_name[0].value for point in v],
}


def test_the_systems_certificates():
    counts = {True: 0, False: 0}
    for theirs in SYSTEM:
        fits = theirs.not_valid_after.timestamp() < 2**31
        counts[fits] += 1
        if fits:
            compare(karil.Certificate.from_der(theirs.public_bytes(DER)), theirs)
        else:
            with pytest.raises(karil.Error):
                karil.Certificate.from_der(theirs.public_bytes(DER))
    assert counts[True] > 50
    assert karil.Certificate.from_pem(BUNDLE).der == SYSTEM[0].public_bytes(DER)


ROLE = x509.ObjectIdentifier("2.999.1")
CHINESE = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, "示例公司"), x509.NameAttribute(ROLE, "x")])
URIS = [x509.UniformResourceIdentifier(uri) for uri in ("http://a", "http://b")]
GENERAL = [x509.DirectoryName(CHINESE), x509.RFC822Name("a@b.c"), x509.DNSName("one"), x509.DNSName("two")]
GENERAL += [*URIS, x509.RegisteredID(ROLE), *(x509.IPAddress(ip_address(ip)) for ip in ("192.0.2.1", "2001:db8::1"))]


@pytest.mark.parametrize(
    "extensions",
    [
        (),
        (x509.KeyUsage(*[True] * 9), x509.BasicConstraints(True, 0)),
        (x509.KeyUsage(*[False] * 9), x509.BasicConstraints(False, None)),
        (x509.ExtendedKeyUsage([ROLE]), x509.SubjectAlternativeName(GENERAL), x509.IssuerAlternativeName(GENERAL)),
        (x509.CRLDistributionPoints([x509.DistributionPoint([uri], None, None, None) for uri in URIS]),),
        (x509.UnrecognizedExtension(ROLE, b"\5\0"), x509.AuthorityKeyIdentifier(b"issuer", None, None)),
    ],
)
@pytest.mark.parametrize("critical", [True, False])
def test_fresh_certificates(extensions, critical):
    key = ec.generate_private_key(ec.SECP256R1())
    builder = x509.CertificateBuilder().subject_name(CHINESE).issuer_name(x509.Name([])).serial_number(2**159 - 1)
    builder = builder.public_key(key.public_key()).not_valid_before(START).not_valid_after(END)
    for extension in extensions:
        builder = builder.add_extension(extension, critical)
    theirs = builder.sign(key, hashes.SHA384())
    ours = karil.Certificate.from_pem(theirs.public_bytes(PEM).decode())
    compare(ours, theirs)
    assert x509.load_pem_x509_certificate(ours.to_pem().encode()) == theirs


def test_what_is_built_is_read_by_cryptography(root):
    subject = [("C", "CN"), ("S", "北京"), ("O", "示例公司€"), ("OU", "一"), ("OU", "two"), ("CN", "leaf"), ("E", "a@b.c")]
    usage = karil.KeyUsage.CRL_SIGN | karil.KeyUsage.DECIPHER_ONLY | karil.KeyUsage.KEY_AGREEMENT
    builder = root.builder(issuer=root.certificate, subject=subject, serial=2**128)
    builder.basic_constraints(ca=True, path_length=3).key_usage(usage).policy("2.999.2", "http://cps")
    builder.extended_key_usages("1.3.6.1.5.5.7.3.1", "2.999.1", critical=True).key_identifiers(subject=b"its own")
    builder.alternative_names(email="a@b.c", dns="host", uri="http://a", ip=ip_address("2001:db8::1"))
    builder.crl_distribution_points("http://one", "http://two").extension("2.999.3", b"\x04\x01x", critical=True)
    ours = builder.authority_information(ocsp="http://ocsp", issuers="http://issuers").sign(root.sign())
    theirs = x509.load_der_x509_certificate(ours.der)
    compare(ours, theirs)
    root.key.public_key().verify(theirs.signature, theirs.tbs_certificate_bytes, PKCS1, HASHES["sha256"])
    assert names(theirs.subject) == subject and theirs.issuer == root.other.subject
    assert (theirs.not_valid_before, theirs.not_valid_after) == (naive(START), naive(END))
    assert theirs.serial_number == 2**128 and theirs.version == x509.Version.v3
    found = {extension.oid.dotted_string: (extension.critical, extension.value) for extension in theirs.extensions}
    assert usage_word(found["2.5.29.15"][1]) == 0x0A80 and ours.key_usage == usage
    assert found["2.5.29.19"] == (True, x509.BasicConstraints(True, 3))
    assert found["2.5.29.37"][0] and not found["2.5.29.17"][0] and found["2.5.29.15"][0]
    assert found["2.5.29.35"][1].key_identifier == b"key of root" and found["2.5.29.14"][1].digest == b"its own"
    assert found["2.5.29.32"][1][0].policy_identifier.dotted_string == "2.999.2"
    assert [item.access_location.value for item in found["1.3.6.1.5.5.7.1.1"][1]] == ["http://ocsp", "http://issuers"]
    assert found["2.999.3"] == (True, x509.UnrecognizedExtension(x509.ObjectIdentifier("2.999.3"), b"\x04\x01x"))


@pytest.mark.parametrize(
    "call, error, words",
    [
        (lambda p: p.builder(subject=[("CN", "\U0001F600")]), ValueError, "code page 936"),
        (lambda p: p.builder(subject=[("DC", "x")]), ValueError, "DC"),
        (lambda p: p.builder(subject=[("CN", "x" * 1025)]), karil.Error, "InvalidLengthErr"),
        (lambda p: p.builder(serial=-1), ValueError, "negative"),
        (lambda p: p.builder(not_after=datetime(2030, 1, 1)), ValueError, "zone"),
        (lambda p: p.builder(not_after=datetime(2038, 2, 1, tzinfo=timezone.utc)), karil.Error, "InvalidTimeErr"),
        (lambda p: p.builder(public_key="text"), TypeError, "bytes-like"),
        (lambda p: p.builder().alternative_names(dns="a").alternative_names(dns="b"), karil.Error, "AlreadySet"),
        (lambda p: p.builder().extension("2.999.99999999999", b"\5\0"), karil.Error, "2.999.99999999999"),
        (lambda p: p.builder().extended_key_usages("no"), karil.Error, "InvalidItemErr"),
        (lambda p: p.builder(subject=[]).sign(p.sign()), karil.Error, "InvalidParamErr"),
    ],
)
def test_what_is_refused(root, call, error, words):
    with pytest.raises(error, match=words):
        call(root)


def test_verification(root, leaf):
    leaf.certificate.verify(root.certificate)
    leaf.certificate.verify_signature(root.certificate.rsa_key)
    modern = root.builder(issuer=root.certificate).sign(root.sign("sha512"), karil.oids.SHA512_WITH_RSA)
    modern.verify_signature(root.certificate.rsa_key)
    old = root.builder(issuer=root.certificate, not_after=START).sign(root.sign("sha1"), karil.oids.SHA1_WITH_RSA)
    changed = karil.Certificate.from_der(leaf.certificate.der[:-1] + bytes([leaf.certificate.der[-1] ^ 1]))
    for status, certificate, issuer in (
        ("KACERT_DnNotEqualErr", root.certificate, leaf),
        ("KACERT_TimeOutRangeErr", old, root),
        ("KACERT_InvalidSignatureAlgErr", modern, root),
        ("KACERT_VerifySignatureErr", changed, root),
    ):
        with raises(status):
            certificate.verify(issuer.certificate)
    # A block that ends in the right digest, and is no DigestInfo.
    with raises("KACERT_VerifySignatureErr"):
        root.rsa.public_key.verify(root.rsa.sign_block(bytes(19) + sha256(b"x").digest()), b"x")
    for certificate, key in ((leaf.certificate, leaf), (changed, root)):
        with raises("KACERT_VerifySignatureErr"):
            certificate.verify_signature(key.rsa.public_key)


def test_dates_are_local_time(root, monkeypatch):
    """The digits on the wire are those of the zone, on the way out and on the way in."""
    monkeypatch.setenv("TZ", "Asia/Shanghai")
    time.tzset()
    try:
        ours = root.builder().sign(root.sign())
        digits = x509.load_der_x509_certificate(ours.der).not_valid_before
        assert digits == datetime(2020, 1, 1, 8) == ours.not_before.replace(tzinfo=None) and ours.not_before == START
    finally:
        monkeypatch.undo()
        time.tzset()
