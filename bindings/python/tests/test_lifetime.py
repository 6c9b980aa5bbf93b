"""Callables as hooks and their exceptions, threads, what the garbage collector may free, text."""

import ctypes
import gc
import weakref
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress

import pytest
from conftest import END, raises

import karil
from karil import keys, text
from karil._native import ffi


class Failure(BaseException):
    """No Exception, as KeyboardInterrupt is none."""


def raising(failure):
    def hook(octets):
        raise failure

    return hook


def every_operation(root, hook):
    """Each call that runs a callable, with this one in the place of what signs, enciphers or opens."""
    signed = karil.SignedData.from_der(root.message())
    envelope = karil.EnvelopedData.from_der(karil.EnvelopedData.make(b"x", [root.certificate]))
    request = karil.CertificationRequestBuilder(subject=[("CN", "x")], public_key=root.public)
    cipher = karil.ContentCipher(karil.oids.RC4, b"\5\0", b"key", hook)
    dressed = karil.Signer(root.certificate, hook, "sha1", [(karil.oids.SIGNING_TIME, b"\5\0")])
    return [
        lambda: root.builder().sign(hook),
        lambda: root.crl().sign(hook),
        lambda: request.sign(hook),
        lambda: karil.SignedData.make(b"x", [karil.Signer(root.certificate, hook)]),
        lambda: karil.SignedData.make(b"x", [dressed]),
        lambda: signed.verify(open_signature=lambda certificate, signature: hook(signature)),
        lambda: karil.EnvelopedData.make(b"x", [karil.Recipient(root.certificate, hook)]),
        lambda: karil.EnvelopedData.make(b"x", [root.certificate], cipher),
        lambda: envelope.open(root.certificate, hook),
        lambda: envelope.open(root.certificate, root.rsa.decrypt, lambda key, octets: hook(octets)),
    ]


@pytest.mark.parametrize("failure", [RuntimeError("no token"), Failure(), karil.Error(karil.Status.KAPKCS7_SignErr)])
def test_an_exception_comes_out_as_it_is(root, failure):
    for operation in every_operation(root, raising(failure)):
        with pytest.raises(type(failure)) as caught:
            operation()
        assert caught.value is failure


@pytest.mark.parametrize("result", [None, "text", 7, bytes(20000)])
def test_what_is_no_result(root, result):
    for operation in every_operation(root, lambda octets: result):
        with pytest.raises((ValueError, karil.Error) if type(result) is bytes else TypeError):
            operation()


def test_each_callable_is_called_once(root):
    calls = []
    for operation in every_operation(root, lambda octets: calls.append(octets) or b"\1" * 16):
        calls.clear()
        with suppress(karil.Error):  # no such signature verifies, and no such cipher text opens
            operation()
        assert [type(octets) for octets in calls] == [bytes]


def test_a_callable_that_uses_the_library(root):
    """It may sign, fail and verify inside, while the call outside is at work."""

    def sign(octets):
        with pytest.raises(Failure):
            root.builder().sign(raising(Failure()))
        root.builder(serial=8).sign(root.sign()).verify_signature(root.rsa.public_key)
        return root.sign()(octets)

    root.builder().sign(sign).verify_signature(root.rsa.public_key)


def test_nothing_outlives_its_use(root):
    """Neither a callable nor what it raised is held after the call. A builder that failed may be tried again, once."""
    key, failure, builder = root.sign(), Failure(), root.builder()
    gone = weakref.ref(key), weakref.ref(failure)
    with pytest.raises(Failure):
        builder.sign(raising(failure))
    assert builder.sign(key).serial == 7
    with pytest.raises(ValueError, match="one object"):
        builder.sign(key)
    gc.disable()
    del key
    assert gone[0]() is None
    gc.enable()
    del failure
    gc.collect()  # its traceback holds the frame that holds it
    assert gone[1]() is None


def test_private_numbers_are_wiped(root, monkeypatch):
    wipe, seen = keys._wipe, []
    monkeypatch.setattr(keys, "_wipe", lambda record: (wipe(record), seen.append(bytes(ffi.buffer(record)))))
    assert karil.RsaPrivateKey.from_der(root.private).to_der() == root.private
    gc.collect()
    assert seen == [bytes(ffi.sizeof("RsaPrivateKeyRecord"))]


def test_threads_share_what_is_decoded(root, leaf):
    """Eight threads read and verify the same objects, and each makes its own, while the collector is at work."""
    builder = root.crl()
    for serial in range(1, 500):
        builder.revoke(serial, END, karil.Reason.SUPERSEDED)
    crl = builder.sign(root.sign("sha1"), karil.oids.SHA1_WITH_RSA)
    message = karil.SignedData.from_der(leaf.message())
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
    operations = [lambda: karil.Certificate.from_der(root.certificate.der).alternative_names]
    operations += [lambda: karil.Certificate.from_der(b"0"), lambda: karil.Pfx.open(file, "pass")]
    operations += [lambda: karil.Pfx.open(file, "guess"), lambda: root.certificate.subject]
    before = []
    for count in (10, 100):
        before.append(in_use())
        for _ in range(count):
            hooked = [every_operation(root, hook) for hook in (raising(Failure()), root.rsa.sign)]
            for operation in sum(hooked, operations):
                with suppress(Failure, karil.Error):
                    operation()
    assert in_use() - before[1] < 20000


@pytest.mark.parametrize("value", ["", "abc", "示例", "示例" * 256, "示例" * 300, "a" + "示例" * 5000])
def test_text(value):
    """Decoded values may be longer than what one conversion takes; no pair is cut in two."""
    octets = value.encode("gbk")
    assert text.decode(octets) == value
    if len(octets) <= 1024:
        assert text.encode(value) == octets
    else:
        with raises("KACERT_InvalidLengthErr"):
            text.encode(value)
    assert text.decode(b"\x80") == "€" and text.encode("€") == b"\x80"
