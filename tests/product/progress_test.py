"""What a terminal is told while a task takes long."""
import os
import pty
import socket
import subprocess
import threading
import time

from product import PATIENCE, WAYFIND, Case, RawClient, greeting


class Progress(Case):
    def setUp(self):
        super().setUp()
        self.start_agent()
        with RawClient(self.socket) as client:
            self.greeting = greeting(client.exchange())
            self.frames = list(client.frames("hop-chan"))

    def serve_slowly(self, listener):
        peer, _ = listener.accept()
        with peer:
            peer.sendall(self.greeting + b"ok\n" + b"".join(self.frames[:50]))
            time.sleep(1.2)
            peer.sendall(b"".join(self.frames[50:]))
            while peer.recv(65536):
                pass

    def show_slowly(self, **stderr):
        path = str(self.folder / "slow")
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(path)
            listener.listen()
            thread = threading.Thread(target=self.serve_slowly, args=(listener,))
            thread.start()
            result = subprocess.run([WAYFIND, "show", "hop-chan", "--connect", path, "--count"], stdout=subprocess.PIPE, text=True,
                                    timeout=PATIENCE, check=False, **stderr)
            thread.join(PATIENCE)
        self.assertEqual((result.returncode, result.stdout), (0, "126\n"))
        return result

    def test_stands_on_a_terminal_after_a_second_and_goes(self):
        ours, theirs = pty.openpty()
        try:
            self.show_slowly(stderr=theirs)
            told = os.read(ours, 65536).decode()
        finally:
            os.close(ours)
            os.close(theirs)
        self.assertRegex(told, r"^(\rhop-chan: messages received: \d+\x1b\[K)+\r\x1b\[K$")

    def test_stands_nowhere_else(self):
        self.assertEqual(self.show_slowly(stderr=subprocess.PIPE).stderr, "")
