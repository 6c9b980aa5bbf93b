"""karil sign, envelop and open, judged by openssl."""

import random
import shutil
import stat
from pathlib import Path

import pytest
from conftest import at_terminal, karil, once, openssl, refused

LONG = random.Random(1).randbytes(3_000_000)
CONTENTS = {"short": b"a", "text": "第一行\r\nline two\n".encode(), "blocks": bytes(48), "long": LONG[:10000]}
DATA = bytes.fromhex("06092a864886f70d010701")  # the content type of what is signed, which the content follows


def make_people():
    karil("authority", "ca", "--subject", "CN=root")
    for name in ("ann", "bob"):
        karil("key", "-o", f"{name}.key")
        request = karil("request", "--key", f"{name}.key", "--subject", f"CN={name}").stdout
        karil("issue", "--authority", "ca", "-", "--profile", "person", "-o", f"{name}.pem", input=request)
    Path("content").write_bytes(CONTENTS["text"])


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    return once(tmp_path_factory, make_people)


@pytest.fixture
def people(made, folder):
    return shutil.copytree(made, folder, dirs_exist_ok=True)


def judged(message, *arguments, form="PEM", status=0):
    openssl(
        "cms",
        "-verify",
        "-inform",
        form,
        "-in",
        message,
        "-binary",
        "-CAfile",
        "ca/authority.pem",
        "-out",
        "out",
        *arguments,
        status=status,
    )


@pytest.mark.parametrize(
    "digest, content",
    [("sha1", b"a"), ("sha256", LONG), ("sha384", bytes(128)), ("sha512", CONTENTS["text"])],
    ids=["sha1", "sha256", "sha384", "sha512"],
)
def test_signed(people, digest, content):
    (people / "content").write_bytes(content)
    karil("sign", "--key", "ann.key", "--cert", "ann.pem", "--digest", digest, "content", "-o", "message")
    judged("message")
    assert (people / "out").read_bytes() == content
    message = people / "message.der"
    karil("convert", "--to", "der", "message", "-o", message)
    changed = bytearray(message.read_bytes())
    changed[changed.index(content, changed.index(DATA))] ^= 1
    message.write_bytes(changed)
    judged(message, form="DER", status=4)


# As openssl writes it, as it wrote it before PKCS#8, and in DER.
@pytest.mark.parametrize(
    "command",
    [
        "pkey -aes256 -passout pass:secret",
        "rsa -des3 -traditional -passout pass:secret",
        "pkcs8 -topk8 -outform DER -passout pass:secret",
        "pkey -aes128 -passout pass:",
    ],
)
def test_key_under_a_password(people, command):
    openssl(*command.split(), "-in", "ann.key", "-out", "own")
    (people / "right").write_text(command.split(":")[1] + "\n")
    (people / "wrong").write_text("Secret")
    sign = ("sign", "--key", "own", "--cert", "ann.pem", "content", "-o", "message")
    karil(*sign, "--key-password-file", "right")
    judged("message")
    words = refused(karil(*sign, "--key-password-file", "wrong", status=1))
    assert words == "own: the password is wrong, or it is no RSA key"
    assert "--key-password-file" in refused(karil(*sign, status=2, start_new_session=True))
    status, seen = at_terminal(*sign, typed=[(people / "right").read_text().strip()])
    assert status == 0 and b"Password of own: |" in seen and b"secret" not in seen


def test_detached_with_a_chain(people):
    karil(
        "sign",
        "--key",
        "ann.key",
        "--cert",
        "ann.pem",
        "--chain",
        "ca/authority.pem",
        "--detached",
        "--der",
        "content",
        "-o",
        "message",
    )
    assert CONTENTS["text"] not in (people / "message").read_bytes()
    judged("message", "-content", "content", form="DER")
    judged("message", "-content", "ann.pem", form="DER", status=4)
    printed = openssl("pkcs7", "-inform", "DER", "-in", "message", "-print_certs", "-noout")
    assert [line for line in printed.splitlines() if "subject" in line] == ["subject=CN = ann", "subject=CN = root"]


@pytest.mark.parametrize(
    "cipher, size",
    [("aes-256-cbc", "long"), ("aes-128-cbc", "blocks"), ("des-ede3-cbc", "text"), ("aes-256-cbc", "short")],
)
def test_enveloped_for_two(people, cipher, size):
    (people / "content").write_bytes(CONTENTS[size])
    karil("envelop", "--recipient", "ann.pem", "--recipient", "bob.pem", "--cipher", cipher, "content", "-o", "message")
    shown = openssl("cms", "-cmsout", "-print", "-noout", "-inform", "PEM", "-in", "message")
    assert f"algorithm: {cipher}" in shown
    for name in ("ann", "bob"):
        openssl(
            "cms",
            "-decrypt",
            "-inform",
            "PEM",
            "-in",
            "message",
            "-binary",
            "-recip",
            f"{name}.pem",
            "-inkey",
            f"{name}.key",
            "-out",
            "out",
        )
        assert (people / "out").read_bytes() == CONTENTS[size]
        karil("open", "--key", f"{name}.key", "--cert", f"{name}.pem", "message", "-o", f"{name}.out", umask=0)
        assert (people / f"{name}.out").read_bytes() == CONTENTS[size]
        assert stat.S_IMODE((people / f"{name}.out").stat().st_mode) == 0o600


