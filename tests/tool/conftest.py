"""What the tests of the tool share: the tool and openssl, run as a user runs them."""

import os
import pty
import subprocess
import tempfile

import pytest

TOOL = os.environ["KARIL_TOOL"]


def run(*arguments, status=0, env=None, **others):
    """Runs a program. `status`: what it must end with, or None. `input`: octets for its standard input. TZ is UTC
    unless `env` says otherwise. Answers what it wrote, as octets."""
    environment = {**os.environ, "TZ": "UTC", **(env or {})}
    command = [str(each) for each in arguments]
    done = subprocess.run(command, capture_output=True, env=environment, timeout=120, **others)
    assert status in (None, done.returncode), f"{arguments} ended with {done.returncode}\n{done.stderr.decode()}"
    return done


def karil(*arguments, **others):
    return run(TOOL, *arguments, **others)


def openssl(*arguments, **others):
    """What openssl writes to standard output, as text."""
    return run("openssl", *arguments, **others).stdout.decode()


def at_terminal(*arguments, typed):
    """Runs the tool at a terminal and answers each prompt by a line. Answers its status and what was seen, with a bar
    where a line was typed."""
    child, terminal = pty.fork()
    if child == 0:
        os.execv(TOOL, [TOOL, *arguments])
    seen = b""
    for line in typed:
        while not seen.endswith(b": "):
            seen += os.read(terminal, 1)
        seen += b"|"
        os.write(terminal, line.encode() + b"\n")
    try:
        while more := os.read(terminal, 1000):
            seen += more
    except OSError:  # the end, on Linux
        pass
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), seen


KEYS = tempfile.TemporaryDirectory()


def key(owner, kind="rsa:1024"):
    """The file of a private key, which is made once for all tests."""
    algorithm, size = ("EC", "ec_paramgen_curve:P-256") if kind == "ec" else ("RSA", f"rsa_keygen_bits:{kind[4:]}")
    path = f"{KEYS.name}/{owner}.{kind}.pem"
    if not os.path.exists(path):
        openssl("genpkey", "-quiet", "-algorithm", algorithm, "-pkeyopt", size, "-out", path)
    return path


def refused(done):
    """The one line on stderr of a command that ended with a failure, without its prefix."""
    lines = done.stderr.decode().splitlines()
    assert len(lines) == 1 and lines[0].startswith("karil: "), done.stderr
    return lines[0].removeprefix("karil: ")


@pytest.fixture(autouse=True)
def folder(tmp_path, monkeypatch):
    """Each test works in an empty folder of its own."""
    monkeypatch.chdir(tmp_path)
    return tmp_path


def once(tmp_path_factory, make):
    """A folder in which `make` has made what the tests of a module start from. They work in copies of it."""
    made = tmp_path_factory.mktemp("made")
    before = os.getcwd()
    os.chdir(made)
    make()
    os.chdir(before)
    return made
