"""Revocation lists and requests against cryptography."""

from itertools import islice

from conftest import DER, END, PEM, START, days, naive, raises
from cryptography import x509
from cryptography.hazmat.primitives import hashes
from cryptography.x509.oid import AttributeOID, NameOID

import karil

FLAGS = {**{karil.Reason[flag.name.upper()]: flag for flag in x509.ReasonFlags}, None: None}


def compare(ours, theirs):
    assert (ours.tbs, ours.signature) == (theirs.tbs_certlist_bytes, theirs.signature)
    assert ours.signature_algorithm == theirs.signature_algorithm_oid.dotted_string
    assert [value for _, value in ours.issuer] == [attribute.value for attribute in theirs.issuer]
    assert (naive(ours.this_update), naive(ours.next_update)) == (theirs.last_update, theirs.next_update)
    assert [item.oid for item in ours.extensions] == [extension.oid.dotted_string for extension in theirs.extensions]
    assert [item.value for item in ours.extensions] == [e.value.public_bytes() for e in theirs.extensions]
    entries = [(entry.serial_number, entry.revocation_date, reason_of(entry)) for entry in theirs]
    assert [(entry.serial, naive(entry.date), FLAGS[entry.reason]) for entry in ours] == entries


def reason_of(entry):
    return next((item.value.reason for item in entry.extensions if item.oid.dotted_string == "2.5.29.21"), None)


def test_lists_of_cryptography(root, leaf):
    entries = [(1, START, None), (2**150, END, None)]
    # cryptography does not write `unspecified`.
    entries += [
        (10, days(i), flag) for i, flag in enumerate(FLAGS.values()) if flag not in (None, FLAGS[karil.Reason(0)])
    ]
    for listed in (entries, []):
        builder = x509.CertificateRevocationListBuilder().issuer_name(root.other.subject)
        builder = builder.last_update(START).next_update(END)
        builder = builder.add_extension(x509.CRLNumber(2**70), False).add_extension(x509.DeltaCRLIndicator(5), True)
        for serial, date, reason in listed:
            entry = x509.RevokedCertificateBuilder().serial_number(serial).revocation_date(date)
            entry = entry.add_extension(x509.CRLReason(reason), False) if reason else entry
            builder = builder.add_revoked_certificate(entry.build())
        theirs = builder.sign(root.key, hashes.SHA1())
        ours = karil.CertificateList.from_pem(theirs.public_bytes(PEM))
        compare(ours, theirs)
        assert (ours.number, ours.base_number, ours.version) == (2**70, 5, 1)
        ours.verify(root.certificate)
        with raises("KACERT_DnNotEqualErr"):
            ours.verify(leaf.certificate)


def test_lists_for_cryptography(root):
    builder = root.crl(next_update=END, number=1)
    for i, reason in enumerate(FLAGS):
        builder.revoke(2**64 + i, days(i), reason)
    first = builder.sign(root.sign())
    builder = root.crl(this_update=days(1), number=2, base_number=1).carry_over(first).revoke(3, END)
    second = builder.sign(root.sign("sha512"), karil.oids.SHA512_WITH_RSA)
    for ours in (first, second):
        theirs = x509.load_der_x509_crl(ours.der)
        compare(ours, theirs)
        assert theirs.is_signature_valid(root.key.public_key())
        ours.verify_signature(root.certificate.rsa_key)
    assert (first.number, first.base_number, second.number, second.base_number) == (1, None, 2, 1)
    assert list(second)[:-1] == list(first) and second.next_update is None and len(list(first)) == len(FLAGS)
    identifier = theirs.extensions.get_extension_for_class(x509.AuthorityKeyIdentifier).value.key_identifier
    assert identifier == b"key of root"


def test_entries_outlive_their_list(root):
    """An iterator holds what it walks over, and takes no more of it than was asked for."""
    builder = root.crl()
    for serial in range(1, 50001):
        builder.revoke(serial, START)
    entries = iter(builder.sign(root.sign()))
    assert [entry.serial for entry in islice(entries, 3)] == [1, 2, 3]
    assert sum(1 for _ in entries) == 49997


def test_a_request_of_cryptography(leaf):
    name = x509.Name([x509.NameAttribute(NameOID.COUNTRY_NAME, "CN"), x509.NameAttribute(NameOID.COMMON_NAME, "示例")])
    wanted = x509.SubjectAlternativeName([x509.DNSName("host")])
    builder = x509.CertificateSigningRequestBuilder().subject_name(name).add_extension(wanted, True)
    theirs = builder.add_attribute(AttributeOID.CHALLENGE_PASSWORD, b"secret").sign(leaf.key, hashes.SHA1())
    ours = karil.CertificationRequest.from_der(theirs.public_bytes(DER))
    assert list(ours.subject) == [("C", "CN"), ("CN", "示例")] and ours.subject.der == name.public_bytes()
    assert ours.public_key == leaf.public and ours.public_key_algorithm == karil.oids.RSA_ENCRYPTION
    assert (ours.tbs, ours.signature, ours.version) == (theirs.tbs_certrequest_bytes, theirs.signature, 0)
    assert ours.requested_extensions == (("2.5.29.17", True, wanted.public_bytes()),)
    assert (karil.oids.CHALLENGE_PASSWORD, b"\x0c\x06secret") in ours.attributes
    ours.verify()
    # The name goes into a certificate as it is.
    assert leaf.builder(subject=ours.subject).sign(leaf.sign()).subject.der == name.public_bytes()


def test_a_request_for_cryptography(leaf):
    builder = karil.CertificationRequestBuilder(subject=[("O", "示例"), ("CN", "leaf")], public_key=leaf.public)
    ours = builder.attribute(karil.oids.CHALLENGE_PASSWORD, b"secret").sign(leaf.sign())
    theirs = x509.load_der_x509_csr(ours.der)
    assert theirs.is_signature_valid and [attribute.value for attribute in theirs.subject] == ["示例", "leaf"]
    assert theirs.public_key().public_numbers() == leaf.key.public_key().public_numbers()
    assert karil.CertificationRequest.from_pem(ours.to_pem()) == ours
    ours.verify_signature(ours.rsa_key)
    with raises("KACERT_InvalidSignatureAlgErr"):
        ours.verify()
    with raises("KACERT_VerifySignatureErr"):
        karil.CertificationRequest.from_der(ours.der.replace(b"leaf", b"Leaf")).verify_signature(ours.rsa_key)
