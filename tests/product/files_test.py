"""Every file that the command reads: a regular one of bounded size, or standard input where that is asked for."""
import os
import subprocess

from product import Case, OLD_RELEASE, TREE, WAYFIND, run

MIB = 1 << 20


class Files(Case):
    def setUp(self):
        super().setUp()
        self.path = self.folder / "file.xml"

    def readers(self):
        """Arguments that read the file, and how large it may be in MiB; the trace file stands behind a library, which is never reached here."""
        yield 1024, ("recording", self.path)
        yield 1024, ("manifest", self.path)
        yield 1024, ("manifest", "diff", self.path, self.path)
        yield 1024, ("trace", "texts", self.path)
        yield 1024, ("trace", "decode", self.path, self.path)
        yield 1, ("show", "intf", "--connect", self.socket, "--release", self.path)
        yield 1, ("agent", "--listen", self.socket, "--data", TREE / "data", "--release", self.path)
        yield 256, ("agent", "--listen", self.socket, "--data", self.folder)

    def assert_refused(self, *words):
        for _, arguments in self.readers():
            with self.subTest(arguments=arguments):
                self.assert_fails(run(*arguments, stdin=subprocess.DEVNULL), f"{self.path}: ", *words)

    def test_pipe_is_not_waited_for(self):
        os.mkfifo(self.path)
        self.assert_refused("no regular file; copy it into one first")

    def test_link_to_a_pipe_is_not_waited_for(self):
        os.mkfifo(self.folder / "pipe")
        self.path.symlink_to("pipe")
        self.assert_refused("no regular file")

    def test_device_is_not_opened(self):
        for device in ("/dev/zero", "/dev/tty"):
            self.path.unlink(missing_ok=True)
            self.path.symlink_to(device)
            self.assert_refused("no regular file")

    def test_folder_is_refused(self):
        self.path.mkdir()
        self.assert_refused("Is a directory")

    def test_file_that_is_not_there(self):
        self.path.symlink_to("nowhere")
        self.assert_refused("No such file or directory")

    def test_file_that_is_too_large_is_refused_unread(self):
        for limit, arguments in self.readers():
            with self.subTest(arguments=arguments):
                self.path.write_bytes(b"")
                os.truncate(self.path, limit * MIB + 1)
                self.assert_fails(run(*arguments), f"{self.path}: larger than {limit} MiB")


class StandardInput(Case):
    def test_stands_for_a_recording(self):
        self.start_agent()
        shown = self.show("intf", "--record", self.folder / "recording").stdout
        with subprocess.Popen(["cat", str(self.folder / "recording")], stdout=subprocess.PIPE) as pipe:
            read = run("recording", "-", stdin=pipe.stdout)
        self.assertEqual((read.stdout, read.stderr, read.returncode), (shown, "", 0))

    def test_stands_for_a_release(self):
        self.start_agent()
        with open(OLD_RELEASE, "rb") as release:
            read = self.show("hop-chan", "--release", "-", stdin=release)
        self.assertEqual(read.returncode, 0)
        self.assertIn("lowered for this release", read.stderr)

    def test_is_bounded(self):
        with open("/dev/zero", "rb") as endless:
            self.assert_fails(run("show", "intf", "--connect", self.socket, "--release", "-", stdin=endless),
                              "standard input: larger than 1 MiB")

    def test_has_to_be_asked_for(self):
        with subprocess.Popen([WAYFIND, "recording", str(self.folder / "-")], stdin=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as reading:
            self.assertIn("No such file", reading.communicate(timeout=30)[1])
