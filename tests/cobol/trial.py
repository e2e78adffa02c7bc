"""What the random models share: compile a source, run it, tell where it leaves the expected lines."""

import pathlib
import subprocess
import sys
import tempfile


class Trial:
    """Programs that one compiler made, and how many of them did not do what their model says."""

    def __init__(self, compiler):
        self.compiler = pathlib.Path(compiler).resolve()
        self.failed = 0

    def compile(self, work, source, text, *options):
        (pathlib.Path(work) / source).write_text(text)
        subprocess.run([self.compiler, "-free", *options, source], cwd=work, check=True)

    def run(self, work, command, **more):
        """The lines that a command gives, its exit status and its messages among them if it fails."""
        run = subprocess.run(command, cwd=work, capture_output=True, encoding="latin-1", **more)
        lines = [line.rstrip() for line in run.stdout.splitlines()]
        return lines + [f"exit status {run.returncode}: {run.stderr}"] if run.returncode else lines

    def program(self, what, text):
        """The lines of a program that needs no input; None where its translation fails. A warning is a failure, too."""
        with tempfile.TemporaryDirectory() as work:
            (pathlib.Path(work) / "model.cbl").write_text(text)
            command = [self.compiler, "-free", "-O0", "-o", "model", "model.cbl"]
            made = subprocess.run(command, cwd=work, capture_output=True, encoding="latin-1")
            if made.returncode or made.stderr:
                self.failed += 1
                print(f"{what}: translation said\n{made.stderr[:3000]}")
            return None if made.returncode else self.run(work, ["./model"])

    def compare(self, what, got, expected, about=lambda at: ""):
        """Tells where two lists first differ; `about` says more of a place in the expected one."""
        if got is None or got == expected:
            return
        self.failed += 1
        at = ([a == b for a, b in zip(got, expected)] + [False]).index(False)
        print(f"{what}: entry {at} of {len(expected)}, after {got[max(0, at - 3):at]}")
        print(f"  gave     {got[at:at + 3]}\n  expected {expected[at:at + 3]}")
        if at < len(expected):
            print(about(at), end="")

    def end(self, done):
        print(f"{done}, {self.failed} that differ")
        sys.exit(self.failed > 0)
