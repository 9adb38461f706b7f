"""What the process is given and how it ends when that does not suffice: files, memory, the mode of its socket."""
import os
import resource
import stat

from product import TREE, Case, preloaded, run


class SocketMode(Case):
    def mode(self, mask, *options):
        before = os.umask(mask)
        try:
            agent = self.start_agent(*options)
        finally:
            os.umask(before)
        mode = stat.S_IMODE(self.socket.stat().st_mode)
        agent.stop()
        return mode

    def test_is_for_its_owner_alone_unless_told_otherwise(self):
        self.assertEqual(self.mode(0), 0o600)
        self.assertEqual(self.mode(0o277), 0o600)

    def test_is_as_told_whatever_the_mask(self):
        self.assertEqual(self.mode(0o077, "--mode", "0660"), 0o660)
        self.assertEqual(self.mode(0o777, "--mode", "666"), 0o666)

    def test_that_is_none_is_refused(self):
        for mode in ("rw", "0999", "01777", "", "00600"):
            self.assert_fails(run("agent", "--listen", self.socket, "--data", TREE / "data", "--mode", mode), "--mode", "give one like 0660")


class Resources(Case):
    def test_file_that_may_not_grow_is_told(self):
        self.start_agent()

        def no_growth():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        with open(self.folder / "shown", "wb") as shown:
            result = self.show("hop-chan", stdout=shown, preexec_fn=no_growth)
        self.assertEqual((result.returncode, result.stderr), (1, "wayfind: cannot write standard output: File too large\n"))
        result = self.show("hop-chan", "--record", self.folder / "recorded", preexec_fn=no_growth)
        self.assertEqual((result.returncode, result.stderr), (1, f"wayfind: cannot record to {self.folder}/recorded: File too large\n"))

    def test_without_memory_for_its_types_a_client_announces_nothing(self):
        self.start_agent()
        for call in (1, 2):
            result = self.show("intf", environment=preloaded(refused_list=call))
            self.assert_fails(result, "no memory for the list of this release's types")
            self.assertEqual(result.stdout, "")
