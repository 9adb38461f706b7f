"""Agents and clients whose every wait, read and write is interrupted, or moves little."""
import os

from product import Case, run

INTERRUPTED = {"LD_PRELOAD": os.environ["WAYFIND_INTERRUPTED_CALLS"]}


class InterruptedCalls(Case):
    def shown(self, environment):
        result = run("show", "hop-chan", "--connect", self.socket, environment=environment)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def test_a_show_is_whole_whoever_is_interrupted(self):
        agent = self.start_agent()
        whole = self.shown({})
        self.assertEqual(whole.count("message@"), 127)
        self.assertEqual(self.shown(INTERRUPTED), whole)
        agent.stop()
        self.start_agent(environment=INTERRUPTED)
        self.assertEqual(self.shown({}), whole)
        self.assertEqual(self.shown(INTERRUPTED), whole)
