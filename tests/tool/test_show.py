"""karil show, beside what openssl says about the same files, or was told to write."""

import glob
import json
import os
import pty
import re
import subprocess

import pytest
from conftest import TOOL, at_terminal, karil, key, openssl, refused, run

EXAMPLES = os.environ.get("KARIL_EXAMPLES")


def shown(*files, **others):
    return json.loads(karil("show", "--json", *files, **others).stdout)


def lines_of(text, separator="="):
    return [tuple(part.strip() for part in line.split(separator, 1)) for line in text.splitlines() if separator in line]


def pairs(names, first="type", second="value"):
    return [(each[first], each[second]) for each in names]


def extension(document, name):
    return next(each for each in document["extensions"] if each["name"] == name)


def new_certificate(subject, *extensions, name="cert"):
    options = [option for each in extensions for option in ("-addext", each)]
    openssl("req", "-x509", "-key", key("any"), "-out", f"{name}.pem", "-utf8", "-subj", subject, *options)


def facts(path, *names):
    """Subject, issuer, serial number and so on as openssl prints them, in the words of karil's JSON."""
    options = ("-nameopt", "multiline,utf8,-esc_msb,-esc_ctrl", "-dateopt", "iso_8601", "-sha256")
    text = openssl("x509", "-in", path, "-noout", *options, "-serial", "-dates", "-fingerprint", "-subject", "-issuer")
    head, _, rest = text.partition("subject=")
    subject, _, issuer = rest.partition("issuer=")
    found = dict(lines_of(head))
    return {
        "serialNumber": found["serial"].lstrip("0") or "0",
        "notBefore": found["notBefore"].replace(" ", "T").replace("Z", "+00:00"),
        "notAfter": found["notAfter"].replace(" ", "T").replace("Z", "+00:00"),
        "sha256Fingerprint": found["sha256 Fingerprint"],
        "subject": lines_of(subject),
        "issuer": lines_of(issuer),
    }


def as_facts(document):
    found = {key: document[key] for key in ("notBefore", "notAfter", "sha256Fingerprint")}
    names = {key: pairs(document[key]) for key in ("subject", "issuer")}
    return {**found, **names, "serialNumber": document["serialNumber"].lstrip("0") or "0"}


def test_certificates_of_the_system():
    """A third of them; those that the library does not decode have dates that it does not have."""
    files = sorted(glob.glob("/usr/share/ca-certificates/mozilla/*.crt"))[::3]
    documents = json.loads(subprocess.run([TOOL, "show", "--json", *files], capture_output=True).stdout)
    assert len(documents) == len(files) > 40
    read = [(file, each) for file, each in zip(files, documents) if "error" not in each]
    assert len(read) > 20
    for file, document in read:
        assert as_facts(document) == facts(file), file
    late = [file for file, each in zip(files, documents) if "error" in each]
    assert all(facts(file)["notAfter"] > "2038-01-19T03:14:07" for file in late)


def test_names_and_extensions():
    new_certificate("/C=CN/O=示例公司/OU=One/OU=Two/CN=Käthe Műller/emailAddress=a@example.com",
                    "keyUsage=critical,digitalSignature,cRLSign,decipherOnly", "extendedKeyUsage=codeSigning,1.2.3.4",
                    "subjectAltName=DNS:a.example,DNS:b.example,IP:192.0.2.1,IP:2001:db8::1,URI:http://c/,RID:1.2.3",
                    "basicConstraints=critical,CA:TRUE,pathlen:3", "certificatePolicies=1.2.3.5,2.5.29.32.0",
                    "crlDistributionPoints=URI:http://a.example/1,URI:http://a.example/2",
                    "authorityInfoAccess=OCSP;URI:http://o.example/,caIssuers;URI:http://i.example/")  # fmt: skip
    [document] = shown("cert.pem")
    assert as_facts(document) == facts("cert.pem")
    assert pairs(document["subject"])[1:5:3] == [("organizationName", "示例公司"), ("commonName", "Käthe Műller")]
    usage = extension(document, "keyUsage")
    assert (usage["critical"], usage["usages"]) == (True, ["digitalSignature", "cRLSign", "decipherOnly"])
    assert extension(document, "extKeyUsage")["usages"] == ["codeSigning", "1.2.3.4"]
    assert pairs(extension(document, "subjectAltName")["names"]) == [
        ("DNS", "a.example"), ("DNS", "b.example"), ("IP address", "192.0.2.1"), ("IP address", "2001:db8::1"),
        ("URI", "http://c/"), ("registered ID", "1.2.3")]  # fmt: skip
    constraints = extension(document, "basicConstraints")
    assert (constraints["authority"], constraints["pathLength"]) == (True, 3)
    policies = pairs(extension(document, "certificatePolicies")["policies"], "policy", "statement")
    assert policies == [("1.2.3.5", ""), ("anyPolicy", "")]
    points = pairs(extension(document, "cRLDistributionPoints")["names"])
    assert points == [("URI", "http://a.example/1"), ("URI", "http://a.example/2")]
    access = pairs(extension(document, "authorityInfoAccess")["access"], "method", "location")
    assert access == [("ocsp", "http://o.example/"), ("caIssuers", "http://i.example/")]
    assert document["publicKey"] == {"algorithm": "rsaEncryption", "bits": 1024, "exponent": 65537}


