"""Callables as hooks, their exceptions, threads, and what the garbage collector may free."""

import ctypes
import gc
import weakref
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress

import pytest
from conftest import END, START, raises

import karil
from karil import keys, text
from karil._native import ffi


class Stop(BaseException):
    """Such as KeyboardInterrupt: no Exception."""


def raising(failure):
    def hook(octets):
        raise failure

    return hook


def every_operation(root, hook):
    """Each call that runs a callable, with this one in the place of what signs, enciphers or opens."""
    signed = karil.SignedData.from_der(
        karil.SignedData.make(b"x", [karil.Signer(root.certificate, root.rsa.sign_block)])
    )
    envelope = karil.EnvelopedData.from_der(karil.EnvelopedData.make(b"x", [root.certificate]))
    request = karil.CertificationRequestBuilder(subject=[("CN", "x")], public_key=root.public)
    cipher = karil.ContentCipher(karil.oids.RC4, b"\5\0", b"key", hook)
    attributes = [(karil.oids.SIGNING_TIME, b"\5\0")]
    return [
        lambda: root.builder().sign(hook),
        lambda: karil.CertificateListBuilder(issuer=root.certificate, this_update=START).sign(hook),
        lambda: request.sign(hook),
        lambda: karil.SignedData.make(b"x", [karil.Signer(root.certificate, hook)]),
        lambda: karil.SignedData.make(b"x", [karil.Signer(root.certificate, hook, "sha1", attributes)]),
        lambda: signed.verify(open_signature=lambda certificate, signature: hook(signature)),
        lambda: karil.EnvelopedData.make(b"x", [karil.Recipient(root.certificate, hook)]),
        lambda: karil.EnvelopedData.make(b"x", [root.certificate], cipher),
        lambda: envelope.open(root.certificate, hook),
        lambda: envelope.open(root.certificate, root.rsa.decrypt, lambda key, octets: hook(octets)),
    ]


@pytest.mark.parametrize("failure", [RuntimeError("no token"), Stop(), karil.Error(karil.Status.KAPKCS7_SignErr)])
def test_an_exception_comes_out_as_it_is(root, failure):
    for operation in every_operation(root, raising(failure)):
        with pytest.raises(type(failure)) as caught:
            operation()
        assert caught.value is failure


def test_what_is_no_result(root):
    for result, error in (
        (None, TypeError),
        ("text", TypeError),
        (7, TypeError),
        (bytes(20000), (ValueError, karil.Error)),
    ):
        for operation in every_operation(root, lambda octets: result):
            with pytest.raises(error):
                operation()


def test_each_callable_is_called_once(root):
    calls = []

    def counting(octets):
        calls.append(octets)
        return b"\1" * 16

    for operation in every_operation(root, counting):
        calls.clear()
        with suppress(karil.Error):  # no such signature verifies, and no such cipher text opens
            operation()
        assert len(calls) == 1 and type(calls[0]) is bytes


def test_a_second_attempt(root):
    """A builder whose callable failed is signed again, then once and for all."""
    builder = root.builder()
    with pytest.raises(RuntimeError):
        builder.sign(raising(RuntimeError()))
    assert builder.sign(root.sign()).serial == 7
    with pytest.raises(ValueError):
        builder.sign(root.sign())


def test_a_callable_that_uses_the_library(root):
    """It may sign, verify and fail inside, while the call outside is at work."""

    def sign(octets):
        inner = root.builder(serial=8).sign(root.sign())
        with pytest.raises(RuntimeError):
            root.builder().sign(raising(RuntimeError()))
        inner.verify_signature(root.rsa.public_key)
        return root.sign()(octets)

    root.builder().sign(sign).verify_signature(root.rsa.public_key)


def test_nothing_outlives_its_use(root):
    """Neither a callable nor what it raised is held after the call; children hold what they live in."""

    class Key:
        def __call__(self, octets):
            return root.sign()(octets)

    class Failure(RuntimeError):
        pass

    key, failure = Key(), Failure()
    gone = weakref.ref(key), weakref.ref(failure)
    builder = root.builder()
    with pytest.raises(RuntimeError):
        builder.sign(raising(failure))
    certificate = builder.sign(key)
    del key, failure
    gc.collect()
    assert [reference() for reference in gone] == [None, None]
    message = karil.SignedData.from_der(karil.SignedData.make(b"x", [karil.Signer(certificate, root.rsa.sign_block)]))
    signer, names = message.signers[0], certificate.subject
    points = karil.Certificate.from_der(certificate.der).crl_distribution_points
    del message, certificate, builder
    gc.collect()
    assert signer.serial == 7 and list(names) == [("CN", "built")] and points == ()


