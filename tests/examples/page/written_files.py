#!/usr/bin/env python3
"""What becomes of the file that a page is written to, whatever it is: both programs, run as a user runs them.

    written_files.py CROSSTAB REPORT ROOT
"""

import fcntl
import os
import resource
import select
import signal
import socket
import stat
import subprocess
import sys
import tempfile
from pathlib import Path

LONGEST_NAME = 255
OTHER_USER = 12345
DIRECTORY = "Is a directory"
FULL = "No space left on device"
failures = 0


def expect(held, what):
    global failures
    if not held:
        failures += 1
        print("FAILED:", what)


class Program:
    """One program, with arguments that make the same page at every run."""

    def __init__(self, path, arguments):
        self.name = os.path.basename(path)
        self.words = [os.path.abspath(path), *arguments]
        with tempfile.TemporaryDirectory() as folder:
            self.run(folder, "page")
            self.page = Path(folder, "page").read_bytes()
        expect(self.page.startswith(b"<!DOCTYPE html>"), f"{self.name}: a page")

    def run(self, folder, name, **how):
        how.setdefault("stdout", subprocess.PIPE)
        return subprocess.run([*self.words, "--html", name], cwd=folder, stderr=subprocess.PIPE, timeout=60, check=False,
                              **how)

    def writes(self, folder, name, what, content=None, **how):
        """The page is written without a word, and nothing is left beside it."""
        run = self.run(folder, name, **how)
        said = run.stderr.decode()
        expect((run.returncode, said, run.stdout or b"") == (0, "", b""), f"{self.name}, {what}: {run.returncode} {said}")
        if content is not None:
            expect(content_of(folder, name) == content, f"{self.name}, {what}: content")
        expect(not leftovers(folder), f"{self.name}, {what}: left {leftovers(folder)}")

    def fails(self, folder, name, what, reason, **how):
        """One line says why; nothing is printed and nothing changes."""
        before = state(folder)
        run = self.run(folder, name, **how)
        line = f"{self.name}: {reason}\n"
        expect(run.returncode == 2, f"{self.name}, {what}: status {run.returncode}")
        expect(run.stderr.decode() == line, f"{self.name}, {what}: {run.stderr.decode()!r} instead of {line!r}")
        expect(not run.stdout, f"{self.name}, {what}: printed {run.stdout!r}")
        expect(state(folder) == before, f"{self.name}, {what}: {before} became {state(folder)}")


def content_of(folder, name):
    path = Path(folder, name)
    return path.read_bytes() if path.is_file() else None


def leftovers(folder):
    return [name for name in os.listdir(folder) if name.startswith(".")]


def state(folder):
    """Everything in the folder, without what is no file."""
    return sorted((path.name, path.read_bytes() if path.is_file() else None) for path in Path(folder).iterdir())


def modes_of(path):
    there = os.stat(path)
    return stat.S_IMODE(there.st_mode), there.st_uid, there.st_gid


# --- files -----------------------------------------------------------------------------------------------------------


def check_new_files(program, folder):
    program.writes(folder, "page", "new file", program.page)
    program.writes(folder, "page", "file again", program.page)
    program.writes(folder, "x" * LONGEST_NAME, "longest name", program.page)
    program.writes(folder, "--title", "name like an option", program.page)
    program.writes(folder, "-", "a dash", program.page)
    program.writes(folder, "a\n\x1b'\"\udcff", "name of odd bytes", program.page)

    program.writes(folder, "masked", "user's mask", program.page, preexec_fn=lambda: os.umask(0o027))
    expect(stat.S_IMODE(os.stat(f"{folder}/masked").st_mode) == 0o640, f"{program.name}: user's mask")


def check_neighbours(program, folder):
    for name in ("page.part", "page~", "page.tmp"):
        Path(folder, name).write_text("mine")
    program.writes(folder, "page", "beside others", program.page)
    for name in ("page.part", "page~", "page.tmp"):
        expect(content_of(folder, name) == b"mine", f"{program.name}: {name} is left alone")


def check_modes(program, folder):
    for mode in (0o600, 0o644, 0o664, 0o755):
        path = Path(folder, f"mode-{mode:o}")
        path.write_text("old")
        path.chmod(mode)
        program.writes(folder, path.name, f"mode {mode:o}", program.page)
        expect(modes_of(path)[0] == mode, f"{program.name}: mode {mode:o} became {modes_of(path)[0]:o}")