def test_crl(folder):
    new_certificate("/CN=authority")
    entries = [("0A", "keyCompromise"), ("00FF01", "superseded"), ("7F" * 16, ""), ("80", "certificateHold")]
    rows = [f"R\t300101000000Z\t26010{i}120000Z{',' if why else ''}{why}\t{number}\tunknown\t/CN=a\n"
            for i, (number, why) in enumerate(entries, 1)]  # fmt: skip
    (folder / "index").write_text("".join(rows))
    (folder / "number").write_text("1234")
    (folder / "conf").write_text("[ca]\ndefault_ca=a\n[a]\ndatabase=index\ncrlnumber=number\ndefault_md=sha256\n"
                                 "default_crl_days=7\ncrl_extensions=e\n[e]\n")  # fmt: skip
    openssl("ca", "-config", "conf", "-gencrl", "-cert", "cert.pem", "-keyfile", key("any"), "-out", "crl.pem")
    [document] = shown("crl.pem")
    dates = dict(lines_of(openssl("crl", "-in", "crl.pem", "-noout", "-nextupdate", "-dateopt", "iso_8601")))
    assert document["nextUpdate"] == dates["nextUpdate"].replace(" ", "T").replace("Z", "+00:00")
    assert pairs(document["issuer"]) == [("commonName", "authority")]
    assert extension(document, "cRLNumber")["number"] == 0x1234
    assert document["entries"] == len(entries)
    found = [(each["serialNumber"], each["revoked"], each.get("reason", "")) for each in document["revoked"]]
    wanted = [(n.removeprefix("00"), f"2026-01-0{i}T12:00:00+00:00", why) for i, (n, why) in enumerate(entries, 1)]
    assert sorted(found) == sorted(wanted)


def test_request_and_keys():
    openssl("req", "-new", "-key", key("any"), "-out", "r.pem", "-subj", "/CN=a/O=b", "-addext",
            "subjectAltName=DNS:a.example,DNS:b.example")  # fmt: skip
    openssl("rsa", "-in", key("any"), "-traditional", "-out", "rsa.pem")
    openssl("rsa", "-in", key("any"), "-RSAPublicKey_out", "-out", "public.pem")
    openssl("rsa", "-in", key("any"), "-pubout", "-out", "info.pem")
    request, *keys = shown("r.pem", key("any"), "rsa.pem", "public.pem", "info.pem")
    assert pairs(request["subject"]) == [("commonName", "a"), ("organizationName", "b")]
    [attribute] = request["attributes"]
    names = pairs(extension(attribute, "subjectAltName")["names"])
    assert (attribute["name"], names) == ("extensionRequest", [("DNS", "a.example"), ("DNS", "b.example")])
    modulus = openssl("rsa", "-in", key("any"), "-noout", "-modulus").strip().removeprefix("Modulus=")
    assert [each.get("modulus", modulus) for each in keys] == [modulus] * 4
    assert [each.get("bits", each.get("publicKey", {}).get("bits")) for each in keys] == [1024] * 4
    assert "privateExponent" not in keys[0]
    text = openssl("rsa", "-in", key("any"), "-noout", "-text")
    exponent = re.search(r"privateExponent:([\s0-9a-f:]+)", text).group(1)
    [secret] = shown("--secret", "rsa.pem")
    assert secret["privateExponent"] == re.sub(r"[\s:]", "", exponent).upper().removeprefix("00")


def test_messages_and_pfx(folder):
    new_certificate("/CN=signer")
    (folder / "text").write_text("content")
    (folder / "password").write_text("secret\n")
    openssl("cms", "-sign", "-binary", "-nodetach", "-in", "text", "-signer", "cert.pem", "-inkey", key("any"),
            "-md", "sha384", "-outform", "PEM", "-out", "signed.pem")  # fmt: skip
    openssl("cms", "-encrypt", "-aes128", "-in", "text", "-outform", "DER", "-out", "enveloped", "cert.pem")
    openssl("pkcs12", "-export", "-legacy", "-in", "cert.pem", "-inkey", key("any"), "-name", "张三", "-passout",
            "pass:secret", "-out", "pfx")  # fmt: skip
    signed, enveloped, pfx = shown("signed.pem", "enveloped", "pfx", "--password-file", "password")
    serial = facts("cert.pem")["serialNumber"]
    [signer], [recipient] = signed["signers"], enveloped["recipients"]
    assert (signer["digestAlgorithm"], signed["contentOctets"], enveloped["cipher"]) == ("sha384", 7, "aes-128-cbc")
    assert [each["name"] for each in signer["attributes"]][:3] == ["contentType", "signingTime", "messageDigest"]
    assert {each["serialNumber"].lstrip("0") for each in (signer, recipient, *pfx["certificates"])} == {serial}
    assert ("friendlyName", "张三") in pairs(pfx["certificates"][0]["bagAttributes"], "name")
    wrong = karil("show", "pfx", "--password-file", "-", input=b"Secret\n", status=1)
    assert "the password is wrong" in refused(wrong)
    openssl("pkcs12", "-export", "-in", "cert.pem", "-inkey", key("any"), "-passout", "pass:secret", "-out", "new")
    assert "PBES2" in refused(karil("show", "new", "--password-file", "password", status=3))


