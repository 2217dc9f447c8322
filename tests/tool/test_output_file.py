"""Output files are replaced whole or not at all, and nothing else is changed."""

import os
import resource
import signal
import stat
import time

from support import ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, grid_bytes, main

GRID = grid_bytes(Form(), TWO_BLOCKS)


class OwnInput(ToolTest):
    def refuse(self, source, target):
        self.fail_with(2, "convert", source, target, says=(str(target), "the file to be read"))
        self.assertEqual(self.path("grid").read_bytes(), GRID)
        self.assert_no_leftovers()

    def test_other_spellings(self):
        self.write_grid("grid")
        self.path("sub").mkdir()
        for target in ("grid", "./grid", "sub/../grid", self.path("grid")):
            with self.subTest(target=target):
                self.refuse("grid", target)

    def test_symbolic_link(self):
        self.write_grid("grid")
        self.path("link").symlink_to("grid")
        self.refuse("grid", "link")
        self.refuse("link", "grid")
        self.assertTrue(self.path("link").is_symlink())

    def test_hard_link(self):
        self.write_grid("grid")
        os.link(self.path("grid"), self.path("twin"))
        self.refuse("grid", "twin")


class Replacing(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("in")

    def mode(self, name):
        return stat.S_IMODE(self.path(name).stat().st_mode)

    def test_existing_file_keeps_its_permissions(self):
        for mode in (0o640, 0o600, 0o755, 0o666):
            with self.subTest(mode=oct(mode)):
                self.write("out", b"before").chmod(mode)
                self.succeed("convert", "in", "out", umask=0o027)
                self.assertEqual(self.path("out").read_bytes(), GRID)
                self.assertEqual(self.mode("out"), mode)

    def test_existing_file_keeps_its_owner(self):
        if os.geteuid() != 0:
            self.skipTest("only root can give files away")
        self.write("out", b"before")
        os.chown(self.path("out"), 1234, 4321)
        self.succeed("convert", "in", "out")
        self.assertEqual((self.path("out").stat().st_uid, self.path("out").stat().st_gid),
                         (1234, 4321))

    def test_new_file_follows_the_umask(self):
        for umask, mode in ((0o022, 0o644), (0o077, 0o600), (0o002, 0o664)):
            with self.subTest(umask=oct(umask)):
                self.path("out").unlink(missing_ok=True)
                self.succeed("convert", "in", "out", umask=umask)
                self.assertEqual(self.mode("out"), mode)

    def test_symbolic_link_stays_and_its_target_is_replaced(self):
        self.path("elsewhere").mkdir()
        self.write("elsewhere/real", b"before")
        self.path("middle").symlink_to("elsewhere/real")
        self.path("out").symlink_to("middle")
        self.succeed("convert", "in", "out")
        self.assertTrue(self.path("out").is_symlink() and self.path("middle").is_symlink())
        self.assertEqual(self.path("elsewhere/real").read_bytes(), GRID)

    def test_symbolic_link_leads_on_from_its_own_folder(self):
        self.path("elsewhere").mkdir()
        self.write("elsewhere/real", b"before")
        self.path("elsewhere/link").symlink_to("real")
        self.succeed("convert", "in", "elsewhere/link")
        self.assertTrue(self.path("elsewhere/link").is_symlink())
        self.assertEqual(self.path("elsewhere/real").read_bytes(), GRID)
        self.assertEqual(sorted(os.listdir(self.folder)), ["elsewhere", "in"])

    def test_symbolic_link_to_nothing_makes_its_target(self):
        self.path("elsewhere").mkdir()
        self.path("out").symlink_to("elsewhere/new")
        self.succeed("convert", "in", "out")
        self.assertTrue(self.path("out").is_symlink())
        self.assertEqual(self.path("elsewhere/new").read_bytes(), GRID)

    def test_symbolic_links_in_a_ring(self):
        self.path("a").symlink_to("b")
        self.path("b").symlink_to("a")
        self.fail_with(2, "convert", "in", "a", says="a: ")

    def test_nothing_else_in_the_folder(self):
        self.succeed("convert", "in", "out")
        self.assertEqual(sorted(os.listdir(self.folder)), ["in", "out"])


class Refused(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("in")

    def refuse(self, target, says, **options):
        self.fail_with(2, "convert", "in", target, says=(str(target), says), **options)
        self.assert_no_leftovers()

    def test_folder(self):
        self.path("folder").mkdir()
        self.refuse("folder", "is a folder")
        self.refuse("folder/", "is a folder")
        self.assertEqual(os.listdir(self.path("folder")), [])

    def test_pipe(self):
        os.mkfifo(self.path("pipe"))
        self.refuse("pipe", "is a pipe")
        self.assertTrue(stat.S_ISFIFO(self.path("pipe").stat().st_mode))

    def test_devices(self):
        for device in ("/dev/null", "/dev/full"):
            self.refuse(device, "is a device")
            self.assertTrue(stat.S_ISCHR(os.stat(device).st_mode))

    def test_missing_folder(self):
        self.refuse("nowhere/out", "No such file or directory")
        self.refuse("nowhere/", "does not name a file")

    def test_file_in_the_place_of_a_folder(self):
        self.refuse("in/out", "Not a directory")

    def test_name_too_long(self):
        self.refuse("x" * 256, "File name too long")

    def test_folder_that_takes_no_files(self):
        self.path("closed").mkdir()
        self.path("closed").chmod(0o555)
        with self.unprivileged() as user:
            self.refuse("closed/out", "Permission denied", **user)

    def test_write_protected_file(self):
        self.write("out", b"before").chmod(0o444)
        self.folder.chmod(0o777)
        with self.unprivileged() as user:
            self.folder.chmod(0o777)
            self.refuse("out", "write-protected", **user)
        self.assertEqual(self.path("out").read_bytes(), b"before")


class Interrupted(ToolTest):
    """OUT and its folder after an interrupted run."""

    def setUp(self):
        super().setUp()
        self.write("out", b"before")

    def assert_untouched(self):
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()

    def start_blocked(self, **options):
        """A conversion that waits for its input after creating its temporary file."""
        os.mkfifo(self.path("pipe"))
        # A pipe cannot be examined before it is read.
        process = self.start("convert", "pipe", "out", *Form().options("grid"),
                             "--grid-byte-order", Form().order, **options)
        deadline = time.monotonic() + 30
        while not any(".tmp" in name for name in os.listdir(self.folder)):
            self.assertLess(time.monotonic(), deadline, "no temporary file appears")
            self.assertIsNone(process.poll())
            time.sleep(0.01)
        return process

    def test_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                process = self.start_blocked()
                process.send_signal(number)
                process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assert_untouched()
                self.path("pipe").unlink()

    def test_signal_that_the_caller_ignores(self):
        process = self.start_blocked(
            preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        process.send_signal(signal.SIGHUP)
        self.feed(process, "pipe", GRID)
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(self.path("out").read_bytes(), GRID)

    def test_damaged_input(self):
        self.write("in", GRID[:-6])
        self.fail_with(1, "convert", "in", "out", says="in: ")
        self.assert_untouched()

    def test_missing_input(self):
        self.fail_with(2, "convert", "in", "out", says="in")
        self.assert_untouched()

    def test_no_room_for_the_output(self):
        # A file-size limit makes a write fail part-way, like a full disk.
        points = 40_000
        values = [n / 7 for n in range(points)]
        self.write_grid("in", blocks=[Block((points, 1, 1), values, values, values)])
        for form in ("unformatted", "formatted", "binary"):
            with self.subTest(form=form):
                self.fail_with(
                    2, "convert", "in", "out", "--to-format", form,
                    says=("out: not written: ", "File too large"),
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                          (100_000, 100_000)))
                self.assert_untouched()

    def test_small_output_without_room(self):
        # The whole file fits in the library's buffer, so that only the close fails.
        self.write_grid("in", blocks=ONE_BLOCK)
        self.fail_with(2, "convert", "in", "out", says=("out: not written: ", "File too large"),
                       preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (10, 10)))
        self.assert_untouched()


if __name__ == "__main__":
    main()