def test_private_numbers_are_wiped(root, monkeypatch):
    wipe, seen = keys._wipe, []
    monkeypatch.setattr(keys, "_wipe", lambda record: (wipe(record), seen.append(bytes(ffi.buffer(record)))))
    assert karil.RsaPrivateKey.from_der(root.private).to_der() == root.private
    gc.collect()
    assert seen == [bytes(ffi.sizeof("RsaPrivateKeyRecord"))]


def test_threads_share_what_is_decoded(root, leaf):
    """Eight threads read and verify the same objects, and each makes its own, while the collector is at work."""
    crl = karil.CertificateListBuilder(issuer=root.certificate, this_update=START)
    for serial in range(1, 500):
        crl.revoke(serial, END, karil.Reason.SUPERSEDED)
    crl = crl.sign(root.sign("sha1"), karil.oids.SHA1_WITH_RSA)
    message = karil.SignedData.from_der(
        karil.SignedData.make(b"x" * 999, [karil.Signer(leaf.certificate, leaf.rsa.sign_block)])
    )
    envelope = karil.EnvelopedData.from_der(karil.EnvelopedData.make(b"x" * 999, [leaf.certificate]))

    def work(number):
        for _ in range(20):
            leaf.certificate.verify(root.certificate)
            crl.verify(root.certificate)
            assert sum(entry.serial for entry in crl) == 124750
            assert message.verify() == (leaf.certificate,) and leaf.certificate.subject.text == "CN=leaf"
            assert envelope.open(leaf.certificate, leaf.rsa.decrypt) == b"x" * 999
            with pytest.raises(ZeroDivisionError):
                root.builder().sign(lambda octets: number // 0)
            assert root.builder(serial=number).sign(root.rsa.sign).serial == number
            gc.collect(0)
        return number

    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(work, range(8))) == list(range(8))


class Blocks(ctypes.Structure):
    """What mallinfo2 returns: the eighth number is the octets in use."""

    _fields_ = [(f"number{i}", ctypes.c_size_t) for i in range(10)]


def in_use():
    gc.collect()
    mallinfo = ctypes.CDLL(None).mallinfo2
    mallinfo.restype = Blocks
    return mallinfo().number7


def test_contexts_are_freed(root):
    """After a failure too. A context that is lost is some hundred octets a time."""
    file = karil.Pfx.make(root.private, [root.certificate], "pass")

    def rounds(count):
        for _ in range(count):
            karil.Certificate.from_der(root.certificate.der).alternative_names
            karil.Pfx.open(file, "pass")
            for failing in (lambda: karil.Certificate.from_der(b"0"), lambda: karil.Pfx.open(file, "guess")):
                with pytest.raises(karil.Error):
                    failing()
            for hook in (raising(RuntimeError()), root.rsa.sign):
                for operation in every_operation(root, hook):
                    with suppress(RuntimeError, karil.Error):
                        operation()

    rounds(10)
    before = in_use()
    rounds(100)
    assert in_use() - before < 20000


@pytest.mark.parametrize(
    "value, octets",
    [("", b""), ("abc", b"abc"), ("示例", b"\xca\xbe\xc0\xfd"), ("€", b"\x80"), ("示例" * 256, b"\xca\xbe\xc0\xfd" * 256)],
)
def test_text(value, octets):
    assert text.encode(value) == octets and text.decode(octets) == value


def test_long_text():
    """Decoded values may be longer than what one conversion takes; no pair is cut in two."""
    octets = b"a" + b"\xca\xbe\xc0\xfd" * 5000
    assert text.decode(octets) == octets.decode("gbk")
    for value in ("x" * 1025, "示" * 513):
        with raises("KACERT_InvalidLengthErr"):
            text.encode(value)