def check_owner(program, folder):
    if os.geteuid() != 0:
        return
    for owner, group in ((OTHER_USER, 0), (0, OTHER_USER), (OTHER_USER, OTHER_USER)):
        path = Path(folder, f"owned-{owner}-{group}")
        path.write_text("old, and longer than the new page is" * 10000)
        os.chown(path, owner, group)
        path.chmod(0o640)
        program.writes(folder, path.name, f"owner {owner}:{group}", program.page)
        expect(modes_of(path) == (0o640, owner, group), f"{program.name}: owner {owner}:{group}: {modes_of(path)}")


def check_attributes(program, folder):
    path = Path(folder, "attributes")
    path.write_text("old")
    try:
        os.setxattr(path, "user.note", b"mine")
    except OSError:
        return
    program.writes(folder, path.name, "extended attributes", program.page)
    expect("user.note" in os.listxattr(path), f"{program.name}: extended attributes are kept")


def check_hard_links(program, folder):
    path = Path(folder, "first")
    for old in ("old", "old, and longer than the new page is" * 10000):
        path.write_text(old)
        if not Path(folder, "second").exists():
            os.link(path, Path(folder, "second"))
        program.writes(folder, "first", "hard link", program.page)
        expect(Path(folder, "second").read_bytes() == program.page, f"{program.name}: the other name's content")
        expect(os.path.samefile(path, Path(folder, "second")), f"{program.name}: hard links stay")


def check_symbolic_links(program, folder):
    os.mkdir(f"{folder}/below")
    Path(folder, "below/file").write_text("old")
    for name, target in (("near", "below/file"), ("chain", "near"), ("whole", f"{folder}/below/file"),
                         ("dangling", "below/new"), ("dangling-chain", "dangling")):  # fmt: skip
        os.symlink(target, f"{folder}/{name}")
        program.writes(folder, name, f"link {name}", program.page)
        expect(os.readlink(f"{folder}/{name}") == target, f"{program.name}: link {name} stays")
        Path(folder, "below/file").write_text("old")
        expect(sorted(os.listdir(f"{folder}/below")) in (["file"], ["file", "new"]), f"{program.name}: beside {name}")


# --- what is no file -------------------------------------------------------------------------------------------------


def check_pipe(program, folder):
    os.mkfifo(f"{folder}/pipe")
    os.symlink("pipe", f"{folder}/link-to-pipe")
    for name in ("pipe", "link-to-pipe"):
        with subprocess.Popen(["cat", f"{folder}/pipe"], stdout=subprocess.PIPE) as reader:
            program.writes(folder, name, name)
            expect(reader.stdout.read() == program.page, f"{program.name}: what was read from the {name}")
    expect(stat.S_ISFIFO(os.lstat(f"{folder}/pipe").st_mode), f"{program.name}: the pipe stays one")


def check_devices(program, folder):
    os.symlink("/dev/null", f"{folder}/nothing")
    for name in ("/dev/null", "nothing"):
        program.writes(folder, name, name)
    expect(stat.S_ISCHR(os.stat("/dev/null").st_mode), f"{program.name}: /dev/null stays a device")
    expect(os.path.islink(f"{folder}/nothing"), f"{program.name}: a link to a device stays")


def check_standard_output(program, folder):
    """Whatever it is, the page goes where the next line printed would go."""
    os.symlink("/dev/stdout", f"{folder}/link-to-output")
    for name in ("/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "link-to-output"):
        run = program.run(folder, name)
        expect((run.returncode, run.stdout, run.stderr) == (0, program.page, b""), f"{program.name}: {name} to a pipe")

        for mode in ("wb", "ab"):
            path = Path(folder, "log")
            path.write_bytes(b"kept")
            node = path.stat().st_ino
            with open(path, mode) as log:
                log.write(b"above, ")
                log.flush()
                program.writes(folder, name, f"{name} to a file, {mode}", stdout=log)
            expected = (b"kept" if mode == "ab" else b"") + b"above, " + program.page
            expect(path.read_bytes() == expected, f"{program.name}: {name} to a file, {mode}")
            expect(path.stat().st_ino == node, f"{program.name}: {name} to a file, {mode}: still that file")
    expect(os.path.islink("/dev/stdout"), f"{program.name}: /dev/stdout stays a link")


# --- failures --------------------------------------------------------------------------------------------------------


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))


