"""karil verify: verdicts over what openssl signed, good and bad."""

import pytest
from conftest import karil, key, openssl, refused


def certificate(name, issuer, *options, kind="rsa:1024", days=30, digest="sha256", owner=None):
    """NAME.pem under an issuer, or self-signed. `owner`: of the key, if it is not the one of that name."""
    extensions = [option for each in options for option in ("-addext", each)]
    own = key(owner or name, kind)
    openssl("req", "-new", "-key", own, "-out", f"{name}.csr", "-subj", f"/O=x/CN={name}", *extensions)
    signer = ("-CA", f"{issuer}.pem", "-CAkey", key(issuer, kind)) if issuer else ("-key", own)
    openssl("x509", "-req", "-in", f"{name}.csr", *signer, f"-{digest}", "-days", days, "-copy_extensions", "copyall",
            "-out", f"{name}.pem")  # fmt: skip


CA = "basicConstraints=critical,CA:TRUE"


@pytest.fixture
def chain(folder):
    certificate("root", None, CA, "keyUsage=keyCertSign")
    certificate("middle", "root", CA)
    certificate("leaf", "middle", "keyUsage=digitalSignature")
    return folder


def change(folder, name, old, new):
    """A copy of a certificate or request in DER with other octets in it."""
    kind = "req" if name.endswith(".csr") else "x509"
    openssl(kind, "-in", name, "-outform", "DER", "-out", "changed")
    octets = (folder / "changed").read_bytes()
    assert old in octets
    (folder / "changed").write_bytes(octets.replace(old, new))


@pytest.mark.parametrize(
    "kind, digest",
    [("rsa:1024", "md5"), ("rsa:1024", "sha1"), ("rsa:4096", "sha256"), ("rsa:1024", "sha384"), ("rsa:1024", "sha512"),
     ("ec", "sha1"), ("ec", "sha256"), ("ec", "sha512")],
)  # fmt: skip
def test_algorithms(folder, kind, digest):
    certificate("root", None, CA, kind=kind, digest=digest)
    certificate("leaf", "root", kind=kind, digest=digest)
    assert b"verdict: good" in karil("verify", "leaf.pem", "--issuer", "root.pem").stdout
    change(folder, "leaf.pem", b"leaf", b"lead")
    assert b"signature: bad" in karil("verify", "changed", "--issuer", "root.pem", status=1).stdout


@pytest.mark.parametrize(
    "file, issuer, bad",
    [
        ("leaf.pem", "middle.pem", None),
        ("middle.pem", "root.pem", None),
        ("root.pem", "root.pem", None),
        ("leaf.pem", "root.pem", "names"),
        ("under.pem", "leaf.pem", "authority"),
        ("old.pem", "root.pem", "dates"),
    ],
)
def test_links(chain, file, issuer, bad):
    certificate("under", "leaf")
    certificate("old", "root", days=-1)
    done = karil("verify", file, "--issuer", issuer, status=0 if bad is None else 1).stdout.decode()
    assert bad is None or f"{bad}: bad" in done


def test_crl_and_key_usage(chain):
    (chain / "index").write_text("R\t300101000000Z\t260101120000Z\t0A\tunknown\t/CN=a\n")
    (chain / "conf").write_text("[ca]\ndefault_ca=a\n[a]\ndatabase=index\ndefault_md=sha256\ncrl_extensions=e\n[e]\n")
    old = ("-crl_lastupdate", "200101000000Z", "-crl_nextupdate", "200102000000Z")
    for name, owner, dates in (("root", "root", ()), ("middle", "middle", ()), ("old", "middle", old)):
        openssl("ca", "-config", "conf", "-gencrl", "-crlsec", 3600, *dates, "-cert", f"{owner}.pem", "-keyfile",
                key(owner), "-out", f"{name}.crl")  # fmt: skip
    assert b"verdict: good" in karil("verify", "middle.crl", "--issuer", "middle.pem").stdout
    assert b"dates: bad" in karil("verify", "old.crl", "--issuer", "middle.pem", status=1).stdout
    assert b"authority: bad" in karil("verify", "root.crl", "--issuer", "root.pem", status=1).stdout
    assert b"names: bad" in karil("verify", "root.crl", "--issuer", "middle.pem", status=1).stdout


def test_request(chain):
    karil("verify", "leaf.csr")
    change(chain, "leaf.csr", b"leaf", b"lead")
    assert b"verdict: bad" in karil("verify", "changed", status=1).stdout


def sign(*options):
    openssl("cms", "-sign", "-binary", "-in", "text", "-signer", "leaf.pem", "-inkey", key("leaf"), "-outform", "DER",
            "-out", "signed", *options)  # fmt: skip


@pytest.mark.parametrize("attributes", [[], ["-noattr"]])
@pytest.mark.parametrize("detached", [True, False])
def test_messages(chain, attributes, detached):
    (chain / "text").write_text("content")
    (chain / "other").write_text("c0ntent")
    sign(*attributes, *([] if detached else ["-nodetach"]), "-certfile", "middle.pem")
    content = ["--content", "text"] if detached else []
    karil("verify", "signed", "--issuer", "root.pem", *content)
    karil("verify", "signed", *content)
    certificate("root", None, CA, owner="another")
    assert b"chain: bad" in karil("verify", "signed", "--issuer", "root.pem", *content, status=1).stdout
    if detached:
        karil("verify", "signed", "--content", "other", status=1)
        assert "--content" in refused(karil("verify", "signed", status=2))
    else:
        octets = (chain / "signed").read_bytes()
        (chain / "signed").write_bytes(octets.replace(b"content", b"c0ntent"))
        karil("verify", "signed", status=1)


def test_chains_need_their_middle_and_signers_a_certificate(chain):
    (chain / "text").write_text("content")
    sign("-nodetach")
    assert b"chain: bad" in karil("verify", "signed", "--issuer", "root.pem", status=1).stdout
    karil("verify", "signed", "--issuer", "middle.pem")
    sign("-nodetach", "-nocerts")
    assert b"certificate: bad" in karil("verify", "signed", status=1).stdout
    karil("verify", "signed", "--issuer", "leaf.pem")
    openssl("crl2pkcs7", "-nocrl", "-certfile", "leaf.pem", "-outform", "DER", "-out", "certificates")
    karil("verify", "certificates", "--content", "text", status=1)


@pytest.mark.parametrize(
    "arguments", [[key("leaf")], ["leaf.pem"], ["leaf.pem", "--issuer"], [], ["--none", "leaf.pem"]]
)
def test_misuse(chain, arguments):
    karil("verify", *arguments, status=2)
