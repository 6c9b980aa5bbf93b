"""karil pfx make and open, judged by openssl."""

import shutil
import stat
from pathlib import Path

import pytest
from conftest import at_terminal, karil, once, openssl, refused


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    return once(
        tmp_path_factory,
        lambda: (
            karil("authority", "ca", "--subject", "CN=root"),
            karil("key", "-o", "own.key", "--bits", 4096),
            karil("request", "--key", "own.key", "--subject", "C=CN,CN=王小明", "-o", "own.csr"),
            karil("issue", "--authority", "ca", "own.csr", "-o", "own.pem"),
            Path("password").write_text("secret\n"),
        ),
    )


@pytest.fixture
def files(made, folder):
    return shutil.copytree(made, folder, dirs_exist_ok=True)


def make(*arguments, **others):
    return karil("pfx", "make", "--key", "own.key", "--cert", "own.pem", *arguments, "-o", "own.p12", **others)


def opened(file, password="password", **others):
    return karil("pfx", "open", file, "--password-file", password, "--out-folder", "out", **others)


def test_openssl_opens_it(files):
    make("--chain", "ca/authority.pem", "--name", "Wang", "--password-file", "password", umask=0)
    assert stat.S_IMODE((files / "own.p12").stat().st_mode) == 0o600
    text = openssl("pkcs12", "-legacy", "-in", "own.p12", "-passin", "file:password", "-noenc")
    assert text.count("friendlyName: Wang") == 2 and text.count("localKeyID") == 2
    key, leaf, root = (["-nocerts", "-noenc"], ["-nokeys", "-clcerts"], ["-nokeys", "-cacerts"])
    for which, file, show in ((key, "own.key", "pkey"), (leaf, "own.pem", "x509"), (root, "ca/authority.pem", "x509")):
        text = openssl("pkcs12", "-legacy", "-in", "own.p12", "-passin", "file:password", *which)
        assert openssl(show, input=text.encode()) == openssl(show, "-in", file)


# The attributes of the key's bag are not enciphered.
def test_name_in_chinese(files):
    make("--name", "王小明 ✓", "--password-file", "password")
    text = "王小明 ✓".encode("utf-16-be")
    assert bytes([0x1E, len(text)]) + text in (files / "own.p12").read_bytes()


@pytest.mark.parametrize("cipher", ["PBE-SHA1-3DES", "PBE-SHA1-RC2-40", "PBE-SHA1-RC4-128"])
@pytest.mark.parametrize("password", ["", "secret", "Grüße"])
def test_open_what_openssl_wrote(files, cipher, password):
    openssl(
        "pkcs12",
        "-export",
        "-legacy",
        "-inkey",
        "own.key",
        "-in",
        "own.pem",
        "-certfile",
        "ca/authority.pem",
        "-keypbe",
        cipher,
        "-certpbe",
        cipher,
        "-passout",
        f"pass:{password}",
        "-out",
        "other.p12",
    )
    (files / "password").write_bytes(password.encode() + b"\r\n")
    opened("other.p12", umask=0o022)
    for name, want in (("key", "own.key"), ("certificate", "own.pem"), ("chain", "ca/authority.pem")):
        assert (files / "out" / f"{name}.pem").read_bytes() == (files / want).read_bytes()
        mode = stat.S_IMODE((files / "out" / f"{name}.pem").stat().st_mode)
        assert mode == (0o600 if name == "key" else 0o644)


def test_a_key_is_replaced_by_force_alone(files):
    make("--password-file", "password")
    opened("own.p12")
    (files / "out" / "key.pem").write_text("another")
    assert "is there already" in refused(opened("own.p12", status=2))
    assert (files / "out" / "key.pem").read_text() == "another"
    karil("pfx", "open", "own.p12", "--password-file", "password", "--out-folder", "out", "--force")
    assert (files / "out" / "key.pem").read_bytes() == (files / "own.key").read_bytes()


# At a terminal the password is asked twice, and not shown.
@pytest.mark.parametrize("typed, status", [(["secret", "secret"], 0), (["secret", "Secret"], 2)])
def test_password_from_the_terminal(files, typed, status):
    command = ("pfx", "make", "--key", "own.key", "--cert", "own.pem", "-o", "own.p12")
    ended, seen = at_terminal(*command, typed=typed)
    assert ended == status and seen.count(b"|") == 2 and b"ecret" not in seen
    if status == 0:
        opened("own.p12")


@pytest.mark.parametrize(
    "command, status, words",
    [
        ("pfx open own.p12 --password-file wrong", 1, "the password is wrong"),
        ("pfx open pbes2.p12 --password-file password", 3, "PBES2"),
        ("pfx open own.pem --password-file password", 3, "own.pem"),
        ("pfx open own.p12 --password-file wide", 2, "above U+00FF"),
        ("pfx make --key own.key --cert own.pem -o new.p12 --password-file wide", 2, "above U+00FF"),
        ("pfx make --key own.key --cert ca/authority.pem -o new.p12 --password-file password", 2, "not that of"),
        ("pfx make --key own.key --cert own.pem -o none/new.p12 --password-file password", 3, "cannot be written"),
        ("pfx make --key own.key --cert own.pem -o new.p12 --password-file none", 3, "No such file"),
        ("pfx make --key own.key --cert own.pem -o new.p12", 2, "--password-file"),
    ],
)
def test_refusals(files, command, status, words):
    make("--password-file", "password")
    (files / "wrong").write_text("Secret")
    (files / "wide").write_text("密码")
    openssl("pkcs12", "-export", "-inkey", "own.key", "-in", "own.pem", "-passout", "pass:secret", "-out", "pbes2.p12")
    assert words in refused(karil(*command.split(), status=status, start_new_session=True))
    assert not (files / "new.p12").exists() and not (files / "key.pem").exists()