def test_a_password_is_asked_for_at_the_terminal_and_not_seen(folder):
    new_certificate("/CN=a")
    openssl("pkcs12", "-export", "-legacy", "-in", "cert.pem", "-inkey", key("any"), "-passout", "pass:pass word",
            "-out", "pfx")  # fmt: skip
    status, seen = at_terminal("show", "pfx", typed=["pass word"])
    assert status == 0 and b"Password of pfx: |" in seen and b"pass word" not in seen and b"fingerprint" in seen
    assert "--password-file" in refused(karil("show", "pfx", status=2, start_new_session=True))


@pytest.mark.skipif(EXAMPLES is None, reason="the examples are not built")
def test_ocsp(folder):
    """No other program speaks this dialect: the example tells what it asked and answered."""
    run(f"{EXAMPLES}/certificate_authority", ".")
    run(f"{EXAMPLES}/ocsp", ".")
    (folder / "ka_ocsp_basic_response.der").unlink()
    request, *responses = shown("ocsp_request.der", *(f"ocsp_response{i}.der" for i in (1, 2, 3)))
    assert pairs(request["requestor"])[1] == ("commonName", "Example Client")
    assert [each["serialNumber"] for each in request["requests"]] == ["07", "09", "03"]
    answers = [each["responses"][0] for each in responses]
    assert [each["status"] for each in answers] == ["revoked", "good", "unknown"]
    assert (answers[0]["reason"], answers[2]["information"]) == ("keyCompromise", "not ours")
    assert not (folder / "ka_ocsp_basic_response.der").exists()


@pytest.mark.parametrize("zone, words", [("UTC", "UTC (+00:00)"), ("Asia/Shanghai", "CST (+08:00)")])
def test_times_have_the_digits_of_the_file_and_the_zone(zone, words):
    new_certificate("/CN=a")
    digits = facts("cert.pem")["notAfter"].replace("T", " ").removesuffix("+00:00")
    assert f"not after: {digits} {words}\n" in karil("show", "cert.pem", env={"TZ": zone}).stdout.decode()


def test_what_a_terminal_would_obey(folder):
    name = "a\x1b[31m\x7f\u009b1m\u202eb\\"
    new_certificate("/CN=" + name.replace("\\", "\\\\"))
    text = karil("show", "cert.pem").stdout.decode()
    assert text.count("commonName: a\\u001B[31m\\u007F\\u009B1m\\u202Eb\\\\\n") == 2
    output = karil("show", "--json", "cert.pem").stdout.decode()
    assert all(character.isprintable() or character == "\n" for character in output)
    assert json.loads(output)[0]["subject"][0]["value"] == name
    (folder / "x\x1b[0m").write_bytes(b"")
    assert refused(karil("show", "x\x1b[0m", status=3)) == "x\\u001B[0m is empty"


def test_pipes_blocks_and_files_that_are_bad(folder):
    new_certificate("/CN=a", name="a")
    new_certificate("/CN=b", name="b")
    both = (folder / "a.pem").read_bytes() + b"between\n" + (folder / "b.pem").read_bytes()
    documents = shown("-", input=both)
    assert [(each["file"], each["subject"][0]["value"]) for each in documents] == [
        ("standard input, block 1", "a"), ("standard input, block 2", "b")]  # fmt: skip
    done = karil("show", "--json", "none", "a.pem", ".", "b.pem", status=3)
    assert ["error" in each for each in json.loads(done.stdout)] == [True, False, True, False]
    assert len(done.stderr.splitlines()) == 2


@pytest.mark.parametrize(
    "env, has_colours", [({"NO_COLOR": ""}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)]
)
def test_colours_on_a_terminal(env, has_colours):
    new_certificate("/CN=a")
    ours, theirs = pty.openpty()
    subprocess.run([TOOL, "show", "cert.pem"], stdout=theirs, env={**os.environ, "TERM": "xterm", **env}, check=True)
    assert (b"\x1b[" in os.read(ours, 65536)) == has_colours
    assert b"\x1b" not in karil("show", "cert.pem", env={"TERM": "xterm"}).stdout
