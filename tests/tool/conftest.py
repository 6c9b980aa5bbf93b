"""What the tests of the tool share: the tool and openssl, run as a user runs them."""

import os
import subprocess

import pytest

TOOL = os.environ["KARIL_TOOL"]


def run(*arguments, status=0, env=None, **others):
    """Runs a program. `status`: what it must end with. `input`: octets for its standard input. TZ is UTC unless `env`
    says otherwise. Answers what it wrote, as octets."""
    environment = {**os.environ, "TZ": "UTC", **(env or {})}
    done = subprocess.run([str(each) for each in arguments], capture_output=True, env=environment, timeout=120, **others)
    assert done.returncode == status, f"{arguments} ended with {done.returncode}\n{done.stderr.decode()}"
    return done


def karil(*arguments, **others):
    return run(TOOL, *arguments, **others)


def openssl(*arguments, **others):
    """What openssl writes to standard output, as text."""
    return run("openssl", *arguments, **others).stdout.decode()


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
