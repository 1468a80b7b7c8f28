"""The sandbox as the tests run it: `tavrin sandbox` as a process on loopback, with a
certificate it makes at start-up, stopped when the test ends."""
import contextlib
import os
import pathlib
import shlex
import subprocess

import pytest

from tavrin import Options

TOOL = os.environ.get("TAVRIN_TOOL", "tavrin")
SOURCE_DIR = pathlib.Path(__file__).resolve().parents[3]
REALISTIC_PHONE = SOURCE_DIR / "examples" / "profiles" / "iphone-realistic.json"


class Sandbox:
    """A running sandbox: its URL, and options that reach it with a given device."""

    def __init__(self, ready_line: str):
        words = shlex.split(ready_line.split(":", 1)[1])
        settings = dict(zip(words[::2], words[1::2]))
        self.url = settings["--url"]
        self.resolve = settings["--resolve"]
        self.ca_file = settings["--ca-file"]

    def options(self, **device) -> Options:
        return Options(ca_file=self.ca_file, resolve=[self.resolve], deadline_ms=60000, **device)


@contextlib.contextmanager
def running_sandbox(directory: pathlib.Path, *faults: str):
    arguments = [TOOL, "sandbox", "--no-ui", "--cert-dir", str(directory)]
    for fault in faults:
        arguments += ["--fault", fault]
    process = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               text=True)
    try:
        line = process.stdout.readline()
        assert line.startswith("sandbox ready:"), f"the sandbox did not start: {line!r}"
        yield Sandbox(line)
    finally:
        process.terminate()
        process.wait(timeout=30)
        process.stdout.close()


@pytest.fixture
def sandbox_with(tmp_path):
    """Starts a sandbox with the given fault rules (docs/sandbox.md)."""
    with contextlib.ExitStack() as stack:
        count = iter(range(1000))
        yield lambda *faults: stack.enter_context(
            running_sandbox(tmp_path / f"sandbox-{next(count)}", *faults))


@pytest.fixture
def sandbox(sandbox_with):
    return sandbox_with()
