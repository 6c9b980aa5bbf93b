"""karil convert, and how files are read and written."""

import shutil
import stat

import pytest
from conftest import karil, key, openssl, refused


@pytest.fixture
def files(folder):
    shutil.copy(key("any"), "key.pem")
    openssl("req", "-x509", "-key", "key.pem", "-out", "cert.pem", "-subj", "/CN=a")
    openssl("x509", "-in", "cert.pem", "-outform", "DER", "-out", "cert.der")
    openssl("rsa", "-in", "key.pem", "-traditional", "-out", "rsa.pem")
    return folder


def test_to_der_is_what_openssl_writes(files):
    assert karil("convert", "--to", "der", "cert.pem").stdout == (files / "cert.der").read_bytes()


@pytest.mark.parametrize("name, mode", [("cert", 0o644), ("key", 0o600), ("rsa", 0o600)])
def test_to_pem_and_mode(files, name, mode):
    karil("convert", "--to", "der", f"{name}.pem", "-o", "out.der", umask=0o022)
    karil("convert", "--to", "pem", "out.der", "-o", "out.pem", umask=0o022)
    assert (files / "out.pem").read_bytes() == (files / f"{name}.pem").read_bytes()
    assert [stat.S_IMODE((files / out).stat().st_mode) for out in ("out.der", "out.pem")] == [mode, mode]


def changed(pem, how):
    return {
        "CR LF": pem.replace(b"\n", b"\r\n"),
        "no last newline": pem.rstrip(b"\n"),
        "text around": b"0 subject: a\n\n" + pem + b"\nmore text\n",
        "blanks at the ends of lines": pem.replace(b"\n", b"  \n"),
    }[how]


@pytest.mark.parametrize("how", ["CR LF", "no last newline", "text around", "blanks at the ends of lines"])
def test_pem_as_others_write_it(files, how):
    pem = changed((files / "cert.pem").read_bytes(), how)
    assert karil("convert", "--to", "der", "-", input=pem).stdout == (files / "cert.der").read_bytes()


@pytest.mark.parametrize(
    "old, new, words",
    [
        (b"-----END CERTIFICATE-----", b"", "END line is missing"),
        (b"-----END CERTIFICATE-----", b"-----END X509 CRL-----", "different labels"),
        (b"MII", b"M*I", "no base64"),
        (b"MII", b"MI", "no base64"),
        (b"MII", b"=II", "no base64"),
        (b"CERTIFICATE-----\nMII", b"CERTIFICATE-----\nProc-Type: 4,ENCRYPTED\n\nMII", "header lines"),
    ],
)
def test_broken_pem(files, old, new, words):
    pem = (files / "cert.pem").read_bytes().replace(old, new)
    assert words in refused(karil("convert", "--to", "der", "-", input=pem, status=3))


def test_output_is_replaced_as_a_whole(files):
    (files / "out").write_bytes(b"before")
    karil("convert", "--to", "der", "cert.pem", "-o", "none/out", status=3)
    karil("convert", "--to", "der", "none.pem", "-o", "out", status=3)
    assert (files / "out").read_bytes() == b"before"
    assert sorted(path.name for path in files.iterdir() if path.name.startswith("out")) == ["out"]
