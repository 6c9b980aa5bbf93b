"""What bash offers after karil's completion file was read."""

import subprocess

import pytest
from conftest import karil

TRY = 'source ./script; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _karil; echo "${COMPREPLY[*]}"'


@pytest.mark.parametrize(
    "typed, offered",
    [
        (["karil", "sh"], "show"),
        (["karil", "--v"], "--version"),
        (["karil", "show", "--pass"], "--password-file"),
        (["karil", "show", "show", "--js"], "--json"),
        (["karil", "convert", "--to", ""], "der pem"),
        (["karil", "completion", "z"], "zsh"),
        (["karil", "show", "file"], ""),
    ],
)
def test_bash(folder, typed, offered):
    (folder / "script").write_bytes(karil("completion", "bash").stdout)
    done = subprocess.run(["bash", "-c", TRY, "bash", *typed], capture_output=True, check=True)
    assert done.stdout.decode() == offered + "\n"


def test_every_command_is_offered_by_both():
    lines = karil("--help").stdout.decode().split("Subcommands:\n")[1].splitlines()
    names = [line.split()[0] for line in lines if line.strip()]
    scripts = [karil("completion", shell).stdout.decode() for shell in ("bash", "zsh")]
    assert "verify" in names
    for name in names:
        assert f"command='{name}' ;;" in scripts[0] and f"_karil_{name}() {{" in scripts[1]
