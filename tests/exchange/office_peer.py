"""What the LibreOffice peer tests share: kpx and soffice as subprocesses, and the failures a
test collects before it reports them all."""
import os
import shutil
import subprocess
import sys

SOFFICE = shutil.which("soffice") or shutil.which("libreoffice")


class Peer:
    def __init__(self, kpx):
        self.kpx_path = kpx
        self.failures = []

    def kpx(self, *args):
        done = subprocess.run([self.kpx_path, *args], capture_output=True, text=True)
        if done.returncode != 0:
            raise AssertionError(f"kpx {' '.join(args)}: {done.returncode} {done.stderr.strip()}")
        return done.stdout

    def soffice(self, folder, target, source, infilter=None):
        # A profile of its own, so that a desktop session of the user's is neither used nor
        # disturbed.
        profile = "file://" + os.path.join(folder, "profile")
        command = [SOFFICE, f"-env:UserInstallation={profile}", "--headless"]
        if infilter:
            command.append(f"--infilter={infilter}")
        done = subprocess.run(command + ["--convert-to", target, "--outdir", folder, source],
                              capture_output=True, text=True, timeout=300)
        if done.returncode != 0:
            raise AssertionError(f"soffice {target}: {done.returncode} {done.stderr.strip()}")

    def check(self, what, got, want):
        if got != want:
            self.failures.append(f"{what}:\n  got  {got!r}\n  want {want!r}")

    def finish(self, success):
        if self.failures:
            print("\n".join(self.failures))
            sys.exit(1)
        print(success)


def skip_without_soffice(test):
    if SOFFICE is None:
        print(f"{test}: soffice is not installed; LibreOffice test skipped")
        sys.exit(0)