def check_failures(program, folder):
    program.fails(folder, "", "empty name", "--html: the name is empty")
    program.fails(folder, "/dev/full", "full device", f"/dev/full: {FULL}")
    program.fails(folder, ".", "folder", f".: {DIRECTORY}")
    program.fails(folder, "nowhere/page", "folder that is not there", "nowhere/page: No such file or directory")
    program.fails(folder, "x" * (LONGEST_NAME + 1), "name too long", "x" * 256 + ": File name too long")
    program.fails(folder, "page/", "no name below a folder", f"page/: {DIRECTORY}")
    os.symlink("loop", f"{folder}/loop")
    program.fails(folder, "loop", "link to itself", "loop: Too many levels of symbolic links")
    with socket.socket(socket.AF_UNIX) as listener:
        # The path of a socket may be short only.
        number = os.open(folder, os.O_PATH)
        listener.bind(f"/proc/self/fd/{number}/socket")
        os.close(number)
        program.fails(folder, "socket", "socket", "socket: No such device or address")

    read_end, write_end = os.pipe()
    os.close(read_end)
    program.fails(folder, "/dev/stdout", "reader that went away", "/dev/stdout: Broken pipe", stdout=write_end)
    os.close(write_end)


def check_files_that_grow_too_large(program, folder):
    """Old content stays, wherever it is written."""
    Path(folder, "one").write_text("old")
    Path(folder, "two").write_text("old")
    os.link(f"{folder}/two", f"{folder}/three")
    for name in ("one", "two", "new"):
        program.fails(folder, name, f"limit of size, {name}", f"{name}: File too large", preexec_fn=limit_files)
    with open(f"{folder}/output", "wb") as output:
        run = subprocess.run(program.words, stdout=output, stderr=subprocess.PIPE, preexec_fn=limit_files, check=False)
    expect((run.returncode, run.stderr.decode()) == (2, f"{program.name}: standard output: File too large\n"),
           f"{program.name}: limit of size, standard output: {run}")


def check_output_that_does_not_wait(program, folder):
    """A pipe that refuses what it has no room for, and a reader that comes later."""
    for words in (program.words, [*program.words, "--html", "/dev/stdout"]):
        whole = subprocess.run(words, stdout=subprocess.PIPE, check=True).stdout
        read_end, write_end = os.pipe()
        fcntl.fcntl(write_end, fcntl.F_SETPIPE_SZ, 4096)
        os.set_blocking(write_end, False)
        with subprocess.Popen(words, cwd=folder, stdout=write_end, stderr=subprocess.PIPE) as run:
            os.close(write_end)
            select.select([run.stderr], [], [], 0.2)
            with open(read_end, "rb") as reader:
                expect(reader.read() == whole, f"{program.name}: all that a slow reader gets")
            expect((run.wait(), run.stderr.read()) == (0, b""), f"{program.name}: slow reader")


def check_protection(program, folder):
    """Needs a user who is not let through everywhere."""
    denied = "Permission denied"
    how = {"user": OTHER_USER} if os.geteuid() == 0 else {}
    os.chmod(folder, 0o777)
    os.mkdir(f"{folder}/closed")
    for name, mode in (("closed/open", 0o666), ("closed/shut", 0o444), ("shut", 0o444)):
        Path(folder, name).write_text("old, and longer than the new page is" * 10000)
        os.chmod(f"{folder}/{name}", mode)
        if how:
            os.chown(f"{folder}/{name}", OTHER_USER, -1)
    os.chmod(f"{folder}/closed", 0o555)
    try:
        subprocess.run([program.words[0], "--help"], cwd=folder, capture_output=True, check=True, **how)
    except (OSError, subprocess.CalledProcessError):
        print("another user cannot run the programs here: protected files are not tried")
        return
    program.fails(folder, "closed/page", "closed folder", f"closed/page: {denied}", **how)
    program.fails(folder, "shut", "closed file", f"shut: {denied}", **how)
    program.fails(folder, "closed/shut", "closed file in a closed folder", f"closed/shut: {denied}", **how)
    program.writes(folder, "closed/open", "open file in a closed folder", program.page, **how)
    os.chmod(f"{folder}/closed", 0o755)


CHECKS = [check_new_files, check_neighbours, check_modes, check_owner, check_attributes, check_hard_links,
          check_symbolic_links, check_pipe, check_devices, check_standard_output, check_failures,
          check_files_that_grow_too_large, check_output_that_does_not_wait, check_protection]  # fmt: skip


def main():
    crosstab, report, root = sys.argv[1:]
    # A reader that waits for a pipe that was replaced would wait for ever.
    signal.alarm(300)
    programs = [Program(crosstab, [f"{os.path.abspath(root)}/examples/data/titanic.csv", "--rows", "Class"]),
                Program(report, [])]  # fmt: skip
    for program in programs:
        for check in CHECKS:
            with tempfile.TemporaryDirectory() as folder:
                try:
                    check(program, folder)
                except OSError as error:
                    expect(False, f"{program.name}, {check.__name__}: {error}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