# With -stream openssl writes indefinite lengths, and the cipher text in pieces of 4,096 octets.
@pytest.mark.parametrize("stream", [[], ["-stream"]])
@pytest.mark.parametrize(
    "cipher, form, length",
    [("-aes256", "DER", 0), ("-aes128", "PEM", 1), ("-des3", "DER", 4096), ("-aes256", "PEM", 300_000)],
)
def test_open_what_openssl_wrote(people, stream, cipher, form, length):
    (people / "content").write_bytes(LONG[:length])
    openssl(
        "cms",
        "-encrypt",
        cipher,
        *stream,
        "-in",
        "content",
        "-binary",
        "-outform",
        form,
        "-out",
        "message",
        "bob.pem",
        "ann.pem",
    )
    opened = karil("open", "--key", "ann.key", "--cert", "ann.pem", "message").stdout
    assert opened == (people / "content").read_bytes()


def test_largest_content_is_told(people):
    (people / "content").write_bytes(bytes(10240))
    words = refused(karil("envelop", "--recipient", "ann.pem", "content", status=2))
    assert "10240 octets cannot be enveloped" in words and "10,100" in words
    (people / "content").write_bytes(bytes(10100))
    karil("envelop", "--recipient", "ann.pem", "content", "-o", "message")


@pytest.mark.parametrize(
    "command, status, words",
    [
        ("sign --key bob.key --cert ann.pem content", 2, "not that of this certificate"),
        ("sign --key ann.key --cert ann.pem /dev/null", 2, "empty content"),
        ("sign --key ann.key --cert ann.key content", 3, "ann.key"),
        ("sign --key ann.key --cert none content", 3, "No such file"),
        ("envelop --recipient ann.pem /dev/null", 2, "empty content"),
        ("envelop --recipient ann.key content", 3, "ann.key"),
        ("open --key bob.key --cert bob.pem message", 1, "not for the holder of bob.pem"),
        ("open --key bob.key --cert ann.pem message", 2, "not that of this certificate"),
        ("open --key ann.key --cert ann.pem changed", 1, "does not"),
        ("open --key ann.key --cert ann.pem ann.pem", 3, "KACERT_"),
        ("open --key ann.key --cert ann.pem oaep", 3, "enciphered by"),
        ("open --key ann.key --cert ann.pem rc2", 3, "enciphered by"),
        ("open --key ann.key --cert ann.pem cut", 3, "KACERT_"),
    ],
)
def test_refusals(people, command, status, words):
    karil("envelop", "--recipient", "ann.pem", "--der", "content", "-o", "message")
    message = (people / "message").read_bytes()
    # The last octet of the cipher text decides about the padding's length; all others of that block are its count.
    (people / "changed").write_bytes(message[:-17] + bytes([message[-17] ^ 0x80]) + message[-16:])
    (people / "cut").write_bytes(message[:-1])
    encrypt = ("cms", "-encrypt", "-in", "content", "-outform", "DER")
    if "oaep" in command:
        openssl(*encrypt, "-aes128", "-recip", "ann.pem", "-keyopt", "rsa_padding_mode:oaep", "-out", "oaep")
    if "rc2" in command:
        openssl(*encrypt, "-rc2-128", "-provider", "legacy", "-provider", "default", "-out", "rc2", "ann.pem")
    assert words in refused(karil(*command.split(), status=status))


# What is signed ends before the algorithm and the signature, 276 octets in all. A message has nothing that protects it.
@pytest.mark.parametrize(
    "command, end, allowed",
    [
        ("issue FILE --authority ca", -276, {1, 3}),
        ("open FILE --key ann.key --cert ann.pem", -1, {0, 1, 3}),
        ("pfx open FILE --password-file password --out-folder out --force", -1, {0, 1, 3}),
    ],
)
def test_changed_octets(people, command, end, allowed):
    (people / "password").write_text("secret")
    karil("request", "--key", "ann.key", "--subject", "CN=ann", "--dns", "a.example", "-o", "request")
    made = {
        "issue": karil("convert", "--to", "der", "request").stdout,
        "open": karil("envelop", "--recipient", "ann.pem", "--der", "content").stdout,
        "pfx": karil("pfx", "make", "--key", "ann.key", "--cert", "ann.pem", "--password-file", "password", "-o",
                     "/dev/stdout").stdout,
    }  # fmt: skip
    octets = made[command.split()[0]]
    source = random.Random(7)
    for _ in range(60):
        changed = bytearray(octets)
        changed[source.randrange(4, len(octets) + end)] ^= 1 << source.randrange(8)
        (people / "FILE").write_bytes(changed)
        done = karil(*command.split(), status=None)
        assert done.returncode in allowed and b"Sanitizer" not in done.stderr, done.stderr
        assert len(done.stderr.splitlines()) == (1 if done.returncode else 0)
